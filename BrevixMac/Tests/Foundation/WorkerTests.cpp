// SPDX-License-Identifier: GPL-3.0-or-later
#include "Foundation/Worker.h"

#include "Foundation/TaskScope.h"
#include "Support/Waiting.h"

#include <QThread>

#include <gtest/gtest.h>

namespace {

QCoro::Task<std::pair<QThread *, QThread *>> threads()
{
    const auto current = [] { return QThread::currentThread(); };
    QThread *const worker = co_await onWorker(current);
    co_return std::pair(worker, QThread::currentThread());
}

} // namespace

TEST(Worker, worksElsewhereAndResumesHere)
{
    const auto [worker, after] = await(threads());
    EXPECT_NE(worker, QThread::currentThread());
    EXPECT_EQ(after, QThread::currentThread());
}

TEST(Worker, givesTheResultAndItsExceptions)
{
    const QString text = QStringLiteral("text");
    EXPECT_EQ(await(onWorker([text] { return text.size(); })), 4);
    EXPECT_THROW(await(onWorker([]() -> int { throw std::out_of_range("nothing there"); })),
                 std::out_of_range);
}

TEST(Worker, aTaskNobodyWaitsForEndsByItself)
{
    const auto counter = std::make_shared<std::atomic<int>>(0);
    {
        const QCoro::Task<int> abandoned = onWorker([counter] { return ++*counter; });
    }
    EXPECT_TRUE(waitUntil([&counter] { return *counter == 1 && counter.use_count() == 1; }));
}
