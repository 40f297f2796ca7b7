// SPDX-License-Identifier: GPL-3.0-or-later
#include "X11Pasteboard.h"

#include "X11KeyEvents.h"

#include <QCoroFuture>
#include <QLoggingCategory>

#include <algorithm>

namespace {

Q_LOGGING_CATEGORY(log, "brevix.pasteboard", QtInfoMsg)

using namespace std::chrono_literals;

// Some browsers ask twice, 20 ms apart on an idle machine and several hundred on a busy one. How busy it is
// shows in the time from the chord to the first reading, usually some 5 ms.
constexpr std::chrono::milliseconds quietAfterReading = 600ms;
constexpr std::chrono::milliseconds longestQuietAfterReading = 4s;
constexpr int quietPerLatency = 10;
// A reader that is not the application in front may be its helper (a virtual machine's screen, a remote
// session), or a clipboard history that looks at everything. The real reader gets more time then.
constexpr auto quietAfterStrangersReading = 2s;
constexpr auto restoreCap = 8s;
// The selection of the terminal in front; the keys come 180 ms later.
constexpr X11PasteboardReader::Limits primaryLimits{
    .time = 100ms, .total = 100ms, .bytes = qint64(4) * 1024 * 1024};
// A snapshot can be large, and what is not pasted over soon is not worth the memory.
constexpr auto snapshotLife = 30s;
constexpr auto handOverTime = 300ms;

std::chrono::milliseconds quietFor(std::chrono::milliseconds latency)
{
    return std::clamp(quietPerLatency * latency, quietAfterReading, longestQuietAfterReading);
}

} // namespace

X11Pasteboard::X11Pasteboard(X11Connection &connection, X11KeyEvents *keyEvents, QObject *parent)
    : Pasteboard(parent)
    , m_connection(connection)
    , m_keyEvents(keyEvents)
    , m_clipboard(connection, QByteArrayLiteral("CLIPBOARD"))
    , m_primary(connection, QByteArrayLiteral("PRIMARY"))
    , m_clipboardReader(connection, QByteArrayLiteral("CLIPBOARD"))
    , m_primaryReader(connection, QByteArrayLiteral("PRIMARY"))
{
    connect(&m_clipboard, &X11PasteboardOwner::dataRead, this, &X11Pasteboard::onDataRead);
    connect(&m_primary, &X11PasteboardOwner::dataRead, this, &X11Pasteboard::onDataRead);
    connect(&m_clipboard, &X11PasteboardOwner::lost, this, &X11Pasteboard::onClipboardLost);
    if (keyEvents)
        connect(keyEvents, &X11KeyEvents::aboutToPostPasteChord, this, &X11Pasteboard::onAboutToPostChord);
    if (keyEvents)
        connect(keyEvents, &X11KeyEvents::pasteChordDropped, this, [this] {
            if (m_transient)
                m_transient->isChordPosted = false;
        });
    for (QTimer *timer : {&m_quietTimer, &m_capTimer, &m_snapshotExpiry}) {
        timer->setSingleShot(true);
        timer->setTimerType(Qt::PreciseTimer);
    }
    connect(&m_quietTimer, &QTimer::timeout, this, &X11Pasteboard::considerRestoring);
    connect(&m_capTimer, &QTimer::timeout, this, &X11Pasteboard::finishRestoring);
    connect(&m_snapshotExpiry, &QTimer::timeout, this, [this] { m_lastSnapshot.reset(); });
}

X11Pasteboard::~X11Pasteboard()
{
    if (m_transient && !m_transient->isRestoreAskedFor) {
        m_transient->isRestoreAskedFor = true;
        m_transient->restoredContent = m_transient->originalContent;
    }
    finishRestoring();
    handOver();
}

QCoro::Task<std::optional<QList<PasteboardItem>>> X11Pasteboard::items()
{
    const std::stop_token token = m_tasks.token();
    if (m_clipboard.isOwned() && m_clipboard.isStillOwned())
        co_return knownItems();
    const auto future = m_clipboardReader.read({});
    const X11PasteboardReader::Result result = co_await future;
    if (token.stop_requested())
        co_return std::nullopt;
    if (m_clipboard.isOwned()) // taken by ourselves meanwhile
        co_return knownItems();
    if (!result)
        co_return std::nullopt;
    m_lastSnapshot = *result;
    m_snapshotExpiry.start(snapshotLife);
    co_return itemsOfSnapshot(*result);
}

QList<PasteboardItem> X11Pasteboard::itemsOfSnapshot(const X11PasteboardReader::Snapshot &snapshot) const
{
    return snapshot.content ? itemsOfContent(m_connection, *snapshot.content) : QList<PasteboardItem>();
}

/// What we own ourselves; in the time of a transient text, what was there before it.
std::optional<QList<PasteboardItem>> X11Pasteboard::knownItems() const
{
    if (m_transient)
        return m_transient->original;
    return itemsOfContent(m_connection, m_clipboard.content());
}

bool X11Pasteboard::setString(const QString &text)
{
    const bool isSet = m_clipboard.own(contentOfText(m_connection, text));
    if (isSet)
        abandonTransient();
    return isSet;
}

bool X11Pasteboard::setTransientString(const QString &text, PasteConvention convention)
{
    Transient next;
    if (m_transient) {
        next = *m_transient;
        ++next.awaitedRestores;
        next.isChordPosted = false;
        next.quietEnd.reset();
    } else {
        rememberOriginal(next);
    }
    next.text = contentOfTransientText(m_connection, text);
    if (!m_clipboard.own(next.text))
        return false;
    m_quietTimer.stop();
    if (next.isRestoreAskedFor)
        m_capTimer.start(restoreCap);
    m_transient = std::move(next);
    m_lastSnapshot.reset();
    if (convention == PasteConvention::primarySelection)
        preparePrimary();
    return true;
}

void X11Pasteboard::rememberOriginal(Transient &transient) const
{
    if (m_clipboard.isOwned() && m_clipboard.isStillOwned()) {
        transient.originalContent = m_clipboard.content();
        transient.original = knownItems();
    } else if (m_lastSnapshot) {
        transient.originalContent = m_lastSnapshot->content.value_or(X11PasteboardContent());
        if (m_lastSnapshot->ownerGeneration == m_clipboardReader.ownerGeneration())
            transient.original = itemsOfSnapshot(*m_lastSnapshot);
    }
}

void X11Pasteboard::preparePrimary()
{
    m_transient->takesPrimary = true;
    if (m_primary.isOwned()) {
        if (!m_transient->originalPrimary)
            m_transient->originalPrimary = m_primary.content();
        takePrimary();
        return;
    }
    m_primaryReader.read(primaryLimits).then(this, [this](const X11PasteboardReader::Result &result) {
        onPrimaryRead(result);
    });
}

void X11Pasteboard::onPrimaryRead(const X11PasteboardReader::Result &result)
{
    if (!m_transient || !m_transient->takesPrimary || m_primary.isOwned())
        return;
    if (result && result->content)
        m_transient->originalPrimary = *result->content;
    takePrimary();
}

void X11Pasteboard::takePrimary()
{
    if (!m_primary.own(m_transient->text))
        qCInfo(log) << "the primary selection was refused";
}

void X11Pasteboard::onAboutToPostChord()
{
    if (!m_transient)
        return;
    m_transient->isChordPosted = true;
    qCDebug(log) << "the chord goes out";
    m_transient->sinceChord.start();
    m_transient->latency.reset();
    m_transient->quietEnd.reset();
    if (m_transient->takesPrimary && m_primary.content() != m_transient->text)
        takePrimary(); // its old content could not be read in time: the paste goes before
}

void X11Pasteboard::onDataRead(quint32 requestor, quint32 target)
{
    if (!m_transient || !X11PasteboardContent::isText(m_connection, target))
        return;
    if (m_keyEvents && !m_transient->isChordPosted)
        return;
    // The application in front decides: others that read as well neither shorten nor lengthen its quiet time.
    const bool isInFront = isFocusedClient(requestor);
    if (isInFront || !m_transient->quietEnd) {
        if (isInFront && !m_transient->latency && m_transient->sinceChord.isValid())
            m_transient->latency = std::chrono::milliseconds(m_transient->sinceChord.elapsed());
        const std::chrono::milliseconds quiet =
            isInFront ? quietFor(m_transient->latency.value_or(0ms)) : quietAfterStrangersReading;
        m_transient->quietEnd = QDeadlineTimer(quiet, Qt::PreciseTimer);
    }
    considerRestoring();
}

bool X11Pasteboard::isFocusedClient(quint32 window) const
{
    const auto cookie = xcb_get_input_focus(m_connection.connection());
    const XcbPointer<xcb_get_input_focus_reply_t> reply(
        xcb_get_input_focus_reply(m_connection.connection(), cookie, nullptr));
    return reply && m_connection.isSameClient(reply->focus, window);
}

bool X11Pasteboard::restore(const QList<PasteboardItem> &items)
{
    if (!m_transient) {
        // Somebody has copied since: theirs stays.
        QMetaObject::invokeMethod(this, &Pasteboard::restored, Qt::QueuedConnection);
        return true;
    }
    m_transient->isRestoreAskedFor = true;
    m_transient->awaitedRestores = std::max(0, m_transient->awaitedRestores - 1);
    m_transient->restoredContent = contentOfItems(m_connection, items, m_transient->originalContent);
    m_capTimer.start(restoreCap);
    if (m_keyEvents && !m_transient->isChordPosted && m_transient->awaitedRestores == 0)
        finishRestoring(); // nobody was told to paste
    else
        considerRestoring();
    return true;
}

void X11Pasteboard::considerRestoring()
{
    if (!m_transient || !m_transient->isRestoreAskedFor || m_transient->awaitedRestores > 0 ||
        !m_transient->quietEnd)
        return;
    const bool isQuiet = m_transient->quietEnd->hasExpired();
    if (isQuiet && !m_clipboard.isTransferring() && !m_primary.isTransferring())
        finishRestoring();
    else
        m_quietTimer.start(isQuiet ? quietAfterReading
                                   : std::chrono::milliseconds(m_transient->quietEnd->remainingTime()));
}

void X11Pasteboard::finishRestoring()
{
    if (!m_transient || !m_transient->isRestoreAskedFor)
        return;
    const X11PasteboardContent content = m_transient->restoredContent;
    restorePrimary();
    if (content.isEmpty())
        m_clipboard.disown();
    else
        m_clipboard.replace(content);
    m_transient.reset();
    m_quietTimer.stop();
    m_capTimer.stop();
    qCDebug(log) << "restored";
    Q_EMIT restored();
}

void X11Pasteboard::restorePrimary()
{
    if (!m_transient->takesPrimary || !m_primary.isOwned())
        return;
    if (m_transient->originalPrimary && !m_transient->originalPrimary->isEmpty())
        m_primary.replace(*m_transient->originalPrimary);
    else
        m_primary.disown();
}

void X11Pasteboard::clearContents()
{
    // Owned for a moment first, so that the owner before us learns that it has lost the clipboard.
    m_clipboard.own({});
    m_clipboard.disown();
    abandonTransient();
}

void X11Pasteboard::onClipboardLost()
{
    abandonTransient();
}

/// The transient text is no longer on the clipboard, so there is nothing left to put back.
void X11Pasteboard::abandonTransient()
{
    if (!m_transient)
        return;
    restorePrimary();
    const bool wasRestoreAskedFor = m_transient->isRestoreAskedFor;
    m_transient.reset();
    m_quietTimer.stop();
    m_capTimer.stop();
    if (wasRestoreAskedFor)
        Q_EMIT restored();
}

/// A clipboard manager takes a copy, so that the content outlives this process.
void X11Pasteboard::handOver()
{
    if (!m_connection.isValid() || !m_clipboard.isStillOwned() || m_clipboard.content().isEmpty())
        return;
    auto *xcb = m_connection.connection();
    const xcb_atom_t manager = m_connection.atom(QByteArrayLiteral("CLIPBOARD_MANAGER"));
    const XcbPointer<xcb_get_selection_owner_reply_t> owner(
        xcb_get_selection_owner_reply(xcb, xcb_get_selection_owner(xcb, manager), nullptr));
    if (!owner || owner->owner == XCB_WINDOW_NONE)
        return;

    std::vector<xcb_atom_t> targets;
    for (const X11PasteboardEntry &entry : m_clipboard.content().entries)
        targets.push_back(entry.target);
    const xcb_window_t window = m_connection.helperWindow();
    const xcb_atom_t property = m_connection.atom(QByteArrayLiteral("_BREVIX_SAVED_TARGETS"));
    xcb_change_property(xcb, XCB_PROP_MODE_REPLACE, window, property, XCB_ATOM_ATOM, 32,
                        quint32(targets.size()), targets.data());
    xcb_convert_selection(xcb, window, manager, m_connection.atom(QByteArrayLiteral("SAVE_TARGETS")),
                          property, m_connection.serverTime());
    m_clipboard.serveUntil(
        [manager](const xcb_generic_event_t &event) {
            const auto &notify = reinterpret_cast<const xcb_selection_notify_event_t &>(event);
            return eventKind(event) == XCB_SELECTION_NOTIFY && notify.selection == manager;
        },
        handOverTime);
}
