// SPDX-License-Identifier: GPL-3.0-or-later
#include "Foundation/HttpClient.h"
#include "Foundation/TaskScope.h"
#include "Support/Waiting.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QStringList>
#include <QTimer>

#include <gtest/gtest.h>

#include <memory>
#include <optional>
#include <stdexcept>
#include <thread>

using namespace std::chrono_literals;

namespace {

QCoro::Task<> keepResult(std::chrono::milliseconds duration, std::stop_token token,
                         std::shared_ptr<std::optional<bool>> result)
{
    const bool passed = co_await sleepFor(duration, token);
    *result = passed;
}

std::shared_ptr<std::optional<bool>> startSleep(std::chrono::milliseconds duration, std::stop_token token)
{
    auto result = std::make_shared<std::optional<bool>>();
    detach(keepResult(duration, std::move(token), result), "sleep");
    return result;
}

QCoro::Task<> failAfter(std::chrono::milliseconds delay, std::exception_ptr error)
{
    if (delay > 0ms)
        co_await sleepFor(delay);
    std::rethrow_exception(error);
}

QStringList *capturedMessages = nullptr;

void capture(QtMsgType type, const QMessageLogContext &, const QString &message)
{
    capturedMessages->append(
        (type == QtWarningMsg ? QStringLiteral("warning: ") : QStringLiteral("other: ")) + message);
}

/// Takes the log for itself while it lives.
class CapturedLog
{
public:
    CapturedLog()
        : m_previous(qInstallMessageHandler(&capture))
    {
        capturedMessages = &m_messages;
    }

    ~CapturedLog() { qInstallMessageHandler(m_previous); }

    CapturedLog(const CapturedLog &) = delete;
    CapturedLog &operator=(const CapturedLog &) = delete;

    QStringList messages() const { return m_messages; }

private:
    QStringList m_messages;
    QtMessageHandler m_previous;
};

/// The pattern that every owner of coroutines follows.
class Owner
{
public:
    explicit Owner(QStringList &log)
        : m_log(log)
    {
        detach(run(m_tasks.token()), "owner's task");
    }

    ~Owner() { m_log.append(QStringLiteral("owner is gone")); }

private:
    QCoro::Task<> run(std::stop_token token)
    {
        QStringList *log = &m_log;
        m_log.append(QStringLiteral("started"));
        const bool passed = co_await sleepFor(10s, token);
        if (!passed) {
            log->append(QStringLiteral("stopped"));
            co_return;
        }
        m_log.append(QStringLiteral("finished"));
    }

    QStringList &m_log;
    TaskScope m_tasks; // keep last
};

} // namespace

TEST(SleepFor, takesTheWholeTime)
{
    for (const auto duration : {0ms, 1ms, 20ms, 50ms}) {
        QElapsedTimer timer;
        timer.start();
        EXPECT_TRUE(await(sleepFor(duration)));
        EXPECT_GE(std::chrono::nanoseconds(timer.nsecsElapsed()), duration);
    }
}

TEST(SleepFor, neverResumesBeforeTheEventLoopTurns)
{
    const auto result = startSleep(0ms, {});
    EXPECT_FALSE(*result);
    EXPECT_TRUE(waitUntil([&] { return result->has_value(); }));
    EXPECT_TRUE(result->value());
}

TEST(SleepFor, aNegativeTimeIsNoTime)
{
    EXPECT_TRUE(await(sleepFor(-5s)));
}

TEST(SleepFor, aStoppedTokenDoesNotSleep)
{
    std::stop_source source;
    source.request_stop();
    const auto result = startSleep(1h, source.get_token());
    ASSERT_TRUE(*result);
    EXPECT_FALSE(result->value());
}

TEST(SleepFor, aStopRequestWakesFromTheEventLoop)
{
    std::stop_source source;
    const auto result = startSleep(1h, source.get_token());
    source.request_stop();
    EXPECT_FALSE(*result) << "not from inside of request_stop()";
    ASSERT_TRUE(waitUntil([&] { return result->has_value(); }));
    EXPECT_FALSE(result->value());
}

TEST(SleepFor, aStopRequestOfAnotherThreadWakesOnTheMainThread)
{
    std::stop_source source;
    const auto result = startSleep(1h, source.get_token());
    std::thread([&source] { source.request_stop(); }).join();
    EXPECT_FALSE(*result);
    ASSERT_TRUE(waitUntil([&] { return result->has_value(); }));
    EXPECT_FALSE(result->value());
}

TEST(SleepFor, aStopRequestAtTheVeryEndCounts)
{
    std::stop_source source;
    const auto result = startSleep(5ms, source.get_token());
    QElapsedTimer timer;
    timer.start();
    while (timer.elapsed() < 10) {
    } // the timer is due now, but the event loop has not turned
    source.request_stop();
    ASSERT_TRUE(waitUntil([&] { return result->has_value(); }));
    EXPECT_FALSE(result->value());
}

TEST(SleepFor, sleepsLongerThanOneTimerCanHold)
{
    std::stop_source source;
    const auto result = startSleep(std::chrono::hours(24 * 365), source.get_token());
    const auto marker = startSleep(30ms, {});
    ASSERT_TRUE(waitUntil([&] { return marker->has_value(); }));
    EXPECT_FALSE(*result);
    source.request_stop();
    EXPECT_TRUE(waitUntil([&] { return result->has_value(); }));
}

TEST(SleepFor, manySleepersWakeInOrder)
{
    QList<std::shared_ptr<std::optional<bool>>> results;
    for (int index = 0; index < 100; ++index)
        results.append(startSleep(std::chrono::milliseconds(index % 10), {}));
    EXPECT_TRUE(waitUntil([&] {
        return std::all_of(results.begin(), results.end(),
                           [](const auto &result) { return result->has_value(); });
    }));
}

TEST(TaskScope, stopsItsTasksWhenTheOwnerDies)
{
    QStringList log;
    auto owner = std::make_unique<Owner>(log);
    owner.reset();
    EXPECT_EQ(log, QStringList({QStringLiteral("started"), QStringLiteral("owner is gone")}));
    ASSERT_TRUE(waitUntil([&] { return log.size() == 3; }));
    EXPECT_EQ(log.last(), QStringLiteral("stopped"));
}

TEST(TaskScope, restartStopsTheTasksAndServesNewOnes)
{
    TaskScope scope;
    const std::stop_token before = scope.token();
    const auto stopped = startSleep(1h, before);
    scope.restart();
    EXPECT_TRUE(before.stop_requested());
    EXPECT_FALSE(scope.token().stop_requested());
    const auto passing = startSleep(1ms, scope.token());
    ASSERT_TRUE(waitUntil([&] { return stopped->has_value() && passing->has_value(); }));
    EXPECT_FALSE(stopped->value());
    EXPECT_TRUE(passing->value());
}

TEST(Detach, logsAnExceptionThatComesAtOnce)
{
    const CapturedLog log;
    detach(failAfter(0ms, std::make_exception_ptr(std::runtime_error("the disk is full"))), "refreshing");
    EXPECT_EQ(log.messages(), QStringList(QStringLiteral("warning: refreshing failed: the disk is full")));
}

TEST(Detach, logsAnExceptionThatComesLater)
{
    const CapturedLog log;
    const TransportError error(QStringLiteral("Die Leitung ist „tot“."));
    detach(failAfter(1ms, std::make_exception_ptr(error)), "refreshing");
    ASSERT_TRUE(waitUntil([&] { return !log.messages().isEmpty(); }));
    EXPECT_EQ(log.messages(),
              QStringList(QStringLiteral("warning: refreshing failed: Die Leitung ist „tot“.")));
}

TEST(Detach, logsWhatIsNoStandardException)
{
    const CapturedLog log;
    detach(failAfter(0ms, std::make_exception_ptr(42)), "refreshing");
    EXPECT_EQ(log.messages(),
              QStringList(QStringLiteral("warning: refreshing failed with an exception of an unknown kind")));
}

TEST(Detach, aCancelledRequestIsNoFault)
{
    const CapturedLog log;
    bool isDone = false;
    detach(failAfter(1ms, std::make_exception_ptr(CancelledError())), "refreshing");
    QTimer::singleShot(20ms, qApp, [&] { isDone = true; });
    ASSERT_TRUE(waitUntil([&] { return isDone; }));
    EXPECT_EQ(log.messages().filter(QStringLiteral("warning")), QStringList());
}

TEST(Detach, letsATaskRunToItsEnd)
{
    const auto result = startSleep(2ms, {});
    EXPECT_TRUE(waitUntil([&] { return result->has_value(); }));
}
