// SPDX-License-Identifier: GPL-3.0-or-later
// Measures a running Brevix from outside, as an X client that sees what a user sees.
//
//   desktop_latency start BREVIX RUNS   starts it, until its icon is on screen in the tray
//   desktop_latency panel RUNS          from the hotkey to the picker mapped and painted, warm
//
// Prints the median and the 95th percentile in milliseconds. Needs a running display with a tray host.
#include <xcb/damage.h>
#include <xcb/res.h>
#include <xcb/xcb.h>
#include <xcb/xtest.h>

#include <algorithm>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <memory>
#include <poll.h>
#include <string>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>
#include <vector>

namespace {

using Clock = std::chrono::steady_clock;
using namespace std::chrono_literals;

template <typename T>
using Reply = std::unique_ptr<T, decltype(&std::free)>;

template <typename T>
Reply<T> own(T *reply)
{
    return Reply<T>(reply, &std::free);
}

// Physical keys by their X key codes (evdev code + 8).
constexpr xcb_keycode_t superKey = 133;
constexpr xcb_keycode_t shiftKey = 50;
constexpr xcb_keycode_t pKey = 33;
constexpr xcb_keycode_t escapeKey = 9;

struct Display
{
    xcb_connection_t *connection = xcb_connect(nullptr, nullptr);
    xcb_window_t root = xcb_setup_roots_iterator(xcb_get_setup(connection)).data->root;

    ~Display() { xcb_disconnect(connection); }

    void key(xcb_keycode_t code, bool down) const
    {
        xcb_test_fake_input(connection, down ? XCB_KEY_PRESS : XCB_KEY_RELEASE, code, XCB_CURRENT_TIME, root,
                            0, 0, 0);
    }

    void press(std::initializer_list<xcb_keycode_t> codes) const
    {
        for (const xcb_keycode_t code : codes)
            key(code, true);
        xcb_flush(connection);
    }

    void release(std::initializer_list<xcb_keycode_t> codes) const
    {
        for (const xcb_keycode_t code : codes)
            key(code, false);
        xcb_flush(connection);
    }

    std::vector<xcb_window_t> children(xcb_window_t window) const
    {
        const auto reply = own(xcb_query_tree_reply(connection, xcb_query_tree(connection, window), nullptr));
        if (!reply)
            return {};
        const xcb_window_t *first = xcb_query_tree_children(reply.get());
        return {first, first + xcb_query_tree_children_length(reply.get())};
    }

    bool isViewable(xcb_window_t window) const
    {
        const auto reply = own(xcb_get_window_attributes_reply(
            connection, xcb_get_window_attributes(connection, window), nullptr));
        return reply && reply->map_state == XCB_MAP_STATE_VIEWABLE;
    }

    std::pair<int, int> size(xcb_window_t window) const
    {
        const auto reply =
            own(xcb_get_geometry_reply(connection, xcb_get_geometry(connection, window), nullptr));
        return reply ? std::pair<int, int>(reply->width, reply->height) : std::pair<int, int>(0, 0);
    }

    std::string wmClass(xcb_window_t window) const
    {
        const auto reply = own(xcb_get_property_reply(
            connection, xcb_get_property(connection, 0, window, XCB_ATOM_WM_CLASS, XCB_ATOM_STRING, 0, 64),
            nullptr));
        if (!reply)
            return {};
        return {static_cast<const char *>(xcb_get_property_value(reply.get())),
                static_cast<std::size_t>(xcb_get_property_value_length(reply.get()))};
    }

    pid_t owner(xcb_window_t window) const
    {
        xcb_res_client_id_spec_t spec{.client = window, .mask = XCB_RES_CLIENT_ID_MASK_LOCAL_CLIENT_PID};
        const auto reply = own(xcb_res_query_client_ids_reply(
            connection, xcb_res_query_client_ids(connection, 1, &spec), nullptr));
        if (!reply)
            return 0;
        const auto ids = xcb_res_query_client_ids_ids_iterator(reply.get());
        return ids.rem > 0 ? static_cast<pid_t>(*xcb_res_client_id_value_value(ids.data)) : 0;
    }

    /// The first window below @p window that @p matches.
    xcb_window_t find(xcb_window_t window, const std::function<bool(xcb_window_t)> &matches) const
    {
        for (const xcb_window_t child : children(window)) {
            if (matches(child))
                return child;
            if (const xcb_window_t found = find(child, matches))
                return found;
        }
        return XCB_NONE;
    }
};

void report(const char *what, std::vector<double> values)
{
    std::sort(values.begin(), values.end());
    const auto at = [&](double share) {
        return values[std::min(values.size() - 1, std::size_t(share * values.size()))];
    };
    std::printf("%-44s median %6.1f ms   95 %% %6.1f ms   (%zu runs)\n", what, at(0.5), at(0.95),
                values.size());
}

double millisecondsSince(Clock::time_point start)
{
    return std::chrono::duration<double, std::milli>(Clock::now() - start).count();
}

int measureStart(const char *binary, int runs)
{
    const Display display;
    std::vector<double> values;
    for (int run = 0; run < runs; ++run) {
        const auto start = Clock::now();
        const pid_t pid = fork();
        if (pid == 0) {
            execl(binary, binary, "--local", nullptr);
            _exit(127);
        }
        const auto isIcon = [&](xcb_window_t window) {
            return display.owner(window) == pid && display.isViewable(window);
        };
        bool shown = false;
        while (!shown && millisecondsSince(start) < 5000) {
            shown = display.find(display.root, isIcon) != XCB_NONE;
            std::this_thread::sleep_for(1ms);
        }
        values.push_back(millisecondsSince(start));
        kill(pid, SIGTERM);
        waitpid(pid, nullptr, 0);
        if (!shown) {
            std::fprintf(stderr, "no icon appeared\n");
            return 1;
        }
    }
    report("start to tray icon", values);
    return 0;
}

/// Waits for the events until @p done; false after two seconds.
bool waitForEvents(const Display &display, const std::function<bool(const xcb_generic_event_t &)> &done)
{
    const auto start = Clock::now();
    while (millisecondsSince(start) < 2000) {
        while (const auto event = own(xcb_poll_for_event(display.connection))) {
            if (done(*event))
                return true;
        }
        pollfd descriptor{.fd = xcb_get_file_descriptor(display.connection), .events = POLLIN, .revents = 0};
        poll(&descriptor, 1, 20);
    }
    return false;
}

int measurePanel(int runs)
{
    const Display display;
    const auto isPanel = [&](xcb_window_t window) {
        return display.size(window) == std::pair(520, 640) &&
               display.wmClass(window).find("brevix") != std::string::npos;
    };
    const xcb_window_t panel = display.find(display.root, isPanel);
    if (panel == XCB_NONE) {
        std::fprintf(stderr, "no picker window found\n");
        return 1;
    }
    const auto *extension = xcb_get_extension_data(display.connection, &xcb_damage_id);
    free(xcb_damage_query_version_reply(display.connection,
                                        xcb_damage_query_version(display.connection, 1, 1), nullptr));
    const uint32_t mask = XCB_EVENT_MASK_STRUCTURE_NOTIFY;
    xcb_change_window_attributes(display.connection, panel, XCB_CW_EVENT_MASK, &mask);
    const xcb_damage_damage_t damage = xcb_generate_id(display.connection);
    xcb_damage_create(display.connection, damage, panel, XCB_DAMAGE_REPORT_LEVEL_RAW_RECTANGLES);

    std::vector<double> values;
    constexpr int warmUps = 5;
    for (int run = 0; run < runs + warmUps; ++run) {
        std::this_thread::sleep_for(150ms);
        bool mapped = false;
        bool painted = false;
        const auto start = Clock::now();
        display.press({superKey, shiftKey, pKey});
        const bool shown = waitForEvents(display, [&](const xcb_generic_event_t &event) {
            const int type = event.response_type & 0x7f;
            mapped = mapped || type == XCB_MAP_NOTIFY;
            painted = painted || (mapped && type == extension->first_event + XCB_DAMAGE_NOTIFY);
            return painted;
        });
        const double value = millisecondsSince(start);
        display.release({pKey, shiftKey, superKey});
        if (!shown) {
            std::fprintf(stderr, "the picker did not appear (mapped: %d)\n", mapped);
            return 1;
        }
        if (run >= warmUps)
            values.push_back(value);
        std::this_thread::sleep_for(150ms);
        display.press({escapeKey});
        display.release({escapeKey});
        waitForEvents(display, [](const xcb_generic_event_t &event) {
            return (event.response_type & 0x7f) == XCB_UNMAP_NOTIFY;
        });
    }
    report("hotkey to the picker mapped and painted", values);
    return 0;
}

} // namespace

int main(int argc, char **argv)
{
    const std::string command = argc > 1 ? argv[1] : "";
    if (command == "start" && argc == 4)
        return measureStart(argv[2], std::atoi(argv[3]));
    if (command == "panel" && argc == 3)
        return measurePanel(std::atoi(argv[2]));
    std::fprintf(stderr, "usage: desktop_latency start BREVIX RUNS | panel RUNS\n");
    return 64;
}
