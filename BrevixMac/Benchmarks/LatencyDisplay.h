// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <xcb/damage.h>
#include <xcb/xcb.h>

#include <chrono>
#include <cstdlib>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <sys/types.h>
#include <utility>
#include <vector>

using Clock = std::chrono::steady_clock;

template <typename T>
using Reply = std::unique_ptr<T, decltype(&std::free)>;

template <typename T>
Reply<T> own(T *reply)
{
    return Reply<T>(reply, &std::free);
}

double millisecondsSince(Clock::time_point start);

/// A connection to the display that presses keys and looks at windows as their user would.
class LatencyDisplay
{
public:
    LatencyDisplay();
    ~LatencyDisplay();
    LatencyDisplay(const LatencyDisplay &) = delete;
    LatencyDisplay &operator=(const LatencyDisplay &) = delete;

    xcb_connection_t *connection() const { return m_connection; }
    xcb_window_t root() const { return m_root; }

    /// Keys by their X key codes (evdev code + 8).
    void press(std::initializer_list<xcb_keycode_t> codes) const;
    void release(std::initializer_list<xcb_keycode_t> codes) const;
    void strike(xcb_keycode_t code) const;

    bool isViewable(xcb_window_t window) const;
    std::string wmClass(xcb_window_t window) const;
    std::pair<int, int> size(xcb_window_t window) const;
    /// The process that made a window; 0 when the server does not tell.
    pid_t owner(xcb_window_t window) const;
    /// The windows below @p window, at any depth, that @p matches.
    std::vector<xcb_window_t> find(xcb_window_t window,
                                   const std::function<bool(xcb_window_t)> &matches) const;

private:
    void key(xcb_keycode_t code, bool isDown) const;
    std::vector<xcb_window_t> children(xcb_window_t window) const;

    xcb_connection_t *m_connection = xcb_connect(nullptr, nullptr);
    xcb_window_t m_root = XCB_WINDOW_NONE;
};

/// Follows the windows of one program, by a part of their class, those to come included: when they are
/// mapped, painted and gone.
class WindowWatch
{
public:
    WindowWatch(const LatencyDisplay &display, std::string wmClass);

    /// What a burst of painting looked like from outside.
    struct Painting
    {
        double first = 0; ///< milliseconds from the start to the first damage of a mapped window
        double last = 0;  ///< the same to the last damage, after which it was quiet
    };

    /// Forgets what has arrived so far; what follows is measured from @p start.
    void begin(Clock::time_point start);
    /// Waits for the first painting of a mapped window of the program, then until it stays quiet. @p onFirst
    /// is called in between. Nothing when it takes too long.
    std::optional<Painting> waitForPainting(const std::function<void()> &onFirst = {});
    /// Waits until the window that was painted is no longer mapped; false when it takes too long.
    bool waitUntilGone();

private:
    struct Seen
    {
        bool isMapped = false;
        std::optional<bool> isOfProgram; ///< unknown until it is painted: a new window has no class yet
    };

    void follow(xcb_window_t window);
    void take(const xcb_generic_event_t &event);
    void takeEventsFor(std::chrono::milliseconds time);
    bool isOfProgram(xcb_window_t window, Seen &seen) const;
    bool isNamed(xcb_window_t window) const;
    bool isShown() const;

    const LatencyDisplay &m_display;
    std::string m_class;
    int m_damageEvent = 0;
    std::map<xcb_window_t, Seen> m_windows;
    Clock::time_point m_start;
    std::optional<double> m_first;
    xcb_window_t m_painted = XCB_WINDOW_NONE;
    double m_last = 0;
};
