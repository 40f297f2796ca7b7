// SPDX-License-Identifier: GPL-3.0-or-later
// Holds Super-Shift-P on the display until it is ended, as another program with the same shortcut would.
#include <xcb/xcb.h>

#include <cstdio>
#include <cstdlib>

int main()
{
    xcb_connection_t *connection = xcb_connect(nullptr, nullptr);
    const xcb_window_t root = xcb_setup_roots_iterator(xcb_get_setup(connection)).data->root;
    constexpr xcb_keycode_t pKey = 33;
    const auto cookie = xcb_grab_key_checked(connection, 1, root, XCB_MOD_MASK_4 | XCB_MOD_MASK_SHIFT, pKey,
                                             XCB_GRAB_MODE_ASYNC, XCB_GRAB_MODE_ASYNC);
    if (xcb_request_check(connection, cookie)) {
        std::puts("refused");
        return 1;
    }
    std::puts("holding");
    std::fflush(stdout);
    while (xcb_generic_event_t *event = xcb_wait_for_event(connection))
        std::free(event);
    return 0;
}
