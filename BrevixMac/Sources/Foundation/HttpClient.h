// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>
#include <QCoroTask>
#include <QList>
#include <QPair>
#include <QString>
#include <QUrl>

#include <chrono>
#include <memory>
#include <stdexcept>
#include <stop_token>

class QNetworkAccessManager;

/// One request. Header names and values are sent as given.
struct HttpRequest
{
    /// Largest body that is accepted unless said otherwise, in bytes (64 MiB).
    static constexpr qint64 defaultMaximumBodySize = 64LL * 1024 * 1024;

    QByteArray method = "GET";
    QUrl url;
    QList<QPair<QByteArray, QByteArray>> headers;
    QByteArray body;
    std::chrono::milliseconds timeout = std::chrono::seconds(60);
    qint64 maximumBodySize = defaultMaximumBodySize; ///< of the answer, in bytes

    static HttpRequest post(const QUrl &url, const QByteArray &contentType, const QByteArray &body)
    {
        return {.method = "POST", .url = url, .headers = {{"Content-Type", contentType}}, .body = body};
    }
};

struct HttpResponse
{
    int statusCode =
        0; ///< 0 when the answer was not HTTP at all, which HttpClient reports as a TransportError
    QByteArray contentType;
    QByteArray body;

    bool isHttp() const { return statusCode != 0; }
    bool isSuccess() const { return statusCode >= 200 && statusCode <= 299; }
};

/// No answer came: unreachable host, connection lost, something that is not HTTP, time-out, body over the
/// limit, TLS failure, or a request that must not be sent (not a web address, a line break in a header).
class TransportError : public std::runtime_error
{
public:
    explicit TransportError(const QString &description);

    /// A sentence for the user.
    QString description() const { return m_description; }

private:
    QString m_description;
};

/// The request was stopped by its stop token.
class CancelledError : public std::runtime_error
{
public:
    CancelledError();
};

/// Sends requests asynchronously over one connection pool. Main thread only. Redirects are not followed
/// (a bearer token must not leave its origin), no cookies are kept, and nothing is cached. A request with a
/// body is sent at most once, also when its connection is lost. When the client dies, its requests end with
/// CancelledError.
class HttpClient
{
public:
    static constexpr qint64 maximumBodySize = HttpRequest::defaultMaximumBodySize;

    HttpClient();
    ~HttpClient();

    /// Throws TransportError or CancelledError; an HTTP error status is an answer, not an exception.
    /// An answer sent in chunks and cut off may pass for complete, because Qt 6.4 does not always notice: its
    /// reader must find out by its form.
    QCoro::Task<HttpResponse> send(HttpRequest request, std::stop_token token);

private:
    std::unique_ptr<QNetworkAccessManager> m_network;
};
