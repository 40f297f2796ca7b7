// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>
#include <QString>

#include <chrono>
#include <functional>
#include <optional>

namespace Cloud {

/// An instant with the database's precision.
using Timestamp = std::chrono::sys_time<std::chrono::microseconds>;

/// Where the time comes from; tests turn it by hand.
using Clock = std::function<Timestamp()>;

Timestamp systemTime();

/// UTC with a "Z" and 0, 3 or 6 digits of fraction, as few as hold the value: "2024-05-01T09:30:12.345Z".
QByteArray formatTimestamp(Timestamp time);

/// Reads RFC 3339 with any offset; further digits than microseconds are cut off. Nothing for another text, or
/// outside the years 1 to 9999.
std::optional<Timestamp> parseTimestamp(const QString &text);

} // namespace Cloud
