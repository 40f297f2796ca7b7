// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusVariant>
#include <QObject>
#include <QStringList>

/// A watcher of the StatusNotifierItem protocol on a bus connection of its own, as a panel brings one.
class FakeTrayWatcher : public QObject
{
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.kde.StatusNotifierWatcher")
    Q_PROPERTY(bool IsStatusNotifierHostRegistered READ hasHost)

public:
    explicit FakeTrayWatcher(bool host = true)
        : m_hasHost(host)
    {
        m_bus.registerObject(QStringLiteral("/StatusNotifierWatcher"), this,
                             QDBusConnection::ExportScriptableContents);
        m_bus.registerService(QStringLiteral("org.kde.StatusNotifierWatcher"));
    }

    ~FakeTrayWatcher() override
    {
        const QString name = m_bus.name();
        m_bus.unregisterService(QStringLiteral("org.kde.StatusNotifierWatcher"));
        m_bus.unregisterObject(QStringLiteral("/StatusNotifierWatcher"));
        QDBusConnection::disconnectFromBus(name);
    }

    bool hasHost() const { return m_hasHost; }

    void addHost()
    {
        m_hasHost = true;
        Q_EMIT StatusNotifierHostRegistered();
    }

    void removeHost()
    {
        m_hasHost = false;
        Q_EMIT StatusNotifierHostUnregistered();
    }

    /// What the item answers to @p method of @p interface.
    QDBusMessage ask(const QString &interface, const QString &method, const QVariantList &arguments)
    {
        auto call = QDBusMessage::createMethodCall(items.value(0), QStringLiteral("/StatusNotifierItem"),
                                                   interface, method);
        call.setArguments(arguments);
        return m_bus.call(call, QDBus::BlockWithGui, 3000);
    }

    QVariant property(const QString &name)
    {
        const auto answer = ask(QStringLiteral("org.freedesktop.DBus.Properties"), QStringLiteral("Get"),
                                {QStringLiteral("org.kde.StatusNotifierItem"), name});
        return qvariant_cast<QDBusVariant>(answer.arguments().value(0)).variant();
    }

    QDBusConnection &bus() { return m_bus; }

    QStringList items; ///< as they have registered

public Q_SLOTS:
    Q_SCRIPTABLE void RegisterStatusNotifierItem(const QString &service) { items.append(service); }

Q_SIGNALS:
    Q_SCRIPTABLE void StatusNotifierHostRegistered();
    Q_SCRIPTABLE void StatusNotifierHostUnregistered();

private:
    static QString nextName()
    {
        static int count = 0;
        return QStringLiteral("tray-watcher-%1").arg(++count);
    }

    QDBusConnection m_bus = QDBusConnection::connectToBus(QDBusConnection::SessionBus, nextName());
    bool m_hasHost;
};
