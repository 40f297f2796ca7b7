// SPDX-License-Identifier: GPL-3.0-or-later
#include "X11KeyCapture.h"

#include "X11KeyTable.h"
#include "X11Keyboard.h"
#include "X11Modifiers.h"

#include <QSet>
#include <QTimer>
#include <QWindow>

#include <chrono>

namespace {

using namespace std::chrono_literals;

// A combination that has just been recorded may become the hotkey, and the repeats of its key, still held,
// would press it at once. Nobody holds a key for longer than this without wanting something.
constexpr auto longestWaitForRelease = 2s;

QSet<xcb_keycode_t> readModifierKeys(xcb_connection_t *connection)
{
    const XcbPointer<xcb_get_modifier_mapping_reply_t> map(
        xcb_get_modifier_mapping_reply(connection, xcb_get_modifier_mapping(connection), nullptr));
    if (!map)
        return {};
    const xcb_keycode_t *codes = xcb_get_modifier_mapping_keycodes(map.get());
    return {codes, codes + xcb_get_modifier_mapping_keycodes_length(map.get())};
}

bool grabKeyboard(xcb_connection_t *connection, xcb_window_t window)
{
    const auto cookie = xcb_grab_keyboard(connection, false, window, XCB_CURRENT_TIME, XCB_GRAB_MODE_ASYNC,
                                          XCB_GRAB_MODE_ASYNC);
    const XcbPointer<xcb_grab_keyboard_reply_t> reply(xcb_grab_keyboard_reply(connection, cookie, nullptr));
    return reply && reply->status == XCB_GRAB_STATUS_SUCCESS;
}

} // namespace

/// The grab itself. Outlives its session until the last key is up.
class X11KeyCapture::Grab
{
public:
    Grab(X11Connection &connection, xcb_window_t window, Handler handler)
        : m_connection(connection)
        , m_window(window)
        , m_modifiers(X11Modifiers::read(connection))
        , m_modifierKeys(readModifierKeys(connection.connection()))
        , m_handler(std::move(handler))
        , m_isHeld(grabKeyboard(connection.connection(), window))
    {
        if (m_isHeld)
            m_events =
                connection.addEventHandler([this](const xcb_generic_event_t &event) { onEvent(event); });
    }

    ~Grab() { release(); }

    Grab(const Grab &) = delete;
    Grab &operator=(const Grab &) = delete;

    bool isHeld() const { return m_isHeld; }

    /// Nobody listens any more.
    void end()
    {
        m_handler = nullptr;
        if (m_down.isEmpty()) {
            release();
            return;
        }
        m_deadline.setSingleShot(true);
        m_deadline.callOnTimeout([this] { release(); });
        m_deadline.start(longestWaitForRelease);
    }

private:
    void release()
    {
        if (!std::exchange(m_isHeld, false))
            return;
        xcb_ungrab_keyboard(m_connection.connection(), XCB_CURRENT_TIME);
        m_connection.flush();
    }

    void onEvent(const xcb_generic_event_t &event)
    {
        const quint8 type = eventKind(event);
        if (!m_isHeld || (type != XCB_KEY_PRESS && type != XCB_KEY_RELEASE))
            return;
        const auto &key = reinterpret_cast<const xcb_key_press_event_t &>(event);
        if (key.event != m_window)
            return;
        if (type == XCB_KEY_PRESS)
            onPress(key);
        else
            onRelease(key.detail);
    }

    void onPress(const xcb_key_press_event_t &key)
    {
        const bool isModifier = m_modifierKeys.contains(key.detail);
        if (!isModifier)
            m_down.insert(key.detail);
        // A copy: the handler may end the session.
        if (const Handler handler = m_handler)
            handler({.keyCode = X11KeyTable::keyNumber(key.detail),
                     .modifiers = m_modifiers.flags(key.state),
                     .isModifier = isModifier});
    }

    void onRelease(xcb_keycode_t key)
    {
        m_down.remove(key);
        if (!m_handler && m_down.isEmpty())
            release();
    }

    X11Connection &m_connection;
    const xcb_window_t m_window;
    const X11Modifiers m_modifiers;
    const QSet<xcb_keycode_t> m_modifierKeys;
    Handler m_handler;
    bool m_isHeld;
    QSet<xcb_keycode_t> m_down; ///< modifiers excluded
    QTimer m_deadline;
    std::unique_ptr<X11Connection::Subscription> m_events;
};

X11KeyCapture::X11KeyCapture(X11Connection &connection)
    : m_connection(connection)
{
    if (m_connection.isValid())
        X11Keyboard::tellRepeatsApart(m_connection);
}

X11KeyCapture::~X11KeyCapture() = default;

std::unique_ptr<KeyCapture::Session> X11KeyCapture::begin(QWindow &window, Handler handler)
{
    struct GrabSession final : Session
    {
        explicit GrabSession(std::weak_ptr<Grab> grab)
            : m_grab(std::move(grab))
        {
        }
        ~GrabSession() override
        {
            if (const auto grab = m_grab.lock())
                grab->end();
        }
        std::weak_ptr<Grab> m_grab;
    };

    m_grab.reset();
    if (!m_connection.isValid())
        return nullptr;
    auto grab = std::make_shared<Grab>(m_connection, xcb_window_t(window.winId()), std::move(handler));
    if (!grab->isHeld())
        return nullptr;
    m_grab = grab;
    return std::make_unique<GrabSession>(grab);
}

std::optional<quint32> X11KeyCapture::keyCode(quint32 scanCode) const
{
    return X11KeyTable::keyNumber(scanCode);
}
