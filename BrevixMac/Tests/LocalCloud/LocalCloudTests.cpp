// SPDX-License-Identifier: GPL-3.0-or-later
#include "LocalCloud/Database.h"
#include "LocalCloud/LocalCloud.h"
#include "Support/TestMain.h"
#include "Support/Waiting.h"

#include <QElapsedTimer>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QSqlQuery>
#include <QTcpServer>
#include <QTcpSocket>
#include <QTemporaryDir>
#include <QThread>
#include <QUrlQuery>

#include <gtest/gtest.h>

#include <optional>

using namespace Cloud;

namespace {

struct Reply
{
    int status = 0;
    QByteArray body;
    QJsonObject json;
};

/// A real server on a real port, spoken to over HTTP.
class LocalCloudTest : public testing::Test
{
protected:
    LocalCloud::Options options(quint16 port = 0) const
    {
        return {.dataFolder = folder.filePath(QStringLiteral("cloud")),
                .port = port,
                .projectID = QStringLiteral("demo"),
                .apiKey = QStringLiteral("the-key"),
                .libraryAppID = QStringLiteral("brevix-app"),
                .clientID = QStringLiteral("the-client"),
                .redirectScheme = QStringLiteral("app.brevix.test")};
    }

    void start()
    {
        cloud.reset();
        cloud = std::make_unique<LocalCloud>(options());
        ASSERT_TRUE(cloud->start()) << qPrintable(cloud->errorString());
        session = cloud->issueLocalSession();
    }

    QNetworkRequest request(const QString &path) const
    {
        QNetworkRequest request(QUrl(cloud->origin().toString() + path));
        request.setRawHeader("Authorization", "Bearer " + session.idToken.toLatin1());
        return request;
    }

    static Reply finished(QNetworkReply *reply)
    {
        EXPECT_TRUE(waitUntil([reply] { return reply->isFinished(); }));
        Reply result;
        result.status = reply->attribute(QNetworkRequest::HttpStatusCodeAttribute).toInt();
        result.body = reply->readAll();
        result.json = QJsonDocument::fromJson(result.body).object();
        reply->deleteLater();
        return result;
    }

    Reply list(const QString &collection)
    {
        return finished(network.get(request(library + collection + QStringLiteral("?pageSize=500"))));
    }

    /// For a post without a token, as browsers and sign-ins send them.
    QNetworkRequest formRequest(const QString &path) const
    {
        QNetworkRequest post(QUrl(cloud->origin().toString() + path));
        post.setHeader(QNetworkRequest::ContentTypeHeader,
                       QStringLiteral("application/x-www-form-urlencoded"));
        post.setAttribute(QNetworkRequest::RedirectPolicyAttribute, QNetworkRequest::ManualRedirectPolicy);
        return post;
    }

    Reply refresh(const QString &token)
    {
        const QNetworkRequest post = formRequest(QStringLiteral("/v1/token?key=the-key"));
        return finished(network.post(post, "grant_type=refresh_token&refresh_token=" + token.toLatin1()));
    }

    const QString library = QStringLiteral(
        "/v1/projects/demo/databases/(default)/documents/artifacts/brevix-app/users/local-user/");
    QTemporaryDir folder;
    std::unique_ptr<LocalCloud> cloud;
    LocalCloud::Session session;
    QNetworkAccessManager network;
};

} // namespace

TEST_F(LocalCloudTest, servesTheStarterLibraryOverHttp)
{
    start();
    EXPECT_EQ(cloud->origin().host(), QStringLiteral("127.0.0.1"));
    EXPECT_GT(cloud->origin().port(), 0);
    EXPECT_TRUE(cloud->errorString().isEmpty());
    const Reply categories = list(QStringLiteral("categories"));
    EXPECT_EQ(categories.status, 200);
    EXPECT_EQ(categories.json.value(u"documents").toArray().size(), 5);
    EXPECT_GE(list(QStringLiteral("prompts")).json.value(u"documents").toArray().size(), 20);
}

TEST_F(LocalCloudTest, encodedParenthesesNameTheSameDatabase)
{
    start();
    QString path = library;
    path.replace(QStringLiteral("(default)"), QStringLiteral("%28default%29"));
    EXPECT_EQ(finished(network.get(request(path + QStringLiteral("skills")))).status, 200);
}

TEST_F(LocalCloudTest, sessionDescribesTheLocalUser)
{
    start();
    EXPECT_EQ(session.uid, QStringLiteral("local-user"));
    EXPECT_FALSE(session.email.isEmpty());
    EXPECT_FALSE(session.displayName.isEmpty());
    EXPECT_FALSE(session.refreshToken.isEmpty());
    const qint64 seconds = QDateTime::currentDateTimeUtc().secsTo(session.expiresAt);
    EXPECT_GT(seconds, 3590);
    EXPECT_LE(seconds, 3600);
}

TEST_F(LocalCloudTest, missingAndForeignTokensAreRefused)
{
    start();
    session.idToken.clear();
    EXPECT_EQ(list(QStringLiteral("prompts")).status, 401);
    session.idToken = QStringLiteral("owner");
    EXPECT_EQ(list(QStringLiteral("prompts")).status, 401);
}

TEST_F(LocalCloudTest, refreshHandsOutANewSession)
{
    start();
    const Reply reply = refresh(session.refreshToken);
    ASSERT_EQ(reply.status, 200) << reply.body.constData();
    session.idToken = reply.json.value(u"id_token").toString();
    EXPECT_EQ(list(QStringLiteral("prompts")).status, 200);
    EXPECT_EQ(refresh(QStringLiteral("nonsense")).status, 400);
}

TEST_F(LocalCloudTest, sessionsLastAcrossARestart)
{
    start();
    const LocalCloud::Session former = session;
    cloud.reset();
    cloud = std::make_unique<LocalCloud>(options());
    ASSERT_TRUE(cloud->start());
    EXPECT_EQ(list(QStringLiteral("prompts")).status, 200);
    EXPECT_EQ(refresh(former.refreshToken).status, 200);
}

TEST_F(LocalCloudTest, browserIsLedThroughTheSignInAndTheCodeBecomesASession)
{
    start();
    const QString address = QStringLiteral(
        "/o/oauth2/v2/auth?client_id=the-client&redirect_uri=app.brevix.test%3A/"
        "oauthredirect&response_type=code"
        "&scope=openid%20email%20profile&state=s&code_challenge=E9Melhoa2OwvFrEMTJguCHaoeK1t8URWbuGJSstw-cM"
        "&code_challenge_method=S256");
    const Reply page = finished(network.get(request(address)));
    ASSERT_EQ(page.status, 200) << page.body.constData();
    const QByteArray marker = "name=\"request\" value=\"";
    const QByteArray rest = page.body.mid(page.body.indexOf(marker) + marker.size());
    const QByteArray form = "account=local-user&request=" + rest.left(rest.indexOf('"'));

    QNetworkRequest submission = formRequest(QStringLiteral("/o/oauth2/v2/auth"));
    submission.setRawHeader("Origin", cloud->origin().toString().toLatin1());
    submission.setRawHeader("Sec-Fetch-Site", "same-origin");
    QNetworkReply *redirect = network.post(submission, form);
    ASSERT_TRUE(waitUntil([redirect] { return redirect->isFinished(); }));
    const QUrl target(QString::fromLatin1(redirect->rawHeader("Location")));
    EXPECT_EQ(finished(redirect).status, 303);
    EXPECT_EQ(target.scheme(), QStringLiteral("app.brevix.test"));
    const QByteArray code = QUrlQuery(target).queryItemValue(QStringLiteral("code")).toLatin1();

    const QByteArray exchange =
        "grant_type=authorization_code&client_id=the-client&redirect_uri=app.brevix.test%3A/oauthredirect"
        "&code_verifier=dBjftJeZ4CVP-mB92K27uhbUJU1p1r_wW1gFWFOEjXk&code=" +
        code;
    const Reply tokens = finished(network.post(formRequest(QStringLiteral("/token")), exchange));
    ASSERT_EQ(tokens.status, 200) << tokens.body.constData();
    EXPECT_EQ(finished(network.post(formRequest(QStringLiteral("/token")), exchange)).status, 400);

    const QByteArray signIn =
        "{\"postBody\":\"id_token=" + tokens.json.value(u"id_token").toString().toLatin1() +
        "&providerId=google.com\",\"requestUri\":\"http://localhost\"}";
    const Reply signedIn = finished(network.post(
        formRequest(QStringLiteral("/identitytoolkit.googleapis.com/v1/accounts:signInWithIdp?key=the-key")),
        signIn));
    ASSERT_EQ(signedIn.status, 200) << signedIn.body.constData();
    session.idToken = signedIn.json.value(u"idToken").toString();
    EXPECT_EQ(list(QStringLiteral("prompts")).status, 200);
}

TEST_F(LocalCloudTest, foreignHostsAndOriginsAreRefused)
{
    start();
    QNetworkRequest foreign = request(library + QStringLiteral("prompts"));
    foreign.setRawHeader("Host", "evil.example");
    EXPECT_EQ(finished(network.get(foreign)).status, 403);

    foreign = request(library + QStringLiteral("prompts"));
    foreign.setRawHeader("Origin", "https://evil.example");
    EXPECT_EQ(finished(network.get(foreign)).status, 403);
}

TEST_F(LocalCloudTest, listensOnTheLoopbackAddressOnly)
{
    start();
    QTcpSocket socket;
    socket.connectToHost(QHostAddress(QStringLiteral("127.0.0.2")), quint16(cloud->origin().port()));
    EXPECT_TRUE(waitUntil([&] { return socket.error() == QAbstractSocket::ConnectionRefusedError; }));
}

TEST_F(LocalCloudTest, chosenPortIsUsedAndATakenOneIsReported)
{
    QTcpServer taken;
    ASSERT_TRUE(taken.listen(QHostAddress::LocalHost));
    const quint16 port = taken.serverPort();
    LocalCloud blocked(options(port));
    EXPECT_FALSE(blocked.start());
    EXPECT_TRUE(blocked.errorString().contains(QString::number(port)));
    EXPECT_TRUE(blocked.origin().isEmpty());
    EXPECT_TRUE(blocked.issueLocalSession().idToken.isEmpty());

    taken.close();
    LocalCloud free(options(port));
    EXPECT_TRUE(free.start()) << qPrintable(free.errorString());
    EXPECT_EQ(free.origin().port(), port);
}

TEST_F(LocalCloudTest, folderThatCannotBeUsedIsReported)
{
    QFile file(folder.filePath(QStringLiteral("cloud")));
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    LocalCloud blocked(options());
    EXPECT_FALSE(blocked.start());
    EXPECT_TRUE(blocked.errorString().contains(QStringLiteral("cannot be used")));
}

TEST_F(LocalCloudTest, damagedDatabaseIsReplacedAndReported)
{
    start();
    cloud.reset();
    QFile file(folder.filePath(QStringLiteral("cloud/library.sqlite")));
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write(QByteArray("nonsense ").repeated(1000));
    file.close();
    expectWarning(QStringLiteral("was damaged"));
    start();
    EXPECT_TRUE(cloud->errorString().contains(QStringLiteral("was damaged")));
    EXPECT_EQ(list(QStringLiteral("categories")).json.value(u"documents").toArray().size(), 5);
}

TEST_F(LocalCloudTest, startingTwiceKeepsTheServer)
{
    start();
    const QUrl origin = cloud->origin();
    EXPECT_TRUE(cloud->start());
    EXPECT_EQ(cloud->origin(), origin);
}

TEST_F(LocalCloudTest, serverCanGoAtAnyMoment)
{
    for (int i = 0; i < 20; ++i) {
        LocalCloud shortLived(options());
        ASSERT_TRUE(shortLived.start());
        QThread::usleep(useconds_t(i * 500));
    }
    start();
    EXPECT_EQ(list(QStringLiteral("categories")).json.value(u"documents").toArray().size(), 5);
}

TEST_F(LocalCloudTest, clientsWithOpenConnectionsDoNotHoldUpTheEnd)
{
    start();
    EXPECT_EQ(list(QStringLiteral("prompts")).status, 200);
    QTcpSocket socket;
    socket.connectToHost(QHostAddress::LocalHost, quint16(cloud->origin().port()));
    ASSERT_TRUE(waitUntil([&] { return socket.state() == QAbstractSocket::ConnectedState; }));
    socket.write("GET / HTTP/1.1\r\n");
    QElapsedTimer timer;
    timer.start();
    cloud.reset();
    EXPECT_LT(timer.elapsed(), 1000);
    EXPECT_TRUE(waitUntil([&] { return socket.state() == QAbstractSocket::UnconnectedState; }));
}

TEST_F(LocalCloudTest, startDoesNotHoldUpTheCaller)
{
    qint64 best = std::numeric_limits<qint64>::max();
    for (int i = 0; i < 5; ++i) {
        LocalCloud another(options());
        QElapsedTimer timer;
        timer.start();
        ASSERT_TRUE(another.start());
        best = std::min(best, timer.nsecsElapsed());
        timer.restart();
        ASSERT_FALSE(another.issueLocalSession().idToken.isEmpty());
        std::fprintf(stderr, "start() %.2f ms at best, first session after %.2f ms\n", double(best) / 1e6,
                     double(timer.nsecsElapsed()) / 1e6);
    }
    EXPECT_LT(best, 10'000'000);
}

TEST_F(LocalCloudTest, databaseThatTakesLongToOpenHoldsNobodyUp)
{
    start();
    cloud.reset();
    std::optional<bool> opened;
    Database database(folder.filePath(QStringLiteral("cloud/library.sqlite")));
    ASSERT_TRUE(database.open());
    {
        Transaction otherProgram(database); // the server waits for it
        cloud = std::make_unique<LocalCloud>(options());
        QElapsedTimer timer;
        timer.start();
        ASSERT_TRUE(cloud->start());
        cloud->whenOpened([&](bool isUsable) { opened = isUsable; });
        EXPECT_LT(timer.elapsed(), 500);
        EXPECT_FALSE(waitUntil([&] { return opened.has_value(); }, std::chrono::milliseconds(300)));
    }
    EXPECT_TRUE(waitUntil([&] { return opened.has_value(); }));
    EXPECT_EQ(opened, true);
    EXPECT_FALSE(cloud->issueLocalSession().idToken.isEmpty());
}

TEST_F(LocalCloudTest, databaseThatCannotBeOpenedIsReportedWithItsReason)
{
    start();
    cloud.reset();
    {
        Database database(folder.filePath(QStringLiteral("cloud/library.sqlite")));
        ASSERT_TRUE(database.open());
        database.run(QStringLiteral("PRAGMA user_version=99"));
    }
    expectWarning(QStringLiteral("newer version"));
    std::optional<bool> opened;
    cloud = std::make_unique<LocalCloud>(options());
    ASSERT_TRUE(cloud->start());
    cloud->whenOpened([&](bool isUsable) { opened = isUsable; });
    EXPECT_TRUE(waitUntil([&] { return opened.has_value(); }));
    EXPECT_EQ(opened, false);
    EXPECT_TRUE(cloud->errorString().contains(QStringLiteral("newer version")));
}

TEST_F(LocalCloudTest, nobodyIsToldAboutAServerThatHasGone)
{
    int calls = 0;
    for (int i = 0; i < 10; ++i) {
        LocalCloud shortLived(options());
        ASSERT_TRUE(shortLived.start());
        shortLived.whenOpened([&](bool) { ++calls; });
    }
    start();
    bool isOpen = false;
    cloud->whenOpened([&](bool) { isOpen = true; });
    EXPECT_TRUE(waitUntil([&] { return isOpen; }));
    EXPECT_EQ(calls, 0);
}
