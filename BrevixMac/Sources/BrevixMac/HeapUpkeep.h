// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QObject>
#include <QTimer>

#include <chrono>

class AppState;

/// Keeps the heap of the C library from growing by its own fragments while saved clipboards, of many sizes
/// and in many types, come and go. Main thread only.
class HeapUpkeep final : public QObject
{
public:
    /// From a use of the picker or an insertion until freed pages go back to the system. Clipboards are
    /// restored by then, as a rule.
    static constexpr std::chrono::seconds pause{10};

    /// @p appState must outlive this object.
    explicit HeapUpkeep(const AppState &appState);

    /// Has large buffers (clipboard snapshots, library answers) mapped for themselves, so that all of their
    /// memory is given back. By default the C library moves the limit up with each such buffer, until they
    /// are part of the heap. To be called before there are threads.
    static void mapLargeBuffers();

private:
    QTimer m_timer;
};
