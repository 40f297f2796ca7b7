// SPDX-License-Identifier: GPL-3.0-or-later
#include "X11Modifiers.h"

#include "X11Connection.h"

#define XK_MISCELLANY
#include <X11/keysymdef.h>
#include <xcb/xcb_keysyms.h>

#include <array>
#include <utility>

namespace {

constexpr quint64 shiftFlag = 0x20000;
constexpr quint64 controlFlag = 0x40000;
constexpr quint64 optionFlag = 0x80000;
constexpr quint64 commandFlag = 0x100000;

constexpr int modifierCount = 8;
constexpr int columnCount = 4; // of a key's symbols: two levels of two groups

struct KeySymbolsDeleter
{
    void operator()(xcb_key_symbols_t *symbols) const { xcb_key_symbols_free(symbols); }
};
using KeySymbols = std::unique_ptr<xcb_key_symbols_t, KeySymbolsDeleter>;

struct Found
{
    quint16 alt = 0;
    quint16 meta = 0;
    quint16 super = 0;
    quint16 numLock = 0;
    quint16 scrollLock = 0;

    void note(xcb_keysym_t symbol, quint16 bit)
    {
        switch (symbol) {
        case XK_Alt_L:
        case XK_Alt_R:
            alt |= bit;
            break;
        case XK_Meta_L:
        case XK_Meta_R:
            meta |= bit;
            break;
        case XK_Super_L:
        case XK_Super_R:
            super |= bit;
            break;
        case XK_Num_Lock:
            numLock |= bit;
            break;
        case XK_Scroll_Lock:
            scrollLock |= bit;
            break;
        }
    }
};

Found findModifiers(xcb_connection_t *connection)
{
    Found found;
    const KeySymbols symbols(xcb_key_symbols_alloc(connection));
    const XcbPointer<xcb_get_modifier_mapping_reply_t> map(
        xcb_get_modifier_mapping_reply(connection, xcb_get_modifier_mapping(connection), nullptr));
    if (!symbols || !map)
        return found;
    const xcb_keycode_t *codes = xcb_get_modifier_mapping_keycodes(map.get());
    const int perModifier = map->keycodes_per_modifier;
    for (int index = 0; index < modifierCount * perModifier; ++index) {
        if (codes[index] == 0)
            continue;
        for (int column = 0; column < columnCount; ++column)
            found.note(xcb_key_symbols_get_keysym(symbols.get(), codes[index], column),
                       quint16(1U << (index / perModifier)));
    }
    return found;
}

} // namespace

X11Modifiers X11Modifiers::read(X11Connection &connection)
{
    if (!connection.isValid())
        return {};
    const Found found = findModifiers(connection.connection());
    X11Modifiers modifiers{.shift = XCB_MOD_MASK_SHIFT,
                           .control = XCB_MOD_MASK_CONTROL,
                           .option = found.alt,
                           .command = found.super ? found.super : quint16(found.meta & ~found.alt),
                           .capsLock = XCB_MOD_MASK_LOCK,
                           .numLock = found.numLock,
                           .scrollLock = found.scrollLock};
    // A map that puts a lock on a real modifier's bit must not make that modifier optional.
    modifiers.numLock &= quint16(~modifiers.all());
    modifiers.scrollLock &= quint16(~modifiers.all());
    return modifiers;
}

std::optional<quint16> X11Modifiers::mask(quint64 modifiers) const
{
    const std::array<std::pair<quint64, quint16>, 4> table{
        {{shiftFlag, shift}, {controlFlag, control}, {optionFlag, option}, {commandFlag, command}}};
    quint16 mask = 0;
    for (const auto &[flag, bits] : table) {
        if (!(modifiers & flag))
            continue;
        if (bits == 0)
            return std::nullopt;
        mask |= bits;
    }
    return mask;
}

quint64 X11Modifiers::flags(quint16 state) const
{
    return (state & shift ? shiftFlag : 0) | (state & control ? controlFlag : 0) |
           (state & option ? optionFlag : 0) | (state & command ? commandFlag : 0);
}
