// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "CloudEndpoints.h"
#include "FirestoreFieldValue.h"

#include "Foundation/HttpClient.h"

#include <QJsonObject>
#include <QStringList>

#include <functional>

/// Reads and writes documents of one project's default database. Main thread only. Throws FirestoreRESTError,
/// TransportError, or CancelledError as soon as the stop token asks; nothing is tried twice.
class FirestoreClient
{
public:
    using Fields = FirestoreFieldValue::Map;

    /// Largest page that is taken, in bytes. A larger one is an error: part of a library must not pass for
    /// the whole.
    static constexpr qint64 maximumPageSize = 128LL * 1024 * 1024;

    /// @p http must outlive this object.
    FirestoreClient(QString projectID, CloudEndpoints endpoints, HttpClient &http);

    /// A collection's first page, 500 documents at most, for documentsIn(). No page token is followed.
    QCoro::Task<QByteArray> fetchPage(QStringList collectionSegments, QString firebaseIDToken,
                                      std::stop_token token);

    /// The documents of a page; none when it has no list of them, as for an empty collection. On any thread.
    /// Throws when @p page is no JSON object.
    static QList<QJsonObject> documentsIn(const QByteArray &page);

    /// Adds a document, whose identifier the server chooses, and gives it as the server holds it.
    QCoro::Task<QJsonObject> createDocument(QStringList collectionSegments, Fields fields,
                                            QString firebaseIDToken, std::stop_token token);

    /// Creates or wholly replaces one document.
    QCoro::Task<> setDocument(QStringList documentSegments, Fields fields, QString firebaseIDToken,
                              std::stop_token token);

    /// Told of a token that the server has not taken (401), before the error is thrown.
    std::function<void(const QString &firebaseIDToken)> onTokenRejected;

private:
    /// @p segments as a request with the user's token. Throws when no address comes out.
    HttpRequest request(const QByteArray &method, const QStringList &segments, const QString &firebaseIDToken,
                        const QString &query = {}) const;
    HttpRequest writeRequest(const QByteArray &method, const QStringList &segments, const Fields &fields,
                             const QString &firebaseIDToken) const;
    /// The body of a successful answer.
    QCoro::Task<QByteArray> send(HttpRequest request, QString firebaseIDToken, std::stop_token token);

    QString m_projectID;
    CloudEndpoints m_endpoints;
    HttpClient &m_http;
};
