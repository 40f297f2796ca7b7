// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QCoroFuture>
#include <QCoroTask>
#include <QPromise>
#include <QThreadPool>

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
    const auto promise = std::make_shared<QPromise<End>>();
    QFuture<End> future = promise->future();
    promise->start();
    QThreadPool::globalInstance()->start([promise, work = std::move(work)] {
        End end;
        try {
            end.value = work();
        } catch (...) {
            end.failure = std::current_exception();
        }
        promise->addResult(std::move(end));
        promise->finish();
    });
    End end = co_await future;
    if (end.failure)
        std::rethrow_exception(end.failure);
    co_return std::move(*end.value);
}
