// SPDX-License-Identifier: GPL-3.0-or-later
#include "HttpAdapter.h"

#include "HttpConnection.h"

#include <QAbstractHttpServer>
#include <QHttpServerRequest>
#include <QSslConfiguration>
#include <QSslSocket>
#include <QTcpServer>

#include <unistd.h>
#include <utility>

namespace Cloud {

namespace {

QByteArray methodName(QHttpServerRequest::Method method)
{
    switch (method) {
    case QHttpServerRequest::Method::Get:
        return "GET";
    case QHttpServerRequest::Method::Put:
        return "PUT";
    case QHttpServerRequest::Method::Delete:
        return "DELETE";
    case QHttpServerRequest::Method::Post:
        return "POST";
    case QHttpServerRequest::Method::Head:
        return "HEAD";
    case QHttpServerRequest::Method::Options:
        return "OPTIONS";
    case QHttpServerRequest::Method::Patch:
        return "PATCH";
    case QHttpServerRequest::Method::Connect:
        return "CONNECT";
    case QHttpServerRequest::Method::Trace:
        return "TRACE";
    default:
        return {};
    }
}

Request translated(const QHttpServerRequest &source)
{
    Request request;
    request.method = methodName(source.method());
    request.path = source.url().path(QUrl::FullyEncoded).toLatin1();
    request.query = source.url().query(QUrl::FullyEncoded).toLatin1();
    const auto headers = source.headers();
    for (const auto &[name, value] : headers)
        request.headers.emplaceBack(name.toLower(), value.trimmed());
    request.body = source.body();
    return request;
}

/// Counts the connections, gives each its watch, and encrypts them when it has a certificate.
class Listener final : public QTcpServer
{
public:
    Listener(const HttpAdapter::Limits &limits, HttpAdapter::Admission admission,
             std::optional<QSslConfiguration> tls, int &openConnections)
        : m_limits(limits)
        , m_admission(std::move(admission))
        , m_tls(std::move(tls))
        , m_openConnections(openConnections)
    {
    }

protected:
    void incomingConnection(qintptr descriptor) override
    {
        if (m_openConnections >= m_limits.connections || (m_admission && !m_admission(descriptor))) {
            ::close(int(descriptor));
            return;
        }
        QTcpSocket *socket = m_tls ? new QSslSocket(this) : new QTcpSocket(this);
        if (!socket->setSocketDescriptor(descriptor)) {
            ::close(int(descriptor));
            delete socket;
            return;
        }
        new HttpConnection(*socket, m_limits, m_openConnections);
        if (m_tls)
            encrypt(*static_cast<QSslSocket *>(socket));
        else
            addPendingConnection(socket);
    }

private:
    /// The library gets to see the connection when it is encrypted. Until then the watch's stall time limits
    /// it.
    void encrypt(QSslSocket &socket)
    {
        socket.setSslConfiguration(*m_tls);
        connect(&socket, &QSslSocket::encrypted, this, [this, &socket] {
            addPendingConnection(&socket);
            if (socket.bytesAvailable() > 0) // came along with the end of the handshake
                Q_EMIT socket.readyRead();
        });
        connect(&socket, &QAbstractSocket::disconnected, &socket, &QObject::deleteLater);
        socket.startServerEncryption();
    }

    const HttpAdapter::Limits m_limits;
    const HttpAdapter::Admission m_admission;
    const std::optional<QSslConfiguration> m_tls;
    int &m_openConnections;
};

/// Takes every request past the library's own router, which cannot express the paths spoken here.
class Dispatcher final : public QAbstractHttpServer
{
public:
    explicit Dispatcher(HttpAdapter::Handler handler)
        : m_handler(std::move(handler))
    {
    }

protected:
    bool handleRequest(const QHttpServerRequest &source, QTcpSocket *socket) override
    {
        const Request request = translated(source);
        HttpConnection::of(*socket).answer(request, m_handler(request));
        return true;
    }

    void missingHandler(const QHttpServerRequest &, QTcpSocket *) override {}

private:
    HttpAdapter::Handler m_handler;
};

} // namespace

struct HttpAdapter::Parts
{
    Parts(Handler handler, const Limits &limits, Admission admission)
        : dispatcher(std::move(handler))
        , limits(limits)
        , admission(std::move(admission))
    {
    }

    int openConnections = 0; // outlives the connections, which the dispatcher's server owns
    Dispatcher dispatcher;
    Limits limits;
    Admission admission;
};

HttpAdapter::HttpAdapter(Handler handler, Limits limits, Admission admission)
    : m_parts(std::make_unique<Parts>(std::move(handler), limits, std::move(admission)))
{
}

HttpAdapter::~HttpAdapter() = default;

bool HttpAdapter::serve(qintptr listeningSocket, std::optional<QSslConfiguration> tls)
{
    auto listener = std::make_unique<Listener>(m_parts->limits, m_parts->admission, std::move(tls),
                                               m_parts->openConnections);
    if (!listener->setSocketDescriptor(listeningSocket))
        return false;
    m_parts->dispatcher.bind(listener.release());
    return true;
}

} // namespace Cloud
