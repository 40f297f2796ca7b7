// SPDX-License-Identifier: GPL-3.0-or-later
#include "LocalCloud/TestCertificate.h"
#include "Support/Waiting.h"

#include <QDir>
#include <QFile>
#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QProcess>
#include <QRegularExpression>
#include <QSettings>
#include <QSslConfiguration>
#include <QSslError>
#include <QTcpServer>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <csignal>

namespace {

/// The built program, in a folder of its own.
class BrevixCloudTest : public testing::Test
{
protected:
    ~BrevixCloudTest() override
    {
        server.kill();
        server.waitForFinished();
    }

    struct Outcome
    {
        int exitCode = -1;
        QString output, problem;
    };

    Outcome run(const QStringList &arguments, const QByteArray &input = {})
    {
        QProcess process;
        process.start(QStringLiteral(BREVIX_CLOUD),
                      QStringList{QStringLiteral("--data"), dataFolder()} + arguments);
        process.write(input);
        process.closeWriteChannel();
        EXPECT_TRUE(process.waitForFinished(20000)) << qPrintable(arguments.join(u' '));
        return {process.exitCode(), QString::fromUtf8(process.readAllStandardOutput()),
                QString::fromUtf8(process.readAllStandardError())};
    }

    /// Starts the server and gives the first line it prints.
    QString serve(const QStringList &arguments)
    {
        server.start(QStringLiteral(BREVIX_CLOUD),
                     QStringList{QStringLiteral("--data"), dataFolder()} + arguments);
        EXPECT_TRUE(waitUntil([&] { return server.canReadLine() || server.state() == QProcess::NotRunning; },
                              std::chrono::seconds(20)));
        return QString::fromUtf8(server.readLine()).trimmed();
    }

    static quint16 freePort()
    {
        QTcpServer opener;
        opener.listen(QHostAddress::LocalHost);
        return opener.serverPort();
    }

    /// The status and the body that @p url answers.
    std::pair<int, QByteArray> get(const QUrl &url)
    {
        QNetworkReply *reply = network.get(QNetworkRequest(url));
        reply->ignoreSslErrors();
        EXPECT_TRUE(waitUntil([&] { return reply->isFinished(); }, std::chrono::seconds(20)));
        const int status = reply->attribute(QNetworkRequest::HttpStatusCodeAttribute).toInt();
        const QByteArray body = reply->readAll();
        reply->deleteLater();
        return {status, body};
    }

    /// A self-signed certificate and its key. False without the openssl program.
    bool makeCertificate() const { return makeTestCertificate(certificateFile(), keyFile()); }

    QString dataFolder() const { return folder.filePath(QStringLiteral("data")); }
    QString certificateFile() const { return folder.filePath(QStringLiteral("certificate.pem")); }
    QString keyFile() const { return folder.filePath(QStringLiteral("key.pem")); }
    QStringList tlsArguments() const
    {
        return {QStringLiteral("--certificate"), certificateFile(), QStringLiteral("--key"), keyFile()};
    }

    static QStringList listen(const QString &address)
    {
        return {QStringLiteral("--listen"), QStringLiteral("%1:%2").arg(address).arg(freePort())};
    }

    QTemporaryDir folder;
    QProcess server;
    QNetworkAccessManager network;
};

} // namespace

TEST_F(BrevixCloudTest, explainsItself)
{
    const Outcome help = run({QStringLiteral("--help")});
    EXPECT_EQ(help.exitCode, 0);
    EXPECT_TRUE(help.output.contains(QStringLiteral("add-user EMAIL")));
    EXPECT_TRUE(run({QStringLiteral("--version")}).output.startsWith(QStringLiteral("brevix-cloud ")));
    for (const QString &word : {QStringLiteral("nonsense"), QStringLiteral("--nonsense"),
                                QStringLiteral("add-user"), QStringLiteral("--listen=here")})
        EXPECT_EQ(run({word}).exitCode, 64) << qPrintable(word);
}

TEST_F(BrevixCloudTest, unitStartsTheProgramAndIsPatientAtBoot)
{
    const QSettings unit(QStringLiteral(BREVIX_CLOUD_UNIT), QSettings::IniFormat);
    const struct
    {
        QString key;
        QString value;
    } rows[] = {{QStringLiteral("Unit/StartLimitIntervalSec"), QStringLiteral("0")},
                {QStringLiteral("Unit/After"), {}}, // a user's units cannot wait for the network
                {QStringLiteral("Service/Restart"), QStringLiteral("on-failure")},
                {QStringLiteral("Service/RestartSec"), QStringLiteral("5")},
                {QStringLiteral("Service/RestartPreventExitStatus"), QStringLiteral("64")},
                {QStringLiteral("Service/UMask"), QStringLiteral("0077")},
                {QStringLiteral("Install/WantedBy"), QStringLiteral("default.target")}};
    for (const auto &[key, value] : rows)
        EXPECT_EQ(unit.value(key).toString(), value) << qPrintable(key);
    EXPECT_TRUE(unit.value(QStringLiteral("Service/ExecStart"))
                    .toString()
                    .endsWith(QStringLiteral("/bin/brevix-cloud $BREVIX_CLOUD_OPTIONS")));
}

TEST_F(BrevixCloudTest, servesUntilItIsEnded)
{
    const QStringList address = listen(QStringLiteral("127.0.0.1"));
    const QString line = serve(address);
    const QUrl origin(QStringLiteral("http://") + address.constLast());
    EXPECT_TRUE(line.startsWith(QStringLiteral("Serving ") + origin.toString())) << qPrintable(line);
    QUrl page = origin;
    page.setPath(QStringLiteral("/public"));
    EXPECT_EQ(get(page).first, 404);
    ::kill(pid_t(server.processId()), SIGTERM);
    EXPECT_TRUE(waitUntil([&] { return server.state() == QProcess::NotRunning; }));
    EXPECT_EQ(server.exitStatus(), QProcess::NormalExit);
    EXPECT_EQ(server.exitCode(), 0);
}

TEST_F(BrevixCloudTest, refusesWhatWouldBeUnsafe)
{
    makeCertificate();
    struct Row
    {
        QStringList arguments;
        QString reason;
    };
    const QStringList open{QStringLiteral("--open")};
    const QList<Row> rows{
        {listen(QStringLiteral("0.0.0.0")), QStringLiteral("unencrypted")},
        {listen(QStringLiteral("192.0.2.1")) + open, QStringLiteral("unencrypted")},
        {listen(QStringLiteral("[::]")), QStringLiteral("unencrypted")},
        {listen(QStringLiteral("0.0.0.0")) + tlsArguments(), QStringLiteral("public URL")},
        {listen(QStringLiteral("192.0.2.1")) + tlsArguments() + open, QStringLiteral("passwords")},
        {open + QStringList{QStringLiteral("--public-url"), QStringLiteral("https://x.example")},
         QStringLiteral("passwords")},
        {{QStringLiteral("--public-url"), QStringLiteral("http://x.example")}, QStringLiteral("public URL")},
        {{QStringLiteral("--public-url"), QStringLiteral("https://x.example/path")},
         QStringLiteral("public URL")},
        {{QStringLiteral("--certificate"), certificateFile()}, QStringLiteral("belong together")},
    };
    for (const Row &row : rows) {
        const Outcome outcome = run(row.arguments);
        EXPECT_EQ(outcome.exitCode, 64) << qPrintable(row.arguments.join(u' '));
        EXPECT_TRUE(outcome.problem.contains(row.reason)) << qPrintable(outcome.problem);
    }
}

TEST_F(BrevixCloudTest, accountsAreManagedFromTheCommandLine)
{
    const QString email = QStringLiteral("ada@example.org");
    EXPECT_EQ(run({QStringLiteral("add-user"), email}, "short\n").exitCode, 1);
    EXPECT_EQ(run({QStringLiteral("add-user"), QStringLiteral("nothing")}, "long enough\n").exitCode, 1);
    EXPECT_EQ(run({QStringLiteral("add-user"), email, QStringLiteral("--name"), QStringLiteral("Ada")},
                  "long enough\n")
                  .exitCode,
              0);
    EXPECT_EQ(run({QStringLiteral("add-user"), email}, "long enough\n").exitCode, 1) << "twice";
    EXPECT_EQ(run({QStringLiteral("list-users")}).output, QStringLiteral("ada@example.org\tAda\n"));
    EXPECT_EQ(run({QStringLiteral("set-password"), email}, "longer than that\n").exitCode, 0);
    EXPECT_EQ(run({QStringLiteral("set-password"), QStringLiteral("x@y")}, "long enough\n").exitCode, 1);
    EXPECT_EQ(run({QStringLiteral("remove-user"), email}).exitCode, 0);
    EXPECT_EQ(run({QStringLiteral("remove-user"), email}).exitCode, 1);
    EXPECT_EQ(run({QStringLiteral("list-users")}).output, QString());
}

TEST_F(BrevixCloudTest, databaseThatCannotBeUsedIsReportedWithItsReason)
{
    ASSERT_TRUE(QDir().mkpath(dataFolder() + QStringLiteral("/library.sqlite")));
    const Outcome outcome = run(listen(QStringLiteral("127.0.0.1")));
    EXPECT_EQ(outcome.exitCode, 1);
    EXPECT_TRUE(outcome.problem.contains(
        QRegularExpression(QStringLiteral("brevix-cloud: The database cannot be used: \\S+"))))
        << qPrintable(outcome.problem);
    EXPECT_FALSE(outcome.output.contains(QStringLiteral("Serving")));
}

TEST_F(BrevixCloudTest, speaksHttpsWithItsCertificate)
{
    if (!makeCertificate())
        GTEST_SKIP() << "openssl is missing";
    const QStringList address = listen(QStringLiteral("127.0.0.1"));
    const QString line = serve(address + tlsArguments());
    const QUrl origin(QStringLiteral("https://") + address.constLast());
    EXPECT_TRUE(line.contains(origin.toString())) << qPrintable(line);
    QUrl page = origin;
    page.setPath(QStringLiteral("/public"));
    for (int i = 0; i < 3; ++i) {
        const auto [status, body] = get(page);
        EXPECT_EQ(status, 404);
        EXPECT_TRUE(body.contains("Nothing is shared here"));
    }
    page.setScheme(QStringLiteral("http"));
    EXPECT_EQ(get(page).first, 0) << "in the clear";
}

TEST_F(BrevixCloudTest, certificatesThatCannotBeUsedAreReported)
{
    if (!makeCertificate())
        GTEST_SKIP() << "openssl is missing";
    const QString former = folder.filePath(QStringLiteral("former.pem"));
    ASSERT_TRUE(QFile::copy(certificateFile(), former));
    ASSERT_TRUE(makeCertificate()); // a renewed one with a new key
    EXPECT_TRUE(run({QStringLiteral("--certificate"), former, QStringLiteral("--key"), keyFile()})
                    .problem.contains(QStringLiteral("does not belong to")));
    QFile::setPermissions(keyFile(), QFileDevice::ReadOwner | QFileDevice::ReadOther);
    EXPECT_TRUE(run(tlsArguments()).problem.contains(QStringLiteral("must not be readable")));
    QFile key(keyFile());
    QFile::setPermissions(keyFile(), QFileDevice::ReadOwner | QFileDevice::WriteOwner);
    ASSERT_TRUE(key.open(QIODevice::WriteOnly | QIODevice::Truncate));
    key.close();
    EXPECT_TRUE(run(tlsArguments()).problem.contains(QStringLiteral("no private key")));
    QFile::remove(certificateFile());
    EXPECT_TRUE(run(tlsArguments()).problem.contains(QStringLiteral("no certificate")));
}
