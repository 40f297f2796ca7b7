// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QCoroTask>

#include <chrono>
#include <exception>
#include <functional>
#include <memory>
#include <optional>
#include <stdexcept>

/// Runs the event loop until @p condition holds. False when @p deadline has passed without it.
bool waitUntil(const std::function<bool()> &condition,
               std::chrono::milliseconds deadline = std::chrono::seconds(5));

namespace Waiting {

/// How a task ended.
template <typename T>
struct End
{
    std::optional<T> value = {};
    std::exception_ptr failure = {};
};

template <>
struct End<void>
{
    std::exception_ptr failure = {};
};

template <typename T>
QCoro::Task<> follow(QCoro::Task<T> task, std::shared_ptr<End<T>> end)
{
    try {
        if constexpr (std::is_void_v<T>)
            co_await task;
        else
            end->value = co_await task;
    } catch (...) {
        end->failure = std::current_exception();
    }
}

} // namespace Waiting

/// Runs the event loop until @p task ends, and gives what it gives or throws what it throws. A task that goes
/// on and on is an error, too.
template <typename T>
T await(QCoro::Task<T> task, std::chrono::milliseconds deadline = std::chrono::seconds(20))
{
    const auto end = std::make_shared<Waiting::End<T>>();
    const QCoro::Task<> follower = Waiting::follow(std::move(task), end);
    if (!waitUntil([&follower] { return follower.isReady(); }, deadline))
        throw std::runtime_error("the awaited task has not ended in time");
    if (end->failure)
        std::rethrow_exception(end->failure);
    if constexpr (!std::is_void_v<T>)
        return std::move(*end->value);
}
