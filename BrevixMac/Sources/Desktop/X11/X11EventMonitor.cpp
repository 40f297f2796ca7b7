// SPDX-License-Identifier: GPL-3.0-or-later
#include "X11EventMonitor.h"

#include "X11Coordinates.h"

#include <QGuiApplication>
#include <QPointer>
#include <QWindow>

#include <xcb/xinput.h>

#include <algorithm>

namespace {

constexpr quint32 leftButton = 1;
constexpr quint32 rightButton = 3;

bool isOwnVisibleWindow(xcb_window_t window)
{
    const auto windows = QGuiApplication::allWindows();
    return std::ranges::any_of(windows, [window](QWindow *own) {
        return own->isVisible() && own->handle() && xcb_window_t(own->winId()) == window;
    });
}

quint32 wantedEvents(MonitoredEvent::Types types)
{
    quint32 mask = 0;
    if (types.testFlag(MonitoredEvent::keyRelease))
        mask |= XCB_INPUT_XI_EVENT_MASK_RAW_KEY_RELEASE;
    // Whose release it is, the press decides; so both are needed for either.
    if (types.testFlag(MonitoredEvent::pointerPress) || types.testFlag(MonitoredEvent::pointerRelease))
        mask |= XCB_INPUT_XI_EVENT_MASK_RAW_BUTTON_PRESS | XCB_INPUT_XI_EVENT_MASK_RAW_BUTTON_RELEASE;
    return mask;
}

} // namespace

X11EventMonitor::X11EventMonitor(X11Connection &connection)
    : m_connection(connection)
    , m_windows(connection)
{
    if (!m_connection.isValid())
        return;
    const auto *extension = xcb_get_extension_data(m_connection.connection(), &xcb_input_id);
    if (!extension || !extension->present)
        return;
    // Since version 2.1 raw events also come while another client grabs the device.
    auto *xcb = m_connection.connection();
    const XcbPointer<xcb_input_xi_query_version_reply_t> version(
        xcb_input_xi_query_version_reply(xcb, xcb_input_xi_query_version(xcb, 2, 2), nullptr));
    if (!version || version->major_version < 2)
        return;
    m_opcode = extension->major_opcode;
    m_events = m_connection.addEventHandler([this](const xcb_generic_event_t &event) { onEvent(event); });
}

X11EventMonitor::~X11EventMonitor() = default;

std::unique_ptr<EventMonitor::Subscription>
X11EventMonitor::addGlobalMonitor(MonitoredEvent::Types types,
                                  std::function<void(const MonitoredEvent &)> handler)
{
    auto watcher = std::make_shared<Watcher>(Watcher{.types = types, .handler = std::move(handler)});
    m_watchers.push_back(watcher);
    selectEvents();
    return std::make_unique<Subscription>([monitor = QPointer(this), watcher] {
        watcher->types = {};
        if (monitor)
            monitor->removeWatcher(watcher);
    });
}

void X11EventMonitor::removeWatcher(const std::shared_ptr<Watcher> &watcher)
{
    std::erase(m_watchers, watcher);
    selectEvents();
}

void X11EventMonitor::selectEvents()
{
    quint32 wanted = 0;
    for (const auto &watcher : m_watchers)
        wanted |= wantedEvents(watcher->types);
    if (m_opcode == 0 || wanted == m_selected)
        return;
    m_selected = wanted;
    m_ownButtons.clear();
    struct
    {
        xcb_input_event_mask_t head;
        quint32 mask;
    } selection{.head = {.deviceid = XCB_INPUT_DEVICE_ALL_MASTER, .mask_len = 1}, .mask = wanted};
    xcb_input_xi_select_events(m_connection.connection(), m_connection.root(), 1, &selection.head);
    m_connection.flush();
}

void X11EventMonitor::onEvent(const xcb_generic_event_t &event)
{
    if (eventKind(event) != XCB_GE_GENERIC)
        return;
    const auto &generic = reinterpret_cast<const xcb_ge_generic_event_t &>(event);
    if (generic.extension != m_opcode || m_watchers.empty())
        return;
    const auto detail = [&] {
        return reinterpret_cast<const xcb_input_raw_button_press_event_t &>(event).detail;
    };
    switch (generic.event_type) {
    case XCB_INPUT_RAW_BUTTON_PRESS:
        onButton(MonitoredEvent::pointerPress, detail());
        break;
    case XCB_INPUT_RAW_BUTTON_RELEASE:
        onButton(MonitoredEvent::pointerRelease, detail());
        break;
    case XCB_INPUT_RAW_KEY_RELEASE:
        if (!QGuiApplication::focusWindow())
            deliver(MonitoredEvent::keyRelease);
        break;
    }
}

void X11EventMonitor::onButton(MonitoredEvent::Type type, quint32 button)
{
    if (button != leftButton && button != rightButton)
        return;
    if (type == MonitoredEvent::pointerPress) {
        if (isPointerOverOwnWindow()) {
            m_ownButtons.insert(button);
            return;
        }
    } else if (m_ownButtons.erase(button) > 0) {
        return; // a drag that began on our window stays ours wherever it ends
    }
    deliver(type);
}

void X11EventMonitor::deliver(MonitoredEvent::Type type)
{
    const MonitoredEvent event{.type = type, .position = pointerPosition()};
    const QPointer self(this);
    const auto watchers = m_watchers;
    for (const auto &watcher : watchers) {
        if (self && watcher->types.testFlag(type)) // a handler may have ended it meanwhile
            watcher->handler(event);
    }
}

bool X11EventMonitor::isPointerOverOwnWindow()
{
    return std::ranges::any_of(m_windows.windowsUnderPointer(), isOwnVisibleWindow);
}

QPoint X11EventMonitor::pointerPosition()
{
    auto *xcb = m_connection.connection();
    const XcbPointer<xcb_query_pointer_reply_t> pointer(
        xcb_query_pointer_reply(xcb, xcb_query_pointer(xcb, m_connection.root()), nullptr));
    return pointer ? logicalPosition({pointer->root_x, pointer->root_y}) : QPoint();
}
