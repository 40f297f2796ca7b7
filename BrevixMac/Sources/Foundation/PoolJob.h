// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QThreadPool>

#include <utility>

/// Tells the thread sanitizer of an order that Qt's queues keep and that it cannot see, Qt not being
/// instrumented: what one thread did before handOver() happened before what another does after takeOver() of
/// the same address. Costs nothing in other builds.
namespace ThreadOrder {

#ifdef __SANITIZE_THREAD__
extern "C" void __tsan_acquire(void *address);
extern "C" void __tsan_release(void *address);

inline void handOver(void *address)
{
    __tsan_release(address);
}

inline void takeOver(void *address)
{
    __tsan_acquire(address);
}
#else
inline void handOver(void *)
{
}
inline void takeOver(void *)
{
}
#endif

} // namespace ThreadOrder

/// Has @p work called once on a thread of @p pool.
template <typename Work>
void startOn(QThreadPool &pool, Work work)
{
    class Job final : public QRunnable
    {
    public:
        Job(QThreadPool &pool, Work work)
            : m_pool(pool)
            , m_work(std::move(work))
        {
            ThreadOrder::handOver(this);
        }

        void run() override
        {
            ThreadOrder::takeOver(this);
            m_work();
            ThreadOrder::handOver(&m_pool);
        }

    private:
        QThreadPool &m_pool;
        Work m_work;
    };
    pool.start(new Job(pool, std::move(work))); // which owns it
}

/// Blocks until all that startOn() has given to @p pool is done.
inline void waitForAll(QThreadPool &pool)
{
    pool.waitForDone();
    ThreadOrder::takeOver(&pool);
}
