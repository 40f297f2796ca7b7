// SPDX-License-Identifier: GPL-3.0-or-later
#include "AuthServiceFixture.h"

#include <QFile>
#include <QJsonDocument>
#include <QJsonObject>
#include <QLoggingCategory>
#include <QUrlQuery>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

const QByteArray exchangePath = "/token";
const QByteArray firebasePath = "accounts:signInWithIdp";
const QByteArray googleTokens =
    R"({"access_token":"google-access","expires_in":3599,"id_token":"google.id&token","scope":"x"})";
const QByteArray firebaseSession =
    R"({"idToken":"f1","refreshToken":"fr1","expiresIn":"3600","localId":"uid-1","email":"ada@b.example",)"
    R"("displayName":"Ada","photoUrl":"https://b.example/a.png","isNewUser":false})";

using Result = WebAuthenticationSession::Result;
using BrowserError = WebAuthenticationError;

class SignInTest : public AuthServiceFixture
{
protected:
    SignInTest()
    {
        server.reply(exchangePath, {.body = googleTokens});
        server.reply(firebasePath, {.body = firebaseSession});
    }

    std::unique_ptr<AuthService> beginSignIn()
    {
        auto service = makeService();
        detach(service->signIn(true), "signing in");
        EXPECT_TRUE(browser.running);
        return service;
    }

    QString stateOfPage() const
    {
        return QUrlQuery(browser.running->url).queryItemValue(u"state"_s, QUrl::FullyDecoded);
    }

    QString callback(const QString &query) const { return u"org.example.tneilc:/oauthredirect?"_s + query; }

    /// The address that Google's page would lead to.
    QString answer(const QString &code = u"c0de"_s) const
    {
        return callback(u"state="_s + stateOfPage() + u"&code="_s + code);
    }

    static bool waitUntilOver(AuthService &service)
    {
        return waitUntil([&] { return !service.isAuthenticating(); });
    }

    void expectNothingKept(const AuthService &service) const
    {
        EXPECT_EQ(service.currentUser(), std::nullopt);
        EXPECT_FALSE(service.isAuthenticating());
        EXPECT_EQ(service.pendingAuthorization(), std::nullopt);
        EXPECT_EQ(stored(), std::nullopt);
        EXPECT_EQ(defaults.text(AuthService::issuerKey), std::nullopt);
    }

    /// The message in which a sign-in ends.
    QString messageAfter(const std::function<void()> &step)
    {
        const auto service = beginSignIn();
        step();
        EXPECT_TRUE(waitUntilOver(*service));
        expectNothingKept(*service);
        EXPECT_EQ(browser.running.has_value(), false);
        return service->authErrorMessage().value_or(u"none"_s);
    }
};

QStringList logLines;

void keepLine(QtMsgType, const QMessageLogContext &, const QString &message)
{
    logLines.append(message);
}

} // namespace

TEST_F(SignInTest, leadsFromTheBrowserToAStoredSession)
{
    const auto service = beginSignIn();
    EXPECT_TRUE(service->isAuthenticating());
    EXPECT_EQ(browser.running->callbackScheme, u"org.example.tneilc"_s);
    const QUrl page = browser.running->url;
    EXPECT_EQ(service->pendingAuthorization(), (AuthService::PendingAuthorization{page}));
    int returns = 0;
    QObject::connect(service.get(), &AuthService::signInReturned, service.get(), [&] {
        ++returns;
        EXPECT_TRUE(service->currentUser());
        EXPECT_FALSE(service->isAuthenticating());
    });
    browser.openURL(answer());
    ASSERT_TRUE(waitUntilOver(*service));

    const BrevixUserSession expected{.uid = u"uid-1"_s,
                                     .email = u"ada@b.example"_s,
                                     .displayName = u"Ada"_s,
                                     .photoURL = QUrl(u"https://b.example/a.png"_s)};
    EXPECT_EQ(service->currentUser(), expected);
    EXPECT_EQ(service->authErrorMessage(), std::nullopt);
    EXPECT_EQ(service->pendingAuthorization(), std::nullopt);
    EXPECT_EQ(returns, 1);
    const StoredAuthSession session{.uid = u"uid-1"_s,
                                    .email = u"ada@b.example"_s,
                                    .displayName = u"Ada"_s,
                                    .photoURLString = u"https://b.example/a.png"_s,
                                    .firebaseIDToken = u"f1"_s,
                                    .refreshToken = u"fr1"_s,
                                    .expiresAt = now.addSecs(3600)};
    EXPECT_EQ(stored(), session);
    EXPECT_EQ(tokenOrError(*service), u"f1"_s);
}

TEST_F(SignInTest, sendsTheCodeWithItsVerifierAndTheGoogleTokenToFirebase)
{
    const auto service = beginSignIn();
    const QString challenge = QUrlQuery(browser.running->url).queryItemValue(u"code_challenge"_s);
    browser.openURL(answer(u"4%2F0A"_s));
    ASSERT_TRUE(waitUntilOver(*service));
    ASSERT_EQ(server.requests().size(), 2);

    const FaultyServer::Request exchange = server.requests().at(0);
    EXPECT_EQ(exchange.method, "POST");
    EXPECT_EQ(exchange.target, "/token");
    EXPECT_TRUE(exchange.head.toLower().contains("content-type: application/x-www-form-urlencoded"));
    EXPECT_FALSE(exchange.head.toLower().contains("authorization:"));
    const QUrlQuery form(QString::fromUtf8(exchange.body));
    EXPECT_EQ(form.queryItemValue(u"client_id"_s), u"client"_s);
    EXPECT_EQ(form.queryItemValue(u"code"_s), u"4/0A"_s);
    EXPECT_EQ(form.queryItemValue(u"grant_type"_s), u"authorization_code"_s);
    EXPECT_EQ(form.queryItemValue(u"redirect_uri"_s), u"org.example.tneilc:/oauthredirect"_s);
    EXPECT_EQ(GoogleAuthorization::codeChallenge(form.queryItemValue(u"code_verifier"_s)), challenge);
    EXPECT_EQ(form.queryItems().size(), 5);

    const FaultyServer::Request firebase = server.requests().at(1);
    EXPECT_EQ(firebase.method, "POST");
    EXPECT_EQ(firebase.target, "/identitytoolkit.googleapis.com/v1/accounts:signInWithIdp?key=key%201");
    EXPECT_TRUE(firebase.head.toLower().contains("content-type: application/json"));
    const QJsonObject expected{{u"postBody"_s, u"id_token=google.id%26token&providerId=google.com"_s},
                               {u"requestUri"_s, u"http://localhost"_s},
                               {u"returnIdpCredential"_s, true},
                               {u"returnSecureToken"_s, true}};
    EXPECT_EQ(QJsonDocument::fromJson(firebase.body).object(), expected);
}

TEST_F(SignInTest, theSessionFileIsForTheUserAloneAndHoldsNoGoogleToken)
{
    const auto service = beginSignIn();
    browser.openURL(answer());
    ASSERT_TRUE(waitUntilOver(*service));
    defaults.waitForWrites();
    QFile file(defaults.filePath());
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    EXPECT_EQ(file.permissions() &
                  (QFile::ReadGroup | QFile::WriteGroup | QFile::ReadOther | QFile::WriteOther),
              QFile::Permissions());
    const QByteArray kept = file.readAll() + *defaults.data(AuthService::storageKey);
    EXPECT_FALSE(kept.contains("google-access"));
    EXPECT_FALSE(kept.contains("google.id"));
}

TEST_F(SignInTest, everyEndOfTheBrowserSessionHasItsText)
{
    using Code = BrowserError::Code;
    const std::pair<Result, QString> rows[] = {
        {{.error = BrowserError(Code::canceledLogin, u"whatever"_s)}, u"Google sign-in was canceled."_s},
        {{.error = BrowserError(Code::timedOut, u" Too late. "_s)}, u"Too late."_s},
        {{.error = BrowserError(Code::timedOut, u"Too late."_s, u" Clock.\n"_s)}, u"Too late.\nClock."_s},
        {{.error = BrowserError(Code::timedOut, u"Too late."_s, u"Too late."_s)}, u"Too late."_s},
        {{.error = BrowserError(Code::timedOut)}, u"Brevix couldn't complete Google sign-in."_s},
        {{}, u"Google sign-in completed without returning a callback URL."_s},
        {{.callbackURL = QUrl()}, u"Google sign-in returned an invalid callback URL."_s},
        {{.callbackURL = QUrl(callback(u"code=c"_s))},
         u"Brevix rejected the Google sign-in callback because the request state didn't match."_s},
        {{.callbackURL = QUrl(callback(u"error=x&error_description=Not%20today"_s))}, u"Not today"_s},
        {{.callbackURL = QUrl(callback(u"error="_s))}, u"Brevix couldn't complete Google sign-in."_s},
    };
    for (const auto &[result, text] : rows)
        EXPECT_EQ(messageAfter([&] { browser.end(result); }), text);
    EXPECT_EQ(messageAfter([&] { browser.forget(); }),
              u"Brevix lost the Google sign-in session before it completed."_s);
    EXPECT_EQ(messageAfter([&] { browser.openURL(callback(u"code=&state="_s + stateOfPage())); }),
              u"Google sign-in didn't return an authorization code."_s);
    EXPECT_EQ(
        messageAfter([&] { browser.openURL(callback(u"error=access_denied&state="_s + stateOfPage())); }),
        u"access_denied"_s);
    EXPECT_TRUE(server.requests().isEmpty());
}

TEST_F(SignInTest, everyFailureOfEitherExchangeHasItsText)
{
    using Fault = FaultyServer::Reply::Fault;
    const auto coded = [](const QByteArray &code) -> QByteArray {
        return R"({"error":{"code":400,"message":")" + code + R"("}})";
    };
    const QString host = server.origin().host();
    const QString undecodable = u"Brevix couldn't decode the sign-in response."_s;
    const QString unexpected = u"The server returned an unexpected response."_s;
    const std::pair<FaultyServer::Reply, QString> rows[] = {
        {{400, coded("INVALID_IDP_RESPONSE")},
         u"Google sign-in returned an expired or invalid credential. Please try again."_s},
        {{400, coded("INVALID_IDP_RESPONSE : details")}, u"INVALID_IDP_RESPONSE : details"_s},
        {{400, coded("OPERATION_NOT_ALLOWED")}, u"Google sign-in isn't enabled for this Firebase project."_s},
        {{400, coded("INVALID_REQUEST_URI")},
         u"Firebase rejected the OAuth request URI. Please rebuild BrevixMac and try Google sign-in again."_s},
        {{401, coded("TOKEN_EXPIRED")}, u"Your Brevix session expired. Please sign in again."_s},
        {{400, R"({"error":"invalid_grant","error_description":"Bad Request"})"},
         u"{\"error\":\"invalid_grant\",\"error_description\":\"Bad Request\"}"_s},
        {{401, ""}, unexpected},
        {{429, "slow down"}, u"slow down"_s},
        {{500, "<html>oops</html>"}, u"<html>oops</html>"_s},
        {{502, ""}, unexpected},
        {{502, "\xff"}, unexpected},
        {{302, "", {}, Fault::none, "Location: http://127.0.0.1:1/\r\n"}, unexpected},
        {{200, "<html>portal</html>"}, undecodable},
        {{200, ""}, undecodable},
        {{200, "[]"}, undecodable},
        {{200, "{}"}, undecodable},
        {{200, "{}", {}, Fault::close},
         u"The server %1 closed the connection without a valid answer."_s.arg(host)},
        {{200, googleTokens, {}, Fault::truncate},
         u"The connection to %1 was lost before the answer was complete."_s.arg(host)},
        {{200, "{}", {}, Fault::huge}, u"The answer of %1 is too large."_s.arg(host)},
    };
    for (const QByteArray &path : {exchangePath, firebasePath}) {
        for (const auto &[reply, text] : rows) {
            server.replyOnce(path, reply);
            EXPECT_EQ(messageAfter([&] { browser.openURL(answer()); }), text) << path.toStdString();
        }
        server.replyOnce(path, {.body = "x", .fault = Fault::garbage});
        EXPECT_NE(messageAfter([&] { browser.openURL(answer()); }), u"none"_s);
    }
}

TEST_F(SignInTest, answersThatLackSomethingOrHoldTheWrongKindAreRefused)
{
    const QByteArray googleRows[] = {
        R"({"id_token":"i"})",
        R"({"access_token":"a"})",
        R"({"access_token":1,"id_token":"i"})",
        R"({"access_token":"a","id_token":null})",
        R"({"access_token":"a","id_token":"i","expires_in":"3599"})",
        R"({"access_token":"a","id_token":"i","expires_in":1.5})",
    };
    const QByteArray firebaseRows[] = {
        R"({"refreshToken":"r","expiresIn":"1","localId":"u"})",
        R"({"idToken":"i","expiresIn":"1","localId":"u"})",
        R"({"idToken":"i","refreshToken":"r","localId":"u"})",
        R"({"idToken":"i","refreshToken":"r","expiresIn":"1"})",
        R"({"idToken":"i","refreshToken":"r","expiresIn":1,"localId":"u"})",
        R"({"idToken":"i","refreshToken":"r","expiresIn":"1","localId":"u","email":1})",
        R"({"idToken":"i","refreshToken":"r","expiresIn":"1","localId":"u","photoUrl":[]})",
    };
    const QString text = u"Brevix couldn't decode the sign-in response."_s;
    for (const QByteArray &body : googleRows) {
        server.replyOnce(exchangePath, {.body = body});
        EXPECT_EQ(messageAfter([&] { browser.openURL(answer()); }), text) << body.toStdString();
    }
    for (const QByteArray &body : firebaseRows) {
        server.replyOnce(firebasePath, {.body = body});
        EXPECT_EQ(messageAfter([&] { browser.openURL(answer()); }), text) << body.toStdString();
    }
}

TEST_F(SignInTest, aBareAnswerMakesAUserWithoutDetails)
{
    server.reply(exchangePath, {.body = R"({"access_token":"a","id_token":"i","expires_in":null})"});
    const std::pair<QByteArray, int> lifetimes[] = {{"60", 60}, {"soon", 3600}, {"3600", 3600}};
    for (const auto &[text, seconds] : lifetimes) {
        server.reply(firebasePath, {.body = R"({"idToken":"i","refreshToken":"r","localId":"u","email":null,)"
                                            R"("expiresIn":")" +
                                            text + "\"}"});
        const auto service = beginSignIn();
        browser.openURL(answer());
        ASSERT_TRUE(waitUntilOver(*service));
        EXPECT_EQ(service->currentUser(), BrevixUserSession{.uid = u"u"_s});
        EXPECT_EQ(stored()->expiresAt, now.addSecs(seconds)) << text.toStdString();
        service->signOut();
    }
}

TEST_F(SignInTest, aForgedCallbackIsNamedButDoesNotEndTheSignIn)
{
    const auto service = beginSignIn();
    for (const QString &query : {u"code=evil&state=guess"_s, u"code=evil"_s,
                                 u"error=access_denied&error_description=Call%20us"_s, u""_s}) {
        browser.openURL(callback(query));
        EXPECT_TRUE(service->isAuthenticating());
        EXPECT_TRUE(service->pendingAuthorization());
        EXPECT_EQ(service->authErrorMessage(),
                  u"Brevix rejected the Google sign-in callback because the request state didn't match."_s);
    }
    EXPECT_TRUE(server.requests().isEmpty());
    browser.openURL(answer());
    ASSERT_TRUE(waitUntilOver(*service));
    EXPECT_TRUE(service->currentUser());
    EXPECT_EQ(service->authErrorMessage(), std::nullopt);
}

TEST_F(SignInTest, aCallbackIsTakenOnlyOnce)
{
    const auto service = beginSignIn();
    const QString first = answer();
    browser.openURL(first);
    browser.openURL(first);
    ASSERT_TRUE(waitUntilOver(*service));
    browser.openURL(first);
    EXPECT_EQ(server.count("token"), 1);
    EXPECT_EQ(service->authErrorMessage(), std::nullopt);
}

TEST_F(SignInTest, aSecondSignInWhileOneRunsChangesNothing)
{
    const auto service = beginSignIn();
    await(service->signIn(true));
    await(service->signIn(false));
    EXPECT_TRUE(service->isAuthenticating());
    EXPECT_EQ(service->authErrorMessage(), std::nullopt);
    EXPECT_EQ(browser.starts, 1);
}

TEST_F(SignInTest, withoutABrowserTheAddressIsOfferedAndStillWorks)
{
    browser.hasNoBrowser = true;
    const auto service = beginSignIn();
    ASSERT_TRUE(waitUntil([&] { return service->pendingAuthorization()->isBrowserMissing; }));
    EXPECT_EQ(service->pendingAuthorization()->url, browser.running->url);
    EXPECT_TRUE(service->isAuthenticating());
    browser.openURL(answer());
    ASSERT_TRUE(waitUntilOver(*service));
    EXPECT_TRUE(service->currentUser());
}

TEST_F(SignInTest, anEndpointThatCannotBeBuiltSaysSo)
{
    const auto service = makeServiceAt(CloudEndpoints::local(QUrl()));
    int returns = 0;
    QObject::connect(service.get(), &AuthService::signInReturned, service.get(), [&] { ++returns; });
    await(service->signIn(true));
    EXPECT_EQ(service->authErrorMessage(), u"Brevix couldn't build the Google sign-in URL."_s);
    EXPECT_EQ(browser.starts, 0);
    EXPECT_EQ(returns, 0) << "the user has not left";
}

// Ended from outside

TEST_F(SignInTest, cancellingEndsItWhereverItIs)
{
    const auto canceled = u"Google sign-in was canceled."_s;
    const QByteArray nowhere;
    for (const QByteArray &stage : {nowhere, exchangePath, firebasePath}) {
        if (!stage.isEmpty())
            server.replyOnce(stage, {.fault = FaultyServer::Reply::Fault::stall});
        const qsizetype before = server.requests().size();
        const auto service = beginSignIn();
        int returns = 0;
        QObject::connect(service.get(), &AuthService::signInReturned, service.get(), [&] { ++returns; });
        if (!stage.isEmpty()) {
            const qsizetype requests = stage == exchangePath ? 1 : 2;
            browser.openURL(answer());
            ASSERT_TRUE(waitUntil([&] { return server.requests().size() == before + requests; }));
        }
        service->cancelSignIn();
        EXPECT_EQ(service->authErrorMessage(), canceled) << stage.toStdString();
        expectNothingKept(*service);
        EXPECT_FALSE(browser.running);
        EXPECT_FALSE(
            waitUntil([&] { return stored().has_value() || service->isAuthenticating() || returns; }, 30ms));
        EXPECT_EQ(service->authErrorMessage(), canceled);
        service->cancelSignIn();
        await(service->signIn(false));
        EXPECT_NE(service->authErrorMessage(), canceled) << "a cancel without a sign-in says nothing";
    }
}

TEST_F(SignInTest, aNewSignInWorksRightAfterACancelledOne)
{
    server.reply(exchangePath, {.body = googleTokens, .delay = 20ms});
    const auto service = beginSignIn();
    const QString old = answer();
    browser.openURL(old);
    service->cancelSignIn();
    detach(service->signIn(true), "signing in");
    browser.openURL(old); // the page of the first is still open somewhere
    EXPECT_TRUE(service->isAuthenticating());
    browser.openURL(answer());
    ASSERT_TRUE(waitUntilOver(*service));
    EXPECT_TRUE(service->currentUser());
    EXPECT_EQ(service->authErrorMessage(), std::nullopt);
}

TEST_F(SignInTest, signingOutEndsItWhereverItIs)
{
    for (const QByteArray &stage : {QByteArray(), exchangePath, firebasePath}) {
        if (!stage.isEmpty())
            server.replyOnce(stage,
                             {.body = stage == exchangePath ? googleTokens : firebaseSession, .delay = 20ms});
        const qsizetype before = server.requests().size();
        const auto service = beginSignIn();
        if (!stage.isEmpty()) {
            browser.openURL(answer());
            const qsizetype requests = stage == exchangePath ? 1 : 2;
            ASSERT_TRUE(waitUntil([&] { return server.requests().size() >= before + requests; }));
        }
        service->signOut();
        expectNothingKept(*service);
        EXPECT_EQ(service->authErrorMessage(), std::nullopt);
        EXPECT_FALSE(browser.running);
        EXPECT_FALSE(waitUntil(
            [&] { return stored().has_value() || service->authErrorMessage() || service->currentUser(); },
            60ms));
    }
    EXPECT_EQ(browser.cancellations, 1) << "only the open page has to be cancelled";
}

TEST_F(SignInTest, dyingEndsItWhereverItIs)
{
    for (const QByteArray &stage : {QByteArray(), exchangePath, firebasePath}) {
        if (!stage.isEmpty())
            server.replyOnce(
                stage, {.body = stage == exchangePath ? googleTokens : firebaseSession, .delay = 300ms});
        const qsizetype before = server.requests().size();
        auto service = beginSignIn();
        if (!stage.isEmpty()) {
            browser.openURL(answer());
            const qsizetype requests = stage == exchangePath ? 1 : 2;
            ASSERT_TRUE(waitUntil([&] { return server.requests().size() >= before + requests; }));
        }
        service.reset();
        EXPECT_FALSE(browser.running);
        EXPECT_FALSE(waitUntil([&] { return stored().has_value(); }, 400ms));
    }
}

TEST_F(SignInTest, anObserverMaySignOutAtTheMomentOfSuccess)
{
    const auto service = beginSignIn();
    QObject::connect(service.get(), &AuthService::currentUserChanged, service.get(), [&] {
        if (service->currentUser())
            service->signOut();
    });
    browser.openURL(answer());
    ASSERT_TRUE(waitUntilOver(*service));
    expectNothingKept(*service);
    EXPECT_EQ(service->authErrorMessage(), std::nullopt);
}

TEST_F(SignInTest, aRefreshOfTheFormerSessionDoesNotOverwriteTheNewOne)
{
    server.reply(
        "/securetoken.googleapis.com/v1/token",
        {.body = R"({"expires_in":"60","refresh_token":"r2","id_token":"i2","user_id":"u"})", .delay = 80ms});
    store(session(0));
    const auto service = makeService();
    service->start();
    ASSERT_TRUE(waitUntil([&] { return server.requests().size() == 1; }));
    detach(service->signIn(true), "signing in");
    browser.openURL(answer());
    ASSERT_TRUE(waitUntilOver(*service));
    EXPECT_FALSE(waitUntil([&] { return stored()->uid != u"uid-1"; }, 150ms));
    EXPECT_EQ(service->currentUser()->uid, u"uid-1"_s);
    EXPECT_EQ(service->authErrorMessage(), std::nullopt);
}

TEST_F(SignInTest, aSignInReplacesASessionOfAnotherIssuer)
{
    store(session(0));
    defaults.setText(AuthService::issuerKey, u"https://elsewhere.example"_s);
    const auto service = beginSignIn();
    browser.openURL(answer());
    ASSERT_TRUE(waitUntilOver(*service));
    EXPECT_EQ(stored()->uid, u"uid-1"_s);
    EXPECT_EQ(defaults.text(AuthService::issuerKey), CloudEndpoints::local(server.origin()).issuer());
}

TEST_F(SignInTest, theReturnFromTheBrowserIsToldOnceWhateverCameOfIt)
{
    const std::tuple<std::function<void()>, int> rows[] = {
        {[&] { browser.openURL(answer()); }, 1},
        {[&] { browser.openURL(callback(u"error=no&state="_s + stateOfPage())); }, 1},
        {[&] { browser.end({.error = BrowserError(BrowserError::Code::timedOut, u"late"_s)}); }, 1},
        {[&] { browser.end({.error = BrowserError(BrowserError::Code::canceledLogin)}); }, 0},
    };
    for (const auto &[step, expected] : rows) {
        const auto service = beginSignIn();
        int returns = 0;
        QObject::connect(service.get(), &AuthService::signInReturned, service.get(), [&] { ++returns; });
        step();
        ASSERT_TRUE(waitUntilOver(*service));
        EXPECT_EQ(returns, expected);
        service->signOut();
    }
}

// Secrets

TEST_F(SignInTest, noSecretReachesTheLog)
{
    logLines.clear();
    const QtMessageHandler former = qInstallMessageHandler(&keepLine);
    QLoggingCategory::setFilterRules(u"brevix.*=true"_s);
    QString state;
    {
        const auto service = beginSignIn();
        state = stateOfPage();
        browser.openURL(callback(u"code=f0rged&state=guess"_s));
        browser.openURL(answer(u"s3cretcode"_s));
        ASSERT_TRUE(waitUntilOver(*service));
        server.reply("/securetoken.googleapis.com/v1/token", {.status = 500, .body = "busy"});
        now = now.addDays(1);
        tokenOrError(*service);
        server.reply("/securetoken.googleapis.com/v1/token", {.fault = FaultyServer::Reply::Fault::stall});
        detach([](QCoro::Task<QString> task) -> QCoro::Task<> { co_await task; }(askForToken(*service)),
               "asking");
        ASSERT_TRUE(waitUntil([&] { return server.count("token") == 3; }));
        service->signOut();
        server.replyOnce(firebasePath, {.status = 400, .body = "refused"});
        detach(service->signIn(true), "signing in");
        browser.openURL(answer(u"s3cretcode"_s));
        ASSERT_TRUE(waitUntilOver(*service));
    }
    QLoggingCategory::setFilterRules(QString());
    qInstallMessageHandler(former);
    const QString log = logLines.join(u'\n');
    for (const QString &secret :
         {u"s3cretcode"_s, u"f0rged"_s, u"google-access"_s, u"google.id"_s, u"f1"_s, u"fr1"_s, state})
        EXPECT_FALSE(log.contains(secret)) << secret.toStdString() << " in:\n" << log.toStdString();
}
