// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QtGlobal>

#include <functional>
#include <memory>
#include <optional>

class QWindow;

/// A key that went down while the keyboard was captured.
struct CapturedKey
{
    std::optional<quint32> keyCode; ///< number in the ANSI key table; nothing for keys that it lacks
    quint64 modifiers = 0;          ///< held with it: Shift 0x20000, Control 0x40000, Option 0x80000, …
    bool isModifier = false;        ///< itself a modifier or a lock
};

/// Takes the whole keyboard for a moment, so that a combination can be recorded that the desktop or another
/// program would otherwise act on. Main thread only.
class KeyCapture
{
public:
    using Handler = std::function<void(const CapturedKey &)>;

    /// Holds the keyboard until it is destroyed. The session also takes it back when this process ends.
    class Session
    {
    public:
        Session() = default;
        virtual ~Session() = default;
        Session(const Session &) = delete;
        Session &operator=(const Session &) = delete;
    };

    KeyCapture() = default;
    virtual ~KeyCapture() = default;
    KeyCapture(const KeyCapture &) = delete;
    KeyCapture &operator=(const KeyCapture &) = delete;

    /// Calls @p handler for every key that goes down from now on; nobody else is told of it. @p window is the
    /// one of ours that has the focus. Null when the session has no such facility or somebody else has the
    /// keyboard. One session at a time. The handler may end the session.
    [[nodiscard]] virtual std::unique_ptr<Session> begin(QWindow &window, Handler handler) = 0;

    /// The number in the ANSI key table of the key with the native scan code @p scanCode, as Qt's key events
    /// carry it; nothing for keys that it lacks.
    virtual std::optional<quint32> keyCode(quint32 scanCode) const = 0;
};
