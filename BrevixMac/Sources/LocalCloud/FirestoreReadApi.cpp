// SPDX-License-Identifier: GPL-3.0-or-later
#include "FirestoreReadApi.h"

#include "Answers.h"
#include "Documents.h"
#include "Parameters.h"
#include "SecureRandom.h"

#include <algorithm>

namespace Cloud {

namespace {

const QByteArray pageTokenPrefix = "1:";

QString pageTokenAfter(const QString &id)
{
    return QString::fromLatin1(base64Url(pageTokenPrefix + id.toUtf8()));
}

/// The id that a page token stands for; nothing for a text that is none.
std::optional<QString> idOfPageToken(const QString &token)
{
    const auto decoded = QByteArray::fromBase64Encoding(
        token.toLatin1(), QByteArray::Base64UrlEncoding | QByteArray::AbortOnBase64DecodingErrors);
    if (!decoded || !decoded.decoded.startsWith(pageTokenPrefix))
        return std::nullopt;
    return QString::fromUtf8(decoded.decoded.sliced(pageTokenPrefix.size()));
}

/// The page size asked for within its bounds; nothing when it is no size.
std::optional<int> pageSizeOf(const QUrlQuery &query)
{
    const QString key = QStringLiteral("pageSize");
    if (!query.hasQueryItem(key))
        return FirestoreReadApi::defaultPageSize;
    bool isNumber = false;
    const int size = formValue(query, key).toInt(&isNumber);
    if (!isNumber || size < 0)
        return std::nullopt;
    return size == 0 ? FirestoreReadApi::defaultPageSize : std::min(size, FirestoreReadApi::maximumPageSize);
}

} // namespace

Response FirestoreReadApi::get(const ResourcePath &path, const Request &request) const
{
    if (path.isDocument()) {
        knownParameters(request, {});
        return document(path);
    }
    const QString tokenKey = QStringLiteral("pageToken");
    const QUrlQuery query = knownParameters(request, {QStringLiteral("pageSize"), tokenKey});
    const auto pageSize = pageSizeOf(query);
    if (!pageSize)
        return invalidArgument(QStringLiteral("pageSize is not a size."));
    const QString token = formValue(query, tokenKey);
    const auto afterID = token.isEmpty() ? std::optional(QString()) : idOfPageToken(token);
    if (!afterID)
        return invalidArgument(QStringLiteral("pageToken is not valid."));
    return list(path, *pageSize, *afterID);
}

Response FirestoreReadApi::document(const ResourcePath &path) const
{
    const auto found = m_documents.find(path.collection(), path.documentID());
    if (!found)
        return notFound(
            QStringLiteral("Document \"%1/%2\" not found.").arg(path.collectionName(), path.documentID()));
    return rawJsonAnswer(documentJson(path.collectionName(), *found));
}

Response FirestoreReadApi::list(const ResourcePath &path, int pageSize, const QString &afterID) const
{
    const QString collectionName = path.collectionName();
    QByteArray json = R"({"documents":[)";
    int count = 0;
    QString lastID;
    bool isMore = false;
    const auto append = [&](const StoredDocument &document) {
        isMore = count == pageSize || json.size() >= m_maximumAnswerSize;
        if (isMore)
            return false;
        if (count++ > 0)
            json += ',';
        json += documentJson(collectionName, document);
        lastID = document.id;
        return true;
    };
    m_documents.visit(path.collection(), pageSize + 1, afterID, append);
    if (count == 0)
        return rawJsonAnswer("{}");
    json += ']';
    if (isMore)
        json += R"(,"nextPageToken":)" + jsonString(pageTokenAfter(lastID));
    return rawJsonAnswer(json + '}');
}

} // namespace Cloud
