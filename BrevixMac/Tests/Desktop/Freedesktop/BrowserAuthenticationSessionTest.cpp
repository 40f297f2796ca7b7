// SPDX-License-Identifier: GPL-3.0-or-later
#include "Desktop/Freedesktop/BrowserAuthenticationSession.h"

#include "FakeOpener.h"

#include "Support/TestMain.h"
#include "Support/Waiting.h"

#include <QFile>

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

using Result = WebAuthenticationSession::Result;
using Code = WebAuthenticationError::Code;

class BrowserAuthenticationSessionTest : public testing::Test
{
protected:
    BrowserAuthenticationSession &make(const QByteArray &browserScript = "exit 0")
    {
        session = std::make_unique<BrowserAuthenticationSession>(BrowserAuthenticationSession::Options{
            .program = u"/opt/brevix"_s,
            .folders = {folder.filePath(u"applications"_s), folder.filePath(u"config"_s)},
            .openers = {openers.add(u"browser"_s, browserScript)},
            .timeLimit = timeLimit});
        QObject::connect(session.get(), &WebAuthenticationSession::callbackRejected, session.get(),
                         [this] { ++rejections; });
        QObject::connect(session.get(), &WebAuthenticationSession::browserUnavailable, session.get(),
                         [this] { ++missingBrowsers; });
        return *session;
    }

    bool start(const QString &scheme = u"org.example.app"_s)
    {
        return session->start({.url = QUrl(u"https://sign.in/page?state=right"_s),
                               .callbackScheme = scheme,
                               .isAnswer = [](const QUrl &url) { return url.query() == u"state=right"; }},
                              [this](const Result &result) { results.append(result); });
    }

    QTemporaryDir folder;
    FakeOpeners openers;
    std::chrono::milliseconds timeLimit = 10min;
    QList<Result> results;
    int rejections = 0;
    int missingBrowsers = 0;
    std::unique_ptr<BrowserAuthenticationSession> session;
};

} // namespace

TEST_F(BrowserAuthenticationSessionTest, registersTheSchemeOpensThePageAndHandsTheCallbackBack)
{
    make();
    ASSERT_TRUE(start());
    EXPECT_TRUE(results.isEmpty());
    EXPECT_TRUE(
        QFile::exists(folder.filePath(u"applications/app.brevix.Brevix.open-org.example.app.desktop"_s)));
    ASSERT_TRUE(
        waitUntil([&] { return openers.calls(u"browser"_s) == "https://sign.in/page?state=right\n"; }));
    session->openURL(u"ORG.example.app:/oauthredirect?state=right"_s);
    ASSERT_EQ(results.size(), 1);
    EXPECT_EQ(results.first().callbackURL, QUrl(u"org.example.app:/oauthredirect?state=right"_s));
    EXPECT_FALSE(results.first().error);
    EXPECT_EQ(rejections + missingBrowsers, 0);
}

TEST_F(BrowserAuthenticationSessionTest, whatIsNoAnswerDoesNotEndIt)
{
    make();
    ASSERT_TRUE(start());
    const QString others[] = {u"org.example.app:/oauthredirect?state=wrong"_s,
                              u"org.example.other:/oauthredirect?state=right"_s,
                              u"https://sign.in/?state=right"_s, u"state=right"_s, u""_s};
    int expected = 0;
    for (const QString &other : others) {
        session->openURL(other);
        EXPECT_EQ(rejections, ++expected) << other.toStdString();
    }
    session->openURL(u"org.example.app:/?state=right&"_s +
                     QString(BrowserAuthenticationSession::longestAddress, u'x'));
    EXPECT_TRUE(results.isEmpty());
    session->openURL(u"org.example.app:/oauthredirect?state=right"_s);
    EXPECT_EQ(results.size(), 1);
}

TEST_F(BrowserAuthenticationSessionTest, whatNobodyWaitsForIsDropped)
{
    make();
    session->openURL(u"org.example.app:/oauthredirect?state=right"_s);
    ASSERT_TRUE(start());
    session->cancel();
    session->openURL(u"org.example.app:/oauthredirect?state=right"_s);
    EXPECT_EQ(results.size(), 1);
    EXPECT_EQ(rejections, 0);
}

TEST_F(BrowserAuthenticationSessionTest, cancellingEndsItOnceWithItsCode)
{
    make();
    session->cancel();
    ASSERT_TRUE(start());
    session->cancel();
    session->cancel();
    ASSERT_EQ(results.size(), 1);
    EXPECT_EQ(results.first().error->code(), Code::canceledLogin);
    EXPECT_EQ(static_cast<int>(results.first().error->code()), 1);
    ASSERT_TRUE(start()) << "another one can follow";
    EXPECT_EQ(results.size(), 1);
}

TEST_F(BrowserAuthenticationSessionTest, dyingCancelsIt)
{
    make();
    ASSERT_TRUE(start());
    session.reset();
    ASSERT_EQ(results.size(), 1);
    EXPECT_EQ(results.first().error->code(), Code::canceledLogin);
}

TEST_F(BrowserAuthenticationSessionTest, theTimeLimitEndsItWithASentence)
{
    timeLimit = 20ms;
    make();
    ASSERT_TRUE(start());
    ASSERT_TRUE(waitUntil([&] { return !results.isEmpty(); }));
    EXPECT_EQ(results.first().error->code(), Code::timedOut);
    EXPECT_EQ(results.first().error->description(),
              u"Google sign-in was not finished in time. Please try again."_s);
    EXPECT_EQ(WebAuthenticationSession::timeLimit, 10min);
}

TEST_F(BrowserAuthenticationSessionTest, aMissingBrowserIsToldAndTheSessionGoesOn)
{
    make("exit 3");
    ASSERT_TRUE(start());
    ASSERT_TRUE(waitUntil([&] { return missingBrowsers == 1; }));
    EXPECT_TRUE(results.isEmpty());
    session->openURL(u"org.example.app:/oauthredirect?state=right"_s);
    EXPECT_EQ(results.size(), 1);
}

TEST_F(BrowserAuthenticationSessionTest, aBrowserThatFailsAfterTheEndIsNotTold)
{
    make("exit 3");
    ASSERT_TRUE(start());
    session->cancel();
    EXPECT_FALSE(waitUntil([&] { return missingBrowsers > 0; }, 150ms));
}

TEST_F(BrowserAuthenticationSessionTest, itRefusesASecondSessionAndASchemeOfEverybody)
{
    make();
    ASSERT_TRUE(start());
    EXPECT_FALSE(start());
    session->cancel();
    expectWarning(u"is not one that an application may claim"_s);
    EXPECT_FALSE(start(u"https"_s));
    EXPECT_EQ(results.size(), 1);
}
