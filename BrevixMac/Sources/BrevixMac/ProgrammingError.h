// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

#include <cstdio>
#include <cstdlib>

/// Stops the program with @p message on standard error. Only for what our own code can have done wrong, never
/// for data from disk, network or user. Does not pass through the log, so that no log filter can hide it.
[[noreturn]] inline void stopOnProgrammingError(const QString &message)
{
    std::fprintf(stderr, "brevix: programming error: %s\n", qUtf8Printable(message));
    std::fflush(stderr);
    std::abort();
}

/// What an initialiser does that takes its object from an archive: no window can be made from one.
[[noreturn]] inline void stopOnArchive()
{
    stopOnProgrammingError(QStringLiteral("init(coder:) has not been implemented"));
}
