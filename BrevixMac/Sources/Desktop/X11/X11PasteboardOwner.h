// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "X11Connection.h"
#include "X11PasteboardContent.h"

#include <QElapsedTimer>
#include <QObject>
#include <QTimer>

#include <chrono>
#include <list>
#include <optional>

/// Owns one selection and serves its content to every client that asks, large content in increments. Main
/// thread only. A client that asks and then dies or stops reading is forgotten after a time.
class X11PasteboardOwner final : public QObject
{
    Q_OBJECT

public:
    X11PasteboardOwner(X11Connection &connection, const QByteArray &selection, QObject *parent = nullptr);
    ~X11PasteboardOwner() override;

    xcb_atom_t selection() const { return m_selection; }

    /// Takes the selection with @p content. False when the server refused.
    bool own(X11PasteboardContent content);
    /// The same, but only while the selection is still ours: whoever has taken it meanwhile keeps it. A
    /// request that was made before now (a slow application carries the time of the user's key) still gets
    /// the present content.
    bool replace(X11PasteboardContent content);
    /// Leaves the selection without an owner, if it is still ours.
    void disown();

    /// Whether the selection is ours as far as the events that have arrived tell.
    bool isOwned() const { return m_isOwned; }
    /// Asks the server; one round trip.
    bool isStillOwned() const;
    const X11PasteboardContent &content() const { return m_content; }
    /// Whether some client has not received all of a large content yet.
    bool isTransferring() const { return !m_transfers.empty(); }

    /// Serves requests without the event loop until @p isDone or @p deadline. For the end of the process
    /// only.
    void serveUntil(const std::function<bool(const xcb_generic_event_t &)> &isDone,
                    std::chrono::milliseconds deadline);

Q_SIGNALS:
    /// @p requestor has received the bytes of @p target; not for the protocol's own targets.
    void dataRead(quint32 requestor, quint32 target);
    /// Somebody else has taken the selection.
    void lost();

private:
    struct Transfer
    {
        xcb_window_t requestor = XCB_WINDOW_NONE;
        xcb_atom_t property = XCB_ATOM_NONE;
        X11PasteboardEntry entry;
        quint32 firstRequest = 0; ///< number of the request that has offered it
        qsizetype sent = 0;
        quint32 earlierEventMask = 0;
        QElapsedTimer quiet;
    };
    struct FormerContent
    {
        X11PasteboardContent content;
        xcb_timestamp_t from;
        xcb_timestamp_t until;
    };

    bool takeSelection(X11PasteboardContent content, xcb_timestamp_t time);
    void onEvent(const xcb_generic_event_t &event);
    void onRequest(const xcb_selection_request_event_t &event);
    void onPropertyDeleted(const xcb_property_notify_event_t &event, quint32 latestRequest);
    bool convert(xcb_window_t requestor, xcb_atom_t target, xcb_atom_t property,
                 const X11PasteboardContent &content);
    bool convertMultiple(xcb_window_t requestor, xcb_atom_t property, const X11PasteboardContent &content);
    void writeTargets(xcb_window_t requestor, xcb_atom_t property, const X11PasteboardContent &content);
    void writeEntry(xcb_window_t requestor, xcb_atom_t property, const X11PasteboardEntry &entry);
    void beginTransfer(xcb_window_t requestor, xcb_atom_t property, const X11PasteboardEntry &entry);
    std::list<Transfer>::iterator findTransfer(xcb_window_t requestor, xcb_atom_t property);
    void endTransfer(std::list<Transfer>::iterator transfer);
    void dropStalledTransfers();
    void forgetRequestor(xcb_window_t requestor);
    const X11PasteboardContent &contentAt(xcb_timestamp_t time) const;
    void markLost();

    X11Connection &m_connection;
    xcb_atom_t m_selection;
    xcb_window_t m_window;
    bool m_isOwned = false;
    xcb_timestamp_t m_time = XCB_CURRENT_TIME;
    X11PasteboardContent m_content;
    std::optional<FormerContent> m_former;
    std::list<Transfer> m_transfers;
    QTimer m_stallCheck;
    QTimer m_formerExpiry;
    std::unique_ptr<X11Connection::Subscription> m_subscription;
};
