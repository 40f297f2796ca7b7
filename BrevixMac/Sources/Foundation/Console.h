// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

/// The terminal of a command-line program.
namespace Console {

constexpr int exitFailure = 1;
// sysexits.h: the command line is wrong, a service is unavailable.
constexpr int exitUsage = 64;
constexpr int exitUnavailable = 69;

/// Prints @p text and a line break; gives 0, the exit code of success.
int say(const QString &text);

/// Prints @p problem to the standard error, after the application's name; gives @p exitCode.
int fail(const QString &problem, int exitCode = exitFailure);

/// False when the input is a file or a pipe.
bool isInteractive();

/// One line of the input, not shown while it is typed. @p question is shown on a terminal only.
QString askPassword(const QString &question);

} // namespace Console
