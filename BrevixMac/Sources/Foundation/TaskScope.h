// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QCoroTask>

#include <chrono>
#include <stop_token>

/// Ends the coroutines of its owner when the owner dies. Main thread only.
///
/// A QCoro task starts at once, and destroying the task object does not stop it. So an owner keeps a
/// TaskScope as its *last* member; each of its coroutines takes token() before its first co_await and
/// returns without touching the owner when the token says stop after any co_await.
class TaskScope
{
public:
    TaskScope() = default;
    ~TaskScope() { m_source.request_stop(); }

    TaskScope(const TaskScope &) = delete;
    TaskScope &operator=(const TaskScope &) = delete;

    std::stop_token token() const { return m_source.get_token(); }

    /// Stops everything that holds the present token and hands out a new one from now on.
    void restart()
    {
        m_source.request_stop();
        m_source = std::stop_source();
    }

private:
    std::stop_source m_source;
};

/// Lets @p task run on without a waiter. An exception that escapes it is logged with @p what;
/// it is never swallowed silently. The only way a coroutine may be left unawaited.
void detach(QCoro::Task<> task, const char *what);

/// Suspends for @p duration on a monotonic timer. True when the whole time has passed, false as soon as
/// @p token asks to stop. Resumes from the event loop, never from inside request_stop().
QCoro::Task<bool> sleepFor(std::chrono::milliseconds duration, std::stop_token token = {});
