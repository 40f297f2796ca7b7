// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "PoolJob.h"

#include <QCoroFuture>
#include <QCoroTask>
#include <QPromise>

#include <exception>
#include <memory>
#include <optional>
#include <type_traits>

/// Runs @p work on a thread of the pool and resumes here, from the event loop, with what it returned or
/// threw. It must own everything it touches: its caller may be gone before it ends. It cannot be stopped, so
/// it must end by itself.
template <typename Work>
QCoro::Task<std::invoke_result_t<Work>> onWorker(Work work)
{
    struct End
    {
        std::optional<std::invoke_result_t<Work>> value = {};
        std::exception_ptr failure = {};
    };
    struct State
    {
        End end;
        QPromise<void> promise;
    };
    const auto state = std::make_shared<State>();
    QFuture<void> future = state->promise.future();
    state->promise.start();
    startOn(*QThreadPool::globalInstance(), [state, work = std::move(work)]() mutable {
        try {
            state->end.value = work();
        } catch (...) {
            state->end.failure = std::current_exception();
        }
        ThreadOrder::handOver(state.get());
        state->promise.finish();
    });
    co_await future;
    ThreadOrder::takeOver(state.get());
    if (state->end.failure)
        std::rethrow_exception(state->end.failure);
    co_return std::move(*state->end.value);
}
