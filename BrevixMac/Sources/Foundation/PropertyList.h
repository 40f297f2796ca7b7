// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>
#include <QString>
#include <QVariantMap>

#include <optional>

/// Reading and writing property lists (XML and binary in, XML out), through libplist.
/// Values keep their kinds apart: text is QString, data is QByteArray, booleans are bool, integers are
/// qlonglong, reals are double, dates are QDateTime (UTC), lists are QVariantList, dictionaries are
/// QVariantMap.
namespace PropertyList {

/// Largest list that is read, in bytes (16 MiB); a larger one counts as unreadable.
inline constexpr qsizetype maximumSize = qsizetype(16) * 1024 * 1024;

/// The dictionary in @p bytes, or nothing when they are no property list or its root is no dictionary.
std::optional<QVariantMap> parseDictionary(const QByteArray &bytes);

/// The dictionary in the file at @p path; nothing when the file is missing, unreadable, too large or damaged.
std::optional<QVariantMap> readDictionary(const QString &path);

/// XML property list of @p dictionary. A value of a kind that property lists do not have is left out.
QByteArray serialize(const QVariantMap &dictionary);

} // namespace PropertyList
