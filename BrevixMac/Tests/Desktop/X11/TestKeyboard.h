// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Desktop/X11/X11Connection.h"

#include <xcb/xtest.h>

#include <algorithm>
#include <vector>

/// Physical keys pressed and released by their X key codes, whatever the layout. Everything is up again
/// afterwards.
class TestKeyboard
{
public:
    static constexpr quint8 p = 33;
    static constexpr quint8 shift = 50;
    static constexpr quint8 super = 133;
    static constexpr quint8 alt = 64;
    static constexpr quint8 control = 37;
    static constexpr quint8 capsLock = 66;
    static constexpr quint8 numLock = 77;
    static constexpr quint8 scrollLock = 78;

    ~TestKeyboard()
    {
        while (!m_down.empty())
            release(m_down.back());
    }

    void press(quint8 keyCode)
    {
        send(XCB_KEY_PRESS, keyCode);
        m_down.push_back(keyCode);
    }

    void release(quint8 keyCode)
    {
        send(XCB_KEY_RELEASE, keyCode);
        std::erase(m_down, keyCode);
    }

    void tap(quint8 keyCode)
    {
        press(keyCode);
        release(keyCode);
    }

    void chord(const std::vector<quint8> &keyCodes)
    {
        std::ranges::for_each(keyCodes, [this](quint8 keyCode) { press(keyCode); });
        std::for_each(keyCodes.rbegin(), keyCodes.rend(), [this](quint8 keyCode) { release(keyCode); });
    }

    X11Connection &connection() { return m_connection; }

private:
    void send(quint8 type, quint8 keyCode)
    {
        xcb_test_fake_input(m_connection.connection(), type, keyCode, XCB_CURRENT_TIME, m_connection.root(),
                            0, 0, 0);
        m_connection.sync();
    }

    X11Connection m_connection;
    std::vector<quint8> m_down;
};
