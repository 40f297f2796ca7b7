// SPDX-License-Identifier: GPL-3.0-or-later
#include "UpdateFeed.h"

#include "SignedFeed.h"

#include <gtest/gtest.h>

namespace {

const FeedSigner signer;

QString problemOf(const QByteArray &file, const QByteArray &key = signer.publicKey())
{
    const auto result = UpdateFeed::read(file, key);
    const QString *problem = std::get_if<QString>(&result);
    return problem ? *problem : QString();
}

QByteArray signedReleases(const QByteArray &releases)
{
    return signer.sign("{\"format\":1,\"published\":\"2026-03-01T00:00:00Z\",\"releases\":" + releases + "}");
}

} // namespace

TEST(UpdateFeedTest, readsWhatIsSigned)
{
    const auto result = UpdateFeed::read(signer.feed("1.2.3"), signer.publicKey());
    ASSERT_TRUE(std::holds_alternative<UpdateFeed>(result)) << qPrintable(std::get<QString>(result));
    const auto &feed = std::get<UpdateFeed>(result);
    EXPECT_EQ(feed.published, QDateTime(QDate(2026, 3, 1), QTime(0, 0), Qt::UTC));
    ASSERT_EQ(feed.releases.size(), 1);
    EXPECT_EQ(feed.releases.first().version, QVersionNumber(1, 2, 3));
    EXPECT_EQ(feed.releases.first().page.host(), QStringLiteral("brevix.example"));
}

TEST(UpdateFeedTest, theNewestIsTheHighestVersionInAnyOrder)
{
    const auto release = [](const QByteArray &version) -> QByteArray {
        return "{\"version\":\"" + version + "\",\"page\":\"https://brevix.example/\"}";
    };
    const auto result = UpdateFeed::read(
        signedReleases('[' + release("0.9") + ',' + release("0.10.1") + ',' + release("0.10") + ']'),
        signer.publicKey());
    EXPECT_EQ(std::get<UpdateFeed>(result).newest()->version, QVersionNumber(0, 10, 1));
}

TEST(UpdateFeedTest, anEmptyListOfReleasesIsAFeed)
{
    const auto result = UpdateFeed::read(signedReleases("[]"), signer.publicKey());
    EXPECT_FALSE(std::get<UpdateFeed>(result).newest());
}

TEST(UpdateFeedTest, refusesWhatIsNotSigned)
{
    for (const QByteArray &file : {QByteArray(), QByteArray("{}"), FeedSigner::content("1.0"),
                                   QByteArray("brevix-feed-1 "), QByteArray("brevix-feed-2 AAAA\n{}")})
        EXPECT_EQ(problemOf(file), QStringLiteral("The update feed is not signed."));
}

TEST(UpdateFeedTest, refusesEveryWrongSignature)
{
    const QByteArray good = signer.feed("1.0");
    const QByteArray content = FeedSigner::content("1.0");
    const struct
    {
        const char *what;
        QByteArray file;
        QByteArray key;
    } cases[] = {
        {"another key", FeedSigner('b').feed("1.0"), signer.publicKey()},
        {"a changed byte", QByteArray(good).replace("1.0", "2.0"), signer.publicKey()},
        {"a byte more", good + '\n', signer.publicKey()},
        {"a byte less", good.chopped(1), signer.publicKey()},
        {"line ends translated", QByteArray(good).replace("\n", "\r\n"), signer.publicKey()},
        {"an empty signature", "brevix-feed-1 \n" + content, signer.publicKey()},
        {"a short signature", "brevix-feed-1 AAAA\n" + content, signer.publicKey()},
        {"no base64", "brevix-feed-1 ****\n" + content, signer.publicKey()},
        {"a null signature", "brevix-feed-1 " + QByteArray(64, '\0').toBase64() + '\n' + content,
         signer.publicKey()},
        {"no key", good, {}},
        {"a short key", good, signer.publicKey().chopped(1)},
        {"a null key", good, QByteArray(32, '\0')},
    };
    for (const auto &each : cases)
        EXPECT_EQ(problemOf(each.file, each.key),
                  QStringLiteral("The signature of the update feed is not valid."))
            << each.what;
}

TEST(UpdateFeedTest, refusesWhatIsSignedButMakesNoSense)
{
    const QByteArray page = "\"page\":\"https://brevix.example/\"";
    for (const QByteArray &file : {
             signer.sign({}),
             signer.sign("[]"),
             signer.sign("{\"format\":2,\"published\":\"2026-03-01T00:00:00Z\",\"releases\":[]}"),
             signer.sign("{\"format\":1,\"releases\":[]}"),
             signer.sign("{\"format\":1,\"published\":\"yesterday\",\"releases\":[]}"),
             signer.sign("{\"format\":1,\"published\":\"2026-03-01T00:00:00\",\"releases\":[]}"),
             signer.sign("{\"format\":1,\"published\":\"2026-03-01T00:00:00Z\"}"),
             signedReleases("{}"),
             signedReleases("[1]"),
             signedReleases("[{\"version\":\"1.0\"}]"),
             signedReleases("[{\"version\":\"1.0-beta\"," + page + "}]"),
             signedReleases("[{\"version\":\"1\"," + page + "}]"),
             signedReleases("[{\"version\":\"1.99999999999\"," + page + "}]"),
             signedReleases("[{\"version\":\"1.0\",\"page\":\"http://brevix.example/\"}]"),
             signedReleases("[{\"version\":\"1.0\",\"page\":\"file:///etc/passwd\"}]"),
             signedReleases("[{\"version\":\"1.0\",\"page\":\"https://user@brevix.example/\"}]"),
             signer.sign(QByteArray(100000, '[')),
         })
        EXPECT_TRUE(problemOf(file).startsWith(u"The update feed is damaged")) << file.left(120).constData();
}

TEST(UpdateFeedTest, refusesAHugeFile)
{
    EXPECT_TRUE(problemOf(signer.sign(QByteArray(UpdateFeed::maximumSize, ' '))).contains(u"too large"));
}
