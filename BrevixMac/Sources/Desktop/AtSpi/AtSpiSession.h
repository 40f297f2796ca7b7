// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Foundation/TaskScope.h"

#include <QCoroTask>
#include <QDBusConnection>
#include <QObject>

#include <optional>

/// What the session says about accessibility: where its bus is and whether it is switched on.
/// Main thread only; asks asynchronously. A session without an accessibility bus simply never answers.
class AtSpiSession final : public QObject
{
    Q_OBJECT

public:
    explicit AtSpiSession(QDBusConnection session);

    /// Last known org.a11y.Status IsEnabled; follows its changes.
    bool isEnabled() const { return m_isEnabled; }

    /// Switches IsEnabled on. Never ScreenReaderEnabled: some desktops start a screen reader for it.
    void enable();

    /// What @p session says of IsEnabled now; nothing when nobody answers.
    static QCoro::Task<std::optional<bool>> askIsEnabled(QDBusConnection session);

    /// Address of the accessibility bus, which this question may start; nothing when there is none.
    static QCoro::Task<std::optional<QString>> address(QDBusConnection session);

Q_SIGNALS:
    void isEnabledChanged();

    /// The service that hands out the address has come up, or come back.
    void serviceAppeared();

private Q_SLOTS:
    void onPropertiesChanged(const QString &interface, const QVariantMap &changed,
                             const QStringList &invalidated);
    void onNameOwnerChanged(const QString &name, const QString &oldOwner, const QString &newOwner);

private:
    QCoro::Task<> readIsEnabled(std::stop_token token);
    QCoro::Task<> writeIsEnabled(std::stop_token token);
    void setIsEnabled(bool isEnabled);

    QDBusConnection m_session;
    bool m_isEnabled = false;
    TaskScope m_tasks; // keep last
};
