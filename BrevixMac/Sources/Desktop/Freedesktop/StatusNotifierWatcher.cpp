// SPDX-License-Identifier: GPL-3.0-or-later
#include "StatusNotifierWatcher.h"

#include <QCoroDBus>
#include <QDBusPendingCall>
#include <QDBusVariant>

namespace StatusNotifierWatcher {

QDBusMessage presenceQuestion()
{
    auto question = QDBusMessage::createMethodCall(
        QStringLiteral("org.freedesktop.DBus"), QStringLiteral("/org/freedesktop/DBus"),
        QStringLiteral("org.freedesktop.DBus"), QStringLiteral("NameHasOwner"));
    question << service;
    return question;
}

QDBusMessage hostQuestion()
{
    auto question = QDBusMessage::createMethodCall(
        service, path, QStringLiteral("org.freedesktop.DBus.Properties"), QStringLiteral("Get"));
    question << interface << QStringLiteral("IsStatusNotifierHostRegistered");
    return question;
}

bool saysHost(const QDBusMessage &answer)
{
    if (answer.type() != QDBusMessage::ReplyMessage)
        return true;
    return qvariant_cast<QDBusVariant>(answer.arguments().value(0)).variant().toBool();
}

QCoro::Task<Presence> presence(QDBusConnection bus)
{
    if (!bus.isConnected())
        co_return Presence::absent;
    const auto presenceCall = bus.asyncCall(presenceQuestion(), callTimeout);
    const QDBusMessage presenceAnswer = co_await presenceCall;
    if (!presenceAnswer.arguments().value(0).toBool())
        co_return Presence::absent;
    const auto hostCall = bus.asyncCall(hostQuestion(), callTimeout);
    const QDBusMessage hostAnswer = co_await hostCall;
    co_return saysHost(hostAnswer) ? Presence::withHost : Presence::withoutHost;
}

} // namespace StatusNotifierWatcher
