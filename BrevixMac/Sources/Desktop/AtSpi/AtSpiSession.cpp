// SPDX-License-Identifier: GPL-3.0-or-later
#include "AtSpiSession.h"

#include "AtSpiBus.h"

#include <QCoroDBus>
#include <QDBusArgument>
#include <QDBusMessage>
#include <QDBusPendingCall>
#include <QDBusVariant>

namespace {

const QString serviceName = QStringLiteral("org.a11y.Bus");
const QString servicePath = QStringLiteral("/org/a11y/bus");
const QString statusInterface = QStringLiteral("org.a11y.Status");
const QString propertiesInterface = QStringLiteral("org.freedesktop.DBus.Properties");
const QString isEnabledProperty = QStringLiteral("IsEnabled");
const QString daemonName = QStringLiteral("org.freedesktop.DBus");
const QString daemonPath = QStringLiteral("/org/freedesktop/DBus");

// The first question of a session starts the service.
constexpr int startDeadlineMs = 5000;

QDBusMessage propertyMessage(const QString &member, const QVariantList &arguments)
{
    auto message = QDBusMessage::createMethodCall(serviceName, servicePath, propertiesInterface, member);
    message.setArguments(arguments);
    return message;
}

} // namespace

// The service is left out of the match: naming it would make Qt ask for its owner while we wait.
AtSpiSession::AtSpiSession(QDBusConnection session)
    : m_session(std::move(session))
{
    if (!m_session.isConnected())
        return;
    m_session.connect(QString(), servicePath, propertiesInterface, QStringLiteral("PropertiesChanged"), this,
                      SLOT(onPropertiesChanged(QString, QVariantMap, QStringList)));
    m_session.connect(daemonName, daemonPath, daemonName, QStringLiteral("NameOwnerChanged"), {serviceName},
                      QString(), this, SLOT(onNameOwnerChanged(QString, QString, QString)));
    detach(readIsEnabled(m_tasks.token()), "reading the accessibility status");
}

void AtSpiSession::enable()
{
    detach(writeIsEnabled(m_tasks.token()), "switching accessibility on");
}

QCoro::Task<std::optional<QString>> AtSpiSession::address(QDBusConnection session)
{
    if (!session.isConnected())
        co_return std::nullopt;
    const auto question =
        QDBusMessage::createMethodCall(serviceName, servicePath, serviceName, QStringLiteral("GetAddress"));
    const auto pending = session.asyncCall(question, startDeadlineMs);
    const QDBusMessage reply = co_await pending;
    const auto address = replyValue<QString>(reply);
    if (!address || address->isEmpty())
        co_return std::nullopt;
    co_return address;
}

QCoro::Task<std::optional<bool>> AtSpiSession::askIsEnabled(QDBusConnection session)
{
    const auto question = propertyMessage(QStringLiteral("Get"), {statusInterface, isEnabledProperty});
    const auto pending = session.asyncCall(question, startDeadlineMs);
    const QDBusMessage reply = co_await pending;
    co_return replyValue<bool>(reply);
}

QCoro::Task<> AtSpiSession::readIsEnabled(std::stop_token token)
{
    const auto isEnabled = co_await askIsEnabled(m_session);
    if (token.stop_requested())
        co_return;
    setIsEnabled(isEnabled.value_or(false));
}

QCoro::Task<> AtSpiSession::writeIsEnabled(std::stop_token token)
{
    if (!m_session.isConnected())
        co_return;
    const QVariant on = QVariant::fromValue(QDBusVariant(true));
    const auto request = propertyMessage(QStringLiteral("Set"), {statusInterface, isEnabledProperty, on});
    const auto pending = m_session.asyncCall(request, startDeadlineMs);
    const QDBusMessage reply = co_await pending;
    if (token.stop_requested())
        co_return;
    // Read it rather than trust the reply: the setting may be locked by the administrator.
    co_await readIsEnabled(token);
}

void AtSpiSession::setIsEnabled(bool isEnabled)
{
    if (m_isEnabled == isEnabled)
        return;
    m_isEnabled = isEnabled;
    Q_EMIT isEnabledChanged();
}

void AtSpiSession::onPropertiesChanged(const QString &interface, const QVariantMap &changed,
                                       const QStringList &invalidated)
{
    if (interface != statusInterface)
        return;
    if (changed.contains(isEnabledProperty))
        setIsEnabled(changed.value(isEnabledProperty).toBool());
    else if (invalidated.contains(isEnabledProperty))
        detach(readIsEnabled(m_tasks.token()), "reading the accessibility status");
}

void AtSpiSession::onNameOwnerChanged(const QString &name, const QString &oldOwner, const QString &newOwner)
{
    if (name != serviceName)
        return;
    if (newOwner.isEmpty()) {
        setIsEnabled(false);
        return;
    }
    detach(readIsEnabled(m_tasks.token()), "reading the accessibility status");
    Q_EMIT serviceAppeared();
}
