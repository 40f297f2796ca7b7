// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <chrono>

class QWidget;

/// Runs the event loop until nothing in @p window has moved, come, gone or changed its size for a moment.
/// False when it has not come to rest in time.
bool waitUntilAtRest(const QWidget &window, std::chrono::milliseconds deadline = std::chrono::seconds(2));
