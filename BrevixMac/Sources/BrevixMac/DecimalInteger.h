// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QStringView>

#include <algorithm>
#include <optional>

/// The signed 64-bit number that @p text spells in decimal: an optional sign, then digits and nothing else.
/// Nothing for any other text and for a number that does not fit.
inline std::optional<qint64> decimalInteger(QStringView text)
{
    const bool hasSign = text.startsWith(u'+') || text.startsWith(u'-');
    const QStringView digits = text.sliced(hasSign ? 1 : 0);
    const bool areDigits = std::all_of(
        digits.begin(), digits.end(), [](QChar character) { return character >= u'0' && character <= u'9'; });
    if (digits.isEmpty() || !areDigits)
        return std::nullopt;
    bool fits = false;
    const qint64 number = text.toLongLong(&fits, 10);
    return fits ? std::optional(number) : std::nullopt;
}
