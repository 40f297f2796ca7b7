// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QMetaType>
#include <QString>

#include <optional>

/// How an application wants to be pasted into.
enum class PasteConvention {
    standard,         ///< Control-V, or Shift-Insert where the layout has no V
    terminal,         ///< Control-Shift-V; the clipboard
    primarySelection, ///< Shift-Insert that takes the PRIMARY selection (xterm and its kin)
};

/// One application of the desktop session, as it was when asked for. A value: whether it still runs is
/// Workspace's to say.
struct RunningApplication
{
    qint64 processIdentifier = 0;
    std::optional<QString> bundleIdentifier; ///< desktop entry id where known, else the window class
    std::optional<QString> localizedName;    ///< the name a user knows it by
    PasteConvention pasteConvention = PasteConvention::standard;
    quint64 window = 0;           ///< the mechanism's own token of its window, 0 when it has none
    quint64 processStartTime = 0; ///< the mechanism's guard against reused process identifiers, 0 unknown

    bool operator==(const RunningApplication &) const = default;
};
