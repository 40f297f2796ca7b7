// SPDX-License-Identifier: GPL-3.0-or-later
// Measures running programs from outside, as an X client that sees what a user sees.
//
//   desktop_latency start BREVIX RUNS        starts it, until its icon is on screen in the tray
//   desktop_latency shown CLASS KEY RUNS     from Super+Shift+KEY to a window of that class mapped and
//   painted;
//                                            Escape closes it again
//   desktop_latency typed CLASS RUNS KEY…    from each key of a word to the repainted window, which is open
//   and has
//                                            the focus; BackSpace takes the word back
//
// KEY is an X key code (evdev code + 8). Prints medians and 95th percentiles in milliseconds. Needs a running
// display.
#include "LatencyDisplay.h"

#include <algorithm>
#include <csignal>
#include <cstdio>
#include <string>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>
#include <vector>

namespace {

using namespace std::chrono_literals;

constexpr xcb_keycode_t superKey = 133;
constexpr xcb_keycode_t shiftKey = 50;
constexpr xcb_keycode_t escapeKey = 9;
constexpr xcb_keycode_t backSpaceKey = 22;
constexpr int warmUps = 5;

void report(const char *what, std::vector<double> values)
{
    std::sort(values.begin(), values.end());
    const auto at = [&](double share) {
        return values[std::min(values.size() - 1, std::size_t(share * double(values.size())))];
    };
    std::printf("%-44s median %6.1f ms   95 %% %6.1f ms   (%zu runs)\n", what, at(0.5), at(0.95),
                values.size());
}

struct Paintings
{
    std::vector<double> first;
    std::vector<double> last;

    void add(const WindowWatch::Painting &painting)
    {
        first.push_back(painting.first);
        last.push_back(painting.last);
    }
};

int measureStart(const char *binary, int runs)
{
    const LatencyDisplay display;
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
            shown = !display.find(display.root(), isIcon).empty();
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

/// Escape, until it is heard: a window that has just come up may not have the keyboard yet.
bool close(const LatencyDisplay &display, WindowWatch &watch)
{
    for (int attempt = 0; attempt < 4; ++attempt) {
        display.strike(escapeKey);
        if (watch.waitUntilGone())
            return true;
    }
    return false;
}

int measureShown(const char *wmClass, xcb_keycode_t key, int runs)
{
    const LatencyDisplay display;
    WindowWatch watch(display, wmClass);
    Paintings paintings;
    for (int run = 0; run < runs + warmUps; ++run) {
        std::this_thread::sleep_for(150ms); // the pace of a user
        watch.begin(Clock::now());
        display.press({superKey, shiftKey, key});
        const auto painting = watch.waitForPainting([&] { display.release({key, shiftKey, superKey}); });
        if (!painting) {
            display.release({key, shiftKey, superKey});
            std::fprintf(stderr, "no window of %s appeared\n", wmClass);
            return 1;
        }
        if (run >= warmUps)
            paintings.add(*painting);
        std::this_thread::sleep_for(150ms);
        if (!close(display, watch)) {
            std::fprintf(stderr, "the window of %s stayed\n", wmClass);
            return 1;
        }
    }
    report("hotkey to the window mapped and painted", paintings.first);
    report("hotkey to the window painted and quiet", paintings.last);
    return 0;
}

int measureTyped(const char *wmClass, int runs, const std::vector<xcb_keycode_t> &word)
{
    const LatencyDisplay display;
    WindowWatch watch(display, wmClass);
    Paintings paintings;
    const auto strike = [&](xcb_keycode_t key) {
        watch.begin(Clock::now());
        display.strike(key);
        return watch.waitForPainting();
    };
    for (int run = 0; run < runs + 1; ++run) {
        for (const xcb_keycode_t key : word) {
            const auto painting = strike(key);
            if (!painting) {
                std::fprintf(stderr, "the window of %s was not repainted\n", wmClass);
                return 1;
            }
            if (run > 0)
                paintings.add(*painting);
        }
        for (std::size_t taken = 0; taken < word.size(); ++taken)
            strike(backSpaceKey);
    }
    report("key to the first repainting", paintings.first);
    report("key to the window repainted and quiet", paintings.last);
    return 0;
}

} // namespace

int main(int argc, char **argv)
{
    const std::string command = argc > 1 ? argv[1] : "";
    if (command == "start" && argc == 4)
        return measureStart(argv[2], std::atoi(argv[3]));
    if (command == "shown" && argc == 5)
        return measureShown(argv[2], xcb_keycode_t(std::atoi(argv[3])), std::atoi(argv[4]));
    if (command == "typed" && argc > 4) {
        std::vector<xcb_keycode_t> word;
        for (int index = 4; index < argc; ++index)
            word.push_back(xcb_keycode_t(std::atoi(argv[index])));
        return measureTyped(argv[2], std::atoi(argv[3]), word);
    }
    std::fprintf(
        stderr,
        "usage: desktop_latency start BREVIX RUNS | shown CLASS KEY RUNS | typed CLASS RUNS KEY...\n");
    return 64;
}
