// SPDX-License-Identifier: GPL-3.0-or-later
#include "FuzzTarget.h"

#include "RawClient.h"

#include "LocalCloud/HttpAdapter.h"

#include <QCoreApplication>
#include <QTcpServer>

#include <fcntl.h>

using namespace std::chrono_literals;
using Cloud::HttpAdapter;
using Cloud::Request;
using Cloud::Response;

namespace {

// Small ones, so that small inputs reach them.
const HttpAdapter::Limits limits{.headSize = 2048, .bodySize = 1024, .stall = 2s, .answer = 2s, .idle = 2s};

constexpr qsizetype mostPieces = 64;
constexpr int inputsBetweenChecks = 32;
const QByteArray goodRequest = "GET /good HTTP/1.1\r\nHost: h\r\n\r\n";

class Server
{
public:
    Server()
        : m_adapter([this](const Request &request) { return answer(request); }, limits)
    {
        QTcpServer opener;
        require(opener.listen(QHostAddress::LocalHost), "a port can be opened");
        port = opener.serverPort();
        require(m_adapter.serve(::fcntl(int(opener.socketDescriptor()), F_DUPFD_CLOEXEC, 0)),
                "a port can be served");
    }

    quint16 port = 0;
    QList<Request> requests;

private:
    Response answer(const Request &request)
    {
        requests.append(request);
        Response response;
        response.body = "{\"answer\":" + QByteArray::number(requests.size()) + '}';
        return response;
    }

    HttpAdapter m_adapter;
};

/// The first line says in how many bytes at a time the rest is sent.
QList<QByteArray> pieces(const QByteArray &bytes)
{
    const qsizetype end = qMax<qsizetype>(0, bytes.indexOf('\n'));
    const QByteArray rest = bytes.mid(end + 1);
    const qsizetype size = qMax<qsizetype>(bytes.left(end).toLongLong(), rest.size() / mostPieces + 1);
    QList<QByteArray> result;
    for (qsizetype from = 0; from < rest.size(); from += size)
        result.append(rest.mid(from, size));
    return result;
}

/// Takes the answers off the front of @p received; the number of those that end a request.
int countAnswers(QByteArray received, const QList<Request> &requests)
{
    int answers = 0;
    while (!received.isEmpty()) {
        require(received.startsWith("HTTP/1.1 "), "every answer begins with its status");
        const qsizetype headEnd = received.indexOf("\r\n\r\n");
        require(headEnd > 0, "every answer has its head");
        const QByteArray head = received.left(headEnd).toLower();
        received = received.mid(headEnd + 4);
        if (head.startsWith("http/1.1 100 "))
            continue;
        const qsizetype at = head.indexOf("content-length: ");
        require(at > 0, "every answer says how long it is");
        const qsizetype length = head.mid(at + 16, head.indexOf('\r', at + 16) - at - 16).toLongLong();
        const bool isHead = answers < requests.size() && requests.at(answers).method == "HEAD";
        require(isHead || received.size() >= length, "every answer is whole");
        received = received.mid(isHead ? 0 : length);
        ++answers;
    }
    return answers;
}

void requireWithinLimits(const Request &request)
{
    qsizetype headSize = 0;
    for (const auto &[name, value] : request.headers)
        headSize += name.size() + value.size();
    require(headSize <= limits.headSize, "no head exceeds its limit");
    require(request.body.size() <= limits.headSize + limits.bodySize, "no body exceeds its limit");
    require(request.headerCount("content-length") + request.headerCount("transfer-encoding") <= 1,
            "the length of a request is said once");
}

void requireNothingTwice(const QList<Request> &requests, qsizetype sent)
{
    qsizetype handedOver = 0;
    for (const Request &request : requests)
        handedOver += request.body.size();
    require(handedOver <= sent, "no byte is handed over twice");
}

void requireServes(Server &server)
{
    RawClient client(server.port);
    client.send(goodRequest);
    require(client.finish().startsWith("HTTP/1.1 200 "),
            "whatever was sent before, a good request is answered");
}

} // namespace

void readForeignBytes(const QByteArray &bytes)
{
    static int argumentCount = 1;
    static char programName[] = "fuzz";
    static char *arguments[] = {programName, nullptr};
    static const QCoreApplication application(argumentCount, arguments);
    static Server server;
    static int inputs = 0;

    server.requests.clear();
    RawClient client(server.port);
    const QList<QByteArray> sent = pieces(bytes);
    for (const QByteArray &piece : sent)
        client.send(piece);
    const QByteArray received = client.finish();
    require(countAnswers(received, server.requests) <= server.requests.size() + 1,
            "there are no more answers than requests and one refusal");
    requireNothingTwice(server.requests, bytes.size());
    for (const Request &request : std::as_const(server.requests))
        requireWithinLimits(request);
    if (++inputs % inputsBetweenChecks == 0)
        requireServes(server);
}
