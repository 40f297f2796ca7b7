// SPDX-License-Identifier: GPL-3.0-or-later
#include "X11PasteboardReader.h"

#include <QLoggingCategory>

#include <xcb/xfixes.h>

#include <algorithm>

namespace {

Q_LOGGING_CATEGORY(log, "brevix.pasteboard", QtInfoMsg)

// An answer that comes after its reading was given up must not pass for the answer to a later request.
constexpr quint32 propertyCount = 16;

// Longest list of offered types that is read.
constexpr qint64 longestTypeList = qint64(256) * 1024;

QByteArray propertyName(quint32 number)
{
    return QByteArrayLiteral("_BREVIX_SELECTION_") + QByteArray::number(number % propertyCount);
}

bool isImage(const QByteArray &target)
{
    return target.startsWith("image/");
}

// 0 is read first. Lossless renderings come before the other pictures, the compressed one before the bulky
// ones.
int readingRank(const QByteArray &target)
{
    if (!isImage(target))
        return target.startsWith("text/") || target.contains("STRING") || target == "TEXT" ? 0 : 1;
    if (target == "image/png")
        return 2;
    if (target == "image/tiff" || target == "image/bmp" || target == "image/webp")
        return 3;
    return 4;
}

struct Property
{
    xcb_atom_t type = XCB_ATOM_NONE;
    quint8 format = 0;
    QByteArray bytes;
    bool isComplete = true;
};

// Takes a property off a window of ours, so that it does not stay in the server. One larger than @p limit
// stays, and gives its beginning.
Property takeProperty(X11Connection &connection, xcb_window_t window, xcb_atom_t property, qint64 limit)
{
    const auto cookie = xcb_get_property(connection.connection(), true, window, property,
                                         XCB_GET_PROPERTY_TYPE_ANY, 0, quint32(limit / 4 + 1));
    const XcbPointer<xcb_get_property_reply_t> reply(
        xcb_get_property_reply(connection.connection(), cookie, nullptr));
    if (!reply)
        return {};
    const auto *bytes = static_cast<const char *>(xcb_get_property_value(reply.get()));
    return {.type = reply->type,
            .format = reply->format,
            .bytes = QByteArray(bytes, xcb_get_property_value_length(reply.get())),
            .isComplete = reply->bytes_after == 0};
}

} // namespace

X11PasteboardReader::X11PasteboardReader(X11Connection &connection, const QByteArray &selection,
                                         QObject *parent)
    : QObject(parent)
    , m_connection(connection)
    , m_selection(connection.atom(selection))
    , m_window(xcb_generate_id(connection.connection()))
{
    m_deadline.setSingleShot(true);
    m_deadline.setTimerType(Qt::PreciseTimer);
    connect(&m_deadline, &QTimer::timeout, this, &X11PasteboardReader::onTimeLimit);
    connect(&connection, &X11Connection::closed, this, &X11PasteboardReader::cancel);
    if (!connection.isValid())
        return;

    connection.createHiddenWindow(m_window);
    const auto *fixes = xcb_get_extension_data(connection.connection(), &xcb_xfixes_id);
    if (fixes && fixes->present) {
        m_fixesEvent = fixes->first_event;
        const auto cookie = xcb_xfixes_query_version(connection.connection(), 5, 0);
        xcb_discard_reply(connection.connection(), cookie.sequence);
        xcb_xfixes_select_selection_input(connection.connection(), m_window, m_selection,
                                          XCB_XFIXES_SELECTION_EVENT_MASK_SET_SELECTION_OWNER |
                                              XCB_XFIXES_SELECTION_EVENT_MASK_SELECTION_WINDOW_DESTROY |
                                              XCB_XFIXES_SELECTION_EVENT_MASK_SELECTION_CLIENT_CLOSE);
    }
    m_subscription = connection.addEventHandler([this](const xcb_generic_event_t &event) { onEvent(event); });
}

X11PasteboardReader::~X11PasteboardReader()
{
    cancel();
    if (m_connection.isValid())
        xcb_destroy_window(m_connection.connection(), m_window);
}

QFuture<X11PasteboardReader::Result> X11PasteboardReader::read(Limits limits)
{
    if (m_promise)
        return m_promise->future();
    m_promise.emplace();
    m_promise->start();
    QFuture<Result> future = m_promise->future();
    m_limits = limits;
    m_clock.start();
    start();
    return future;
}

void X11PasteboardReader::cancel()
{
    finish(std::nullopt);
}

void X11PasteboardReader::start()
{
    m_offered.clear();
    m_waiting.clear();
    m_content = {};
    m_slowestImage = 0;
    m_largestImage = 0;
    const auto cookie = xcb_get_selection_owner(m_connection.connection(), m_selection);
    const XcbPointer<xcb_get_selection_owner_reply_t> owner(
        xcb_get_selection_owner_reply(m_connection.connection(), cookie, nullptr));
    if (!owner || m_connection.isOwnResource(owner->owner)) {
        cancel();
    } else if (owner->owner == XCB_WINDOW_NONE) {
        finish(Snapshot{.content = std::nullopt, .ownerGeneration = m_ownerGeneration});
    } else {
        m_time = m_connection.serverTime();
        m_step = Step::targets;
        request(m_connection.atom(QByteArrayLiteral("TARGETS")));
    }
}

void X11PasteboardReader::request(xcb_atom_t target)
{
    m_property = m_connection.atom(propertyName(m_requests++));
    m_current = {};
    m_current.target = target;
    m_requestClock.start();
    restartDeadline();
    xcb_delete_property(m_connection.connection(), m_window, m_property);
    xcb_convert_selection(m_connection.connection(), m_window, m_selection, target, m_property, m_time);
    m_connection.flush();
}

void X11PasteboardReader::onEvent(const xcb_generic_event_t &event)
{
    const quint8 type = eventKind(event);
    if (type == XCB_SELECTION_NOTIFY) {
        onSelectionNotify(reinterpret_cast<const xcb_selection_notify_event_t &>(event));
    } else if (type == XCB_PROPERTY_NOTIFY) {
        onPropertyChanged(reinterpret_cast<const xcb_property_notify_event_t &>(event));
    } else if (m_fixesEvent && type == m_fixesEvent + XCB_XFIXES_SELECTION_NOTIFY) {
        const auto &notify = reinterpret_cast<const xcb_xfixes_selection_notify_event_t &>(event);
        if (notify.window == m_window && notify.selection == m_selection)
            onOwnerChanged();
    }
}

void X11PasteboardReader::onOwnerChanged()
{
    ++m_ownerGeneration;
    // Half of the old owner's content with half of the new one's would be nobody's. The time limit stays.
    if (m_promise)
        start();
}

void X11PasteboardReader::onSelectionNotify(const xcb_selection_notify_event_t &event)
{
    if (event.requestor != m_window || event.selection != m_selection || event.target != m_current.target ||
        (event.property != m_property && event.property != XCB_ATOM_NONE))
        return;
    const bool isAnswered = event.property != XCB_ATOM_NONE;
    if (m_step == Step::targets)
        onTargets(isAnswered);
    else if (m_step == Step::data)
        onData(isAnswered);
}

void X11PasteboardReader::onTargets(bool isAnswered)
{
    if (isAnswered) {
        const Property property = takeProperty(m_connection, m_window, m_property, longestTypeList);
        if (property.format == 32) {
            const auto *atoms = reinterpret_cast<const xcb_atom_t *>(property.bytes.constData());
            m_offered =
                QList<xcb_atom_t>(atoms, atoms + property.bytes.size() / qsizetype(sizeof(xcb_atom_t)));
        }
    } else {
        // Very old owners speak text only and do not say so.
        m_offered = {m_connection.atom(QByteArrayLiteral("UTF8_STRING")), XCB_ATOM_STRING};
    }
    m_connection.fetchAtomNames(m_offered);
    for (const xcb_atom_t target : std::as_const(m_offered)) {
        if (!m_waiting.contains(target) && isKeptTarget(m_connection.atomName(target)))
            m_waiting.append(target);
    }
    const auto rank = [this](xcb_atom_t target) { return readingRank(m_connection.atomName(target)); };
    std::stable_sort(m_waiting.begin(), m_waiting.end(),
                     [&](xcb_atom_t first, xcb_atom_t second) { return rank(first) < rank(second); });
    requestNext();
}

void X11PasteboardReader::requestNext()
{
    m_step = Step::data;
    if (m_waiting.isEmpty() || skipsFurtherImages(m_waiting.first()))
        finishWithContent();
    else
        request(m_waiting.takeFirst());
}

void X11PasteboardReader::onData(bool isAnswered)
{
    if (!isAnswered) { // refused: left out
        requestNext();
        return;
    }
    const Property property = takeProperty(m_connection, m_window, m_property, remainingBytes());
    if (property.type == m_connection.atom(QByteArrayLiteral("INCR"))) {
        quint32 atLeast = 0;
        if (property.format == 32 && property.bytes.size() >= qsizetype(sizeof atLeast))
            std::memcpy(&atLeast, property.bytes.constData(), sizeof atLeast);
        m_step = Step::increments;
        if (atLeast > remainingBytes())
            onTimeLimit();
        else
            m_connection.flush(); // taking the property has told the owner to go on
        return;
    }
    if (!property.isComplete) {
        onTimeLimit();
    } else if (property.type == XCB_ATOM_NONE) {
        requestNext();
    } else {
        m_current.type = property.type;
        m_current.format = property.format;
        m_current.bytes = property.bytes;
        keep(std::move(m_current));
    }
}

void X11PasteboardReader::onPropertyChanged(const xcb_property_notify_event_t &event)
{
    if (event.window != m_window || event.state != XCB_PROPERTY_NEW_VALUE)
        return;
    const bool isLate = event.atom != m_property || m_step == Step::idle;
    if (isLate) // drained, so that its owner ends
        xcb_delete_property(m_connection.connection(), m_window, event.atom);
    else if (m_step == Step::increments)
        onIncrement();
}

void X11PasteboardReader::onIncrement()
{
    const Property property = takeProperty(m_connection, m_window, m_property, remainingBytes());
    m_connection.flush();
    if (property.type == XCB_ATOM_NONE) // an old notification; the increment is still to come
        return;
    if (!property.isComplete || property.bytes.size() > remainingBytes()) {
        onTimeLimit();
        return;
    }
    if (m_current.type == XCB_ATOM_NONE ||
        !property.bytes.isEmpty()) { // the last, empty one may carry another type
        m_current.type = property.type;
        m_current.format = property.format;
    }
    m_current.bytes += property.bytes;
    restartDeadline();
    if (property.bytes.isEmpty())
        keep(std::move(m_current));
}

void X11PasteboardReader::keep(X11PasteboardEntry entry)
{
    if (isImage(m_connection.atomName(entry.target))) {
        m_slowestImage = std::max(m_slowestImage, m_requestClock.elapsed());
        m_largestImage = std::max(m_largestImage, qint64(entry.bytes.size()));
    }
    m_content.entries.append(std::move(entry));
    m_current = {};
    requestNext();
}

/// The other renderings of a picture are each about as slow and as large as the first.
bool X11PasteboardReader::skipsFurtherImages(xcb_atom_t next) const
{
    if (m_largestImage == 0 || !isImage(m_connection.atomName(next)))
        return false;
    const qint64 count = m_waiting.size();
    const qint64 remainingTime = m_limits.time.count() - m_clock.elapsed();
    return m_slowestImage * count > remainingTime || m_largestImage * count > remainingBytes();
}

qint64 X11PasteboardReader::remainingBytes() const
{
    return std::max<qint64>(0, m_limits.bytes - m_content.byteCount() - m_current.bytes.size());
}

void X11PasteboardReader::onTimeLimit()
{
    // An owner that waits for its increment to be taken would wait for ever; what it sends from now on is
    // drained.
    xcb_delete_property(m_connection.connection(), m_window, m_property);
    m_connection.flush();
    // With one rendering of the picture kept, the others are no loss.
    if (m_step >= Step::data && m_largestImage > 0 && isImage(m_connection.atomName(m_current.target))) {
        finishWithContent();
        return;
    }
    qCInfo(log) << "the selection's owner was too slow or offers too much:" << m_clock.elapsed() << "ms,"
                << m_content.byteCount() + m_current.bytes.size() << "bytes of" << m_offered.size()
                << "targets";
    finish(std::nullopt);
}

void X11PasteboardReader::restartDeadline()
{
    const auto left = m_limits.total - std::chrono::milliseconds(m_clock.elapsed());
    m_deadline.start(std::clamp(left, std::chrono::milliseconds::zero(), m_limits.time));
}

void X11PasteboardReader::finishWithContent()
{
    std::stable_sort(m_content.entries.begin(), m_content.entries.end(),
                     [this](const X11PasteboardEntry &first, const X11PasteboardEntry &second) {
                         return m_offered.indexOf(first.target) < m_offered.indexOf(second.target);
                     });
    finish(Snapshot{.content = std::move(m_content), .ownerGeneration = m_ownerGeneration});
}

void X11PasteboardReader::finish(Result result)
{
    if (!m_promise)
        return;
    m_deadline.stop();
    m_step = Step::idle;
    m_current = {};
    m_content = {};
    QPromise<Result> promise = std::move(*m_promise);
    m_promise.reset();
    promise.addResult(std::move(result));
    promise.finish();
}
