// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "LibraryStore.h"

#include <QTimer>

/// Lets the time of @p store's next refresh come, and no further one.
inline void fireRefreshTimer(const LibraryStore &store)
{
    QTimer *const timer = store.findChild<QTimer *>();
    QObject::connect(
        timer, &QTimer::timeout, timer, [timer] { timer->setInterval(LibraryStore::refreshInterval); },
        Qt::SingleShotConnection);
    timer->setInterval(1);
}
