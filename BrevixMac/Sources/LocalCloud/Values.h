// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QJsonObject>
#include <QJsonValue>

namespace Cloud {

/// How deep values may be nested, and so how many names a field path may have.
constexpr int maximumDepth = 20;

/// The one form in which a document's value is stored and answered, whichever of its forms a client has sent:
/// integers as text, times in UTC with microseconds. Throws RequestRefused for what is no value.
QJsonObject canonicalValue(const QJsonValue &value);

/// The same of a whole "fields" object, within the size that documents may have.
QJsonObject canonicalFields(const QJsonValue &fields);

/// Where a value's type stands in the order of all values, from null to maps.
int typeRank(const QJsonObject &value);

/// Negative, 0 or positive as canonical @p left comes before, with or after @p right in the data model's
/// order; 1 and 1.0 are equal.
int compareValues(const QJsonObject &left, const QJsonObject &right);

bool isNumber(const QJsonObject &value);
bool isNaN(const QJsonObject &value);

/// Sum of two canonical numbers: an integer if both are, staying at the limit when it would overflow.
QJsonObject sumOf(const QJsonObject &left, const QJsonObject &right);

} // namespace Cloud
