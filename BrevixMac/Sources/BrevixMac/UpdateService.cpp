// SPDX-License-Identifier: GPL-3.0-or-later
#include "UpdateService.h"

#include "Foundation/HttpClient.h"
#include "Foundation/UserDefaults.h"

#include <algorithm>

namespace {

using namespace std::chrono_literals;

// Computers sleep, and timers sleep with them: the clock is asked at least this often.
constexpr std::chrono::milliseconds longestSleep = 1h;

// Clocks differ a little; a feed of the day after tomorrow would refuse all true ones until then.
constexpr std::chrono::seconds toleratedLead = 24h;

constexpr int statusOk = 200;

QString describeStatusCode(int statusCode)
{
    const bool isRedirect = statusCode >= 300 && statusCode < 400;
    return isRedirect ? QStringLiteral("The update feed answered with a redirect, which is not followed.")
                      : QStringLiteral("The update feed returned HTTP %1.").arg(statusCode);
}

UpdateStatus failed(const QString &problem)
{
    return {.kind = UpdateStatus::Kind::failed, .problem = problem};
}

} // namespace

const QString UpdateService::lastCheckKey = QStringLiteral("updates.lastCheck");
const QString UpdateService::lastFeedKey = QStringLiteral("updates.lastFeed");

QString UpdateStatus::description() const
{
    switch (kind) {
    case Kind::notConfigured:
        return QStringLiteral("This build names no update feed. Your distribution's updates apply.");
    case Kind::unknown:
        return {};
    case Kind::checking:
        return QStringLiteral("Checking...");
    case Kind::upToDate:
        return QStringLiteral("Brevix is up to date.");
    case Kind::available:
        return QStringLiteral("Brevix %1 is available.").arg(release->version.toString());
    case Kind::failed:
        return problem;
    }
    Q_UNREACHABLE();
}

UpdateService::UpdateService(UpdateConfiguration configuration, const QString &ownVersion, HttpClient &http,
                             UserDefaults &defaults, std::function<QDateTime()> now, UpdateSchedule schedule)
    : m_configuration(std::move(configuration))
    , m_ownVersion(QVersionNumber::fromString(ownVersion))
    , m_http(http)
    , m_defaults(defaults)
    , m_now(std::move(now))
    , m_schedule(schedule)
{
    m_status.kind = isConfigured() ? UpdateStatus::Kind::unknown : UpdateStatus::Kind::notConfigured;
    if (isConfigured())
        detach(checkInBackground(m_tasks.token()), "checking for updates");
}

UpdateService::~UpdateService() = default;

std::optional<QDateTime> UpdateService::lastCheck() const
{
    return date(lastCheckKey);
}

std::optional<QDateTime> UpdateService::date(const QString &key) const
{
    const auto text = m_defaults.text(key);
    const QDateTime date = text ? QDateTime::fromString(*text, Qt::ISODate) : QDateTime();
    return date.isValid() ? std::optional(date) : std::nullopt;
}

void UpdateService::setStatus(const UpdateStatus &status)
{
    if (status == m_status)
        return;
    m_status = status;
    Q_EMIT statusChanged();
}

void UpdateService::checkForUpdates()
{
    if (isConfigured() && m_status.kind != UpdateStatus::Kind::checking)
        detach(check(m_tasks.token()), "checking for updates");
}

std::chrono::milliseconds UpdateService::untilNextCheck() const
{
    const auto last = lastCheck();
    const QDateTime now = m_now();
    // A check in the future is a clock that was set back.
    if (!last || *last > now)
        return 0ms;
    return std::max(0ms, m_schedule.interval - std::chrono::milliseconds(last->msecsTo(now)));
}

QCoro::Task<> UpdateService::checkInBackground(std::stop_token token)
{
    std::chrono::milliseconds wait = std::max(m_schedule.firstWait, std::min(untilNextCheck(), longestSleep));
    for (;;) {
        const bool waited = co_await sleepFor(wait, token);
        if (!waited || token.stop_requested())
            co_return;
        wait = std::min(untilNextCheck(), longestSleep);
        if (wait > 0ms)
            continue;
        if (m_status.kind != UpdateStatus::Kind::checking)
            co_await check(token);
        if (token.stop_requested())
            co_return;
        wait = untilNextCheck() == 0ms ? m_schedule.retry : std::min(untilNextCheck(), longestSleep);
    }
}

QCoro::Task<> UpdateService::check(std::stop_token token)
{
    setStatus({.kind = UpdateStatus::Kind::checking});
    UpdateStatus status;
    try {
        const QByteArray file = co_await download(token);
        if (token.stop_requested())
            co_return;
        status = statusOf(file);
    } catch (const CancelledError &) {
        co_return;
    } catch (const TransportError &error) {
        if (token.stop_requested())
            co_return;
        status = failed(error.description());
    }
    setStatus(status);
}

QCoro::Task<QByteArray> UpdateService::download(std::stop_token token)
{
    // Over plain HTTP, others could learn what runs here and hold news back.
    if (m_configuration.feedURL->scheme() != u"https")
        throw TransportError(QStringLiteral("The address of the update feed is not secure."));
    HttpRequest request;
    request.url = *m_configuration.feedURL;
    request.timeout = m_schedule.timeout;
    request.maximumBodySize = UpdateFeed::maximumSize;
    const HttpResponse response = co_await m_http.send(request, token);
    if (response.statusCode != statusOk)
        throw TransportError(describeStatusCode(response.statusCode));
    co_return response.body;
}

UpdateStatus UpdateService::statusOf(const QByteArray &file)
{
    const auto result = UpdateFeed::read(file, m_configuration.publicKey);
    if (const auto *problem = std::get_if<QString>(&result))
        return failed(*problem);
    return statusOf(std::get<UpdateFeed>(result));
}

UpdateStatus UpdateService::statusOf(const UpdateFeed &feed)
{
    const QDateTime now = m_now();
    const auto newestSeen = date(lastFeedKey);
    if (newestSeen && feed.published < *newestSeen)
        return failed(QStringLiteral("The update feed is older than one seen before."));
    if (feed.published > now.addSecs(toleratedLead.count()))
        return failed(
            QStringLiteral("The update feed is dated in the future. Is this computer's clock right?"));
    m_defaults.setText(lastFeedKey, feed.published.toUTC().toString(Qt::ISODate));
    m_defaults.setText(lastCheckKey, now.toUTC().toString(Qt::ISODate));
    const auto newest = feed.newest();
    if (!newest || newest->version.normalized() <= m_ownVersion.normalized())
        return {.kind = UpdateStatus::Kind::upToDate};
    return {.kind = UpdateStatus::Kind::available, .release = newest};
}
