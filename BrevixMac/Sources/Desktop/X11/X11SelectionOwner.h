// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Desktop/X11/X11Connection.h"

#include <QObject>

/// Follows whether some client owns a manager selection: tray hosts and compositing managers announce
/// themselves so. Main thread only.
class X11SelectionOwner final : public QObject
{
    Q_OBJECT

public:
    /// @p selection without the screen's number, which is added. @p connection must outlive this object.
    X11SelectionOwner(X11Connection &connection, const QByteArray &selection);
    ~X11SelectionOwner() override;

    /// The window it is owned by, or none.
    xcb_window_t window() const { return m_window; }

Q_SIGNALS:
    void changed();

private:
    void onEvent(const xcb_generic_event_t &event);
    void read();

    X11Connection &m_connection;
    xcb_atom_t m_selection = XCB_ATOM_NONE;
    xcb_window_t m_window = XCB_WINDOW_NONE;
    quint8 m_firstEvent = 0;
    std::unique_ptr<X11Connection::Subscription> m_events;
};
