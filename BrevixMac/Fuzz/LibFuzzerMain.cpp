// SPDX-License-Identifier: GPL-3.0-or-later
// Entry of a fuzz target under libFuzzer.
#include "FuzzTarget.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    readForeignBytes(QByteArray(reinterpret_cast<const char *>(data), qsizetype(size)));
    return 0;
}
