// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

/// What the kernel tells of other processes. Cheap enough for the main thread; nothing here waits for the
/// process asked about, so stopped and hung ones are answered for like any other.
namespace Processes {

/// When process @p processIdentifier started, in clock ticks since boot; together with the identifier it
/// names a process for ever. 0 when there is no such process or it has ended and only waits for its parent.
quint64 startTime(qint64 processIdentifier);

/// Whether the process that started at @p startTime still runs; 0 takes any process of that identifier.
bool isRunning(qint64 processIdentifier, quint64 startTime);

/// File name of the program it runs, without its folder: for a script that of the script rather than of its
/// interpreter. Empty when the kernel does not tell.
QString programName(qint64 processIdentifier);

} // namespace Processes
