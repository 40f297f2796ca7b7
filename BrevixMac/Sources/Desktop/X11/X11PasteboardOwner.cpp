// SPDX-License-Identifier: GPL-3.0-or-later
#include "X11PasteboardOwner.h"

#include <QDeadlineTimer>
#include <QLoggingCategory>

#include <poll.h>

#include <algorithm>
#include <cerrno>

namespace {

Q_LOGGING_CATEGORY(log, "brevix.pasteboard", QtInfoMsg)

using namespace std::chrono_literals;

constexpr qsizetype incrementSize = qsizetype(256) * 1024;
// A requestor that has not taken an increment for so long has died, hangs or has lost interest.
constexpr std::chrono::milliseconds transferPatience = 5s;
constexpr auto formerContentLife = 30s;

template <typename Event>
const Event &as(const xcb_generic_event_t &event)
{
    return reinterpret_cast<const Event &>(event);
}

} // namespace

X11PasteboardOwner::X11PasteboardOwner(X11Connection &connection, const QByteArray &selection,
                                       QObject *parent)
    : QObject(parent)
    , m_connection(connection)
    , m_selection(connection.atom(selection))
    , m_window(xcb_generate_id(connection.connection()))
{
    m_stallCheck.setInterval(1s);
    connect(&m_stallCheck, &QTimer::timeout, this, &X11PasteboardOwner::dropStalledTransfers);
    m_formerExpiry.setSingleShot(true);
    m_formerExpiry.setInterval(formerContentLife);
    connect(&m_formerExpiry, &QTimer::timeout, this, [this] { m_former.reset(); });
    connect(&connection, &X11Connection::closed, this, &X11PasteboardOwner::markLost);
    if (!connection.isValid())
        return;

    connection.createHiddenWindow(m_window);
    connection.internAtoms({QByteArrayLiteral("TARGETS"), QByteArrayLiteral("TIMESTAMP"),
                            QByteArrayLiteral("MULTIPLE"), QByteArrayLiteral("SAVE_TARGETS"),
                            QByteArrayLiteral("INCR"), QByteArrayLiteral("NULL"),
                            QByteArrayLiteral("ATOM_PAIR")});
    m_subscription = connection.addEventHandler([this](const xcb_generic_event_t &event) { onEvent(event); });
}

X11PasteboardOwner::~X11PasteboardOwner()
{
    while (!m_transfers.empty())
        endTransfer(m_transfers.begin());
    if (m_connection.isValid()) {
        xcb_destroy_window(m_connection.connection(), m_window);
        m_connection.flush();
    }
}

bool X11PasteboardOwner::own(X11PasteboardContent content)
{
    m_former.reset();
    return takeSelection(std::move(content), m_connection.serverTime());
}

bool X11PasteboardOwner::replace(X11PasteboardContent content)
{
    // The server ignores a time before the latest change of owner. As ours is from before the look at the
    // owner, nobody who comes in between can be robbed.
    const xcb_timestamp_t now = m_connection.serverTime();
    if (!m_isOwned || !isStillOwned())
        return false;
    m_former = FormerContent{.content = m_content, .from = m_time, .until = now};
    m_formerExpiry.start();
    return takeSelection(std::move(content), now);
}

bool X11PasteboardOwner::takeSelection(X11PasteboardContent content, xcb_timestamp_t time)
{
    if (!m_connection.isValid())
        return false;
    xcb_set_selection_owner(m_connection.connection(), m_window, m_selection, time);
    if (!isStillOwned())
        return false;
    m_isOwned = true;
    m_time = time;
    m_content = std::move(content);
    return true;
}

void X11PasteboardOwner::disown()
{
    const xcb_timestamp_t now = m_connection.serverTime();
    if (m_isOwned && isStillOwned()) {
        xcb_set_selection_owner(m_connection.connection(), XCB_WINDOW_NONE, m_selection, now);
        m_connection.sync(); // whoever is told of it finds it done
    }
    m_isOwned = false;
    m_content = {};
    m_former.reset();
}

bool X11PasteboardOwner::isStillOwned() const
{
    const auto cookie = xcb_get_selection_owner(m_connection.connection(), m_selection);
    const XcbPointer<xcb_get_selection_owner_reply_t> owner(
        xcb_get_selection_owner_reply(m_connection.connection(), cookie, nullptr));
    return owner && owner->owner == m_window;
}

void X11PasteboardOwner::markLost()
{
    if (!m_isOwned)
        return;
    m_isOwned = false;
    m_content = {};
    m_former.reset();
    Q_EMIT lost();
}

void X11PasteboardOwner::onEvent(const xcb_generic_event_t &event)
{
    switch (eventKind(event)) {
    case XCB_SELECTION_REQUEST: {
        const auto &request = as<xcb_selection_request_event_t>(event);
        if (request.owner == m_window && request.selection == m_selection)
            onRequest(request);
        break;
    }
    case XCB_SELECTION_CLEAR: {
        const auto &clear = as<xcb_selection_clear_event_t>(event);
        // One from before the latest taking is old news.
        if (clear.owner == m_window && clear.selection == m_selection && !isStillOwned())
            markLost();
        break;
    }
    case XCB_PROPERTY_NOTIFY: {
        const auto &notify = as<xcb_property_notify_event_t>(event);
        if (notify.state == XCB_PROPERTY_DELETE)
            onPropertyDeleted(notify, event.full_sequence);
        break;
    }
    case XCB_DESTROY_NOTIFY:
        forgetRequestor(as<xcb_destroy_notify_event_t>(event).window);
        break;
    default:
        break;
    }
}

void X11PasteboardOwner::onRequest(const xcb_selection_request_event_t &event)
{
    const xcb_atom_t property = event.property == XCB_ATOM_NONE ? event.target : event.property;
    const X11PasteboardContent content = contentAt(event.time);
    const bool isMultiple = event.target == m_connection.atom(QByteArrayLiteral("MULTIPLE"));
    const bool isConverted =
        m_isOwned && (isMultiple ? convertMultiple(event.requestor, event.property, content)
                                 : convert(event.requestor, event.target, property, content));

    qCDebug(log) << "asked for" << m_connection.atomName(event.target) << "by" << event.requestor
                 << (isConverted ? "given" : "refused");
    xcb_selection_notify_event_t notify = {};
    notify.response_type = XCB_SELECTION_NOTIFY;
    notify.time = event.time;
    notify.requestor = event.requestor;
    notify.selection = event.selection;
    notify.target = event.target;
    notify.property = isConverted ? property : xcb_atom_t(XCB_ATOM_NONE);
    // An event on the wire has 32 bytes whatever its kind.
    char wire[32] = {};
    std::memcpy(wire, &notify, sizeof notify);
    xcb_send_event(m_connection.connection(), false, event.requestor, XCB_EVENT_MASK_NO_EVENT, wire);
    m_connection.flush();
}

bool X11PasteboardOwner::convert(xcb_window_t requestor, xcb_atom_t target, xcb_atom_t property,
                                 const X11PasteboardContent &content)
{
    auto *xcb = m_connection.connection();
    if (target == m_connection.atom(QByteArrayLiteral("TARGETS"))) {
        writeTargets(requestor, property, content);
        return true;
    }
    if (target == m_connection.atom(QByteArrayLiteral("TIMESTAMP"))) {
        xcb_change_property(xcb, XCB_PROP_MODE_REPLACE, requestor, property, XCB_ATOM_INTEGER, 32, 1,
                            &m_time);
        return true;
    }
    if (target == m_connection.atom(QByteArrayLiteral("SAVE_TARGETS"))) {
        xcb_change_property(xcb, XCB_PROP_MODE_REPLACE, requestor, property,
                            m_connection.atom(QByteArrayLiteral("NULL")), 32, 0, nullptr);
        return true;
    }
    const X11PasteboardEntry *entry = content.entry(target);
    if (!entry)
        return false;
    // Who asks again has given up what was under way: the rest of that would be taken for the new answer.
    if (const auto earlier = findTransfer(requestor, property); earlier != m_transfers.end())
        endTransfer(earlier);
    if (entry->bytes.size() > incrementSize) {
        beginTransfer(requestor, property, *entry);
    } else {
        writeEntry(requestor, property, *entry);
        Q_EMIT dataRead(requestor, target);
    }
    return true;
}

bool X11PasteboardOwner::convertMultiple(xcb_window_t requestor, xcb_atom_t property,
                                         const X11PasteboardContent &content)
{
    auto *xcb = m_connection.connection();
    const auto cookie = xcb_get_property(xcb, false, requestor, property, XCB_GET_PROPERTY_TYPE_ANY, 0, 4096);
    const XcbPointer<xcb_get_property_reply_t> reply(xcb_get_property_reply(xcb, cookie, nullptr));
    if (property == XCB_ATOM_NONE || !reply || reply->format != 32)
        return false;
    const auto *values = static_cast<const xcb_atom_t *>(xcb_get_property_value(reply.get()));
    std::vector<xcb_atom_t> pairs(values, values + reply->value_len);
    const xcb_atom_t multiple = m_connection.atom(QByteArrayLiteral("MULTIPLE"));
    for (size_t index = 0; index + 1 < pairs.size(); index += 2) {
        const bool isConverted = pairs[index] != multiple && pairs[index + 1] != XCB_ATOM_NONE &&
                                 convert(requestor, pairs[index], pairs[index + 1], content);
        if (!isConverted)
            pairs[index + 1] = XCB_ATOM_NONE;
    }
    xcb_change_property(xcb, XCB_PROP_MODE_REPLACE, requestor, property,
                        m_connection.atom(QByteArrayLiteral("ATOM_PAIR")), 32, quint32(pairs.size()),
                        pairs.data());
    return true;
}

void X11PasteboardOwner::writeTargets(xcb_window_t requestor, xcb_atom_t property,
                                      const X11PasteboardContent &content)
{
    std::vector<xcb_atom_t> targets{m_connection.atom(QByteArrayLiteral("TARGETS")),
                                    m_connection.atom(QByteArrayLiteral("TIMESTAMP")),
                                    m_connection.atom(QByteArrayLiteral("MULTIPLE")),
                                    m_connection.atom(QByteArrayLiteral("SAVE_TARGETS"))};
    for (const X11PasteboardEntry &entry : content.entries)
        targets.push_back(entry.target);
    xcb_change_property(m_connection.connection(), XCB_PROP_MODE_REPLACE, requestor, property, XCB_ATOM_ATOM,
                        32, quint32(targets.size()), targets.data());
}

void X11PasteboardOwner::writeEntry(xcb_window_t requestor, xcb_atom_t property,
                                    const X11PasteboardEntry &entry)
{
    xcb_change_property(m_connection.connection(), XCB_PROP_MODE_REPLACE, requestor, property, entry.type,
                        entry.format, quint32(entry.bytes.size() / (entry.format / 8)),
                        entry.bytes.constData());
}

void X11PasteboardOwner::beginTransfer(xcb_window_t requestor, xcb_atom_t property,
                                       const X11PasteboardEntry &entry)
{
    auto *xcb = m_connection.connection();
    const auto cookie = xcb_get_window_attributes(xcb, requestor);
    const XcbPointer<xcb_get_window_attributes_reply_t> attributes(
        xcb_get_window_attributes_reply(xcb, cookie, nullptr));
    if (!attributes)
        return;
    // Somebody else in this process may watch that window over the same connection.
    const quint32 eventMask =
        attributes->your_event_mask | XCB_EVENT_MASK_PROPERTY_CHANGE | XCB_EVENT_MASK_STRUCTURE_NOTIFY;
    xcb_change_window_attributes(xcb, requestor, XCB_CW_EVENT_MASK, &eventMask);

    Transfer transfer{.requestor = requestor,
                      .property = property,
                      .entry = entry,
                      .firstRequest = 0,
                      .sent = 0,
                      .earlierEventMask = attributes->your_event_mask,
                      .quiet = {}};
    transfer.quiet.start();
    const auto sameWindow =
        std::find_if(m_transfers.begin(), m_transfers.end(),
                     [&](const Transfer &earlier) { return earlier.requestor == requestor; });
    if (sameWindow != m_transfers.end())
        transfer.earlierEventMask = sameWindow->earlierEventMask;

    const auto size = quint32(entry.bytes.size());
    const auto offer = xcb_change_property(xcb, XCB_PROP_MODE_REPLACE, requestor, property,
                                           m_connection.atom(QByteArrayLiteral("INCR")), 32, 1, &size);
    transfer.firstRequest = offer.sequence;
    m_transfers.push_back(std::move(transfer));
    m_stallCheck.start();
}

std::list<X11PasteboardOwner::Transfer>::iterator X11PasteboardOwner::findTransfer(xcb_window_t requestor,
                                                                                   xcb_atom_t property)
{
    return std::find_if(m_transfers.begin(), m_transfers.end(), [&](const Transfer &candidate) {
        return candidate.requestor == requestor && candidate.property == property;
    });
}

// @p latestRequest is the number of the latest request of ours that the server had carried out by then.
void X11PasteboardOwner::onPropertyDeleted(const xcb_property_notify_event_t &event, quint32 latestRequest)
{
    const auto transfer = findTransfer(event.window, event.atom);
    if (transfer == m_transfers.end())
        return;
    const bool isBeforeTheOffer = qint32(latestRequest - transfer->firstRequest) < 0;
    if (isBeforeTheOffer) // what was there was of an earlier transfer
        return;
    const X11PasteboardEntry &entry = transfer->entry;
    const qsizetype size = std::min(incrementSize, entry.bytes.size() - transfer->sent);
    xcb_change_property(m_connection.connection(), XCB_PROP_MODE_REPLACE, event.window, event.atom,
                        entry.type, entry.format, quint32(size / (entry.format / 8)),
                        entry.bytes.constData() + transfer->sent);
    transfer->sent += size;
    transfer->quiet.restart();
    if (size == 0) { // the empty increment has said that this was all
        const xcb_atom_t target = entry.target;
        endTransfer(transfer);
        Q_EMIT dataRead(event.window, target);
    }
    m_connection.flush();
}

void X11PasteboardOwner::endTransfer(std::list<Transfer>::iterator transfer)
{
    const xcb_window_t requestor = transfer->requestor;
    const quint32 eventMask = transfer->earlierEventMask;
    m_transfers.erase(transfer);
    const bool isLast = std::none_of(m_transfers.begin(), m_transfers.end(),
                                     [&](const Transfer &other) { return other.requestor == requestor; });
    if (isLast && m_connection.isValid())
        xcb_change_window_attributes(m_connection.connection(), requestor, XCB_CW_EVENT_MASK, &eventMask);
    if (m_transfers.empty())
        m_stallCheck.stop();
}

void X11PasteboardOwner::dropStalledTransfers()
{
    for (auto transfer = m_transfers.begin(); transfer != m_transfers.end();) {
        const auto next = std::next(transfer);
        if (transfer->quiet.hasExpired(transferPatience.count())) {
            qCInfo(log) << "a client stopped reading after" << transfer->sent << "of"
                        << transfer->entry.bytes.size() << "bytes";
            endTransfer(transfer);
        }
        transfer = next;
    }
}

void X11PasteboardOwner::forgetRequestor(xcb_window_t requestor)
{
    for (auto transfer = m_transfers.begin(); transfer != m_transfers.end();) {
        const auto next = std::next(transfer);
        if (transfer->requestor == requestor)
            endTransfer(transfer);
        transfer = next;
    }
}

const X11PasteboardContent &X11PasteboardOwner::contentAt(xcb_timestamp_t time) const
{
    // Server times wrap around after 49 days: only differences count.
    const auto isBefore = [](xcb_timestamp_t first, xcb_timestamp_t second) {
        return qint32(first - second) < 0;
    };
    const bool isFormer = m_former && time != XCB_CURRENT_TIME && isBefore(time, m_former->until) &&
                          !isBefore(time, m_former->from);
    return isFormer ? m_former->content : m_content;
}

void X11PasteboardOwner::serveUntil(const std::function<bool(const xcb_generic_event_t &)> &isDone,
                                    std::chrono::milliseconds deadline)
{
    const QDeadlineTimer timer(deadline, Qt::PreciseTimer);
    m_connection.flush();
    while (m_connection.isValid() && !timer.hasExpired()) {
        if (const auto event = m_connection.takeEvent()) {
            onEvent(*event);
            if (isDone(*event))
                return;
            continue;
        }
        pollfd descriptor{
            .fd = xcb_get_file_descriptor(m_connection.connection()), .events = POLLIN, .revents = 0};
        if (poll(&descriptor, 1, int(timer.remainingTime())) < 0 && errno != EINTR)
            return;
    }
}
