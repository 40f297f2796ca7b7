// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>

#include <cstdint>
#include <cstdio>
#include <cstdlib>

/// What every fuzz target defines: one call reads @p bytes as the outside world may have written them. It
/// must return, within milliseconds for inputs of a few KiB; a broken promise ends the program through
/// require().
void readForeignBytes(const QByteArray &bytes);

/// Ends the program with @p promise when it is not kept, so that the fuzzer keeps the input.
inline void require(bool kept, const char *promise)
{
    if (kept)
        return;
    std::fprintf(stderr, "broken promise: %s\n", promise);
    std::abort();
}
