// SPDX-License-Identifier: GPL-3.0-or-later
#include "LocalCloud/HttpAdapter.h"
#include "Support/Waiting.h"

#include <QElapsedTimer>
#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QTcpServer>
#include <QTcpSocket>
#include <QTimer>

#include <gtest/gtest.h>

#include <cstring>
#include <fcntl.h>
#include <sys/socket.h>
#include <utility>

using namespace Cloud;
using namespace std::chrono_literals;

namespace {

/// Answers each request with its method, path, query and body, and remembers the last one.
class HttpAdapterTest : public testing::Test
{
protected:
    void serve(HttpAdapter::Limits limits, HttpAdapter::Admission admission = {})
    {
        adapter = std::make_unique<HttpAdapter>(
            [this](const Request &request) {
                last = request;
                ++handled;
                return answer;
            },
            limits, std::move(admission));
        QTcpServer opener;
        ASSERT_TRUE(opener.listen(QHostAddress::LocalHost));
        port = opener.serverPort();
        ASSERT_TRUE(adapter->serve(::fcntl(int(opener.socketDescriptor()), F_DUPFD_CLOEXEC, 0)));
    }

    std::unique_ptr<QTcpSocket> connected() const
    {
        auto socket = std::make_unique<QTcpSocket>();
        socket->connectToHost(QHostAddress::LocalHost, port);
        EXPECT_TRUE(waitUntil([&] { return socket->state() == QAbstractSocket::ConnectedState; }));
        return socket;
    }

    static bool closed(const QTcpSocket &socket)
    {
        return socket.state() == QAbstractSocket::UnconnectedState;
    }

    /// Everything that arrives until @p end was seen or the connection is closed.
    static QByteArray received(QTcpSocket &socket, const QByteArray &end)
    {
        QByteArray bytes;
        EXPECT_TRUE(waitUntil([&] {
            bytes += socket.readAll();
            return bytes.contains(end) || closed(socket);
        })) << bytes.constData();
        return bytes;
    }

    static constexpr auto get = "GET /a HTTP/1.1\r\nHost: h\r\n\r\n";

    Response answer = [] {
        Response response;
        response.body = "{\"end\":1}";
        return response;
    }();
    Request last;
    int handled = 0;
    quint16 port = 0;
    std::unique_ptr<HttpAdapter> adapter;
};

} // namespace

TEST_F(HttpAdapterTest, requestIsHandedOverWhole)
{
    serve({});
    QNetworkAccessManager network;
    QNetworkRequest request(
        QUrl(QStringLiteral("http://127.0.0.1:%1/v1/(default)/a%20b%2Fc?x=1&y=%C3%BC").arg(port)));
    request.setRawHeader("X-Custom", "Value");
    request.setHeader(QNetworkRequest::ContentTypeHeader, QStringLiteral("text/plain"));
    std::unique_ptr<QNetworkReply> reply(network.sendCustomRequest(request, "PATCH", QByteArray("body")));
    ASSERT_TRUE(waitUntil([&] { return reply->isFinished(); }));
    EXPECT_EQ(reply->readAll(), answer.body);
    EXPECT_EQ(last.method, "PATCH");
    EXPECT_EQ(last.path, "/v1/(default)/a%20b%2Fc");
    EXPECT_EQ(last.query, "x=1&y=%C3%BC");
    EXPECT_EQ(last.header("x-custom"), "Value");
    EXPECT_EQ(last.header("content-type"), "text/plain");
    EXPECT_EQ(last.body, "body");
}

TEST_F(HttpAdapterTest, answerCarriesItsStatusAndHeaders)
{
    answer.status = 401;
    answer.headers.emplaceBack("WWW-Authenticate", "Bearer");
    serve({});
    const auto socket = connected();
    socket->write(get);
    const QByteArray bytes = received(*socket, "{\"end\":1}");
    EXPECT_TRUE(bytes.startsWith("HTTP/1.1 401 ")) << bytes.constData();
    EXPECT_TRUE(bytes.contains("WWW-Authenticate: Bearer\r\n"));
    EXPECT_TRUE(bytes.contains("Content-Length: 9\r\n"));
    EXPECT_TRUE(bytes.contains("Cache-Control: no-store\r\n"));
    EXPECT_FALSE(bytes.toLower().contains("access-control"));
}

TEST_F(HttpAdapterTest, connectionServesManyRequests)
{
    serve({});
    const auto socket = connected();
    for (int i = 1; i <= 20; ++i) {
        socket->write(get);
        received(*socket, "{\"end\":1}");
        ASSERT_EQ(handled, i);
    }
    EXPECT_FALSE(closed(*socket));
}

TEST_F(HttpAdapterTest, requestsSentInOneGoAreAllAnswered)
{
    serve({});
    const auto socket = connected();
    socket->write(QByteArray(get).repeated(3));
    EXPECT_TRUE(waitUntil([&] { return handled == 3; }));
}

TEST_F(HttpAdapterTest, requestInSmallPiecesIsPutTogether)
{
    serve({.bodySize = 100});
    const auto socket = connected();
    const QByteArray request =
        "POST /a HTTP/1.1\r\nHost: h\r\nContent-Length: 100\r\n\r\n" + QByteArray(100, 'x');
    for (const char byte : request) {
        socket->write(&byte, 1);
        socket->flush();
        ASSERT_TRUE(waitUntil([&] { return socket->bytesToWrite() == 0; }));
    }
    received(*socket, "{\"end\":1}");
    EXPECT_EQ(last.body, QByteArray(100, 'x'));
}

TEST_F(HttpAdapterTest, chunkedBodyIsPutTogether)
{
    serve({});
    const auto socket = connected();
    socket->write(
        "POST /a HTTP/1.1\r\nHost: h\r\nTransfer-Encoding: chunked\r\n\r\n3\r\nabc\r\n2\r\nde\r\n0\r\n\r\n");
    received(*socket, "{\"end\":1}");
    EXPECT_EQ(last.body, "abcde");
}

TEST_F(HttpAdapterTest, connectionIsClosedWhenTheClientAsksForIt)
{
    serve({});
    const auto socket = connected();
    socket->write("GET /a HTTP/1.1\r\nHost: h\r\nConnection: close\r\n\r\n");
    EXPECT_TRUE(received(*socket, "{\"end\":1}").contains("Connection: close\r\n"));
    EXPECT_TRUE(waitUntil([&] { return closed(*socket); }));
}

TEST_F(HttpAdapterTest, clientThatEndsItsSideRightAfterItsRequestIsAnswered)
{
    serve({});
    for (int i = 0; i < 20; ++i) { // with the end in the first reading of the socket, or in a later one
        const auto socket = connected();
        ASSERT_EQ(::send(int(socket->socketDescriptor()), get, std::strlen(get), 0),
                  ssize_t(std::strlen(get)));
        ASSERT_EQ(::shutdown(int(socket->socketDescriptor()), SHUT_WR), 0);
        EXPECT_TRUE(received(*socket, "{\"end\":1}").endsWith("{\"end\":1}"));
    }
}

TEST_F(HttpAdapterTest, bodyOverTheLimitIsRefusedBeforeItIsSent)
{
    serve({.bodySize = 1000});
    const auto socket = connected();
    socket->write("POST /a HTTP/1.1\r\nHost: h\r\nContent-Length: 1001\r\n\r\n");
    EXPECT_TRUE(received(*socket, "INVALID_ARGUMENT").startsWith("HTTP/1.1 413 "));
    EXPECT_EQ(handled, 0);
}

TEST_F(HttpAdapterTest, clientThatSendsTheWholeLargeBodyReadsTheRefusal)
{
    serve({});
    QNetworkAccessManager network;
    QNetworkRequest request(QUrl(QStringLiteral("http://127.0.0.1:%1/").arg(port)));
    request.setHeader(QNetworkRequest::ContentTypeHeader, QStringLiteral("text/plain"));
    std::unique_ptr<QNetworkReply> reply(network.post(request, QByteArray(11 * 1024 * 1024, 'x')));
    ASSERT_TRUE(waitUntil([&] { return reply->isFinished(); }));
    EXPECT_EQ(reply->attribute(QNetworkRequest::HttpStatusCodeAttribute).toInt(), 413);
    EXPECT_EQ(handled, 0);
}

TEST_F(HttpAdapterTest, bodyOfExactlyTheLimitIsTaken)
{
    serve({});
    QNetworkAccessManager network;
    QNetworkRequest request(QUrl(QStringLiteral("http://127.0.0.1:%1/").arg(port)));
    request.setHeader(QNetworkRequest::ContentTypeHeader, QStringLiteral("text/plain"));
    std::unique_ptr<QNetworkReply> reply(network.post(request, QByteArray(10 * 1024 * 1024, 'x')));
    ASSERT_TRUE(waitUntil([&] { return reply->isFinished(); }));
    EXPECT_EQ(reply->attribute(QNetworkRequest::HttpStatusCodeAttribute).toInt(), 200);
    EXPECT_EQ(last.body.size(), 10 * 1024 * 1024);
}

TEST_F(HttpAdapterTest, endlessChunkedBodyIsRefused)
{
    serve({.headSize = 1000, .bodySize = 1000});
    const auto socket = connected();
    socket->write("POST /a HTTP/1.1\r\nHost: h\r\nTransfer-Encoding: chunked\r\n\r\n");
    for (int i = 0; i < 30; ++i)
        socket->write("64\r\n" + QByteArray(100, 'x') + "\r\n");
    EXPECT_TRUE(received(*socket, "INVALID_ARGUMENT").startsWith("HTTP/1.1 413 "));
    EXPECT_EQ(handled, 0);
}

TEST_F(HttpAdapterTest, endlessHeadIsRefused)
{
    serve({.headSize = 1000});
    const auto socket = connected();
    socket->write("GET /a HTTP/1.1\r\nX: " + QByteArray(2000, 'x'));
    EXPECT_TRUE(received(*socket, "INVALID_ARGUMENT").startsWith("HTTP/1.1 431 "));
    EXPECT_EQ(handled, 0);
}

TEST_F(HttpAdapterTest, nonsenseEndsTheConnection)
{
    serve({});
    for (const QByteArray &bytes :
         {QByteArray("\x16\x03\x01\x02\r\n\r\n"), QByteArray("hello\r\n\r\n"),
          QByteArray("POST /a HTTP/1.1\r\nHost: h\r\nContent-Length: -5\r\n\r\n")}) {
        const auto socket = connected();
        socket->write(bytes);
        received(*socket, "INVALID_ARGUMENT");
        EXPECT_EQ(handled, 0) << bytes.constData();
    }
}

TEST_F(HttpAdapterTest, stalledRequestIsDropped)
{
    serve({.stall = 150ms, .idle = 60s});
    const auto socket = connected();
    socket->write("POST /a HTTP/1.1\r\nHost: h\r\nContent-Length: 10\r\n\r\n123");
    EXPECT_TRUE(waitUntil([&] { return closed(*socket); }));
    EXPECT_EQ(handled, 0);
}

TEST_F(HttpAdapterTest, trickleOfBytesDoesNotKeepARequestAlive)
{
    serve({.stall = 200ms, .idle = 60s});
    const auto socket = connected();
    socket->write("GET /a HTTP/1.1\r\n");
    QTimer trickle;
    QObject::connect(&trickle, &QTimer::timeout, socket.get(), [&] { socket->write("X"); });
    trickle.start(20);
    EXPECT_TRUE(waitUntil([&] { return closed(*socket); }, 3s));
}

TEST_F(HttpAdapterTest, connectionThatSaysNothingIsDropped)
{
    serve({.stall = 100ms, .idle = 60s});
    const auto socket = connected();
    EXPECT_TRUE(waitUntil([&] { return closed(*socket); }));
}

TEST_F(HttpAdapterTest, idleConnectionOutlivesTheStallTimeButNotTheIdleTime)
{
    serve({.stall = 50ms, .idle = 400ms});
    const auto socket = connected();
    socket->write(get);
    received(*socket, "{\"end\":1}");
    QElapsedTimer timer;
    timer.start();
    EXPECT_TRUE(waitUntil([&] { return closed(*socket); }));
    EXPECT_GE(timer.elapsed(), 300);
}

TEST_F(HttpAdapterTest, clientThatDoesNotTakeItsAnswerIsDropped)
{
    answer.body = QByteArray(16 * 1024 * 1024, 'x');
    serve({.stall = 200ms, .idle = 60s});
    const auto socket = connected();
    socket->setReadBufferSize(1024);
    socket->write(get);
    ASSERT_TRUE(waitUntil([&] { return handled == 1; }));
    QElapsedTimer timer;
    timer.start();
    ASSERT_TRUE(waitUntil([&] { return timer.elapsed() > 1000; }));
    socket->setReadBufferSize(0);
    qsizetype taken = 0;
    EXPECT_TRUE(waitUntil([&] {
        taken += socket->readAll().size();
        return closed(*socket);
    }));
    EXPECT_LT(taken, answer.body.size());
}

TEST_F(HttpAdapterTest, connectionsOverTheLimitAreClosedAndThePlacesComeBack)
{
    serve({.connections = 3});
    std::vector<std::unique_ptr<QTcpSocket>> sockets;
    for (int i = 0; i < 3; ++i) {
        sockets.push_back(connected());
        sockets.back()->write(get);
        received(*sockets.back(), "{\"end\":1}");
    }
    ASSERT_EQ(handled, 3);
    const auto fourth = connected();
    fourth->write(get);
    EXPECT_TRUE(waitUntil([&] { return closed(*fourth); }));
    EXPECT_EQ(handled, 3);

    sockets.pop_back();
    EXPECT_TRUE(waitUntil([&] {
        const auto next = connected();
        next->write(get);
        return received(*next, "{\"end\":1}").contains("{\"end\":1}");
    }));
}

TEST_F(HttpAdapterTest, adapterCanGoWhileRequestsAreComing)
{
    serve({});
    const auto socket = connected();
    socket->write(get);
    received(*socket, "{\"end\":1}");
    socket->write("POST /a HTTP/1.1\r\nContent-Length: 10\r\n\r\n1");
    adapter.reset();
    EXPECT_TRUE(waitUntil([&] { return closed(*socket); }));
}

TEST_F(HttpAdapterTest, clientThatAsksFirstIsToldToGoOn)
{
    serve({.bodySize = 100});
    auto socket = connected();
    socket->write("POST /a HTTP/1.1\r\nHost: h\r\nContent-Length: 3\r\nExpect: 100-continue\r\n\r\n");
    EXPECT_EQ(received(*socket, "\r\n\r\n"), "HTTP/1.1 100 Continue\r\n\r\n");
    EXPECT_EQ(handled, 0);
    socket->write("abc");
    EXPECT_TRUE(received(*socket, "{\"end\":1}").startsWith("HTTP/1.1 200 "));
    EXPECT_EQ(last.body, "abc");

    socket = connected();
    socket->write("POST /a HTTP/1.1\r\nHost: h\r\nContent-Length: 101\r\nExpect: 100-continue\r\n\r\n");
    EXPECT_TRUE(received(*socket, "INVALID_ARGUMENT").startsWith("HTTP/1.1 413 "));
}

TEST_F(HttpAdapterTest, bodiesOfTwoLengthsAreRefused)
{
    serve({});
    for (const QByteArray headers :
         {"Content-Length: 3\r\nContent-Length: 4", "Content-Length: 3\r\nTransfer-Encoding: chunked",
          "Transfer-Encoding: chunked\r\nTransfer-Encoding: chunked", "Transfer-Encoding: gzip, chunked",
          "Transfer-Encoding: x", "Content-Length: 0x4", "Content-Length: -1"}) {
        const auto socket = connected();
        socket->write("POST /a HTTP/1.1\r\nHost: h\r\n" + headers + "\r\n\r\nabcd");
        EXPECT_TRUE(received(*socket, "INVALID_ARGUMENT").startsWith("HTTP/1.1 400 ")) << headers.constData();
    }
    EXPECT_EQ(handled, 0);
}

TEST_F(HttpAdapterTest, aHeadIsWatchedHoweverItsLinesEnd)
{
    serve({});
    const QByteArray ambiguous =
        "POST /a HTTP/1.1\r\nHost: h\r\nContent-Length: 3\r\nContent-Length: 4\r\n\r\nabcd";
    const struct
    {
        const char *what;
        QByteArray bytes;
    } cases[] = {
        {"line feeds alone", QByteArray(ambiguous).replace("\r\n", "\n")},
        {"one line feed alone", QByteArray(ambiguous).replace("4\r\n", "4\n")},
        {"a carriage return alone at the end", QByteArray(ambiguous).replace("\r\n\r\n", "\r\n\rX")},
        {"a carriage return alone in a value", QByteArray(ambiguous).replace(": h", ": h\r")},
        {"empty lines in front", "\r\n\n\r\n" + ambiguous},
        {"behind another request", get + ambiguous},
    };
    for (const auto &given : cases) {
        handled = 0;
        const auto socket = connected();
        for (qsizetype at = 0; at < given.bytes.size(); at += 3) { // so that the library sees an early end
            socket->write(given.bytes.mid(at, 3));
            socket->flush();
            ASSERT_TRUE(waitUntil([&] { return socket->bytesToWrite() == 0 || closed(*socket); }));
        }
        EXPECT_TRUE(received(*socket, "INVALID_ARGUMENT").contains("HTTP/1.1 400 ")) << given.what;
        EXPECT_EQ(handled, given.bytes.startsWith(get) ? 1 : 0) << given.what;
    }
}

TEST_F(HttpAdapterTest, answerThatComesLaterIsNotOvertakenAndHoldsNobodyElseUp)
{
    std::function<void(const Response &)> reply;
    Response pending;
    pending.later = [&](std::function<void(const Response &)> place) { reply = std::move(place); };
    const Response known = std::exchange(answer, pending);
    serve({});
    const auto socket = connected();
    socket->write(QByteArray(get).repeated(2));
    ASSERT_TRUE(waitUntil([&] { return reply != nullptr; }));
    answer = known;
    const auto other = connected();
    other->write(get);
    received(*other, "{\"end\":1}");
    EXPECT_EQ(handled, 2);
    reply(known);
    const QByteArray bytes = received(*socket, "{\"end\":1}");
    EXPECT_TRUE(bytes.contains("Connection: close\r\n"));
    EXPECT_TRUE(waitUntil([&] { return closed(*socket); }));
    EXPECT_EQ(handled, 2);
}

TEST_F(HttpAdapterTest, lateAnswerToAClientThatHasLeftIsDropped)
{
    std::function<void(const Response &)> reply;
    const Response known = answer;
    answer.later = [&](std::function<void(const Response &)> place) { reply = std::move(place); };
    serve({.connections = 1});
    {
        const auto socket = connected();
        socket->write(get);
        ASSERT_TRUE(waitUntil([&] { return reply != nullptr; }));
        socket->abort();
    }
    EXPECT_TRUE(waitUntil([&] { // until the place is free again
        const auto next = connected();
        reply = nullptr;
        next->write(get);
        return waitUntil([&] { return reply != nullptr || closed(*next); }) && reply;
    }));
    adapter.reset();
    reply(known);
}

TEST_F(HttpAdapterTest, answerThatNeverComesEndsTheConnection)
{
    answer.later = [](const std::function<void(const Response &)> &) {};
    serve({.answer = 100ms});
    const auto socket = connected();
    socket->write(get);
    EXPECT_TRUE(waitUntil([&] { return closed(*socket); }));
}

TEST_F(HttpAdapterTest, whoIsNotAdmittedIsNotHeard)
{
    bool admits = false;
    serve({}, [&](qintptr) { return admits; });
    const auto refused = connected();
    refused->write(get);
    EXPECT_TRUE(waitUntil([&] { return closed(*refused); }));
    EXPECT_EQ(handled, 0);
    admits = true;
    const auto socket = connected();
    socket->write(get);
    received(*socket, "{\"end\":1}");
    EXPECT_EQ(handled, 1);
}

TEST_F(HttpAdapterTest, whatIsNoSocketIsReported)
{
    HttpAdapter lonely([](const Request &) { return Response(); }, {});
    EXPECT_FALSE(lonely.serve(-1));
}
