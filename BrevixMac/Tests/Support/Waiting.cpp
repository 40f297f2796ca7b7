// SPDX-License-Identifier: GPL-3.0-or-later
#include "Support/Waiting.h"

#include <QDeadlineTimer>
#include <QEventLoop>
#include <QTimer>

bool waitUntil(const std::function<bool()> &condition, std::chrono::milliseconds deadline)
{
    QDeadlineTimer timer(deadline);
    QEventLoop loop;
    QTimer wake;
    QObject::connect(&wake, &QTimer::timeout, &loop, [] {});
    wake.start(2);
    while (!condition()) {
        if (timer.hasExpired())
            return false;
        loop.processEvents(QEventLoop::AllEvents | QEventLoop::WaitForMoreEvents);
    }
    return true;
}
