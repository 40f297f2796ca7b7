// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

#include <optional>

/// What a request for the user came to: a value, or the text that tells the user why there is none. A value.
template <typename T>
struct Outcome
{
    std::optional<T> value;
    QString problem; ///< when value is absent

    bool operator==(const Outcome &) const = default;
};
