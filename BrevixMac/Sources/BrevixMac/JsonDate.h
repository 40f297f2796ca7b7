// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QDateTime>
#include <QJsonValue>

#include <cmath>
#include <optional>

/// Dates as stored JSON holds them: seconds since 2001-01-01 00:00:00 UTC, as a floating-point number. In
/// memory they have millisecond precision.
namespace JsonDate {

inline constexpr qint64 epochMsecs = 978'307'200'000; ///< 2001-01-01 in milliseconds since 1970
inline constexpr double maximumSeconds = 1e11;        ///< some three thousand years, either way

inline QJsonValue toJson(const QDateTime &date)
{
    return static_cast<double>(date.toMSecsSinceEpoch() - epochMsecs) / 1000.0;
}

/// Nothing for what is no number or no sensible date.
inline std::optional<QDateTime> fromJson(const QJsonValue &value)
{
    if (!value.isDouble() || std::abs(value.toDouble()) > maximumSeconds)
        return std::nullopt;
    return QDateTime::fromMSecsSinceEpoch(epochMsecs + std::llround(value.toDouble() * 1000.0), Qt::UTC);
}

} // namespace JsonDate
