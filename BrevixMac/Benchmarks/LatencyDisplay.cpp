// SPDX-License-Identifier: GPL-3.0-or-later
#include "LatencyDisplay.h"

#include <xcb/res.h>
#include <xcb/xtest.h>

#include <algorithm>
#include <poll.h>
#include <utility>

namespace {

using namespace std::chrono_literals;

// Painting that pauses for longer than this has ended. Shorter than the blinking of a caret.
constexpr auto quiet = 80ms;
constexpr auto patience = 3s;
constexpr int smallestWindow = 100;

} // namespace

double millisecondsSince(Clock::time_point start)
{
    return std::chrono::duration<double, std::milli>(Clock::now() - start).count();
}

LatencyDisplay::LatencyDisplay()
{
    if (!xcb_connection_has_error(m_connection))
        m_root = xcb_setup_roots_iterator(xcb_get_setup(m_connection)).data->root;
}

LatencyDisplay::~LatencyDisplay()
{
    xcb_disconnect(m_connection);
}

void LatencyDisplay::key(xcb_keycode_t code, bool isDown) const
{
    xcb_test_fake_input(m_connection, isDown ? XCB_KEY_PRESS : XCB_KEY_RELEASE, code, XCB_CURRENT_TIME,
                        m_root, 0, 0, 0);
}

void LatencyDisplay::press(std::initializer_list<xcb_keycode_t> codes) const
{
    for (const xcb_keycode_t code : codes)
        key(code, true);
    xcb_flush(m_connection);
}

void LatencyDisplay::release(std::initializer_list<xcb_keycode_t> codes) const
{
    for (const xcb_keycode_t code : codes)
        key(code, false);
    xcb_flush(m_connection);
}

void LatencyDisplay::strike(xcb_keycode_t code) const
{
    press({code});
    release({code});
}

std::vector<xcb_window_t> LatencyDisplay::children(xcb_window_t window) const
{
    const auto reply = own(xcb_query_tree_reply(m_connection, xcb_query_tree(m_connection, window), nullptr));
    if (!reply)
        return {};
    const xcb_window_t *first = xcb_query_tree_children(reply.get());
    return {first, first + xcb_query_tree_children_length(reply.get())};
}

bool LatencyDisplay::isViewable(xcb_window_t window) const
{
    const auto reply = own(xcb_get_window_attributes_reply(
        m_connection, xcb_get_window_attributes(m_connection, window), nullptr));
    return reply && reply->map_state == XCB_MAP_STATE_VIEWABLE;
}

std::string LatencyDisplay::wmClass(xcb_window_t window) const
{
    const auto cookie = xcb_get_property(m_connection, 0, window, XCB_ATOM_WM_CLASS, XCB_ATOM_STRING, 0, 64);
    const auto reply = own(xcb_get_property_reply(m_connection, cookie, nullptr));
    if (!reply)
        return {};
    return {static_cast<const char *>(xcb_get_property_value(reply.get())),
            static_cast<std::size_t>(xcb_get_property_value_length(reply.get()))};
}

std::pair<int, int> LatencyDisplay::size(xcb_window_t window) const
{
    const auto reply =
        own(xcb_get_geometry_reply(m_connection, xcb_get_geometry(m_connection, window), nullptr));
    return reply ? std::pair<int, int>(reply->width, reply->height) : std::pair<int, int>(0, 0);
}

pid_t LatencyDisplay::owner(xcb_window_t window) const
{
    xcb_res_client_id_spec_t spec{.client = window, .mask = XCB_RES_CLIENT_ID_MASK_LOCAL_CLIENT_PID};
    const auto reply = own(xcb_res_query_client_ids_reply(
        m_connection, xcb_res_query_client_ids(m_connection, 1, &spec), nullptr));
    if (!reply)
        return 0;
    const auto ids = xcb_res_query_client_ids_ids_iterator(reply.get());
    return ids.rem > 0 ? static_cast<pid_t>(*xcb_res_client_id_value_value(ids.data)) : 0;
}

std::vector<xcb_window_t> LatencyDisplay::find(xcb_window_t window,
                                               const std::function<bool(xcb_window_t)> &matches) const
{
    std::vector<xcb_window_t> found;
    for (const xcb_window_t child : children(window)) {
        if (matches(child))
            found.push_back(child);
        const auto below = find(child, matches);
        found.insert(found.end(), below.begin(), below.end());
    }
    return found;
}

WindowWatch::WindowWatch(const LatencyDisplay &display, std::string wmClass)
    : m_display(display)
    , m_class(std::move(wmClass))
{
    auto *connection = display.connection();
    m_damageEvent = xcb_get_extension_data(connection, &xcb_damage_id)->first_event + XCB_DAMAGE_NOTIFY;
    own(xcb_damage_query_version_reply(connection, xcb_damage_query_version(connection, 1, 1), nullptr));
    const uint32_t mask = XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY;
    xcb_change_window_attributes(connection, display.root(), XCB_CW_EVENT_MASK, &mask);
    for (const xcb_window_t window :
         display.find(display.root(), [this](xcb_window_t each) { return isNamed(each); }))
        follow(window);
}

bool WindowWatch::isNamed(xcb_window_t window) const
{
    return m_display.wmClass(window).find(m_class) != std::string::npos;
}

bool WindowWatch::isOfProgram(xcb_window_t window, Seen &seen) const
{
    if (!seen.isOfProgram) {
        const auto [width, height] = m_display.size(window);
        seen.isOfProgram = isNamed(window) && std::min(width, height) >= smallestWindow;
    }
    return *seen.isOfProgram;
}

void WindowWatch::follow(xcb_window_t window)
{
    if (m_windows.contains(window))
        return;
    auto *connection = m_display.connection();
    const uint32_t mask = XCB_EVENT_MASK_STRUCTURE_NOTIFY;
    xcb_change_window_attributes(connection, window, XCB_CW_EVENT_MASK, &mask);
    xcb_damage_create(connection, xcb_generate_id(connection), window,
                      XCB_DAMAGE_REPORT_LEVEL_RAW_RECTANGLES);
    m_windows[window].isMapped = m_display.isViewable(window);
}

void WindowWatch::take(const xcb_generic_event_t &event)
{
    const int type = event.response_type & 0x7f;
    if (type == XCB_CREATE_NOTIFY) {
        follow(reinterpret_cast<const xcb_create_notify_event_t &>(event).window);
    } else if (type == XCB_MAP_NOTIFY) {
        const auto window = reinterpret_cast<const xcb_map_notify_event_t &>(event).window;
        if (const auto found = m_windows.find(window); found != m_windows.end())
            found->second.isMapped = true;
    } else if (type == XCB_UNMAP_NOTIFY) {
        const auto window = reinterpret_cast<const xcb_unmap_notify_event_t &>(event).window;
        if (const auto found = m_windows.find(window); found != m_windows.end())
            found->second.isMapped = false;
    } else if (type == XCB_DESTROY_NOTIFY) {
        m_windows.erase(reinterpret_cast<const xcb_destroy_notify_event_t &>(event).window);
    } else if (type == m_damageEvent) {
        const double moment = millisecondsSince(m_start);
        const auto window = reinterpret_cast<const xcb_damage_notify_event_t &>(event).drawable;
        const auto found = m_windows.find(window);
        if (found == m_windows.end() || !found->second.isMapped || !isOfProgram(window, found->second))
            return;
        m_first = m_first.value_or(moment);
        m_painted = window;
        m_last = moment;
    }
}

void WindowWatch::takeEventsFor(std::chrono::milliseconds time)
{
    pollfd descriptor{.fd = xcb_get_file_descriptor(m_display.connection()), .events = POLLIN, .revents = 0};
    // Events may have been read already together with a reply.
    while (const auto event = own(xcb_poll_for_queued_event(m_display.connection())))
        take(*event);
    poll(&descriptor, 1, int(time.count()));
    while (const auto event = own(xcb_poll_for_event(m_display.connection())))
        take(*event);
}

void WindowWatch::begin(Clock::time_point start)
{
    takeEventsFor(0ms);
    m_start = start;
    m_first.reset();
    m_last = 0;
}

std::optional<WindowWatch::Painting> WindowWatch::waitForPainting(const std::function<void()> &onFirst)
{
    const auto end = Clock::now() + patience;
    while (!m_first && Clock::now() < end)
        takeEventsFor(20ms);
    if (!m_first)
        return std::nullopt;
    if (onFirst)
        onFirst();
    while (millisecondsSince(m_start) - m_last < double(quiet.count()) && Clock::now() < end)
        takeEventsFor(5ms);
    return Painting{*m_first, m_last};
}

bool WindowWatch::isShown() const
{
    const auto found = m_windows.find(m_painted);
    return found != m_windows.end() && found->second.isMapped;
}

bool WindowWatch::waitUntilGone()
{
    const auto end = Clock::now() + 1s;
    while (isShown() && Clock::now() < end)
        takeEventsFor(20ms);
    return !isShown();
}
