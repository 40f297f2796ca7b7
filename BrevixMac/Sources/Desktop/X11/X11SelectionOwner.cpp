// SPDX-License-Identifier: GPL-3.0-or-later
#include "X11SelectionOwner.h"

#include <xcb/xfixes.h>

X11SelectionOwner::X11SelectionOwner(X11Connection &connection, const QByteArray &selection)
    : m_connection(connection)
{
    if (!m_connection.isValid())
        return;
    auto *xcb = m_connection.connection();
    m_selection = m_connection.atom(selection + QByteArray::number(m_connection.screenNumber()));
    const auto *extension = xcb_get_extension_data(xcb, &xcb_xfixes_id);
    if (extension && extension->present) {
        m_firstEvent = extension->first_event;
        xcb_discard_reply(xcb, xcb_xfixes_query_version(xcb, 5, 0).sequence);
        m_events = m_connection.addEventHandler([this](const xcb_generic_event_t &event) { onEvent(event); });
        xcb_xfixes_select_selection_input(xcb, m_connection.root(), m_selection,
                                          XCB_XFIXES_SELECTION_EVENT_MASK_SET_SELECTION_OWNER |
                                              XCB_XFIXES_SELECTION_EVENT_MASK_SELECTION_WINDOW_DESTROY |
                                              XCB_XFIXES_SELECTION_EVENT_MASK_SELECTION_CLIENT_CLOSE);
    }
    read();
}

X11SelectionOwner::~X11SelectionOwner() = default;

void X11SelectionOwner::onEvent(const xcb_generic_event_t &event)
{
    if (eventKind(event) != m_firstEvent + XCB_XFIXES_SELECTION_NOTIFY ||
        reinterpret_cast<const xcb_xfixes_selection_notify_event_t &>(event).selection != m_selection)
        return;
    const xcb_window_t before = m_window;
    read();
    if (m_window != before)
        Q_EMIT changed();
}

// Asked for anew instead of taken from the event: several may have come since.
void X11SelectionOwner::read()
{
    auto *xcb = m_connection.connection();
    const XcbPointer<xcb_get_selection_owner_reply_t> owner(
        xcb_get_selection_owner_reply(xcb, xcb_get_selection_owner(xcb, m_selection), nullptr));
    m_window = owner ? owner->owner : xcb_window_t(XCB_WINDOW_NONE);
}
