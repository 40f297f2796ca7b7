// SPDX-License-Identifier: GPL-3.0-or-later
#include "HttpAdapter.h"

#include "HttpConnection.h"

#include <QAbstractHttpServer>
#include <QHttpServerRequest>
#include <QHttpServerResponder>
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

void send(QHttpServerResponder &responder, const Request &request, const Response &response, bool keepsOpen)
{
    responder.writeStatusLine(QHttpServerResponder::StatusCode(response.status));
    responder.writeHeader("Content-Type", response.contentType);
    responder.writeHeader("Content-Length", QByteArray::number(response.body.size()));
    responder.writeHeader("Cache-Control", "no-store");
    responder.writeHeader("X-Content-Type-Options", "nosniff");
    for (const auto &[name, value] : response.headers)
        responder.writeHeader(name, value);
    if (!keepsOpen)
        responder.writeHeader("Connection", "close");
    responder.writeBody(request.method == "HEAD" ? QByteArray() : response.body);
}

/// Counts the connections and gives each its watch.
class Listener final : public QTcpServer
{
public:
    Listener(const HttpAdapter::Limits &limits, int &openConnections)
        : m_limits(limits)
        , m_openConnections(openConnections)
    {
    }

protected:
    void incomingConnection(qintptr descriptor) override
    {
        if (m_openConnections >= m_limits.connections) {
            ::close(int(descriptor));
            return;
        }
        auto *connection = new HttpConnection(m_limits, m_openConnections);
        connection->setParent(this);
        if (!connection->setSocketDescriptor(descriptor)) {
            ::close(int(descriptor));
            delete connection;
            return;
        }
        addPendingConnection(connection);
    }

private:
    const HttpAdapter::Limits m_limits;
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
        const bool keepsOpen = request.header("connection").toLower() != "close";
        {
            QHttpServerResponder responder = makeResponder(source, socket);
            send(responder, request, m_handler(request), keepsOpen);
        }
        static_cast<HttpConnection *>(socket)->requestCompleted();
        if (!keepsOpen)
            socket->disconnectFromHost();
        return true;
    }

    void missingHandler(const QHttpServerRequest &, QTcpSocket *) override {}

private:
    HttpAdapter::Handler m_handler;
};

} // namespace

struct HttpAdapter::Parts
{
    Parts(Handler handler, const Limits &limits)
        : dispatcher(std::move(handler))
        , limits(limits)
    {
    }

    int openConnections = 0; // outlives the connections, which the dispatcher's server owns
    Dispatcher dispatcher;
    Limits limits;
};

HttpAdapter::HttpAdapter(Handler handler, Limits limits)
    : m_parts(std::make_unique<Parts>(std::move(handler), limits))
{
}

HttpAdapter::~HttpAdapter() = default;

bool HttpAdapter::serve(qintptr listeningSocket)
{
    auto listener = std::make_unique<Listener>(m_parts->limits, m_parts->openConnections);
    if (!listener->setSocketDescriptor(listeningSocket))
        return false;
    m_parts->dispatcher.bind(listener.release());
    return true;
}

} // namespace Cloud
