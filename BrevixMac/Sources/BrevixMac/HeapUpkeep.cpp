// SPDX-License-Identifier: GPL-3.0-or-later
#include "HeapUpkeep.h"

#include "AppState.h"

#include <malloc.h>

HeapUpkeep::HeapUpkeep(const AppState &appState)
{
    m_timer.setSingleShot(true);
    m_timer.setTimerType(Qt::CoarseTimer);
    m_timer.setInterval(pause);
    const auto used = [this] {
        if (!m_timer.isActive())
            m_timer.start();
    };
    connect(&appState, &AppState::palettePresentedChanged, this, used);
    connect(&appState, &AppState::isInsertingChanged, this, used);
    connect(&m_timer, &QTimer::timeout, this, [] { malloc_trim(0); }); // some 0.2 ms
}

void HeapUpkeep::mapLargeBuffers()
{
    constexpr int smallestMapped = 256 * 1024;
    mallopt(M_MMAP_THRESHOLD, smallestMapped);
}
