// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QCoroTask>
#include <QDBusConnection>
#include <QDBusMessage>

/// The session's collector of StatusNotifierItems, and the questions that it is asked.
namespace StatusNotifierWatcher {

inline const QString service = QStringLiteral("org.kde.StatusNotifierWatcher");
inline const QString path = QStringLiteral("/StatusNotifierWatcher");
inline const QString interface = QStringLiteral("org.kde.StatusNotifierWatcher");

/// Milliseconds. A panel may be busy starting, and nobody waits for it.
constexpr int callTimeout = 3000;

/// Asks the bus whether there is a watcher.
QDBusMessage presenceQuestion();

/// Asks the watcher whether anybody shows what it collects.
QDBusMessage hostQuestion();

/// Whether @p answer to hostQuestion() says so. A watcher without that property is taken for its own host.
bool saysHost(const QDBusMessage &answer);

enum class Presence { absent, withoutHost, withHost };

/// Asks @p bus both.
QCoro::Task<Presence> presence(QDBusConnection bus);

} // namespace StatusNotifierWatcher
