// SPDX-License-Identifier: GPL-3.0-or-later
#include "LocalCloud/LocalCloud.h"
#include "LocalCloud/PeerUser.h"
#include "Support/TestMain.h"
#include "Support/Waiting.h"

#include <QElapsedTimer>
#include <QTcpServer>
#include <QTcpSocket>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <arpa/inet.h>
#include <cstring>
#include <netinet/in.h>
#include <sys/wait.h>
#include <unistd.h>

using namespace Cloud;

namespace {

constexpr uid_t nobody = 65534;

sockaddr_storage address(const char *ip, quint16 port)
{
    sockaddr_storage storage{};
    sockaddr_in v4{};
    sockaddr_in6 v6{};
    if (::inet_pton(AF_INET, ip, &v4.sin_addr) == 1) {
        v4.sin_family = AF_INET;
        v4.sin_port = htons(port);
        std::memcpy(&storage, &v4, sizeof v4);
    } else if (::inet_pton(AF_INET6, ip, &v6.sin6_addr) == 1) {
        v6.sin6_family = AF_INET6;
        v6.sin6_port = htons(port);
        std::memcpy(&storage, &v6, sizeof v6);
    }
    return storage;
}

/// Whether @p user gets an answer from the server at @p port: 1 or 0, or more when something else fails.
int answersTo(uid_t user, quint16 port)
{
    const pid_t child = ::fork();
    if (child == 0) { // only what may be called between fork and exit
        char buffer[4096];
        const sockaddr_storage server = address("127.0.0.1", port);
        const char request[] = "GET /public HTTP/1.1\r\nHost: 127.0.0.1\r\nConnection: close\r\n\r\n";
        const timeval deadline{5, 0};
        if (::setresuid(user, user, user) != 0)
            ::_exit(255);
        const int own = ::socket(AF_INET, SOCK_STREAM, 0); // belongs to whoever makes it
        ::setsockopt(own, SOL_SOCKET, SO_RCVTIMEO, &deadline, sizeof deadline);
        if (::connect(own, reinterpret_cast<const sockaddr *>(&server), sizeof(sockaddr_in)) != 0)
            ::_exit(254);
        if (::send(own, request, sizeof request - 1, MSG_NOSIGNAL) < 0)
            ::_exit(0);
        const ssize_t size = ::recv(own, buffer, sizeof buffer, 0);
        ::_exit(size > 0 ? 1 : 0);
    }
    int status = 0;
    EXPECT_TRUE(
        waitUntil([&] { return ::waitpid(child, &status, WNOHANG) == child; }, std::chrono::seconds(20)));
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

LocalCloud::Options optionsIn(const QTemporaryDir &folder)
{
    return {.dataFolder = folder.filePath(QStringLiteral("cloud"))};
}

} // namespace

TEST(PeerUser, ownConnectionsAreOnesOwn)
{
    for (const QHostAddress::SpecialAddress loopback :
         {QHostAddress::LocalHost, QHostAddress::LocalHostIPv6}) {
        QTcpServer server;
        if (!server.listen(loopback)) // a machine without IPv6
            continue;
        QTcpSocket client;
        client.connectToHost(server.serverAddress(), server.serverPort());
        ASSERT_TRUE(waitUntil([&] { return server.hasPendingConnections(); }));
        const std::unique_ptr<QTcpSocket> accepted(server.nextPendingConnection());
        EXPECT_EQ(userOfPeer(accepted->socketDescriptor()), ::geteuid());
        client.abort();
        EXPECT_TRUE(waitUntil([&] { return userOfPeer(accepted->socketDescriptor()) == std::nullopt; }))
            << "nobody holds the other end any more";
    }
    EXPECT_EQ(userOfPeer(-1), std::nullopt);
}

TEST(PeerUser, askingIsCheap)
{
    QTcpServer server;
    ASSERT_TRUE(server.listen(QHostAddress::LocalHost));
    QTcpSocket client;
    client.connectToHost(server.serverAddress(), server.serverPort());
    ASSERT_TRUE(waitUntil([&] { return server.hasPendingConnections(); }));
    const std::unique_ptr<QTcpSocket> accepted(server.nextPendingConnection());
    constexpr int count = 200;
    QElapsedTimer timer;
    timer.start();
    for (int i = 0; i < count; ++i)
        ASSERT_TRUE(userOfPeer(accepted->socketDescriptor()));
    std::fprintf(stderr, "%.1f us for one\n", double(timer.nsecsElapsed()) / 1e3 / count);
    EXPECT_LT(timer.elapsed() / count, 20);
}

TEST(PeerUser, kernelsTableIsRead)
{
    const QByteArray table =
        "  sl  local_address rem_address   st tx_queue rx_queue tr tm->when retrnsmt   uid  timeout inode\n"
        "   0: 0100007F:1F90 00000000:0000 0A 00000000:00000000 00:00000000 00000000  1000        0 48 1 0 "
        "100\n"
        "   1: 0100007F:1F90 0100007F:D431 01 00000000:00000000 00:00000000 00000000  1000        0 50 1 0 "
        "20\n"
        "   2: 0100007F:D431 0100007F:1F90 01 00000000:00000000 00:00000000 00000000  1001        0 49 1 0 "
        "20\n"
        "   3: 0100007F:D432 0100007F:1F90 06 00000000:00000000 03:00000AE3 00000000     0        0 0 3 0\n"
        "   4: 0100007F:D433 0100007F:1F90 01 00000000:00000000 00:00000000 00000000     0        0 52 1 0\n";
    const QByteArray table6 =
        "   0: 00000000000000000000000001000000:D431 00000000000000000000000001000000:1F90 01 "
        "00000000:00000000 00:00000000 00000000  1002        0 61 1 0 20\n";
    const struct
    {
        const char *from;
        quint16 port;
        const char *to;
        std::optional<uid_t> owner;
    } rows[] = {{"127.0.0.1", 0xD431, "127.0.0.1", 1001},
                {"127.0.0.1", 0xD432, "127.0.0.1", std::nullopt}, // closed by its program
                {"127.0.0.1", 0xD433, "127.0.0.1", 0},
                {"127.0.0.1", 0xD434, "127.0.0.1", std::nullopt},
                {"127.0.0.2", 0xD431, "127.0.0.1", std::nullopt},
                {"192.0.2.1", 0xD431, "127.0.0.1", std::nullopt},
                {"::1", 0xD431, "::1", 1002},
                {"::2", 0xD431, "::1", std::nullopt}};
    for (const auto &row : rows)
        EXPECT_EQ(ownerInTable(table + table6, address(row.from, row.port), address(row.to, 8080)), row.owner)
            << row.from << ' ' << row.port;
    EXPECT_EQ(ownerInTable({}, address("127.0.0.1", 1), address("127.0.0.1", 2)), std::nullopt);
    EXPECT_EQ(ownerInTable("   2: 0100007F:0001 0100007F:0002 01 0", address("127.0.0.1", 1),
                           address("127.0.0.1", 2)),
              std::nullopt)
        << "a line that was cut off";
}

TEST(PeerUser, otherUsersOfTheComputerCannotReachTheEmbeddedServer)
{
    if (::geteuid() != 0)
        GTEST_SKIP() << "only root can act as another user";
    const QTemporaryDir folder;
    LocalCloud cloud(optionsIn(folder));
    ASSERT_TRUE(cloud.start());
    const auto port = quint16(cloud.origin().port());
    EXPECT_EQ(answersTo(::geteuid(), port), 1) << "the user's own programs";
    expectWarning(QStringLiteral("another user of this computer was refused"));
    EXPECT_EQ(answersTo(nobody, port), 0);
}

TEST(PeerUser, serverThatAsksForPasswordsIsForAllUsersOfTheComputer)
{
    if (::geteuid() != 0)
        GTEST_SKIP() << "only root can act as another user";
    const QTemporaryDir folder;
    LocalCloud::Options options = optionsIn(folder);
    options.asksPasswords = true;
    LocalCloud cloud(options);
    ASSERT_TRUE(cloud.start());
    EXPECT_EQ(answersTo(nobody, quint16(cloud.origin().port())), 1);
}
