// SPDX-License-Identifier: GPL-3.0-or-later
#include "LocalCloud/Certificate.h"
#include "LocalCloud/HttpAdapter.h"
#include "LocalCloud/TestCertificate.h"
#include "Support/Waiting.h"

#include <QSslSocket>
#include <QTcpServer>
#include <QTemporaryDir>
#include <QTimer>

#include <gtest/gtest.h>

#include <fcntl.h>

using namespace Cloud;
using namespace std::chrono_literals;

namespace {

/// A server that encrypts and has a place for one client.
class TlsHandshake : public testing::Test
{
protected:
    void SetUp() override
    {
        const QString certificate = folder.filePath(QStringLiteral("certificate.pem"));
        const QString key = folder.filePath(QStringLiteral("key.pem"));
        if (!makeTestCertificate(certificate, key))
            GTEST_SKIP() << "openssl is missing";
        QString problem;
        const auto tls = Certificate::read(certificate, key, problem);
        ASSERT_TRUE(tls) << qPrintable(problem);
        QTcpServer opener;
        ASSERT_TRUE(opener.listen(QHostAddress::LocalHost));
        port = opener.serverPort();
        ASSERT_TRUE(adapter.serve(::fcntl(int(opener.socketDescriptor()), F_DUPFD_CLOEXEC, 0), tls));
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

    /// The first bytes that a client of this library sends.
    static QByteArray clientHello()
    {
        QTcpServer listener;
        listener.listen(QHostAddress::LocalHost);
        QSslSocket client;
        client.connectToHostEncrypted(QStringLiteral("localhost"), listener.serverPort());
        EXPECT_TRUE(waitUntil([&] { return listener.hasPendingConnections(); }));
        const std::unique_ptr<QTcpSocket> accepted(listener.nextPendingConnection());
        EXPECT_TRUE(waitUntil([&] { return accepted->bytesAvailable() > 100; }));
        return accepted->readAll();
    }

    /// Whether a client that speaks TLS as it should is served, now or as soon as there is a place.
    bool servesAGoodClient() const
    {
        return waitUntil([this] {
            QSslSocket client;
            client.setPeerVerifyMode(QSslSocket::VerifyNone);
            client.connectToHostEncrypted(QStringLiteral("127.0.0.1"), port);
            client.write("GET /a HTTP/1.1\r\nHost: h\r\n\r\n");
            return waitUntil([&] { return client.bytesAvailable() > 0 || closed(client); }) &&
                   client.readAll().startsWith("HTTP/1.1 200");
        });
    }

    QTemporaryDir folder;
    quint16 port = 0;
    HttpAdapter adapter{[](const Request &) { return Response(); },
                        {.connections = 1, .stall = 300ms, .idle = 60s}};
};

} // namespace

TEST_F(TlsHandshake, clientThatSaysNothingIsDropped)
{
    const auto socket = connected();
    EXPECT_TRUE(waitUntil([&] { return closed(*socket); }));
    EXPECT_TRUE(servesAGoodClient()) << "its place is free again";
}

TEST_F(TlsHandshake, clientThatStopsHalfwayIsDropped)
{
    const QByteArray hello = clientHello();
    for (const qsizetype size : {qsizetype(1), qsizetype(5), hello.size() / 2, hello.size()}) {
        std::unique_ptr<QTcpSocket> socket;
        ASSERT_TRUE(waitUntil([&] { // until the place of the one before is free
            socket = connected();
            socket->write(hello.first(size));
            return !waitUntil([&] { return closed(*socket); }, 100ms);
        }));
        EXPECT_TRUE(waitUntil([&] { return closed(*socket); })) << size;
    }
    EXPECT_TRUE(servesAGoodClient());
}

TEST_F(TlsHandshake, trickleOfBytesDoesNotKeepAHandshakeAlive)
{
    const QByteArray hello = clientHello();
    const auto socket = connected();
    qsizetype sent = 0;
    QTimer trickle;
    QObject::connect(&trickle, &QTimer::timeout, socket.get(), [&] {
        if (sent < hello.size())
            socket->write(hello.constData() + sent++, 1);
    });
    trickle.start(20);
    EXPECT_TRUE(waitUntil([&] { return closed(*socket); }, 3s));
    EXPECT_LT(sent, hello.size()) << "dropped before the greeting was complete";
    EXPECT_TRUE(servesAGoodClient());
}

TEST_F(TlsHandshake, clientThatIsEncryptedAndThenSaysNothingIsDropped)
{
    QSslSocket client;
    client.setPeerVerifyMode(QSslSocket::VerifyNone);
    client.connectToHostEncrypted(QStringLiteral("127.0.0.1"), port);
    ASSERT_TRUE(waitUntil([&] { return client.isEncrypted(); }));
    EXPECT_TRUE(waitUntil([&] { return closed(client); }));
}

TEST_F(TlsHandshake, clientThatSpeaksInTheClearIsDropped)
{
    const auto socket = connected();
    socket->write("GET /a HTTP/1.1\r\nHost: h\r\n\r\n");
    EXPECT_TRUE(waitUntil([&] { return closed(*socket); }));
    EXPECT_FALSE(socket->readAll().contains("HTTP/1.1 200"));
    EXPECT_TRUE(servesAGoodClient());
}
