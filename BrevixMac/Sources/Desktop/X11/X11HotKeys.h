// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Desktop/HotKeys.h"
#include "Desktop/X11/X11Connection.h"

#include <optional>
#include <set>

/// The global hotkey as a passive grab of the X server. Fires once per press, however long the key is held.
class X11HotKeys final : public HotKeys
{
    Q_OBJECT

public:
    /// @p connection must outlive this object.
    explicit X11HotKeys(X11Connection &connection);
    ~X11HotKeys() override;

    /// False also when the keyboard has no such key or modifier.
    bool registerHotKey(quint32 keyCode, quint64 modifiers) override;
    void unregisterHotKey() override;

Q_SIGNALS:
    /// Just before pressed(): the X server's time of the press.
    void pressedAt(quint32 time);

private:
    struct Wish
    {
        quint32 keyNumber = 0;
        quint64 modifiers = 0;
    };
    struct Grab
    {
        quint8 keyCode = 0;
        quint16 modifiers = 0;       ///< those that the user holds
        std::set<quint16> withLocks; ///< the same with every combination of lock keys

        bool operator==(const Grab &) const = default;
    };

    void onEvent(const xcb_generic_event_t &event);
    bool isOurs(const xcb_key_press_event_t &event) const;
    void onKeyPress(const xcb_key_press_event_t &event);
    void onKeyRelease(const xcb_key_release_event_t &event);
    void onMappingChanged();
    std::optional<Grab> grabFor(const Wish &wish);
    bool take(const Grab &grab);
    void release();

    X11Connection &m_connection;
    std::optional<Wish> m_wish;
    std::optional<Grab> m_grab;
    quint8 m_keyboardEvent = 0; ///< number of the keyboard extension's events
    bool m_isHeld = false;
    xcb_timestamp_t m_lastPress = 0;
    bool m_isMappingCheckPending = false;
    std::unique_ptr<X11Connection::Subscription> m_events;
};
