// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>
#include <QHash>
#include <QObject>

#include <xcb/xcb.h>

#include <cstdlib>
#include <deque>
#include <functional>
#include <memory>
#include <optional>
#include <vector>

class QSocketNotifier;

/// Frees what xcb allocates: replies, errors and events.
struct XcbDeleter
{
    void operator()(void *memory) const { std::free(memory); }
};
template <typename T>
using XcbPointer = std::unique_ptr<T, XcbDeleter>;

/// The number of an event's kind, whether the server or another client has sent it: the top bit tells that.
inline quint8 eventKind(const xcb_generic_event_t &event)
{
    return event.response_type & 0x7f;
}

/// A connection of our own to the X server, apart from Qt's, driven by Qt's event loop. Shared by the X11
/// mechanisms of this process, so that their requests reach the server in the order in which they were made.
/// Main thread only; must be destroyed after everything that uses it.
///
/// When the server goes away the connection turns invalid and says closed() once. Every request is then a
/// no-op and every reply null, so that users need no further care than checking replies.
class X11Connection final : public QObject
{
    Q_OBJECT

public:
    using EventHandler = std::function<void(const xcb_generic_event_t &)>;

    /// Ends its subscription when destroyed. May outlive the connection.
    class Subscription
    {
    public:
        explicit Subscription(std::shared_ptr<EventHandler> handler)
            : m_handler(std::move(handler))
        {
        }
        ~Subscription() { *m_handler = nullptr; }
        Subscription(const Subscription &) = delete;
        Subscription &operator=(const Subscription &) = delete;

    private:
        std::shared_ptr<EventHandler> m_handler;
    };

    /// Connects to @p displayName, or to the session's display when it is empty.
    explicit X11Connection(const QByteArray &displayName = {}, QObject *parent = nullptr);
    ~X11Connection() override;

    /// As given to the constructor, for a second connection to the same server.
    QByteArray displayName() const { return m_displayName; }

    /// Whether the server answers; false for ever once it has gone.
    bool isValid() const { return m_screen && !m_isClosed; }

    /// Never null, also when invalid.
    xcb_connection_t *connection() const { return m_connection; }
    const xcb_screen_t *screen() const { return m_screen; }
    int screenNumber() const { return m_screenNumber; }
    xcb_window_t root() const { return m_screen ? m_screen->root : xcb_window_t(XCB_WINDOW_NONE); }

    bool isOwnResource(quint32 identifier) const { return isSameClient(identifier, m_resourceBase); }
    /// Whether two windows, pixmaps or the like were made by one client.
    bool isSameClient(quint32 first, quint32 second) const
    {
        return ((first ^ second) & ~m_resourceMask) == 0;
    }

    /// The atom of @p name, made when it does not exist; one round trip for the first use of a name.
    xcb_atom_t atom(const QByteArray &name);
    /// The name of @p atom, empty when there is none; one round trip for the first use of an atom.
    QByteArray atomName(xcb_atom_t atom);
    /// Looks all @p names up in one round trip, so that later atom() calls need none.
    void internAtoms(const QList<QByteArray> &names);
    /// The same the other way round, for atomName().
    void fetchAtomNames(const QList<xcb_atom_t> &atoms);

    /// An unmapped window of this connection: to own selections, to receive properties.
    xcb_window_t helperWindow() const { return m_helperWindow; }

    /// A window that is never seen, tells of its properties' changes, and is the caller's to destroy. The
    /// connection must be valid.
    void createHiddenWindow(xcb_window_t window);

    /// The server's time of now; one round trip. XCB_CURRENT_TIME when the server is gone.
    xcb_timestamp_t serverTime();

    /// Sends what is buffered. The event loop also does this before it blocks.
    void flush();
    /// Waits until the server has carried out everything sent so far; one round trip.
    void sync();

    /// Calls @p handler from the event loop for every event, errors excluded. Handlers are called in the
    /// order in which they came and may add and remove handlers.
    [[nodiscard]] std::unique_ptr<Subscription> addEventHandler(EventHandler handler);

    /// The next event that has arrived, or null. The event loop calls the handlers; only who must go on
    /// without the event loop, at the end of the process, takes events away from them.
    XcbPointer<xcb_generic_event_t> takeEvent();

Q_SIGNALS:
    /// The server has gone.
    void closed();

private:
    void readEvents();
    void dispatch(const xcb_generic_event_t &event);
    bool checkAlive();
    void rememberAtom(const QByteArray &name, xcb_atom_t atom);
    std::optional<xcb_timestamp_t> takeTimestampEvent();

    QByteArray m_displayName;
    xcb_connection_t *m_connection = nullptr;
    const xcb_screen_t *m_screen = nullptr;
    int m_screenNumber = 0;
    quint32 m_resourceBase = 0; ///< an identifier of this connection's own has bits of the mask added
    quint32 m_resourceMask = 0;
    xcb_window_t m_helperWindow = XCB_WINDOW_NONE;
    bool m_isClosed = false;
    QHash<QByteArray, xcb_atom_t> m_atoms;
    QHash<xcb_atom_t, QByteArray> m_atomNames;
    std::deque<XcbPointer<xcb_generic_event_t>> m_pendingEvents; ///< read while waiting for something else
    std::vector<std::shared_ptr<EventHandler>> m_handlers;
    QSocketNotifier *m_notifier = nullptr;
};
