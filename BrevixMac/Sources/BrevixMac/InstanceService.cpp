// SPDX-License-Identifier: GPL-3.0-or-later
#include "InstanceService.h"

#include <QDBusConnection>
#include <QDBusConnectionInterface>
#include <QDBusMessage>

namespace {

const QString serviceName = QStringLiteral("app.brevix.Brevix");
const QString objectPath = QStringLiteral("/app/brevix/Brevix");
constexpr int answerTimeout = 2000; // milliseconds

} // namespace

bool InstanceService::claim()
{
    QDBusConnection bus = QDBusConnection::sessionBus();
    if (!bus.isConnected())
        return true;
    // The object first: whoever sees the name must be able to call it.
    bus.registerObject(objectPath, this,
                       QDBusConnection::ExportScriptableSlots | QDBusConnection::ExportNonScriptableSlots);
    return bus.registerService(serviceName);
}

InstanceService::Answer InstanceService::ask(const QString &method)
{
    const QDBusConnection bus = QDBusConnection::sessionBus();
    if (!bus.isConnected())
        return Answer::noBus;
    QDBusMessage call = QDBusMessage::createMethodCall(serviceName, objectPath, serviceName, method);
    call.setAutoStartService(false);
    const QDBusMessage reply = bus.call(call, QDBus::Block, answerTimeout);
    if (reply.type() != QDBusMessage::ErrorMessage)
        return Answer::done;
    const bool isAbsent = reply.errorName() == QLatin1String("org.freedesktop.DBus.Error.ServiceUnknown") ||
                          reply.errorName() == QLatin1String("org.freedesktop.DBus.Error.NameHasNoOwner");
    return isAbsent ? Answer::notRunning : Answer::failed;
}
