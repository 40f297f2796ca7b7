// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QDateTime>
#include <QString>
#include <QUrl>

/// The public addresses of shared items. Pure.
namespace ShareLinks {

/// Which of the two public collections a link points into, by the name of its query item.
inline const QString promptItem = QStringLiteral("promptId"); ///< prompts and skills
inline const QString categoryItem = QStringLiteral("categoryId");

/// "{userID}_{contentID}_{milliseconds since 1970}": a new one for every share.
QString shareDocumentID(const QString &userID, const QString &contentID, const QDateTime &time);

/// @p base followed by "/public", with "{queryItemName}={shareID}" as its only query item. Throws
/// FirestoreRESTError for a base that nobody could open.
QUrl publicShareURL(const QUrl &base, const QString &queryItemName, const QString &shareID);

} // namespace ShareLinks
