// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QJsonObject>
#include <QString>
#include <QStringList>

#include <optional>

namespace Cloud {

/// The names that lead through nested maps to one field.
using FieldPath = QStringList;

/// Reads "a.b" and "`a b`.c"; nothing for a text that is no field path, or one of more names than values may
/// be nested, or longer than 1,500 bytes.
std::optional<FieldPath> parseFieldPath(const QString &text);

/// The value at @p path of a document's @p fields; undefined when there is none.
QJsonValue valueAt(const QJsonObject &fields, const FieldPath &path);

/// Puts @p value at @p path, making the maps on the way; an undefined value removes what is there.
void setValueAt(QJsonObject &fields, const FieldPath &path, const QJsonValue &value);

/// What remains of @p fields when only @p paths are kept.
QJsonObject projected(const QJsonObject &fields, const QList<FieldPath> &paths);

} // namespace Cloud
