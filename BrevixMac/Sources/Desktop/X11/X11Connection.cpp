// SPDX-License-Identifier: GPL-3.0-or-later
#include "X11Connection.h"

#include <QAbstractEventDispatcher>
#include <QList>
#include <QLoggingCategory>
#include <QPointer>
#include <QSocketNotifier>

namespace {

Q_LOGGING_CATEGORY(log, "brevix.x11", QtInfoMsg)

const QByteArray timestampProperty = QByteArrayLiteral("_BREVIX_TIMESTAMP");

const xcb_screen_t *screenOfNumber(xcb_connection_t *connection, int number)
{
    auto screens = xcb_setup_roots_iterator(xcb_get_setup(connection));
    for (; screens.rem > 0 && number > 0; --number)
        xcb_screen_next(&screens);
    return screens.rem > 0 ? screens.data : nullptr;
}

} // namespace

X11Connection::X11Connection(const QByteArray &displayName, QObject *parent)
    : QObject(parent)
    , m_displayName(displayName)
    , m_connection(xcb_connect(displayName.isEmpty() ? nullptr : displayName.constData(), &m_screenNumber))
{
    if (xcb_connection_has_error(m_connection)) {
        m_isClosed = true;
        return;
    }
    m_screen = screenOfNumber(m_connection, m_screenNumber);
    if (!m_screen)
        return;
    m_resourceBase = xcb_get_setup(m_connection)->resource_id_base;
    m_resourceMask = xcb_get_setup(m_connection)->resource_id_mask;

    m_helperWindow = xcb_generate_id(m_connection);
    createHiddenWindow(m_helperWindow);

    m_notifier = new QSocketNotifier(xcb_get_file_descriptor(m_connection), QSocketNotifier::Read, this);
    connect(m_notifier, &QSocketNotifier::activated, this, &X11Connection::readEvents);
    // Events that arrive while a reply is awaited are read with it: the socket does not tell of them again.
    if (auto *dispatcher = QAbstractEventDispatcher::instance())
        connect(dispatcher, &QAbstractEventDispatcher::aboutToBlock, this, &X11Connection::readEvents);
    flush();
}

void X11Connection::createHiddenWindow(xcb_window_t window)
{
    const quint32 eventMask = XCB_EVENT_MASK_PROPERTY_CHANGE;
    xcb_create_window(m_connection, XCB_COPY_FROM_PARENT, window, m_screen->root, -10, -10, 1, 1, 0,
                      XCB_WINDOW_CLASS_INPUT_ONLY, XCB_COPY_FROM_PARENT, XCB_CW_EVENT_MASK, &eventMask);
}

X11Connection::~X11Connection()
{
    if (m_notifier)
        m_notifier->setEnabled(false);
    xcb_disconnect(m_connection);
}

xcb_atom_t X11Connection::atom(const QByteArray &name)
{
    const auto found = m_atoms.constFind(name);
    if (found != m_atoms.constEnd())
        return *found;
    internAtoms({name});
    return m_atoms.value(name, XCB_ATOM_NONE);
}

QByteArray X11Connection::atomName(xcb_atom_t atom)
{
    const auto found = m_atomNames.constFind(atom);
    if (found != m_atomNames.constEnd())
        return *found;
    fetchAtomNames({atom});
    return m_atomNames.value(atom);
}

void X11Connection::internAtoms(const QList<QByteArray> &names)
{
    std::vector<std::pair<QByteArray, xcb_intern_atom_cookie_t>> cookies;
    for (const QByteArray &name : names) {
        if (!m_atoms.contains(name))
            cookies.emplace_back(
                name, xcb_intern_atom(m_connection, false, quint16(name.size()), name.constData()));
    }
    for (const auto &[name, cookie] : cookies) {
        const XcbPointer<xcb_intern_atom_reply_t> reply(xcb_intern_atom_reply(m_connection, cookie, nullptr));
        if (reply)
            rememberAtom(name, reply->atom);
    }
    checkAlive();
}

void X11Connection::fetchAtomNames(const QList<xcb_atom_t> &atoms)
{
    std::vector<std::pair<xcb_atom_t, xcb_get_atom_name_cookie_t>> cookies;
    for (const xcb_atom_t atom : atoms) {
        if (atom != XCB_ATOM_NONE && !m_atomNames.contains(atom))
            cookies.emplace_back(atom, xcb_get_atom_name(m_connection, atom));
    }
    for (const auto &[atom, cookie] : cookies) {
        xcb_generic_error_t *error = nullptr;
        const XcbPointer<xcb_get_atom_name_reply_t> reply(
            xcb_get_atom_name_reply(m_connection, cookie, &error));
        const XcbPointer<xcb_generic_error_t> ownedError(error);
        if (reply)
            rememberAtom({xcb_get_atom_name_name(reply.get()), xcb_get_atom_name_name_length(reply.get())},
                         atom);
    }
    checkAlive();
}

void X11Connection::rememberAtom(const QByteArray &name, xcb_atom_t atom)
{
    m_atoms.insert(name, atom);
    m_atomNames.insert(atom, name);
}

xcb_timestamp_t X11Connection::serverTime()
{
    if (!isValid())
        return XCB_CURRENT_TIME;
    // An empty append changes nothing, yet its notification carries the time.
    xcb_change_property(m_connection, XCB_PROP_MODE_APPEND, m_helperWindow, atom(timestampProperty),
                        XCB_ATOM_INTEGER, 32, 0, nullptr);
    sync();
    return takeTimestampEvent().value_or(XCB_CURRENT_TIME);
}

std::optional<xcb_timestamp_t> X11Connection::takeTimestampEvent()
{
    const xcb_atom_t property = atom(timestampProperty);
    std::optional<xcb_timestamp_t> time;
    while (XcbPointer<xcb_generic_event_t> event{xcb_poll_for_queued_event(m_connection)}) {
        if (eventKind(*event) == XCB_PROPERTY_NOTIFY) {
            const auto *notify = reinterpret_cast<const xcb_property_notify_event_t *>(event.get());
            if (notify->window == m_helperWindow && notify->atom == property) {
                time = notify->time;
                continue;
            }
        }
        m_pendingEvents.push_back(std::move(event));
    }
    return time;
}

void X11Connection::flush()
{
    if (!m_isClosed)
        xcb_flush(m_connection);
}

void X11Connection::sync()
{
    const auto cookie = xcb_get_input_focus(m_connection);
    const XcbPointer<xcb_get_input_focus_reply_t> reply(
        xcb_get_input_focus_reply(m_connection, cookie, nullptr));
}

std::unique_ptr<X11Connection::Subscription> X11Connection::addEventHandler(EventHandler handler)
{
    auto shared = std::make_shared<EventHandler>(std::move(handler));
    m_handlers.push_back(shared);
    return std::make_unique<Subscription>(std::move(shared));
}

XcbPointer<xcb_generic_event_t> X11Connection::takeEvent()
{
    if (m_pendingEvents.empty()) {
        XcbPointer<xcb_generic_event_t> event(xcb_poll_for_event(m_connection));
        if (!event)
            checkAlive();
        return event;
    }
    auto event = std::move(m_pendingEvents.front());
    m_pendingEvents.pop_front();
    return event;
}

void X11Connection::readEvents()
{
    const QPointer<X11Connection> self(this);
    while (self) {
        const auto event = takeEvent();
        if (!event)
            break;
        dispatch(*event);
    }
    if (self)
        flush();
}

void X11Connection::dispatch(const xcb_generic_event_t &event)
{
    if (event.response_type == 0) {
        // Windows of other clients die between an event and our answer: errors are part of daily life.
        const auto &error = reinterpret_cast<const xcb_generic_error_t &>(event);
        qCDebug(log) << "X error" << error.error_code << "request" << error.major_code << error.minor_code;
        return;
    }
    std::erase_if(m_handlers, [](const auto &handler) { return !*handler; });
    const auto handlers = m_handlers;
    for (const auto &handler : handlers) {
        const EventHandler running = *handler; // it may end its own subscription while it runs
        if (running)
            running(event);
    }
}

bool X11Connection::checkAlive()
{
    if (!m_isClosed && xcb_connection_has_error(m_connection)) {
        m_isClosed = true;
        if (m_notifier)
            m_notifier->setEnabled(false);
        qCInfo(log) << "the X server has gone";
        QMetaObject::invokeMethod(this, &X11Connection::closed, Qt::QueuedConnection);
    }
    return !m_isClosed;
}
