// SPDX-License-Identifier: GPL-3.0-or-later
#include "Foundation/HttpClient.h"
#include "Foundation/TaskScope.h"
#include "ScriptedServer.h"
#include "Support/Waiting.h"

#include <QElapsedTimer>
#include <QTimer>

#include <gmock/gmock.h>

#include <memory>

using namespace std::chrono_literals;
using testing::HasSubstr;

namespace {

/// How a request ended, exactly one of three ways.
struct Ending
{
    std::optional<HttpResponse> response;
    std::optional<QString> failure;
    bool isCancelled = false;
};

QCoro::Task<Ending> endingOf(QCoro::Task<HttpResponse> task)
{
    Ending ending;
    try {
        HttpResponse response = co_await task;
        ending.response = std::move(response);
    } catch (const TransportError &error) {
        ending.failure = error.description();
    } catch (const CancelledError &) {
        ending.isCancelled = true;
    }
    co_return ending;
}

QCoro::Task<> keepEnding(QCoro::Task<HttpResponse> task, std::shared_ptr<std::optional<Ending>> kept)
{
    Ending ending = co_await endingOf(std::move(task));
    *kept = std::move(ending);
}

HttpRequest get(const QUrl &url)
{
    HttpRequest request;
    request.url = url;
    return request;
}

HttpRequest post(const QUrl &url, const QByteArray &body)
{
    return {.method = "POST", .url = url, .headers = {{"Content-Type", "text/plain"}}, .body = body};
}

std::string failureOf(const Ending &ending)
{
    return ending.failure.value_or(QString()).toStdString();
}

ScriptedServer::Script answerAndClose(const QByteArray &bytes)
{
    return [bytes](QTcpSocket *socket) {
        socket->write(bytes);
        socket->disconnectFromHost();
    };
}

void ignore(QTcpSocket *)
{
}

constexpr char noAnswer[] = "The server 127.0.0.1 closed the connection without a valid answer.";
constexpr char smallAnswer[] =
    "HTTP/1.1 200 OK\r\nContent-Type: text/plain\r\nContent-Length: 5\r\n\r\nhello";

class HttpClientTest : public testing::Test
{
protected:
    Ending send(HttpRequest request)
    {
        return await(endingOf(client->send(std::move(request), scope.token())));
    }

    std::shared_ptr<std::optional<Ending>> start(HttpRequest request)
    {
        const auto kept = std::make_shared<std::optional<Ending>>();
        detach(keepEnding(client->send(std::move(request), scope.token()), kept), "test request");
        return kept;
    }

    std::unique_ptr<HttpClient> client = std::make_unique<HttpClient>();
    TaskScope scope;
};

} // namespace

TEST_F(HttpClientTest, givesStatusTypeAndBodyOfTheAnswer)
{
    const ScriptedServer server(
        ScriptedServer::answer("HTTP/1.1 201 Created\r\nContent-Type: application/json; "
                               "charset=utf-8\r\nContent-Length: 2\r\n\r\n{}"));
    const Ending ending = send(get(server.url()));
    ASSERT_TRUE(ending.response) << failureOf(ending);
    EXPECT_EQ(ending.response->statusCode, 201);
    EXPECT_EQ(ending.response->contentType, "application/json; charset=utf-8");
    EXPECT_EQ(ending.response->body, "{}");
    EXPECT_TRUE(ending.response->isHttp());
    EXPECT_TRUE(ending.response->isSuccess());
}

TEST_F(HttpClientTest, waitsSixtySecondsUnlessToldOtherwise)
{
    EXPECT_EQ(HttpRequest().timeout, 60s);
}

TEST_F(HttpClientTest, sendsMethodPathHeadersAndBodyAsGiven)
{
    const ScriptedServer server(ScriptedServer::answer(smallAnswer));
    HttpRequest request;
    request.method = "PATCH";
    request.url = server.url(QStringLiteral("/v1/a%2Fb?mask=x%20y"));
    request.headers = {{"Authorization", "Bearer abc"},
                       {"X-Twice", "one"},
                       {"X-Twice", "two"},
                       {"Content-Type", "application/json"}};
    request.body = "{\"a\":1}";
    ASSERT_TRUE(send(request).response);
    ASSERT_EQ(server.requests.size(), 1);
    const std::string head = server.requests.first().head.toStdString();
    EXPECT_THAT(head, HasSubstr("PATCH /v1/a%2Fb?mask=x%20y HTTP/1.1\r\n"));
    EXPECT_THAT(head, HasSubstr("\r\nAuthorization: Bearer abc\r\n"));
    EXPECT_THAT(head, HasSubstr("\r\nX-Twice: one, two\r\n"));
    EXPECT_THAT(head, HasSubstr("\r\nContent-Type: application/json\r\n"));
    EXPECT_THAT(head, HasSubstr("\r\nUser-Agent: Brevix/"));
    EXPECT_EQ(server.requests.first().body, request.body);
}

TEST_F(HttpClientTest, sendsBodiesOfEverySize)
{
    const ScriptedServer server(ScriptedServer::answer(smallAnswer));
    for (const qsizetype size : {0, 1, 16 * 1024, 3 * 1024 * 1024 + 1}) {
        const QByteArray body(size, 'b');
        const Ending ending = send(post(server.url(), body));
        ASSERT_TRUE(ending.response) << size << failureOf(ending);
        EXPECT_EQ(server.requests.last().body, body);
    }
}

TEST_F(HttpClientTest, anErrorStatusIsAnAnswerWithItsBody)
{
    for (const int status :
         {300, 304, 400, 401, 403, 404, 405, 407, 409, 410, 418, 429, 500, 501, 503, 599}) {
        const bool hasBody = status != 304;
        const ScriptedServer server(ScriptedServer::answer(
            "HTTP/1.1 " + QByteArray::number(status) +
            " Reason\r\nWWW-Authenticate: Bearer realm=\"x\", error=\"invalid_token\"\r\nContent-Length: " +
            (hasBody ? "4\r\n\r\nbody" : "0\r\n\r\n")));
        for (const HttpRequest &request : {get(server.url()), post(server.url(), "x")}) {
            const Ending ending = send(request);
            ASSERT_TRUE(ending.response) << status << ": " << failureOf(ending);
            EXPECT_EQ(ending.response->statusCode, status);
            EXPECT_EQ(ending.response->body, hasBody ? "body" : "") << status;
            EXPECT_FALSE(ending.response->isSuccess());
        }
        EXPECT_EQ(server.requests.size(), 2) << status;
    }
}

TEST_F(HttpClientTest, anEmptyAnswerIsAnAnswer)
{
    const ScriptedServer server(ScriptedServer::answer("HTTP/1.1 204 No Content\r\n\r\n"));
    const Ending ending = send(get(server.url()));
    ASSERT_TRUE(ending.response) << failureOf(ending);
    EXPECT_EQ(ending.response->statusCode, 204);
    EXPECT_TRUE(ending.response->body.isEmpty());
    EXPECT_TRUE(ending.response->contentType.isEmpty());
}

TEST_F(HttpClientTest, takesChunkedAndConnectionDelimitedBodies)
{
    for (const QByteArray &answer : {
             QByteArray(
                 "HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n3\r\nhel\r\n2\r\nlo\r\n0\r\n\r\n"),
             QByteArray("HTTP/1.1 200 OK\r\nConnection: close\r\n\r\nhello"),
             QByteArray("HTTP/1.0 200 OK\r\n\r\nhello"),
         }) {
        const ScriptedServer server(answerAndClose(answer));
        const Ending ending = send(get(server.url()));
        ASSERT_TRUE(ending.response) << answer.constData() << failureOf(ending);
        EXPECT_EQ(ending.response->body, "hello");
    }
}

TEST_F(HttpClientTest, redirectsAreNotFollowed)
{
    const ScriptedServer server(
        ScriptedServer::answer("HTTP/1.1 302 Found\r\nLocation: /elsewhere\r\nContent-Length: 0\r\n\r\n"));
    const Ending ending = send(get(server.url()));
    ASSERT_TRUE(ending.response) << failureOf(ending);
    EXPECT_EQ(ending.response->statusCode, 302);
    EXPECT_EQ(server.requests.size(), 1);
}

TEST_F(HttpClientTest, aRedirectOfARequestWithABodyIsAnAnswerToo)
{
    for (const QByteArray &status : {QByteArray("302 Found"), QByteArray("307 Temporary Redirect")}) {
        const ScriptedServer server(ScriptedServer::answer(
            "HTTP/1.1 " + status + "\r\nLocation: /elsewhere\r\nContent-Length: 0\r\n\r\n"));
        const Ending ending = send({.method = "POST", .url = server.url(), .headers = {}, .body = "body"});
        ASSERT_TRUE(ending.response) << status.constData() << failureOf(ending);
        EXPECT_EQ(ending.response->statusCode, status.first(3).toInt());
        EXPECT_EQ(server.requests.size(), 1);
    }
}

TEST_F(HttpClientTest, cookiesAreNotSentBack)
{
    const ScriptedServer server(ScriptedServer::answer(
        "HTTP/1.1 200 OK\r\nSet-Cookie: session=1; Path=/\r\nContent-Length: 0\r\n\r\n"));
    ASSERT_TRUE(send(get(server.url())).response);
    ASSERT_TRUE(send(get(server.url())).response);
    ASSERT_EQ(server.requests.size(), 2);
    EXPECT_FALSE(server.requests.last().head.toLower().contains("cookie"));
}

TEST_F(HttpClientTest, nothingIsCached)
{
    const ScriptedServer server(ScriptedServer::answer(
        "HTTP/1.1 200 OK\r\nCache-Control: max-age=3600\r\nETag: \"1\"\r\nContent-Length: 1\r\n\r\nx"));
    ASSERT_TRUE(send(get(server.url())).response);
    ASSERT_TRUE(send(get(server.url())).response);
    EXPECT_EQ(server.requests.size(), 2);
}

TEST_F(HttpClientTest, timesOutWhenNoAnswerComes)
{
    const ScriptedServer server(&ignore);
    HttpRequest request = get(server.url());
    request.timeout = 100ms;
    QElapsedTimer timer;
    timer.start();
    const Ending ending = send(request);
    EXPECT_EQ(failureOf(ending), "The server 127.0.0.1 did not answer within 0.1 seconds.");
    EXPECT_GE(timer.elapsed(), 99);
    EXPECT_LT(timer.elapsed(), 2000);
    EXPECT_TRUE(waitUntil([&] { return server.disconnections == 1; })) << "the connection is given up";
}

TEST_F(HttpClientTest, timesOutWhenTheServerStallsAfterTheHeaders)
{
    const ScriptedServer server(
        ScriptedServer::answer("HTTP/1.1 200 OK\r\nContent-Length: 100\r\n\r\nonly the beginning"));
    HttpRequest request = get(server.url());
    request.timeout = 100ms;
    EXPECT_THAT(failureOf(send(request)), HasSubstr("did not answer within 0.1 seconds"));
}

TEST_F(HttpClientTest, timesOutWhenTheServerTricklesForEver)
{
    const ScriptedServer server([](QTcpSocket *socket) {
        socket->write("HTTP/1.1 200 OK\r\nContent-Length: 100000\r\n\r\n");
        auto *timer = new QTimer(socket);
        QObject::connect(timer, &QTimer::timeout, socket, [socket] { socket->write("."); });
        timer->start(5ms);
    });
    HttpRequest request = get(server.url());
    request.timeout = 200ms;
    EXPECT_THAT(failureOf(send(request)), HasSubstr("did not answer within 0.2 seconds"));
}

TEST_F(HttpClientTest, aTruncatedBodyIsAFailure)
{
    const ScriptedServer server(answerAndClose("HTTP/1.1 200 OK\r\nContent-Length: 10\r\n\r\nhello"));
    EXPECT_EQ(failureOf(send(get(server.url()))),
              "The connection to 127.0.0.1 was lost before the answer was complete.");
}

TEST_F(HttpClientTest, aConnectionClosedWithoutAnAnswerIsAFailure)
{
    const ScriptedServer server([](QTcpSocket *socket) { socket->disconnectFromHost(); });
    EXPECT_EQ(failureOf(send(get(server.url()))), noAnswer);
}

// A lost connection says nothing about what the server has done: a second try could create a prompt twice.
TEST_F(HttpClientTest, aRequestThatChangesSomethingIsNeverSentTwice)
{
    for (const bool isReset : {false, true}) {
        const ScriptedServer server([isReset](QTcpSocket *socket) {
            if (isReset)
                socket->abort();
            else
                socket->disconnectFromHost();
        });
        EXPECT_EQ(failureOf(send(post(server.url(), "create"))), noAnswer);
        EXPECT_EQ(server.requests.size(), 1);
    }
}

TEST_F(HttpClientTest, aServerThatClosesAfterItsAnswerDoesNotDisturbTheNextRequest)
{
    const ScriptedServer server(
        answerAndClose("HTTP/1.1 200 OK\r\nConnection: close\r\nContent-Length: 5\r\n\r\nhello"));
    for (int request = 1; request <= 5; ++request) {
        const Ending ending = send(post(server.url(), "x"));
        ASSERT_TRUE(ending.response) << failureOf(ending);
    }
    EXPECT_EQ(server.requests.size(), 5);
    EXPECT_EQ(server.connections, 5);
}

TEST_F(HttpClientTest, readingSurvivesAConnectionThatClosesUnannounced)
{
    const ScriptedServer server(answerAndClose(smallAnswer));
    for (int request = 1; request <= 5; ++request) {
        const Ending ending = send(get(server.url()));
        ASSERT_TRUE(ending.response) << failureOf(ending);
    }
}

TEST_F(HttpClientTest, anAnswerThatIsNotHttpIsAFailure)
{
    for (const QByteArray &garbage :
         {QByteArray("220 mail.example ESMTP\r\n"), QByteArray("SSH-2.0-OpenSSH_9.2\r\n"),
          QByteArray("\x16\x03\x01\x00\x00garbage\r\n\r\n", 16), QByteArray("HTTP/x.y what\r\n\r\n"),
          QByteArray(200000, 'x')}) {
        const ScriptedServer server(answerAndClose(garbage));
        const Ending ending = send(get(server.url()));
        EXPECT_EQ(failureOf(ending), noAnswer) << garbage.left(40).constData();
    }
}

TEST_F(HttpClientTest, aRefusedConnectionIsAFailure)
{
    QUrl url;
    {
        const ScriptedServer server(&ignore);
        url = server.url();
    }
    EXPECT_EQ(failureOf(send(get(url))), "The server 127.0.0.1 refused the connection.");
}

TEST_F(HttpClientTest, anUnknownHostIsAFailure)
{
    HttpRequest request = get(QUrl(QStringLiteral("http://brevix.invalid/")));
    request.timeout = 20s;
    EXPECT_EQ(failureOf(send(request)),
              "The server brevix.invalid could not be found. Check your Internet connection.");
}

TEST_F(HttpClientTest, aServerWithoutTlsIsAFailureOfTheSecureConnection)
{
    const ScriptedServer server(&ignore);
    QTcpServer plain;
    ASSERT_TRUE(plain.listen(QHostAddress::LocalHost));
    QObject::connect(&plain, &QTcpServer::newConnection, &plain, [&plain] {
        QTcpSocket *socket = plain.nextPendingConnection();
        QObject::connect(socket, &QTcpSocket::readyRead, socket,
                         [socket] { socket->write("HTTP/1.1 400 Bad Request\r\n\r\n"); });
    });
    const Ending ending = send(get(QUrl(QStringLiteral("https://127.0.0.1:%1/").arg(plain.serverPort()))));
    EXPECT_THAT(failureOf(ending), testing::StartsWith("No secure connection to 127.0.0.1 could be made: "));
}

TEST_F(HttpClientTest, acceptsABodyOfTheLargestSize)
{
    const QByteArray body(HttpClient::maximumBodySize, 'x');
    const ScriptedServer server(ScriptedServer::answer(
        "HTTP/1.1 200 OK\r\nContent-Length: " + QByteArray::number(body.size()) + "\r\n\r\n" + body));
    const Ending ending = send(get(server.url()));
    ASSERT_TRUE(ending.response) << failureOf(ending);
    EXPECT_EQ(ending.response->body.size(), HttpClient::maximumBodySize);
}

TEST_F(HttpClientTest, refusesALargerBodyAsSoonAsItIsAnnounced)
{
    const ScriptedServer server(ScriptedServer::answer(
        "HTTP/1.1 200 OK\r\nContent-Length: " + QByteArray::number(HttpClient::maximumBodySize + 1) +
        "\r\n\r\n"));
    EXPECT_EQ(failureOf(send(get(server.url()))), "The answer of 127.0.0.1 is too large.");
}

TEST_F(HttpClientTest, refusesABodyThatGrowsOverTheLimitUnannounced)
{
    const ScriptedServer server([](QTcpSocket *socket) {
        socket->write("HTTP/1.1 200 OK\r\nConnection: close\r\n\r\n");
        const QByteArray block(1024 * 1024, 'x');
        QObject::connect(socket, &QTcpSocket::bytesWritten, socket, [socket, block] {
            if (socket->bytesToWrite() < block.size())
                socket->write(block);
        });
    });
    EXPECT_EQ(failureOf(send(get(server.url()))), "The answer of 127.0.0.1 is too large.");
}

TEST_F(HttpClientTest, refusesWhatIsNotAWebAddress)
{
    for (const char *address :
         {"", "/relative", "file:///etc/hostname", "data:text/plain,x", "ftp://host/", "http://"}) {
        const Ending ending = send(get(QUrl(QString::fromLatin1(address))));
        EXPECT_EQ(failureOf(ending), "The address of the request is not valid.") << address;
    }
}

TEST_F(HttpClientTest, refusesHeadersThatWouldSmuggleInOthers)
{
    const ScriptedServer server(ScriptedServer::answer(smallAnswer));
    const QList<QPair<QByteArray, QByteArray>> headers{
        {"Authorization", "Bearer a\r\nX-Evil: 1"}, {"X\nY", "1"}, {"", "1"}, {"A", QByteArray("\0", 1)}};
    for (const auto &header : headers) {
        HttpRequest request = get(server.url());
        request.headers.append(header);
        EXPECT_EQ(failureOf(send(request)), "A header of the request is not valid.");
    }
    EXPECT_EQ(server.connections, 0);
}

TEST_F(HttpClientTest, aStoppedTokenSendsNothing)
{
    const ScriptedServer server(ScriptedServer::answer(smallAnswer));
    const std::stop_token stopped = scope.token();
    scope.restart();
    const Ending ending = await(endingOf(client->send(get(server.url()), stopped)));
    EXPECT_TRUE(ending.isCancelled);
    EXPECT_EQ(server.connections, 0);
}

TEST_F(HttpClientTest, aStopRequestCancelsFromTheEventLoop)
{
    const ScriptedServer server(&ignore);
    const auto ending = start(get(server.url()));
    ASSERT_TRUE(waitUntil([&] { return server.requests.size() == 1; }));
    scope.restart();
    EXPECT_FALSE(*ending) << "not from inside of the stop request";
    ASSERT_TRUE(waitUntil([&] { return ending->has_value(); }));
    EXPECT_TRUE((*ending)->isCancelled);
    EXPECT_TRUE(waitUntil([&] { return server.disconnections == 1; }));
}

TEST_F(HttpClientTest, aStopRequestCancelsInTheMiddleOfTheBody)
{
    const ScriptedServer server(
        ScriptedServer::answer("HTTP/1.1 200 OK\r\nContent-Length: 100\r\n\r\nbegin"));
    const auto ending = start(get(server.url()));
    ASSERT_TRUE(waitUntil([&] { return server.requests.size() == 1; }));
    scope.restart();
    ASSERT_TRUE(waitUntil([&] { return ending->has_value(); }));
    EXPECT_TRUE((*ending)->isCancelled);
}

TEST_F(HttpClientTest, aStopRequestAfterTheAnswerChangesNothing)
{
    const ScriptedServer server(ScriptedServer::answer(smallAnswer));
    const Ending ending = send(get(server.url()));
    scope.restart();
    ASSERT_TRUE(ending.response);
    EXPECT_EQ(ending.response->body, "hello");
}

TEST_F(HttpClientTest, requestsOfADeadClientAreCancelled)
{
    const ScriptedServer server(&ignore);
    const auto first = start(get(server.url()));
    const auto second = start(post(server.url(), QByteArray(1024 * 1024, 'x')));
    ASSERT_TRUE(waitUntil([&] { return server.requests.size() == 2; }));
    client.reset();
    EXPECT_FALSE(*first) << "not from inside of the destructor";
    ASSERT_TRUE(waitUntil([&] { return first->has_value() && second->has_value(); }));
    EXPECT_TRUE((*first)->isCancelled);
    EXPECT_TRUE((*second)->isCancelled);
}

TEST_F(HttpClientTest, aClientMayDieAtOnceAfterSending)
{
    const ScriptedServer server(ScriptedServer::answer(smallAnswer));
    const auto ending = start(get(server.url()));
    client.reset();
    ASSERT_TRUE(waitUntil([&] { return ending->has_value(); }));
    EXPECT_TRUE((*ending)->isCancelled);
}

TEST_F(HttpClientTest, requestsRunSideBySide)
{
    const ScriptedServer slow(&ignore);
    const ScriptedServer fast(ScriptedServer::answer(smallAnswer));
    const auto waiting = start(get(slow.url()));
    QList<std::shared_ptr<std::optional<Ending>>> endings;
    for (int request = 0; request < 20; ++request)
        endings.append(start(get(fast.url())));
    EXPECT_TRUE(waitUntil([&] {
        return std::all_of(endings.begin(), endings.end(),
                           [](const auto &ending) { return ending->has_value(); });
    }));
    for (const auto &ending : endings)
        EXPECT_TRUE((*ending)->response);
    EXPECT_FALSE(*waiting);
    scope.restart();
    EXPECT_TRUE(waitUntil([&] { return waiting->has_value(); }));
}

TEST(HttpErrors, carryTheirDescriptionBothWays)
{
    const TransportError error(QStringLiteral("Kein Netz für „brevix“."));
    EXPECT_EQ(error.description(), QStringLiteral("Kein Netz für „brevix“."));
    EXPECT_STREQ(error.what(), "Kein Netz für „brevix“.");
}
