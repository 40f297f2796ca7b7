// SPDX-License-Identifier: GPL-3.0-or-later
#include "X11Keyboard.h"

// The header names a struct member with a C++ keyword.
#define explicit explicit_
#include <xcb/xkb.h>
#undef explicit

#include <algorithm>

namespace {

constexpr xcb_keysym_t numLock = 0xff7f;
constexpr xcb_keysym_t modeSwitch = 0xff7e;
constexpr xcb_keysym_t level3Shift = 0xfe03;
constexpr xcb_keysym_t capsLock = 0xffe5;
constexpr xcb_keysym_t scrollLock = 0xff14;
constexpr xcb_keysym_t letterV = 0x0076;
constexpr xcb_keysym_t insertKey = 0xff63;

bool isLatin(xcb_keysym_t keysym)
{
    return keysym >= 0x20 && keysym <= 0xff;
}

bool isLock(xcb_keysym_t keysym)
{
    return keysym == numLock || keysym == capsLock || keysym == scrollLock;
}

bool useXkb(X11Connection &connection)
{
    const auto *extension = xcb_get_extension_data(connection.connection(), &xcb_xkb_id);
    if (!extension || !extension->present)
        return false;
    const auto cookie = xcb_xkb_use_extension(connection.connection(), 1, 0);
    const XcbPointer<xcb_xkb_use_extension_reply_t> reply(
        xcb_xkb_use_extension_reply(connection.connection(), cookie, nullptr));
    return reply && reply->supported;
}

int readActiveGroup(X11Connection &connection)
{
    const auto cookie = xcb_xkb_get_state(connection.connection(), XCB_XKB_ID_USE_CORE_KBD);
    const XcbPointer<xcb_xkb_get_state_reply_t> state(
        xcb_xkb_get_state_reply(connection.connection(), cookie, nullptr));
    return state ? state->group : 0;
}

} // namespace

X11Keyboard::X11Keyboard(X11Connection &connection)
{
    if (!connection.isValid() || !useXkb(connection))
        return;
    m_activeGroup = readActiveGroup(connection);
    readKeys(connection);
    readModifiers(connection);
}

quint8 X11Keyboard::tellRepeatsApart(X11Connection &connection)
{
    auto *xcb = connection.connection();
    const auto *extension = xcb_get_extension_data(xcb, &xcb_xkb_id);
    if (!extension || !extension->present)
        return 0;
    xcb_discard_reply(xcb, xcb_xkb_use_extension(xcb, 1, 0).sequence);
    const auto flags =
        xcb_xkb_per_client_flags(xcb, XCB_XKB_ID_USE_CORE_KBD, XCB_XKB_PER_CLIENT_FLAG_DETECTABLE_AUTO_REPEAT,
                                 XCB_XKB_PER_CLIENT_FLAG_DETECTABLE_AUTO_REPEAT, 0, 0, 0);
    xcb_discard_reply(xcb, flags.sequence);
    return extension->first_event;
}

void X11Keyboard::readKeys(X11Connection &connection)
{
    auto *xcb = connection.connection();
    // The full part "key symbols"; no range of any other part.
    const auto cookie = xcb_xkb_get_map(xcb, XCB_XKB_ID_USE_CORE_KBD, XCB_XKB_MAP_PART_KEY_SYMS, 0, 0, 0, 0,
                                        0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0);
    const XcbPointer<xcb_xkb_get_map_reply_t> reply(xcb_xkb_get_map_reply(xcb, cookie, nullptr));
    if (!reply)
        return;
    xcb_xkb_get_map_map_t map = {};
    xcb_xkb_get_map_map_unpack(xcb_xkb_get_map_map(reply.get()), reply->nTypes, reply->nKeySyms,
                               reply->nKeyActions, reply->totalActions, reply->totalKeyBehaviors,
                               reply->virtualMods, reply->totalKeyExplicit, reply->totalModMapKeys,
                               reply->totalVModMapKeys, reply->present, &map);
    auto keys = xcb_xkb_get_map_map_syms_rtrn_iterator(reply.get(), &map);
    for (xcb_keycode_t code = reply->firstKeySym; keys.rem > 0; xcb_xkb_key_sym_map_next(&keys), ++code) {
        const auto *symbols = xcb_xkb_key_sym_map_syms(keys.data);
        const int groupCount = keys.data->groupInfo & 0x0f;
        Key key{.code = code, .unshifted = {}};
        for (int group = 0; group < groupCount; ++group)
            key.unshifted.append(symbols[ptrdiff_t(group) * keys.data->width]);
        if (groupCount > 0)
            m_keys.append(std::move(key));
    }
}

void X11Keyboard::readModifiers(X11Connection &connection)
{
    auto *xcb = connection.connection();
    const auto mappingCookie = xcb_get_modifier_mapping(xcb);
    const auto keymapCookie = xcb_query_keymap(xcb);
    const XcbPointer<xcb_get_modifier_mapping_reply_t> mapping(
        xcb_get_modifier_mapping_reply(xcb, mappingCookie, nullptr));
    const XcbPointer<xcb_query_keymap_reply_t> keymap(xcb_query_keymap_reply(xcb, keymapCookie, nullptr));
    if (!mapping || !keymap)
        return;
    const ptrdiff_t width = mapping->keycodes_per_modifier;
    const auto *codes = xcb_get_modifier_mapping_keycodes(mapping.get());
    for (int modifier = XCB_MAP_INDEX_SHIFT; modifier <= XCB_MAP_INDEX_5; ++modifier) {
        QList<xcb_keycode_t> keys(codes + modifier * width, codes + (modifier + 1) * width);
        keys.removeAll(0);
        m_modifiers.append(keys);
    }
    for (int code = 0; code < 256; ++code) {
        if (keymap->keys[code / 8] & (1 << (code % 8)))
            m_down.insert(xcb_keycode_t(code));
    }
}

xcb_keysym_t X11Keyboard::symbol(const Key &key, int group) const
{
    return key.unshifted.at(group %
                            key.unshifted.size()); // groups beyond the last wrap around, XKB's default
}

std::optional<xcb_keycode_t> X11Keyboard::shortcutKey(xcb_keysym_t keysym) const
{
    for (const Key &key : m_keys) {
        if (symbol(key, m_activeGroup) == keysym)
            return key.code;
    }
    for (const Key &key : m_keys) {
        if (key.unshifted.contains(keysym) && !isLatin(symbol(key, m_activeGroup)))
            return key.code;
    }
    return std::nullopt;
}

std::optional<xcb_keycode_t> X11Keyboard::key(xcb_keysym_t keysym) const
{
    const auto found = std::find_if(m_keys.begin(), m_keys.end(),
                                    [&](const Key &key) { return key.unshifted.contains(keysym); });
    return found == m_keys.end() ? std::nullopt : std::optional(found->code);
}

std::optional<xcb_keycode_t> X11Keyboard::modifierKey(int modifier) const
{
    if (modifier >= m_modifiers.size() || m_modifiers.at(modifier).isEmpty())
        return std::nullopt;
    return m_modifiers.at(modifier).first();
}

QList<xcb_keycode_t> X11Keyboard::pasteChord(PasteConvention convention) const
{
    const auto control = modifierKey(XCB_MAP_INDEX_CONTROL);
    const auto shift = modifierKey(XCB_MAP_INDEX_SHIFT);
    const auto v = shortcutKey(letterV);
    const auto insert = key(insertKey);
    if (convention == PasteConvention::standard && control && v)
        return {*control, *v};
    if (convention == PasteConvention::terminal && control && shift && v)
        return {*control, *shift, *v};
    if (shift && insert)
        return {*shift, *insert};
    return {};
}

bool X11Keyboard::isDown(xcb_keycode_t key) const
{
    return m_down.contains(key);
}

bool X11Keyboard::isModifierHeld() const
{
    for (const Key &key : m_keys) {
        if (!m_down.contains(key.code) || isLock(symbol(key, m_activeGroup)))
            continue;
        const xcb_keysym_t keysym = symbol(key, m_activeGroup);
        const bool isModifier = std::any_of(m_modifiers.begin(), m_modifiers.end(),
                                            [&](const auto &keys) { return keys.contains(key.code); });
        if (isModifier || keysym == level3Shift || keysym == modeSwitch)
            return true;
    }
    return false;
}
