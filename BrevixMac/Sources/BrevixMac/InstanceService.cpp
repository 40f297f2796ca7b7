// SPDX-License-Identifier: GPL-3.0-or-later
#include "InstanceService.h"

#include <QDBusConnection>
#include <QDBusConnectionInterface>
#include <QDBusMessage>

namespace {

const QString serviceName = QStringLiteral("app.brevix.Brevix");
const QString objectPath = QStringLiteral("/app/brevix/Brevix");
const QString applicationInterface = QStringLiteral("org.freedesktop.Application");
constexpr std::chrono::milliseconds answerPatience{2000};

InstanceService::Reply send(const QString &interface, const QString &method, const QVariantList &arguments,
                            std::chrono::milliseconds patience = answerPatience)
{
    using Answer = InstanceService::Answer;
    const QDBusConnection bus = QDBusConnection::sessionBus();
    if (!bus.isConnected())
        return {.answer = Answer::noBus, .text = {}};
    QDBusMessage call = QDBusMessage::createMethodCall(serviceName, objectPath, interface, method);
    call.setArguments(arguments);
    call.setAutoStartService(false);
    const QDBusMessage reply = bus.call(call, QDBus::Block, static_cast<int>(patience.count()));
    if (reply.type() != QDBusMessage::ErrorMessage)
        return {.answer = Answer::done, .text = reply.arguments().value(0).toString()};
    const bool isAbsent = reply.errorName() == QLatin1String("org.freedesktop.DBus.Error.ServiceUnknown") ||
                          reply.errorName() == QLatin1String("org.freedesktop.DBus.Error.NameHasNoOwner");
    return {.answer = isAbsent ? Answer::notRunning : Answer::failed, .text = {}};
}

} // namespace

InstanceService::InstanceService(QObject *parent)
    : QObject(parent)
{
    new FreedesktopApplication(this); // an adaptor belongs to its object
}

bool InstanceService::claim()
{
    QDBusConnection bus = QDBusConnection::sessionBus();
    if (!bus.isConnected())
        return true;
    // The object first: whoever sees the name must be able to call it.
    bus.registerObject(objectPath, this,
                       QDBusConnection::ExportScriptableSlots | QDBusConnection::ExportNonScriptableSlots |
                           QDBusConnection::ExportAdaptors);
    return bus.registerService(serviceName);
}

InstanceService::Answer InstanceService::ask(const QString &method)
{
    return send(serviceName, method, {}).answer;
}

InstanceService::Reply InstanceService::askForText(const QString &method, std::chrono::milliseconds patience)
{
    return send(serviceName, method, {}, patience);
}

QString InstanceService::Doctor(const QDBusMessage &call)
{
    call.setDelayedReply(true);
    Q_EMIT doctorRequested(call);
    return {};
}

InstanceService::Answer InstanceService::open(const QString &address)
{
    return send(applicationInterface, QStringLiteral("Open"), {QStringList{address}, QVariantMap()}).answer;
}

FreedesktopApplication::FreedesktopApplication(InstanceService *instance)
    : QDBusAbstractAdaptor(instance)
    , m_instance(*instance)
{
}

void FreedesktopApplication::Activate(const QVariantMap &)
{
    m_instance.Show();
}

void FreedesktopApplication::Open(const QStringList &uris, const QVariantMap &)
{
    for (const QString &uri : uris)
        Q_EMIT m_instance.openRequested(uri);
}

void FreedesktopApplication::ActivateAction(const QString &name, const QVariantList &, const QVariantMap &)
{
    if (name == u"toggle")
        m_instance.Toggle();
}
