// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "AppConfiguration.h"
#include "UpdateFeed.h"

#include "Foundation/TaskScope.h"

#include <QObject>

#include <chrono>
#include <functional>

class HttpClient;
class UserDefaults;

/// What is known about updates. A value.
struct UpdateStatus
{
    enum class Kind {
        notConfigured,
        unknown, ///< not asked yet
        checking,
        upToDate,
        available,
        failed,
    };

    Kind kind = Kind::unknown;
    std::optional<UpdateRelease> release = {}; ///< the available one
    QString problem = {};                      ///< why the last check changed nothing, for the user

    /// A sentence for the user; empty when there is nothing to say.
    QString description() const;

    bool operator==(const UpdateStatus &) const = default;
};

/// When to look. A value.
struct UpdateSchedule
{
    std::chrono::milliseconds firstWait = std::chrono::minutes(1); ///< after the start
    std::chrono::milliseconds interval = std::chrono::hours(24);   ///< from one success to the next check
    std::chrono::milliseconds retry = std::chrono::hours(1);       ///< after a failure
    std::chrono::milliseconds timeout = std::chrono::seconds(30);  ///< of one check
};

/// Looks in the background whether there is a newer release, and tells. Downloads and installs nothing: that
/// is the distribution's task. A feed that cannot be trusted changes nothing and becomes the status's
/// problem. Main thread only; nothing is thrown.
class UpdateService final : public QObject
{
    Q_OBJECT

public:
    static const QString lastCheckKey; ///< when a check last succeeded, ISO 8601
    static const QString lastFeedKey;  ///< the date of the newest feed ever accepted: older ones are refused

    /// @p http and @p defaults must outlive this object. Starts the background checks.
    UpdateService(UpdateConfiguration configuration, const QString &ownVersion, HttpClient &http,
                  UserDefaults &defaults, std::function<QDateTime()> now = &QDateTime::currentDateTimeUtc,
                  UpdateSchedule schedule = {});
    ~UpdateService() override;

    const UpdateStatus &status() const { return m_status; }
    bool isConfigured() const { return m_configuration.feedURL.has_value(); }
    std::optional<QDateTime> lastCheck() const;

    /// Asks now. Joins a check that runs already.
    void checkForUpdates();

Q_SIGNALS:
    void statusChanged();

private:
    QCoro::Task<> checkInBackground(std::stop_token token);
    QCoro::Task<> check(std::stop_token token);
    QCoro::Task<QByteArray> download(std::stop_token token);
    UpdateStatus statusOf(const QByteArray &file);
    UpdateStatus statusOf(const UpdateFeed &feed);
    std::chrono::milliseconds untilNextCheck() const;
    std::optional<QDateTime> date(const QString &key) const;
    void setStatus(const UpdateStatus &status);

    UpdateConfiguration m_configuration;
    QVersionNumber m_ownVersion;
    HttpClient &m_http;
    UserDefaults &m_defaults;
    std::function<QDateTime()> m_now;
    UpdateSchedule m_schedule;
    UpdateStatus m_status;
    TaskScope m_tasks; // keep last: stops the coroutines before the other members die
};
