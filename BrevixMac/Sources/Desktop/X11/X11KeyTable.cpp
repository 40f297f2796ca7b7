// SPDX-License-Identifier: GPL-3.0-or-later
#include "X11KeyTable.h"

#include <linux/input-event-codes.h>

#include <algorithm>
#include <array>

namespace {

constexpr int evdevOffset = 8;
constexpr quint8 noKey = KEY_RESERVED;

// clang-format off
// Indexed by key number, eight to a line.
constexpr std::array<quint8, 127> kernelCodes{
    /*   0 */ KEY_A, KEY_S, KEY_D, KEY_F, KEY_H, KEY_G, KEY_Z, KEY_X,
    /*   8 */ KEY_C, KEY_V, KEY_102ND, KEY_B, KEY_Q, KEY_W, KEY_E, KEY_R,
    /*  16 */ KEY_Y, KEY_T, KEY_1, KEY_2, KEY_3, KEY_4, KEY_6, KEY_5,
    /*  24 */ KEY_EQUAL, KEY_9, KEY_7, KEY_MINUS, KEY_8, KEY_0, KEY_RIGHTBRACE, KEY_O,
    /*  32 */ KEY_U, KEY_LEFTBRACE, KEY_I, KEY_P, KEY_ENTER, KEY_L, KEY_J, KEY_APOSTROPHE,
    /*  40 */ KEY_K, KEY_SEMICOLON, KEY_BACKSLASH, KEY_COMMA, KEY_SLASH, KEY_N, KEY_M, KEY_DOT,
    /*  48 */ KEY_TAB, KEY_SPACE, KEY_GRAVE, KEY_BACKSPACE, noKey, KEY_ESC, KEY_RIGHTMETA, KEY_LEFTMETA,
    /*  56 */ KEY_LEFTSHIFT, KEY_CAPSLOCK, KEY_LEFTALT, KEY_LEFTCTRL, KEY_RIGHTSHIFT, KEY_RIGHTALT, KEY_RIGHTCTRL, noKey,
    /*  64 */ KEY_F17, KEY_KPDOT, noKey, KEY_KPASTERISK, noKey, KEY_KPPLUS, noKey, KEY_NUMLOCK,
    /*  72 */ KEY_VOLUMEUP, KEY_VOLUMEDOWN, KEY_MUTE, KEY_KPSLASH, KEY_KPENTER, noKey, KEY_KPMINUS, KEY_F18,
    /*  80 */ KEY_F19, KEY_KPEQUAL, KEY_KP0, KEY_KP1, KEY_KP2, KEY_KP3, KEY_KP4, KEY_KP5,
    /*  88 */ KEY_KP6, KEY_KP7, KEY_F20, KEY_KP8, KEY_KP9, KEY_YEN, KEY_RO, KEY_KPJPCOMMA,
    /*  96 */ KEY_F5, KEY_F6, KEY_F7, KEY_F3, KEY_F8, KEY_F9, KEY_HANJA, KEY_F11,
    /* 104 */ KEY_HANGEUL, KEY_F13, KEY_F16, KEY_F14, noKey, KEY_F10, KEY_COMPOSE, KEY_F12,
    /* 112 */ noKey, KEY_F15, KEY_INSERT, KEY_HOME, KEY_PAGEUP, KEY_DELETE, KEY_F4, KEY_END,
    /* 120 */ KEY_F2, KEY_PAGEDOWN, KEY_F1, KEY_LEFT, KEY_RIGHT, KEY_DOWN, KEY_UP};
// clang-format on

} // namespace

std::optional<quint8> X11KeyTable::keyCode(quint32 keyNumber)
{
    if (keyNumber >= kernelCodes.size() || kernelCodes[keyNumber] == noKey)
        return std::nullopt;
    return quint8(kernelCodes[keyNumber] + evdevOffset);
}

std::optional<quint32> X11KeyTable::keyNumber(quint32 keyCode)
{
    if (keyCode <= evdevOffset || keyCode > 0xff)
        return std::nullopt;
    const auto found = std::ranges::find(kernelCodes, quint8(keyCode - evdevOffset));
    if (found == kernelCodes.end())
        return std::nullopt;
    return quint32(found - kernelCodes.begin());
}
