// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Desktop/X11/X11Connection.h"

#include <xcb/xcb_icccm.h>

/// A plain top-level window over a connection of its own, with the traits a test wants.
class TestWindow
{
public:
    enum class Input { accepted, refused };

    explicit TestWindow(Input input = Input::accepted, const QByteArray &windowClass = "test\0Test")
    {
        auto *xcb = m_connection.connection();
        // Numbers of closed windows come again with the next connection, and a window manager that has not
        // seen the end of the first one then overlooks the second.
        static int numbersUsed = 0;
        ++numbersUsed;
        for (int number = 0; number < numbersUsed; ++number)
            m_window = xcb_generate_id(xcb);
        xcb_create_window(xcb, XCB_COPY_FROM_PARENT, m_window, m_connection.root(), 40, 40, 200, 100, 0,
                          XCB_WINDOW_CLASS_INPUT_OUTPUT, XCB_COPY_FROM_PARENT, 0, nullptr);
        xcb_icccm_wm_hints_t hints{};
        xcb_icccm_wm_hints_set_input(&hints, input == Input::accepted);
        xcb_icccm_set_wm_hints(xcb, m_window, &hints);
        setClass(windowClass);
        xcb_map_window(xcb, m_window);
        m_connection.sync();
    }

    xcb_window_t id() const { return m_window; }
    X11Connection &connection() { return m_connection; }

    void setClass(const QByteArray &windowClass)
    {
        xcb_change_property(m_connection.connection(), XCB_PROP_MODE_REPLACE, m_window, XCB_ATOM_WM_CLASS,
                            XCB_ATOM_STRING, 8, quint32(windowClass.size()), windowClass.constData());
        m_connection.sync();
    }

    void setNumber(const QByteArray &property, xcb_atom_t type, quint32 value)
    {
        xcb_change_property(m_connection.connection(), XCB_PROP_MODE_REPLACE, m_window,
                            m_connection.atom(property), type, 32, 1, &value);
        m_connection.sync();
    }

    void destroy()
    {
        xcb_destroy_window(m_connection.connection(), m_window);
        m_connection.sync();
    }

private:
    X11Connection m_connection;
    xcb_window_t m_window = XCB_WINDOW_NONE;
};
