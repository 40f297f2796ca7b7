// SPDX-License-Identifier: GPL-3.0-or-later
#include "AuthServiceFixture.h"

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

const QByteArray refreshed = R"({"expires_in":"3600","refresh_token":"r2","id_token":"i2","user_id":"u"})";
const QByteArray refreshedAgain =
    R"({"expires_in":"3600","refresh_token":"r3","id_token":"i3","user_id":"u"})";

class TokenRefreshTest : public AuthServiceFixture
{
protected:
    /// Asks without waiting; the answer lands in answers.
    void ask(AuthService &service) { detach(keepAnswer(service), "asking for a token"); }

    QCoro::Task<> keepAnswer(AuthService &service)
    {
        const QString answer = co_await askForToken(service);
        answers.append(answer);
    }

    QStringList answers;
};

} // namespace

TEST_F(TokenRefreshTest, callersAtTheSameTimeShareOneRefresh)
{
    server.reply("token", {.body = refreshed, .delay = 30ms});
    store(session(0));
    const auto service = makeService();
    service->start();
    for (int i = 0; i < 5; ++i)
        ask(*service);
    ASSERT_TRUE(waitUntil([&] { return answers.size() == 5; }));
    EXPECT_EQ(answers, QStringList(5, u"i2"_s));
    EXPECT_EQ(server.count("token"), 1) << "a refresh token that is rotated must not be sent twice";
    EXPECT_EQ(stored()->refreshToken, u"r2"_s);
    EXPECT_EQ(service->currentUser(), session(0).user());
}

TEST_F(TokenRefreshTest, aSharedFailureReachesEveryCallerAndTheNextOneTriesAgain)
{
    server.replyOnce("token", {.status = 500, .body = "busy", .delay = 20ms});
    server.reply("token", {.body = refreshed});
    store(session(0));
    const auto service = makeService();
    ask(*service);
    ask(*service);
    ASSERT_TRUE(waitUntil([&] { return answers.size() == 2; }));
    EXPECT_EQ(answers, QStringList(2, u"error: busy"_s));
    EXPECT_EQ(stored(), session(0));
    EXPECT_EQ(tokenOrError(*service), u"i2"_s);
    EXPECT_EQ(server.count("token"), 2);
}

TEST_F(TokenRefreshTest, signingOutCancelsEveryWaitingCaller)
{
    server.reply("token", {.body = refreshed, .fault = FaultyServer::Reply::Fault::stall});
    store(session(0));
    const auto service = makeService();
    ask(*service);
    ask(*service);
    ASSERT_TRUE(waitUntil([&] { return server.count("token") == 1; }));
    service->signOut();
    ASSERT_TRUE(waitUntil([&] { return answers.size() == 2; }));
    EXPECT_EQ(answers, QStringList(2, u"error: The request was cancelled."_s));
    EXPECT_EQ(stored(), std::nullopt);
    EXPECT_EQ(service->currentUser(), std::nullopt);
}

TEST_F(TokenRefreshTest, dyingCancelsEveryWaitingCaller)
{
    server.reply("token", {.body = refreshed, .delay = 30ms});
    store(session(0));
    auto service = makeService();
    ask(*service);
    ask(*service);
    ASSERT_TRUE(waitUntil([&] { return server.count("token") == 1; }));
    service.reset();
    ASSERT_TRUE(waitUntil([&] { return answers.size() == 2; }));
    EXPECT_EQ(answers, QStringList(2, u"error: The request was cancelled."_s));
    EXPECT_EQ(stored(), session(0)) << "quitting keeps the session";
}

TEST_F(TokenRefreshTest, aTokenThatAServerRejectedIsRefreshedWhateverTheClockSays)
{
    server.reply("token", {.body = refreshed});
    store(session(3600));
    const auto service = makeService();
    EXPECT_EQ(tokenOrError(*service), u"i1"_s);
    service->noteRejectedToken(u"older"_s);
    EXPECT_EQ(tokenOrError(*service), u"i1"_s);
    service->noteRejectedToken(u"i1"_s);
    EXPECT_EQ(tokenOrError(*service), u"i2"_s);
    EXPECT_EQ(tokenOrError(*service), u"i2"_s);
    EXPECT_EQ(server.count("token"), 1);
}

TEST_F(TokenRefreshTest, aRejectedTokenThatCannotBeRefreshedIsUsedAgain)
{
    server.reply("token", {.status = 500, .body = "busy"});
    store(session(3600));
    const auto service = makeService();
    service->noteRejectedToken(u"i1"_s);
    EXPECT_EQ(tokenOrError(*service), u"i1"_s);
    EXPECT_EQ(tokenOrError(*service), u"i1"_s);
    EXPECT_EQ(server.count("token"), 1) << "one try for each rejection";
    EXPECT_EQ(stored(), session(3600));
}

TEST_F(TokenRefreshTest, aClockSetBackDoesNotMakeAnOldTokenYoung)
{
    // One second more than the margin.
    server.reply("token",
                 {.body = R"({"expires_in":"121","refresh_token":"r2","id_token":"i2","user_id":"u"})"});
    store(session(0));
    const auto service = makeService();
    EXPECT_EQ(tokenOrError(*service), u"i2"_s);
    server.reply("token", {.body = refreshedAgain});
    now = now.addDays(-1); // by this clock the token is good for more than a day
    ASSERT_TRUE(waitUntil([&] { return tokenOrError(*service) == u"i3"; }, 3s));
}

TEST_F(TokenRefreshTest, aClockSetForwardRefreshesOnce)
{
    server.reply("token", {.body = refreshed});
    store(session(3600));
    const auto service = makeService();
    now = now.addDays(400);
    EXPECT_EQ(tokenOrError(*service), u"i2"_s);
    EXPECT_EQ(tokenOrError(*service), u"i2"_s);
    EXPECT_EQ(server.count("token"), 1);
    EXPECT_EQ(stored()->expiresAt, now.addSecs(3600));
}

TEST_F(TokenRefreshTest, aSessionOfAnotherIssuerIsNeitherUsedNorTouched)
{
    store(session(0));
    defaults.setText(AuthService::issuerKey, u"https://elsewhere.example"_s);
    const auto service = makeService();
    service->start();
    EXPECT_EQ(tokenOrError(*service), u"error: You're not signed in."_s);
    EXPECT_EQ(service->currentUser(), std::nullopt);
    EXPECT_EQ(service->authErrorMessage(), std::nullopt);
    EXPECT_TRUE(server.requests().isEmpty()) << "its tokens would reach a server that has not issued them";
    EXPECT_EQ(stored(), session(0));
}

TEST_F(TokenRefreshTest, aRefreshedSessionRemembersItsIssuerAndSigningOutForgetsBoth)
{
    server.reply("token", {.body = refreshed});
    store(session(0));
    const auto service = makeService();
    EXPECT_EQ(tokenOrError(*service), u"i2"_s);
    EXPECT_EQ(defaults.text(AuthService::issuerKey), CloudEndpoints::local(server.origin()).issuer());
    service->signOut();
    EXPECT_EQ(defaults.text(AuthService::issuerKey), std::nullopt);
    EXPECT_EQ(defaults.data(AuthService::storageKey), std::nullopt);
}

TEST_F(TokenRefreshTest, aRefreshIsNotFollowedToAnotherServer)
{
    FaultyServer other;
    const QByteArray location = other.origin().toEncoded() + "/v1/token";
    const auto service = makeService();
    for (const int status : {301, 302, 303, 307, 308}) {
        server.reply("token", {.status = status, .body = "", .headers = "Location: " + location + "\r\n"});
        store(session(0));
        EXPECT_TRUE(tokenOrError(*service).startsWith(u"error: "_s)) << status;
        EXPECT_TRUE(other.requests().isEmpty()) << status;
        EXPECT_EQ(stored(), session(0));
    }
}

TEST_F(TokenRefreshTest, oddAnswersAreNamed)
{
    using Fault = FaultyServer::Reply::Fault;
    const QString host = server.origin().host();
    const std::tuple<FaultyServer::Reply, QString> rows[] = {
        {{.body = refreshed, .headers = "Content-Type: text/html\r\n"}, u"i2"_s},
        {{429, "slow down"}, u"error: slow down"_s},
        {{401, ""}, u"error: The server returned an unexpected response."_s},
        {{.body = refreshed, .fault = Fault::truncate},
         u"error: The connection to %1 was lost before the answer was complete."_s.arg(host)},
        {{.fault = Fault::close},
         u"error: The server %1 closed the connection without a valid answer."_s.arg(host)},
        {{.body = refreshed, .fault = Fault::huge}, u"error: The answer of %1 is too large."_s.arg(host)},
    };
    const auto service = makeService();
    for (const auto &[reply, outcome] : rows) {
        store(session(0));
        server.reply("token", reply);
        EXPECT_EQ(tokenOrError(*service), outcome);
    }
}
