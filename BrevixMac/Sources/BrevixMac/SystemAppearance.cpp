// SPDX-License-Identifier: GPL-3.0-or-later
#include "SystemAppearance.h"

#include <QDBusConnection>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>

namespace {

const QString portalService = QStringLiteral("org.freedesktop.portal.Desktop");
const QString portalPath = QStringLiteral("/org/freedesktop/portal/desktop");
const QString settingsInterface = QStringLiteral("org.freedesktop.portal.Settings");

const QString appearance = QStringLiteral("org.freedesktop.appearance");
const QString colorScheme = QStringLiteral("color-scheme");
const QString gnomeInterface = QStringLiteral("org.gnome.desktop.interface");
const QString enableAnimations = QStringLiteral("enable-animations");
const QString kdeAnimations = QStringLiteral("org.kde.kdeglobals.KDE");
const QString animationFactor = QStringLiteral("AnimationDurationFactor");

const QString contrast = QStringLiteral("contrast");
const QString motion = QStringLiteral("reduced-motion");

constexpr uint moreContrast = 1;
constexpr uint lessMotion = 1;
constexpr uint preferDark = 1;
constexpr uint preferLight = 2;
constexpr int portalTimeout = 3000; // milliseconds; the first call may start the portal

// The portal wraps the value once for its signal and twice for its answer.
QVariant unwrapped(QVariant value)
{
    while (value.canConvert<QDBusVariant>())
        value = value.value<QDBusVariant>().variant();
    return value;
}

} // namespace

void SystemAppearance::start()
{
    QDBusConnection bus = QDBusConnection::sessionBus();
    if (m_isStarted || !bus.isConnected())
        return;
    m_isStarted = true;
    bus.connect(portalService, portalPath, settingsInterface, QStringLiteral("SettingChanged"), this,
                SLOT(onSettingChanged(QString, QString, QDBusVariant)));
    read(appearance, colorScheme);
    read(appearance, contrast);
    read(appearance, motion);
    read(gnomeInterface, enableAnimations);
    read(kdeAnimations, animationFactor);
}

void SystemAppearance::read(const QString &settingNamespace, const QString &key)
{
    QDBusMessage call =
        QDBusMessage::createMethodCall(portalService, portalPath, settingsInterface, QStringLiteral("Read"));
    call << settingNamespace << key;
    auto *watcher =
        new QDBusPendingCallWatcher(QDBusConnection::sessionBus().asyncCall(call, portalTimeout), this);
    connect(watcher, &QDBusPendingCallWatcher::finished, this, [this, watcher, settingNamespace, key] {
        const QDBusPendingReply<QDBusVariant> reply = *watcher;
        if (reply.isValid())
            take(settingNamespace, key, QVariant::fromValue(reply.value()));
        watcher->deleteLater();
    });
}

void SystemAppearance::onSettingChanged(const QString &settingNamespace, const QString &key,
                                        const QDBusVariant &value)
{
    take(settingNamespace, key, value.variant());
}

void SystemAppearance::take(const QString &settingNamespace, const QString &key, const QVariant &wrapped)
{
    const QVariant value = unwrapped(wrapped);
    if (settingNamespace == appearance && key == colorScheme) {
        const uint scheme = value.toUInt();
        m_prefersDark = scheme == preferDark    ? std::optional(true)
                        : scheme == preferLight ? std::optional(false)
                                                : std::nullopt;
    } else if (settingNamespace == appearance && key == contrast) {
        m_prefersMoreContrast = value.toUInt() == moreContrast;
        Q_EMIT contrastChanged();
    } else if (settingNamespace == appearance && key == motion) {
        m_reducedMotion = value.toUInt() == lessMotion;
    } else if (settingNamespace == gnomeInterface && key == enableAnimations) {
        m_reducedMotion = !value.toBool();
    } else if (settingNamespace == kdeAnimations && key == animationFactor) {
        m_reducedMotion = qFuzzyIsNull(value.toDouble());
    } else {
        return;
    }
    Q_EMIT changed();
}
