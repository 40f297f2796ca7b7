// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>
#include <QHashFunctions>
#include <QString>

#include <optional>

/// A key of the layout-independent ANSI key table with modifier bits. A value.
struct KeyboardShortcut
{
    static constexpr quint64 shift = 0x20000;
    static constexpr quint64 control = 0x40000;
    static constexpr quint64 option = 0x80000;
    static constexpr quint64 command = 0x100000;
    static constexpr quint64 allModifiers = shift | control | option | command;

    quint32 keyCode = 35; ///< the P key
    quint64 modifiers = command | shift;

    bool operator==(const KeyboardShortcut &) const = default;

    /// The modifiers in the hot-key numbering: Command 0x100, Shift 0x200, Option 0x800, Control 0x1000.
    quint32 carbonModifiers() const;

    /// "⌃⌥⇧⌘" as far as set, then the key's name.
    QString displayLabel() const;

    /// Name of a key; "Key " and the number for one without.
    static QString displayString(quint32 keyCode);

    QByteArray toJson() const;
    static std::optional<KeyboardShortcut> fromJson(const QByteArray &json);
};

inline size_t qHash(const KeyboardShortcut &shortcut, size_t seed = 0)
{
    return qHashMulti(seed, shortcut.keyCode, shortcut.modifiers);
}
