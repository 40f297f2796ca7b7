// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QDBusMessage>
#include <QDBusVariant>
#include <QObject>

#include <optional>

/// What the desktop's settings portal says about light or dark, contrast and motion. Main thread only,
/// asynchronous. Without a session bus or a portal both stay unknown.
class SystemAppearance final : public QObject
{
    Q_OBJECT

public:
    using QObject::QObject;

    /// Asks the portal now and listens for changes. Later calls do nothing.
    void start();

    /// Nothing while unknown, and when the user has no preference.
    std::optional<bool> prefersDark() const { return m_prefersDark; }
    bool reducedMotion() const { return m_reducedMotion; }
    bool prefersMoreContrast() const { return m_prefersMoreContrast; }

Q_SIGNALS:
    void changed();
    void contrastChanged();

private Q_SLOTS:
    void onSettingChanged(const QString &settingNamespace, const QString &key, const QDBusVariant &value);

private:
    void read(const QString &settingNamespace, const QString &key);
    void take(const QString &settingNamespace, const QString &key, const QVariant &value);

    bool m_isStarted = false;
    std::optional<bool> m_prefersDark;
    bool m_reducedMotion = false;
    bool m_prefersMoreContrast = false;
};
