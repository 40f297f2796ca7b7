// SPDX-License-Identifier: GPL-3.0-or-later
#include "FirestoreClient.h"

#include <QJsonArray>
#include <QJsonDocument>

#include <stdexcept>

namespace {

const QString pageQuery = QStringLiteral("pageSize=500");

QJsonObject objectIn(const QByteArray &body)
{
    QJsonParseError parseError;
    const QJsonDocument answer = QJsonDocument::fromJson(body, &parseError);
    if (parseError.error != QJsonParseError::NoError)
        throw std::runtime_error("Brevix couldn't read the Firestore response: " +
                                 parseError.errorString().toStdString());
    if (!answer.isObject())
        throw FirestoreRESTError(FirestoreRESTError::Kind::invalidPayload);
    return answer.object();
}

QByteArray documentBody(const FirestoreClient::Fields &fields)
{
    QJsonObject values;
    for (auto it = fields.cbegin(); it != fields.cend(); ++it)
        values.insert(it.key(), it.value().restValue());
    return QJsonDocument(QJsonObject{{QStringLiteral("fields"), values}}).toJson(QJsonDocument::Compact);
}

} // namespace

FirestoreClient::FirestoreClient(QString projectID, CloudEndpoints endpoints, HttpClient &http)
    : m_projectID(std::move(projectID))
    , m_endpoints(std::move(endpoints))
    , m_http(http)
{
}

QCoro::Task<QByteArray> FirestoreClient::fetchPage(QStringList collectionSegments, QString firebaseIDToken,
                                                   std::stop_token token)
{
    HttpRequest get = request("GET", collectionSegments, firebaseIDToken, pageQuery);
    get.maximumBodySize = maximumPageSize;
    QByteArray page = co_await send(get, firebaseIDToken, token);
    co_return page;
}

QList<QJsonObject> FirestoreClient::documentsIn(const QByteArray &page)
{
    const QJsonArray list = objectIn(page).value(u"documents").toArray();
    QList<QJsonObject> documents;
    documents.reserve(list.size());
    for (const auto &value : list) {
        if (!value.isObject())
            return {};
        documents.append(value.toObject());
    }
    return documents;
}

QCoro::Task<QJsonObject> FirestoreClient::createDocument(QStringList collectionSegments, Fields fields,
                                                         QString firebaseIDToken, std::stop_token token)
{
    const HttpRequest post = writeRequest("POST", collectionSegments, fields, firebaseIDToken);
    const QByteArray body = co_await send(post, firebaseIDToken, token);
    co_return objectIn(body);
}

QCoro::Task<> FirestoreClient::setDocument(QStringList documentSegments, Fields fields,
                                           QString firebaseIDToken, std::stop_token token)
{
    const HttpRequest patch = writeRequest("PATCH", documentSegments, fields, firebaseIDToken);
    co_await send(patch, firebaseIDToken, token);
}

HttpRequest FirestoreClient::request(const QByteArray &method, const QStringList &segments,
                                     const QString &firebaseIDToken, const QString &query) const
{
    const std::optional<QUrl> url =
        m_endpoints.firestoreDocuments(m_projectID, FirestoreCodec::encodedPath(segments), query);
    if (!url)
        throw FirestoreRESTError(FirestoreRESTError::Kind::invalidURL);
    return {.method = method,
            .url = *url,
            .headers = {{"Authorization", "Bearer " + firebaseIDToken.toUtf8()}},
            .body = {}};
}

HttpRequest FirestoreClient::writeRequest(const QByteArray &method, const QStringList &segments,
                                          const Fields &fields, const QString &firebaseIDToken) const
{
    HttpRequest write = request(method, segments, firebaseIDToken);
    write.headers.emplaceBack("Content-Type", "application/json");
    write.body = documentBody(fields);
    return write;
}

QCoro::Task<QByteArray> FirestoreClient::send(HttpRequest request, QString firebaseIDToken,
                                              std::stop_token token)
{
    const HttpResponse response = co_await m_http.send(request, token);
    if (!response.isHttp())
        throw FirestoreRESTError(FirestoreRESTError::Kind::invalidResponse);
    if (response.statusCode == 401 && !token.stop_requested() && onTokenRejected)
        onTokenRejected(firebaseIDToken);
    if (!response.isSuccess())
        throw FirestoreCodec::decodeFirestoreError(response.body, response.statusCode);
    co_return response.body;
}
