// SPDX-License-Identifier: GPL-3.0-or-later
#include "Support/Waiting.h"

#include "Foundation/TaskScope.h"

#include <gtest/gtest.h>

using namespace std::chrono_literals;

namespace {

QCoro::Task<int> number(std::chrono::milliseconds delay)
{
    co_await sleepFor(delay);
    co_return 7;
}

QCoro::Task<int> failure(std::chrono::milliseconds delay)
{
    co_await sleepFor(delay);
    throw std::invalid_argument("no number");
}

QCoro::Task<> silentFailure()
{
    co_await sleepFor(1ms);
    throw std::invalid_argument("no result");
}

} // namespace

TEST(Waiting, anAwaitedTaskGivesItsValue)
{
    EXPECT_EQ(await(number(1ms)), 7);
}

TEST(Waiting, anAwaitedTaskThatThrowsThrowsInTheTest)
{
    EXPECT_THROW(await(failure(0ms)), std::invalid_argument);
    EXPECT_THROW(await(failure(1ms)), std::invalid_argument);
    EXPECT_THROW(await(silentFailure()), std::invalid_argument);
}

TEST(Waiting, anAwaitedTaskThatGoesOnIsAnError)
{
    bool isOver = false;
    const auto goesOn = [&isOver]() -> QCoro::Task<int> {
        co_await sleepFor(50ms);
        isOver = true;
        co_return 7;
    };
    EXPECT_THROW(await(goesOn(), 5ms), std::runtime_error);
    EXPECT_FALSE(isOver);
    EXPECT_TRUE(waitUntil([&] { return isOver; })) << "it was to be left alone";
}
