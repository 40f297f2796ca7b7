// SPDX-License-Identifier: GPL-3.0-or-later
#include "UpdateService.h"

#include "FeedServer.h"
#include "SignedFeed.h"

#include "Foundation/HttpClient.h"
#include "Foundation/UserDefaults.h"

#include "Support/Waiting.h"

#include <QTemporaryDir>

#include <gtest/gtest.h>

using Kind = UpdateStatus::Kind;
using namespace std::chrono_literals;

namespace {

class UpdateServiceTest : public testing::Test
{
protected:
    UpdateServiceTest() { FeedServer::trustAuthority(true); }

    /// Background checks only when the test asks for them.
    void start(UpdateSchedule schedule = {.firstWait = 1h})
    {
        service.reset();
        service = std::make_unique<UpdateService>(
            configuration, QStringLiteral("0.1.0"), http, defaults, [this] { return now; }, schedule);
    }

    UpdateStatus check()
    {
        service->checkForUpdates();
        EXPECT_TRUE(waitUntil([this] { return service->status().kind != Kind::checking; }));
        return service->status();
    }

    /// What the file says about updates, of which there can be no trace after a refusal.
    std::pair<std::optional<QString>, std::optional<QString>> memory() const
    {
        return {defaults.text(UpdateService::lastCheckKey), defaults.text(UpdateService::lastFeedKey)};
    }

    void expectRefused(const QString &reason)
    {
        const auto before = memory();
        const UpdateStatus status = check();
        EXPECT_EQ(status.kind, Kind::failed);
        EXPECT_TRUE(status.problem.contains(reason)) << qPrintable(status.problem);
        EXPECT_FALSE(status.release);
        EXPECT_EQ(memory(), before);
    }

    QTemporaryDir folder;
    UserDefaults defaults{folder.filePath(QStringLiteral("defaults.plist"))};
    HttpClient http;
    FeedServer server;
    FeedSigner signer;
    QDateTime now{QDate(2026, 3, 2), QTime(12, 0), Qt::UTC};
    UpdateConfiguration configuration{.feedURL = server.url(), .publicKey = signer.publicKey()};
    std::unique_ptr<UpdateService> service;
};

} // namespace

TEST_F(UpdateServiceTest, tellsOfANewerRelease)
{
    server.serve(signer.feed("0.2.0"));
    start();
    const UpdateStatus status = check();
    EXPECT_EQ(status.kind, Kind::available);
    ASSERT_TRUE(status.release);
    EXPECT_EQ(status.release->version, QVersionNumber(0, 2, 0));
    EXPECT_EQ(status.description(), QStringLiteral("Brevix 0.2.0 is available."));
    EXPECT_EQ(service->lastCheck(), now);
}

TEST_F(UpdateServiceTest, isUpToDateWithTheSameAndWithOlderReleases)
{
    start();
    for (const QByteArray &version : {QByteArray("0.1.0"), QByteArray("0.1"), QByteArray("0.0.9")}) {
        server.serve(signer.feed(version));
        EXPECT_EQ(check().kind, Kind::upToDate) << version.constData();
    }
    EXPECT_EQ(service->status().description(), QStringLiteral("Brevix is up to date."));
}

TEST_F(UpdateServiceTest, asksNobodyWithoutAFeed)
{
    configuration = {};
    start({.firstWait = 1ms});
    EXPECT_EQ(service->status().kind, Kind::notConfigured);
    service->checkForUpdates();
    waitUntil([] { return false; }, 100ms);
    EXPECT_EQ(service->status().kind, Kind::notConfigured);
    EXPECT_EQ(server.requests, 0);
    EXPECT_FALSE(service->status().description().isEmpty());
}

TEST_F(UpdateServiceTest, refusesAnUnsignedAndAWronglySignedFeed)
{
    start();
    server.serve(FeedSigner::content("9.0"));
    expectRefused(QStringLiteral("not signed"));
    server.serve(FeedSigner('b').feed("9.0"));
    expectRefused(QStringLiteral("signature"));
}

TEST_F(UpdateServiceTest, refusesAFeedOlderThanOneItHasSeenAlsoAfterARestart)
{
    start();
    server.serve(signer.feed("0.2.0", "2026-03-01T00:00:00Z"));
    EXPECT_EQ(check().kind, Kind::available);
    start();
    server.serve(signer.feed("0.1.0", "2026-02-28T23:59:59Z"));
    expectRefused(QStringLiteral("older than one seen before"));
    server.serve(signer.feed("0.2.0", "2026-03-01T00:00:00Z"));
    EXPECT_EQ(check().kind, Kind::available) << "the same feed again is no roll-back";
}

TEST_F(UpdateServiceTest, refusesAFeedOfTheFuture)
{
    start();
    server.serve(signer.feed("0.2.0", "2026-03-04T00:00:00Z"));
    expectRefused(QStringLiteral("in the future"));
}

TEST_F(UpdateServiceTest, refusesAMalformedAndAHugeFeed)
{
    start();
    server.serve(signer.sign("{"));
    expectRefused(QStringLiteral("damaged"));
    server.serve(signer.sign(QByteArray(2 * UpdateFeed::maximumSize, ' ')));
    expectRefused(QStringLiteral("too large"));
}

TEST_F(UpdateServiceTest, refusesErrorsAndRedirects)
{
    start();
    server.answer("HTTP/1.1 404 Not Found\r\nContent-Length: 0\r\nConnection: close\r\n\r\n");
    expectRefused(QStringLiteral("HTTP 404"));
    server.answer("HTTP/1.1 302 Found\r\nLocation: http://127.0.0.1:1/feed\r\nContent-Length: 0\r\n"
                  "Connection: close\r\n\r\n");
    expectRefused(QStringLiteral("redirect"));
    EXPECT_EQ(server.requests, 2);
}

TEST_F(UpdateServiceTest, givesUpOnAServerThatStalls)
{
    server.stall();
    start({.firstWait = 1h, .timeout = 200ms});
    expectRefused(QStringLiteral("did not answer"));
}

TEST_F(UpdateServiceTest, refusesACutOffAnswer)
{
    const QByteArray feed = signer.feed("0.2.0");
    server.answer("HTTP/1.1 200 OK\r\nConnection: close\r\nContent-Length: " +
                  QByteArray::number(feed.size() - 10) + "\r\n\r\n" + feed.chopped(10));
    start();
    expectRefused(QStringLiteral("signature"));
}

TEST_F(UpdateServiceTest, refusesAServerThatNobodyVouchesFor)
{
    server.serve(signer.feed("0.2.0"));
    FeedServer::trustAuthority(false);
    start();
    expectRefused(QStringLiteral("No secure connection"));
    EXPECT_EQ(server.requests, 0);
}

TEST_F(UpdateServiceTest, neverAsksWithoutEncryption)
{
    configuration.feedURL = QUrl(QStringLiteral("http://127.0.0.1:%1/feed").arg(server.url().port()));
    start();
    expectRefused(QStringLiteral("not secure"));
}

TEST_F(UpdateServiceTest, aFailureKeepsNothingOfAnEarlierFinding)
{
    server.serve(signer.feed("0.2.0"));
    start();
    EXPECT_EQ(check().kind, Kind::available);
    server.stall();
    start({.firstWait = 1h, .timeout = 100ms});
    expectRefused(QStringLiteral("did not answer"));
}

TEST_F(UpdateServiceTest, twoChecksAtATimeAreOne)
{
    server.serve(signer.feed("0.2.0"));
    start();
    service->checkForUpdates();
    service->checkForUpdates();
    EXPECT_TRUE(waitUntil([this] { return service->status().kind == Kind::available; }));
    EXPECT_EQ(server.requests, 1);
}

TEST_F(UpdateServiceTest, checksInTheBackgroundOnceADay)
{
    server.serve(signer.feed("0.1.0"));
    start({.firstWait = 10ms, .interval = 24h});
    EXPECT_TRUE(waitUntil([this] { return server.requests == 1; }));
    EXPECT_TRUE(waitUntil([this] { return service->status().kind == Kind::upToDate; }));

    now = now.addSecs(60 * 60);
    start({.firstWait = 10ms, .interval = 24h});
    waitUntil([] { return false; }, 150ms);
    EXPECT_EQ(server.requests, 1) << "asked again before a day was over";

    now = now.addDays(1);
    start({.firstWait = 10ms, .interval = 24h});
    EXPECT_TRUE(waitUntil([this] { return server.requests == 2; }));
}

TEST_F(UpdateServiceTest, aClockThatWasSetBackDoesNotStopTheChecks)
{
    defaults.setText(UpdateService::lastCheckKey, QStringLiteral("2030-01-01T00:00:00Z"));
    server.serve(signer.feed("0.1.0"));
    start({.firstWait = 10ms});
    EXPECT_TRUE(waitUntil([this] { return server.requests == 1; }));
}

TEST_F(UpdateServiceTest, triesAgainAfterAFailure)
{
    server.serve({});
    start({.firstWait = 10ms, .retry = 10ms});
    EXPECT_TRUE(waitUntil([this] { return server.requests >= 2; }));
    server.serve(signer.feed("0.2.0"));
    EXPECT_TRUE(waitUntil([this] { return service->status().kind == Kind::available; }));
}

TEST_F(UpdateServiceTest, canEndInTheMiddleOfACheck)
{
    server.stall();
    start();
    service->checkForUpdates();
    EXPECT_TRUE(waitUntil([this] { return server.requests == 1; }));
    service.reset();
    waitUntil([] { return false; }, 50ms);
}
