// SPDX-License-Identifier: GPL-3.0-or-later
#include "FirestoreReadApi.h"

#include "Answers.h"
#include "Documents.h"
#include "Form.h"
#include "SecureRandom.h"

#include <algorithm>

namespace Cloud {

namespace {

/// A page ends early rather than growing beyond this many bytes; the next one goes on.
constexpr qsizetype maximumAnswerSize = 32 * 1024 * 1024;

const QByteArray pageTokenPrefix = "1:";

/// How the answer is written, which makes no difference to its content.
const QStringList harmlessParameters{QStringLiteral("alt"), QStringLiteral("$alt"), QStringLiteral("key"),
                                     QStringLiteral("prettyPrint"), QStringLiteral("$prettyPrint")};

/// Real parameters that would change the answer.
const QStringList otherParameters{QStringLiteral("mask.fieldPaths"), QStringLiteral("orderBy"),
                                  QStringLiteral("showMissing"),     QStringLiteral("transaction"),
                                  QStringLiteral("readTime"),        QStringLiteral("fields")};

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

/// {"name":…,"fields":…,"createTime":…,"updateTime":…}; "fields" is left out when there are none.
QByteArray documentJson(const QString &collectionName, const StoredDocument &document)
{
    QByteArray json = R"({"name":)" + jsonString(collectionName + u'/' + document.id);
    if (document.fields != "{}")
        json += R"(,"fields":)" + document.fields;
    json += R"(,"createTime":")" + formatTimestamp(document.createdAt) + R"(","updateTime":")" +
            formatTimestamp(document.updatedAt) + "\"}";
    return json;
}

/// The refusal of parameters that are not known or not done; nothing when all of them are of @p known.
std::optional<Response> checkParameters(const QUrlQuery &query, const QStringList &known)
{
    const auto items = query.queryItems(QUrl::FullyDecoded);
    for (const auto &[name, value] : items) {
        if (otherParameters.contains(name))
            return unimplemented();
        if (!known.contains(name) && !harmlessParameters.contains(name))
            return invalidArgument(QStringLiteral("Unknown query parameter \"%1\".").arg(name));
    }
    return std::nullopt;
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
    const QUrlQuery query = parseForm(request.query);
    if (path.isDocument()) {
        const auto refusal = checkParameters(query, {});
        return refusal ? *refusal : document(path);
    }
    const QString tokenKey = QStringLiteral("pageToken");
    if (const auto refusal = checkParameters(query, {QStringLiteral("pageSize"), tokenKey}))
        return *refusal;
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
    // One more than the page holds tells whether there is another page.
    const QList<StoredDocument> found = m_documents.list(path.collection(), pageSize + 1, afterID);
    if (found.isEmpty())
        return rawJsonAnswer("{}");
    const QString collectionName = path.collectionName();
    QByteArray json = R"({"documents":[)";
    int count = 0;
    for (; count < std::min(pageSize, int(found.size())) && json.size() < maximumAnswerSize; ++count) {
        if (count > 0)
            json += ',';
        json += documentJson(collectionName, found[count]);
    }
    json += ']';
    if (count < found.size())
        json += R"(,"nextPageToken":)" + jsonString(pageTokenAfter(found[count - 1].id));
    return rawJsonAnswer(json + '}');
}

} // namespace Cloud
