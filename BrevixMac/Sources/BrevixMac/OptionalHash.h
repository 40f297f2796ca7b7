// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QHashFunctions>

#include <optional>

/// Hash of a field that may be absent: a presence marker, then the value. An absent text and an empty one
/// differ.
template <typename T>
size_t hashOptional(const std::optional<T> &value, size_t seed)
{
    return value ? qHashMulti(seed, 1, *value) : qHashMulti(seed, 0);
}
