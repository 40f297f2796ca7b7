// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QDateTime>
#include <QString>
#include <QStringView>

#include <optional>

/// Internet date-time (RFC 3339 profile of ISO 8601), both ways. Pure functions.
namespace Iso8601 {

/// "2024-05-01T09:30:12.345Z": UTC with millisecond precision. @p dateTime must be valid.
QString format(const QDateTime &dateTime);

/// Parses a date, time and zone designator ("Z" or "±hh:mm") that carries a fraction of the second
/// (1 to 9 digits, cut to milliseconds). Nothing for any other shape or an impossible date.
std::optional<QDateTime> parseWithFraction(QStringView text);

/// The same without a fraction of the second.
std::optional<QDateTime> parseWithoutFraction(QStringView text);

} // namespace Iso8601
