// SPDX-License-Identifier: GPL-3.0-or-later
#include "ShareLinks.h"

#include "FirestoreFieldValue.h"

namespace {

QString withoutOuterSlashes(QString path)
{
    while (path.startsWith(u'/'))
        path.remove(0, 1);
    while (path.endsWith(u'/'))
        path.chop(1);
    return path;
}

QString publicPath(const QString &basePath)
{
    const QString folder = withoutOuterSlashes(basePath);
    return folder.isEmpty() ? QStringLiteral("/public") : u'/' + folder + u"/public";
}

} // namespace

namespace ShareLinks {

QString shareDocumentID(const QString &userID, const QString &contentID, const QDateTime &time)
{
    return userID + u'_' + contentID + u'_' + QString::number(time.toMSecsSinceEpoch());
}

QUrl publicShareURL(const QUrl &base, const QString &queryItemName, const QString &shareID)
{
    QUrl url = base;
    url.setPath(publicPath(base.path(QUrl::FullyEncoded)), QUrl::StrictMode);
    const QString value = QString::fromLatin1(QUrl::toPercentEncoding(shareID));
    url.setQuery(queryItemName + u'=' + value, QUrl::StrictMode);
    if (!url.isValid() || url.scheme().isEmpty() || url.host().isEmpty())
        throw FirestoreRESTError(FirestoreRESTError::Kind::invalidURL);
    return url;
}

} // namespace ShareLinks
