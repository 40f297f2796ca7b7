// SPDX-License-Identifier: GPL-3.0-or-later
#include "AuthServiceFixture.h"

#include <QJsonDocument>
#include <QJsonObject>

using namespace Qt::StringLiterals;

namespace {

const QByteArray refreshed =
    R"({"expires_in":"60","refresh_token":"r2","id_token":"i2","user_id":"u","extra":1})";

using AuthServiceTest = AuthServiceFixture;

} // namespace

TEST_F(AuthServiceTest, aStoredSessionKeepsItsFieldNamesAndLeavesAbsentOnesOut)
{
    QJsonObject object = QJsonDocument::fromJson(session(60).toJson()).object();
    EXPECT_EQ(object.keys(), (QStringList{u"displayName"_s, u"email"_s, u"expiresAt"_s, u"firebaseIDToken"_s,
                                          u"photoURLString"_s, u"refreshToken"_s, u"uid"_s}));
    const QDateTime epoch(QDate(2001, 1, 1), QTime(0, 0), Qt::UTC);
    EXPECT_EQ(object.value(u"expiresAt").toDouble(), static_cast<double>(epoch.secsTo(now) + 60));
    EXPECT_EQ(StoredAuthSession::fromJson(session(60).toJson()), session(60));

    StoredAuthSession bare = session(60);
    bare.email.reset();
    bare.displayName.reset();
    bare.photoURLString.reset();
    object = QJsonDocument::fromJson(bare.toJson()).object();
    EXPECT_EQ(object.size(), 4);
    EXPECT_EQ(StoredAuthSession::fromJson(bare.toJson()), bare);
    EXPECT_EQ(bare.user(), BrevixUserSession{.uid = u"u"_s});
    object.insert(u"email"_s, QJsonValue::Null);
    EXPECT_EQ(StoredAuthSession::fromJson(QJsonDocument(object).toJson()), bare);
}

TEST_F(AuthServiceTest, damagedSessionsCountAsNone)
{
    const QJsonObject sound = QJsonDocument::fromJson(session(60).toJson()).object();
    for (const QString &key : sound.keys()) {
        QJsonObject wrong = sound;
        wrong.insert(key, true);
        EXPECT_EQ(StoredAuthSession::fromJson(QJsonDocument(wrong).toJson()), std::nullopt)
            << key.toStdString();
    }
    for (const QString &key : {u"uid"_s, u"firebaseIDToken"_s, u"refreshToken"_s, u"expiresAt"_s}) {
        QJsonObject lacking = sound;
        lacking.remove(key);
        EXPECT_EQ(StoredAuthSession::fromJson(QJsonDocument(lacking).toJson()), std::nullopt)
            << key.toStdString();
    }
    for (const char *json : {"", "[]", "null", "{"})
        EXPECT_EQ(StoredAuthSession::fromJson(json), std::nullopt);
    defaults.setData(AuthService::storageKey, "{");
    EXPECT_EQ(tokenOrError(*makeService()), u"error: You're not signed in."_s);
}

TEST_F(AuthServiceTest, everyErrorHasItsText)
{
    using Kind = AuthError::Kind;
    const std::pair<Kind, QString> rows[] = {
        {Kind::invalidAuthorizationURL, u"Brevix couldn't build the Google sign-in URL."_s},
        {Kind::invalidTokenExchangeURL, u"Brevix couldn't reach Google's token exchange endpoint."_s},
        {Kind::invalidFirebaseExchangeURL, u"Brevix couldn't reach Firebase sign-in."_s},
        {Kind::invalidRefreshURL, u"Brevix couldn't refresh the Firebase session."_s},
        {Kind::invalidCallbackURL, u"Google sign-in returned an invalid callback URL."_s},
        {Kind::missingCallbackURL, u"Google sign-in completed without returning a callback URL."_s},
        {Kind::missingAuthorizationCode, u"Google sign-in didn't return an authorization code."_s},
        {Kind::stateMismatch,
         u"Brevix rejected the Google sign-in callback because the request state didn't match."_s},
        {Kind::failedToStartWebAuthenticationSession, u"Brevix couldn't start the Google sign-in window."_s},
        {Kind::sessionUnavailable, u"Brevix lost the Google sign-in session before it completed."_s},
        {Kind::invalidServerResponse, u"Brevix received an invalid server response during sign-in."_s},
        {Kind::unexpectedResponse, u"Brevix couldn't decode the sign-in response."_s},
        {Kind::notSignedIn, u"You're not signed in."_s},
    };
    for (const auto &[kind, description] : rows)
        EXPECT_EQ(AuthError(kind).description(), description);
    EXPECT_EQ(AuthError(Kind::oauthCallbackError, {}, u"access_denied"_s).description(), u"access_denied"_s);
}

TEST_F(AuthServiceTest, everyFailedAnswerHasItsText)
{
    const auto coded = [](const QByteArray &code) -> QByteArray {
        return R"({"error":{"code":400,"message":")" + code + R"("}})";
    };
    using Fault = FaultyServer::Reply::Fault;
    const QString host = server.origin().host();
    const std::tuple<FaultyServer::Reply, QString> rows[] = {
        {{400, coded("INVALID_IDP_RESPONSE")},
         u"Google sign-in returned an expired or invalid credential. Please try again."_s},
        {{400, coded("OPERATION_NOT_ALLOWED")}, u"Google sign-in isn't enabled for this Firebase project."_s},
        {{400, coded("INVALID_REQUEST_URI")},
         u"Firebase rejected the OAuth request URI. Please rebuild BrevixMac and try Google sign-in again."_s},
        {{400, coded("PROJECT_NUMBER_MISMATCH")},
         u"The Firebase refresh token doesn't match this project's API key."_s},
        {{401, coded("TOKEN_EXPIRED")}, u"Your Brevix session expired. Please sign in again."_s},
        {{400, coded("INVALID_REFRESH_TOKEN")}, u"Your Brevix session expired. Please sign in again."_s},
        {{400, coded("INVALID_ID_TOKEN")}, u"Your Brevix session expired. Please sign in again."_s},
        {{400, coded("INVALID_IDP_RESPONSE : details")}, u"INVALID_IDP_RESPONSE : details"_s},
        {{400, coded("invalid_refresh_token")}, u"invalid_refresh_token"_s},
        {{502, ""}, u"The server returned an unexpected response."_s},
        {{502, "\xff\xfe"}, u"The server returned an unexpected response."_s},
        {{503, "<html>busy</html>\n"}, u"<html>busy</html>\n"_s},
        {{500, R"({"error":"flat"})"}, u"{\"error\":\"flat\"}"_s},
        {{302, ""}, u"The server returned an unexpected response."_s},
        {{200, "<html>portal</html>"}, u"Brevix couldn't decode the sign-in response."_s},
        {{200, "[]"}, u"Brevix couldn't decode the sign-in response."_s},
        {{200, ""}, u"Brevix couldn't decode the sign-in response."_s},
        {{200, R"({"expires_in":"60","refresh_token":"r2","id_token":"i2"})"},
         u"Brevix couldn't decode the sign-in response."_s},
        {{200, R"({"expires_in":60,"refresh_token":"r2","id_token":"i2","user_id":"u"})"},
         u"Brevix couldn't decode the sign-in response."_s},
    };
    const auto service = makeService();
    for (const auto &[reply, text] : rows) {
        store(session(0));
        server.reply("token", reply);
        EXPECT_EQ(tokenOrError(*service), QString(u"error: "_s + text));
        EXPECT_EQ(stored(), session(0)) << "a failed refresh does not sign out";
    }
    for (const Fault fault : {Fault::close, Fault::garbage, Fault::truncate}) {
        server.reply("token", {.body = refreshed, .fault = fault});
        EXPECT_TRUE(tokenOrError(*service).startsWith(u"error: "_s));
        EXPECT_EQ(stored(), session(0));
    }
}

TEST_F(AuthServiceTest, aTokenWith121SecondsLeftIsUsedAndOneWith119IsRefreshed)
{
    server.reply("token", {.body = refreshed});
    const auto service = makeService();
    store(session(121));
    EXPECT_EQ(tokenOrError(*service), u"i1"_s);
    EXPECT_TRUE(server.requests().isEmpty());
    store(session(120));
    EXPECT_EQ(tokenOrError(*service), u"i2"_s);
    store(session(119));
    EXPECT_EQ(tokenOrError(*service), u"i2"_s);
    EXPECT_EQ(server.count("token"), 2);
}

TEST_F(AuthServiceTest, aRefreshSendsTheFormAndStoresTheRotatedTokens)
{
    server.reply("token", {.body = refreshed});
    store(session(0));
    const auto service = makeService();
    EXPECT_EQ(tokenOrError(*service), u"i2"_s);

    const FaultyServer::Request request = server.requests().first();
    EXPECT_EQ(request.method, "POST");
    EXPECT_EQ(request.target, "/securetoken.googleapis.com/v1/token?key=key%201");
    EXPECT_TRUE(request.head.toLower().contains("content-type: application/x-www-form-urlencoded"));
    EXPECT_EQ(request.body, "grant_type=refresh_token&refresh_token=r%261");

    StoredAuthSession expected = session(60);
    expected.firebaseIDToken = u"i2"_s;
    expected.refreshToken = u"r2"_s;
    EXPECT_EQ(stored(), expected);
}

TEST_F(AuthServiceTest, lifetimesAreReadAsWholeSecondsOrTakenAsAnHour)
{
    const std::pair<QByteArray, int> rows[] = {{"3600", 3600}, {"60", 60},    {"soon", 3600},
                                               {"", 3600},     {"1.5", 3600}, {" 60", 3600}};
    const auto service = makeService();
    for (const auto &[text, seconds] : rows) {
        store(session(0));
        server.reply(
            "token",
            {.body = R"({"refresh_token":"r2","id_token":"i2","user_id":"u","expires_in":")" + text + "\"}"});
        EXPECT_EQ(tokenOrError(*service), u"i2"_s);
        EXPECT_EQ(stored()->expiresAt, now.addSecs(seconds)) << text.constData();
    }
}

TEST_F(AuthServiceTest, theUserIsPublishedOnceForTheSameData)
{
    server.reply("token", {.body = refreshed});
    store(session(600));
    const auto service = makeService();
    int changes = 0;
    QObject::connect(service.get(), &AuthService::currentUserChanged, service.get(), [&] { ++changes; });
    EXPECT_EQ(tokenOrError(*service), u"i1"_s);
    EXPECT_EQ(service->currentUser(), session(0).user());
    EXPECT_EQ(service->currentUser()->photoURL, QUrl(u"https://b.example/a.png"_s));
    store(session(0));
    EXPECT_EQ(tokenOrError(*service), u"i2"_s);
    EXPECT_EQ(changes, 1);
}

TEST_F(AuthServiceTest, aPhotoAddressThatIsNoneIsLeftOut)
{
    StoredAuthSession stored = session(600);
    for (const QString &text : {u""_s, u"http://[broken"_s, u"https://b.example/%zz"_s}) {
        stored.photoURLString = text;
        EXPECT_EQ(stored.user().photoURL, std::nullopt) << qPrintable(text);
    }
}

TEST_F(AuthServiceTest, startRestoresAFreshSessionWithoutAskingTheServer)
{
    store(session(121));
    const auto service = makeService();
    service->start();
    ASSERT_TRUE(waitUntil([&] { return service->currentUser().has_value(); }));
    EXPECT_TRUE(server.requests().isEmpty());
    EXPECT_EQ(service->authErrorMessage(), std::nullopt);
}

TEST_F(AuthServiceTest, startRefreshesASessionThatRunsOut)
{
    server.reply("token", {.body = refreshed});
    store(session(119));
    const auto service = makeService();
    service->start();
    ASSERT_TRUE(waitUntil([&] { return service->currentUser().has_value(); }));
    EXPECT_EQ(stored()->firebaseIDToken, u"i2"_s);
}

TEST_F(AuthServiceTest, aFailedRestoreForgetsTheSessionAndSaysWhy)
{
    server.reply("token", {.status = 400, .body = R"({"error":{"message":"INVALID_REFRESH_TOKEN"}})"});
    store(session(0));
    const auto service = makeService();
    service->start();
    ASSERT_TRUE(waitUntil([&] { return service->authErrorMessage().has_value(); }));
    EXPECT_EQ(service->authErrorMessage(), u"Your Brevix session expired. Please sign in again."_s);
    EXPECT_EQ(service->currentUser(), std::nullopt);
    EXPECT_EQ(defaults.data(AuthService::storageKey), std::nullopt);
}

TEST_F(AuthServiceTest, startWithoutASessionDoesNothing)
{
    const auto service = makeService();
    service->start();
    EXPECT_EQ(service->currentUser(), std::nullopt);
    EXPECT_EQ(service->authErrorMessage(), std::nullopt);
    EXPECT_TRUE(server.requests().isEmpty());
}

TEST_F(AuthServiceTest, signingOutForgetsEverythingAndTellsNobody)
{
    store(session(600));
    const auto service = makeService();
    EXPECT_EQ(tokenOrError(*service), u"i1"_s);
    service->signOut();
    EXPECT_EQ(service->currentUser(), std::nullopt);
    EXPECT_EQ(service->authErrorMessage(), std::nullopt);
    EXPECT_EQ(defaults.data(AuthService::storageKey), std::nullopt);
    EXPECT_TRUE(server.requests().isEmpty());
    EXPECT_EQ(tokenOrError(*service), u"error: You're not signed in."_s);
}

TEST_F(AuthServiceTest, signingOutDuringARefreshLeavesNoSessionBehind)
{
    server.reply("token", {.body = refreshed, .delay = std::chrono::milliseconds(50)});
    store(session(0));
    const auto service = makeService();
    service->start();
    ASSERT_TRUE(waitUntil([&] { return server.count("token") == 1; }));
    service->signOut();
    EXPECT_FALSE(waitUntil([&] { return stored().has_value(); }, std::chrono::milliseconds(200)));
    EXPECT_EQ(service->currentUser(), std::nullopt);
    EXPECT_EQ(service->authErrorMessage(), std::nullopt);
}

TEST_F(AuthServiceTest, dyingDuringARefreshTouchesNothing)
{
    server.reply("token", {.body = refreshed, .delay = std::chrono::milliseconds(30)});
    store(session(0));
    auto service = makeService();
    service->start();
    ASSERT_TRUE(waitUntil([&] { return server.count("token") == 1; }));
    service.reset();
    EXPECT_FALSE(waitUntil([&] { return stored() != session(0); }, std::chrono::milliseconds(150)));
}

TEST_F(AuthServiceTest, signInRefusesToStartWithoutConfigurationOrWindow)
{
    const auto unconfigured = makeService(AppConfiguration::fallback());
    await(unconfigured->signIn(true));
    EXPECT_EQ(unconfigured->authErrorMessage(), u"BrevixMac is missing its native Firebase configuration."_s);

    const auto service = makeService();
    await(service->signIn(false));
    EXPECT_EQ(service->authErrorMessage(), u"Brevix could not find a window to present Google sign-in."_s);
    EXPECT_FALSE(service->isAuthenticating());
}

TEST_F(AuthServiceTest, signInWithoutABrowserSessionEndsInItsMessage)
{
    browser.refusesToStart = true;
    const auto service = makeService();
    QList<bool> seen;
    QObject::connect(service.get(), &AuthService::isAuthenticatingChanged, service.get(),
                     [&] { seen.append(service->isAuthenticating()); });
    await(service->signIn(true));
    EXPECT_EQ(service->authErrorMessage(), u"Brevix couldn't start the Google sign-in window."_s);
    EXPECT_EQ(seen, (QList<bool>{true, false}));
    EXPECT_EQ(service->currentUser(), std::nullopt);
}

TEST_F(AuthServiceTest, anUnusableEndpointSaysSo)
{
    store(session(0));
    const auto service = makeServiceAt(CloudEndpoints::local(QUrl()));
    EXPECT_EQ(tokenOrError(*service), u"error: Brevix couldn't refresh the Firebase session."_s);
}
