// SPDX-License-Identifier: GPL-3.0-or-later
#include "X11HotKeys.h"

#include "X11KeyTable.h"
#include "X11Keyboard.h"
#include "X11Modifiers.h"

#include <QLoggingCategory>

#define explicit explicit_ // a field name of xcb's that is a word of the language
#include <xcb/xkb.h>
#undef explicit

#include <vector>

namespace {

Q_LOGGING_CATEGORY(log, "brevix.hotkey", QtInfoMsg)

// Longer than any auto-repeat delay: with no release seen for so long, the release was missed.
constexpr xcb_timestamp_t longestRepeatDelay = 3000;

// Changes of the keyboard's map as well: a client of the keyboard extension is told of these in the
// extension's own way only. Returns the extension's event.
quint8 setUpKeyboard(X11Connection &connection)
{
    const quint8 event = X11Keyboard::tellRepeatsApart(connection);
    if (event == 0)
        return 0;
    constexpr quint16 keyboards = XCB_XKB_EVENT_TYPE_NEW_KEYBOARD_NOTIFY;
    constexpr quint16 maps = XCB_XKB_EVENT_TYPE_MAP_NOTIFY;
    constexpr quint16 parts = XCB_XKB_MAP_PART_KEY_SYMS | XCB_XKB_MAP_PART_MODIFIER_MAP;
    xcb_xkb_select_events(connection.connection(), XCB_XKB_ID_USE_CORE_KBD, keyboards | maps, 0,
                          keyboards | maps, parts, parts, nullptr);
    return event;
}

// Whether the modifiers may have moved. All events of the keyboard extension share one number.
bool isMappingChange(const xcb_generic_event_t &event, quint8 keyboardEvent)
{
    const quint8 type = eventKind(event);
    if (type == XCB_MAPPING_NOTIFY)
        return true;
    return keyboardEvent != 0 && type == keyboardEvent &&
           (event.pad0 == XCB_XKB_NEW_KEYBOARD_NOTIFY || event.pad0 == XCB_XKB_MAP_NOTIFY);
}

} // namespace

X11HotKeys::X11HotKeys(X11Connection &connection)
    : m_connection(connection)
{
    if (!m_connection.isValid())
        return;
    m_keyboardEvent = setUpKeyboard(m_connection);
    m_events = m_connection.addEventHandler([this](const xcb_generic_event_t &event) { onEvent(event); });
}

X11HotKeys::~X11HotKeys()
{
    release();
}

bool X11HotKeys::registerHotKey(quint32 keyCode, quint64 modifiers)
{
    unregisterHotKey();
    const Wish wish{.keyNumber = keyCode, .modifiers = modifiers};
    const auto grab = grabFor(wish);
    if (!grab || !take(*grab))
        return false;
    m_wish = wish;
    return true;
}

void X11HotKeys::unregisterHotKey()
{
    m_wish.reset();
    release();
}

std::optional<X11HotKeys::Grab> X11HotKeys::grabFor(const Wish &wish)
{
    const auto keyCode = X11KeyTable::keyCode(wish.keyNumber);
    const X11Modifiers modifiers = X11Modifiers::read(m_connection);
    const auto mask = modifiers.mask(wish.modifiers);
    if (!m_connection.isValid() || !keyCode || !mask)
        return std::nullopt;
    Grab grab{.keyCode = *keyCode, .modifiers = *mask, .withLocks = {*mask}};
    for (const quint16 lock : {modifiers.capsLock, modifiers.numLock, modifiers.scrollLock}) {
        const auto present = grab.withLocks;
        for (const quint16 combination : present)
            grab.withLocks.insert(combination | lock);
    }
    return grab;
}

bool X11HotKeys::take(const Grab &grab)
{
    auto *xcb = m_connection.connection();
    std::vector<xcb_void_cookie_t> cookies;
    for (const quint16 modifiers : grab.withLocks)
        cookies.push_back(xcb_grab_key_checked(xcb, false, m_connection.root(), modifiers, grab.keyCode,
                                               XCB_GRAB_MODE_ASYNC, XCB_GRAB_MODE_ASYNC));
    bool isTaken = true;
    for (const xcb_void_cookie_t cookie : cookies) {
        const XcbPointer<xcb_generic_error_t> error(xcb_request_check(xcb, cookie));
        isTaken = isTaken && !error;
    }
    m_grab = grab;
    if (!isTaken || xcb_connection_has_error(xcb)) {
        release();
        return false;
    }
    return true;
}

void X11HotKeys::release()
{
    m_isHeld = false;
    if (!m_grab)
        return;
    for (const quint16 modifiers : m_grab->withLocks)
        xcb_ungrab_key(m_connection.connection(), m_grab->keyCode, m_connection.root(), modifiers);
    m_grab.reset();
    m_connection.flush();
}

void X11HotKeys::onEvent(const xcb_generic_event_t &event)
{
    switch (eventKind(event)) {
    case XCB_KEY_PRESS:
        onKeyPress(reinterpret_cast<const xcb_key_press_event_t &>(event));
        return;
    case XCB_KEY_RELEASE:
        onKeyRelease(reinterpret_cast<const xcb_key_release_event_t &>(event));
        return;
    }
    // One change of the layout comes as dozens of events.
    if (isMappingChange(event, m_keyboardEvent) && !std::exchange(m_isMappingCheckPending, true))
        QMetaObject::invokeMethod(this, &X11HotKeys::onMappingChanged, Qt::QueuedConnection);
}

// Who records a combination takes the keyboard over this same connection; those keys belong to its window.
bool X11HotKeys::isOurs(const xcb_key_press_event_t &event) const
{
    return m_grab && event.event == m_connection.root() && event.detail == m_grab->keyCode;
}

void X11HotKeys::onKeyRelease(const xcb_key_release_event_t &event)
{
    if (isOurs(event))
        m_isHeld = false;
}

void X11HotKeys::onKeyPress(const xcb_key_press_event_t &event)
{
    if (!isOurs(event) || !m_grab->withLocks.contains(event.state & 0xff))
        return;
    const bool isRepeat = m_isHeld && event.time - m_lastPress < longestRepeatDelay;
    m_isHeld = true;
    m_lastPress = event.time;
    if (isRepeat)
        return;
    Q_EMIT pressedAt(event.time);
    Q_EMIT pressed();
}

// Key positions stay what they are; the modifiers may have moved to other bits.
void X11HotKeys::onMappingChanged()
{
    m_isMappingCheckPending = false;
    if (!m_wish)
        return;
    const auto grab = grabFor(*m_wish);
    if (grab == m_grab)
        return;
    const bool wasTaken = m_grab.has_value();
    release();
    const bool isTaken = grab && take(*grab);
    if (isTaken == wasTaken)
        return;
    qCInfo(log) << "the new keyboard layout" << (isTaken ? "gives the hotkey back" : "takes the hotkey away");
    if (isTaken)
        Q_EMIT regained();
    else
        Q_EMIT lost();
}
