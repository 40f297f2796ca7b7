// SPDX-License-Identifier: GPL-3.0-or-later
#include "TrayStatusItem.h"

#include "Desktop/Freedesktop/StatusNotifierWatcher.h"
#include "Desktop/X11/X11Coordinates.h"
#include "Desktop/X11/X11SelectionOwner.h"

#include <QCursor>
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QDBusVariant>
#include <QLoggingCategory>
#include <QSystemTrayIcon>

namespace {

Q_LOGGING_CATEGORY(log, "brevix.tray", QtInfoMsg)

constexpr int callTimeout = StatusNotifierWatcher::callTimeout;
const QString &watcherService = StatusNotifierWatcher::service;
const QString &watcherPath = StatusNotifierWatcher::path;
const QString &watcherInterface = StatusNotifierWatcher::interface;

// Calls @p then with the answer, an error included.
template <typename Function>
void whenAnswered(const QDBusPendingCall &call, QObject *context, Function then)
{
    auto *watcher = new QDBusPendingCallWatcher(call, context);
    QObject::connect(watcher, &QDBusPendingCallWatcher::finished, context,
                     [then](QDBusPendingCallWatcher *finished) {
                         finished->deleteLater();
                         then(*finished);
                     });
}

QPoint positionNear(QPoint told)
{
    return told.isNull() ? QCursor::pos() : logicalPosition(told);
}

} // namespace

TrayStatusItem::TrayStatusItem(X11SelectionOwner *xembedHost, const QDBusConnection &bus)
    : m_bus(bus)
    , m_xembedHost(xembedHost)
    , m_item(bus)
{
    connect(&m_item, &StatusNotifierItem::pressed, this,
            [this](QPoint position) { Q_EMIT pressed(positionNear(position)); });
    if (m_xembedHost)
        connect(m_xembedHost, &X11SelectionOwner::changed, this, &TrayStatusItem::update);
    connect(&m_watcher, &QDBusServiceWatcher::serviceOwnerChanged, this,
            [this](const QString &, const QString &, const QString &owner) {
                owner.isEmpty() ? onWatcherGone() : onWatcherAppeared();
            });
}

TrayStatusItem::~TrayStatusItem() = default;

void TrayStatusItem::setImage(const QIcon &image)
{
    m_image = image;
    m_item.setIcon(image);
    if (m_embeddedIcon)
        m_embeddedIcon->setIcon(image);
}

void TrayStatusItem::setToolTip(const QString &toolTip)
{
    m_toolTip = toolTip;
    m_item.setToolTip(toolTip);
    if (m_embeddedIcon)
        m_embeddedIcon->setToolTip(toolTip);
}

void TrayStatusItem::install()
{
    if (m_isInstalled)
        return;
    m_isInstalled = true;
    if (!m_bus.isConnected()) {
        setNotifier(Notifier::absent);
        return;
    }
    m_watcher.setConnection(m_bus);
    m_watcher.setWatchMode(QDBusServiceWatcher::WatchForOwnerChange);
    m_watcher.addWatchedService(watcherService);
    m_bus.connect(watcherService, watcherPath, watcherInterface,
                  QStringLiteral("StatusNotifierHostRegistered"), this, SLOT(onHostRegistered()));
    m_bus.connect(watcherService, watcherPath, watcherInterface,
                  QStringLiteral("StatusNotifierHostUnregistered"), this, SLOT(onHostUnregistered()));
    askForWatcher();
}

void TrayStatusItem::askForWatcher()
{
    const auto question = StatusNotifierWatcher::presenceQuestion();
    whenAnswered(m_bus.asyncCall(question, callTimeout), this, [this](const QDBusPendingReply<bool> &reply) {
        if (m_generation > 0)
            return; // it has come or gone meanwhile
        if (reply.isValid() && reply.value())
            onWatcherAppeared();
        else
            onWatcherGone();
    });
}

void TrayStatusItem::onWatcherAppeared()
{
    // One that took over from another knows nothing of our item yet.
    ++m_generation;
    setNotifier(Notifier::unknown);
    askForHost();
}

void TrayStatusItem::onWatcherGone()
{
    ++m_generation;
    setNotifier(Notifier::absent);
}

void TrayStatusItem::onHostRegistered()
{
    if (m_notifier == Notifier::registered)
        return;
    ++m_generation;
    setNotifier(Notifier::present);
}

void TrayStatusItem::onHostUnregistered()
{
    // Another one may be left.
    ++m_generation;
    askForHost();
}

void TrayStatusItem::askForHost()
{
    const auto question = StatusNotifierWatcher::hostQuestion();
    whenAnswered(m_bus.asyncCall(question, callTimeout), this,
                 [this, generation = m_generation](const QDBusPendingReply<QDBusVariant> &reply) {
                     if (generation != m_generation)
                         return;
                     const bool hasHost = StatusNotifierWatcher::saysHost(reply.reply());
                     if (!hasHost)
                         setNotifier(Notifier::absent);
                     else if (m_notifier != Notifier::registered)
                         setNotifier(Notifier::present);
                 });
}

void TrayStatusItem::registerItem()
{
    if (!m_isItemPublished && !(m_isItemPublished = m_item.publish())) {
        qCInfo(log) << "the session bus does not take the tray item";
        setNotifier(Notifier::absent);
        return;
    }
    auto request = QDBusMessage::createMethodCall(watcherService, watcherPath, watcherInterface,
                                                  QStringLiteral("RegisterStatusNotifierItem"));
    request << m_item.service();
    whenAnswered(m_bus.asyncCall(request, callTimeout), this,
                 [this, generation = m_generation](const QDBusPendingReply<> &reply) {
                     if (generation != m_generation)
                         return;
                     if (reply.isError())
                         qCInfo(log) << "the tray refuses the item:" << reply.error().message();
                     setNotifier(reply.isError() ? Notifier::absent : Notifier::registered);
                 });
}

void TrayStatusItem::setNotifier(Notifier notifier)
{
    if (notifier == m_notifier)
        return;
    m_notifier = notifier;
    if (m_notifier == Notifier::present)
        registerItem();
    update();
}

// The one place that decides which icon exists.
void TrayStatusItem::update()
{
    const bool wantsEmbedded = m_isInstalled && m_notifier == Notifier::absent && m_xembedHost &&
                               m_xembedHost->window() != XCB_WINDOW_NONE;
    if (!wantsEmbedded)
        m_embeddedIcon.reset();
    else if (!m_embeddedIcon)
        makeEmbeddedIcon();
    if (const bool shown = isShown(); shown != m_wasShown) {
        m_wasShown = shown;
        Q_EMIT isShownChanged();
    }
}

// Made only while no host of the other protocol is there: Qt then settles on XEmbed, and for good.
void TrayStatusItem::makeEmbeddedIcon()
{
    m_embeddedIcon = std::make_unique<QSystemTrayIcon>(m_image);
    m_embeddedIcon->setToolTip(m_toolTip);
    connect(m_embeddedIcon.get(), &QSystemTrayIcon::activated, this,
            [this](QSystemTrayIcon::ActivationReason reason) {
                // The second press of a double click is a press like any other.
                if (reason == QSystemTrayIcon::Trigger || reason == QSystemTrayIcon::Context ||
                    reason == QSystemTrayIcon::DoubleClick)
                    Q_EMIT pressed(QCursor::pos());
            });
    m_embeddedIcon->show();
}

bool TrayStatusItem::isShown() const
{
    return m_notifier == Notifier::registered || m_embeddedIcon;
}

std::optional<QRect> TrayStatusItem::geometry() const
{
    const QRect place = m_embeddedIcon ? m_embeddedIcon->geometry() : QRect();
    // Until the host has embedded the icon, Qt tells where its window was made: at the origin.
    const bool isPlaced = !place.isEmpty() && place.topLeft() != QPoint(0, 0);
    return isPlaced ? std::optional(place) : std::nullopt;
}
