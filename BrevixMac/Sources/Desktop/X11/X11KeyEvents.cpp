// SPDX-License-Identifier: GPL-3.0-or-later
#include "X11KeyEvents.h"

#include "X11Keyboard.h"

#include <QDeadlineTimer>
#include <QLoggingCategory>

#include <xcb/xtest.h>

#include <algorithm>

namespace {

Q_LOGGING_CATEGORY(log, "brevix.keys", QtInfoMsg)

using namespace std::chrono_literals;

constexpr auto modifierPatience = 2s;
constexpr auto modifierPollInterval = 10ms;
// Some widgets overlook a key that goes up at once.
constexpr auto holdTime = 40ms;

bool hasExtension(X11Connection &connection)
{
    if (!connection.isValid())
        return false;
    const auto *extension = xcb_get_extension_data(connection.connection(), &xcb_test_id);
    return extension && extension->present;
}

} // namespace

X11KeyEvents::X11KeyEvents(X11Connection &shared, QObject *parent)
    : KeyEvents(parent)
    , m_shared(shared)
    , m_connection(shared.displayName())
    , m_hasTestExtension(hasExtension(m_connection))
{
    connect(&m_connection, &X11Connection::closed, this, &KeyEvents::postingAllowedChanged);
}

X11KeyEvents::~X11KeyEvents()
{
    // The server drops what a client that leaves has not had carried out yet: the releases, here. A busy
    // server may be late with them, also when the time for which the keys are held is over.
    if (m_hasPosted)
        m_connection.sync();
}

bool X11KeyEvents::isPostingAllowed() const
{
    return m_hasTestExtension && m_connection.isValid();
}

QCoro::Task<bool> X11KeyEvents::postPasteChord(PasteConvention convention, Guard isStillWanted)
{
    const std::stop_token token = m_tasks.token();
    const QDeadlineTimer patience(modifierPatience);
    bool isAgreed = !isStillWanted;
    xcb_window_t agreedFocus = XCB_WINDOW_NONE;
    while (isPostingAllowed()) {
        const bool isFree = !m_isPosting && !isKeyboardInUse(convention);
        if (isFree && isAgreed) {
            const QList<xcb_keycode_t> keys = X11Keyboard(m_connection).pasteChord(convention);
            if (keys.isEmpty()) {
                qCInfo(log) << "no paste: the keyboard has no key for it";
                co_return false;
            }
            Q_EMIT aboutToPostPasteChord();
            if (post(keys, agreedFocus))
                break;
            Q_EMIT pasteChordDropped();
        } else if (isFree) {
            agreedFocus = inputFocus();
            isAgreed = co_await isStillWanted();
            if (token.stop_requested() || !isAgreed)
                co_return false;
            continue; // a key may have been pressed meanwhile
        }
        // Whoever holds modifiers may be switching windows: what was agreed to is asked again.
        isAgreed = !isStillWanted;
        if (patience.hasExpired()) {
            qCInfo(log) << "no paste: keys are still held";
            co_return false;
        }
        const bool hasSlept = co_await sleepFor(modifierPollInterval, token);
        if (!hasSlept)
            co_return false;
    }
    if (!m_isPosting)
        co_return false;
    const bool hasSlept = co_await sleepFor(holdTime, token);
    if (!hasSlept)
        co_return true; // posted all the same
    m_isPosting = false;
    co_return true;
}

/// The user holds a modifier, or the very key that is to be pressed.
bool X11KeyEvents::isKeyboardInUse(PasteConvention convention)
{
    const X11Keyboard keyboard(m_connection);
    const QList<xcb_keycode_t> keys = keyboard.pasteChord(convention);
    return keyboard.isModifierHeld() ||
           std::any_of(keys.begin(), keys.end(), [&](xcb_keycode_t key) { return keyboard.isDown(key); });
}

xcb_window_t X11KeyEvents::inputFocus()
{
    auto *xcb = m_connection.connection();
    const XcbPointer<xcb_get_input_focus_reply_t> focus(
        xcb_get_input_focus_reply(xcb, xcb_get_input_focus(xcb), nullptr));
    return focus ? focus->focus : xcb_window_t(XCB_WINDOW_NONE);
}

/// False when the focus is no longer where it was agreed to be (none: anywhere).
bool X11KeyEvents::post(const QList<xcb_keycode_t> &keys, xcb_window_t agreedFocus)
{
    m_shared.sync();
    auto *xcb = m_connection.connection();
    const auto fake = [&](quint8 type, xcb_keycode_t key, std::chrono::milliseconds delay) {
        xcb_test_fake_input(xcb, type, key, quint32(delay.count()), XCB_WINDOW_NONE, 0, 0, 0);
    };
    // Nobody can move the focus between the look at it and the keys.
    xcb_grab_server(xcb);
    const bool isThere = agreedFocus == XCB_WINDOW_NONE || inputFocus() == agreedFocus;
    if (isThere) {
        for (const xcb_keycode_t key : keys)
            fake(XCB_KEY_PRESS, key, 0ms);
    }
    xcb_ungrab_server(xcb);
    if (isThere) {
        std::chrono::milliseconds delay = holdTime;
        for (auto key = keys.rbegin(); key != keys.rend(); ++key)
            fake(XCB_KEY_RELEASE, *key, std::exchange(delay, 0ms));
    }
    m_connection.flush();
    m_isPosting = isThere && m_connection.isValid();
    m_hasPosted = m_hasPosted || m_isPosting;
    return isThere;
}
