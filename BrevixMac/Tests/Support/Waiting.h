// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QCoroTask>

#include <chrono>
#include <functional>

/// Runs the event loop until @p condition holds. False when @p deadline has passed without it.
bool waitUntil(const std::function<bool()> &condition,
               std::chrono::milliseconds deadline = std::chrono::seconds(5));

/// Runs the event loop until @p task has its result, and gives it.
template <typename T>
T await(QCoro::Task<T> &&task)
{
    return QCoro::waitFor(std::move(task));
}
