// SPDX-License-Identifier: GPL-3.0-or-later
#include "TaskScope.h"

#include "HttpClient.h"

#include <QDeadlineTimer>
#include <QLoggingCategory>
#include <QTimer>

#include <algorithm>
#include <coroutine>
#include <exception>
#include <optional>

namespace {

Q_LOGGING_CATEGORY(lcTasks, "brevix.tasks")

QCoro::Task<> runToItsEnd(QCoro::Task<> task, const char *what)
{
    try {
        co_await task;
    } catch (const CancelledError &) {
        // The owner has asked for it, so it is no fault.
        qCDebug(lcTasks, "%s was cancelled", what);
    } catch (const std::exception &error) {
        qCWarning(lcTasks, "%s failed: %s", what, error.what());
    } catch (...) {
        qCWarning(lcTasks, "%s failed with an exception of an unknown kind", what);
    }
}

/// Resumes its coroutine once, from the event loop: when the time is over, or soon after a stop request.
class Sleeper
{
public:
    /// What is awaited. The compiler copies awaiters, so it only points to its sleeper.
    struct Awaiter
    {
        Sleeper *sleeper;
        bool await_ready() const noexcept { return sleeper->m_token.stop_requested(); }
        void await_suspend(std::coroutine_handle<> coroutine) const { sleeper->begin(coroutine); }
        bool await_resume() const noexcept { return !sleeper->m_token.stop_requested(); }
    };

    Sleeper(std::chrono::milliseconds duration, std::stop_token token)
        : m_deadline(std::max(duration, std::chrono::milliseconds::zero()), Qt::PreciseTimer)
        , m_token(std::move(token))
    {
    }

    Sleeper(const Sleeper &) = delete;
    Sleeper &operator=(const Sleeper &) = delete;

    Awaiter timeOrStop() { return {this}; }

private:
    void begin(std::coroutine_handle<> coroutine)
    {
        m_coroutine = coroutine;
        m_timer.setSingleShot(true);
        m_timer.setTimerType(Qt::PreciseTimer);
        QObject::connect(&m_timer, &QTimer::timeout, &m_timer, [this] { onTimeout(); });
        startTimer();
        m_stopCallback.emplace(m_token, WakeUp{this});
    }

    struct WakeUp
    {
        Sleeper *sleeper;

        // Queued: whoever asks to stop may be in the middle of its own destruction.
        void operator()() const noexcept
        {
            QMetaObject::invokeMethod(
                &sleeper->m_timer, [sleeper = sleeper] { sleeper->m_coroutine.resume(); },
                Qt::QueuedConnection);
        }
    };

    // One timer holds less than 25 days.
    void startTimer()
    {
        const auto longest = std::chrono::milliseconds(std::chrono::hours(24));
        const auto remaining =
            std::chrono::ceil<std::chrono::milliseconds>(m_deadline.remainingTimeAsDuration());
        m_timer.start(std::min(remaining, longest));
    }

    void onTimeout()
    {
        if (m_deadline.hasExpired() || m_token.stop_requested())
            m_coroutine.resume();
        else
            startTimer();
    }

    QDeadlineTimer m_deadline;
    std::stop_token m_token;
    std::coroutine_handle<> m_coroutine;
    QTimer m_timer;
    std::optional<std::stop_callback<WakeUp>> m_stopCallback; // keep last: it refers to the timer
};

} // namespace

void detach(QCoro::Task<> task, const char *what)
{
    runToItsEnd(std::move(task), what);
}

QCoro::Task<bool> sleepFor(std::chrono::milliseconds duration, std::stop_token token)
{
    Sleeper sleeper(duration, std::move(token));
    const bool passed = co_await sleeper.timeOrStop();
    co_return passed;
}
