// SPDX-License-Identifier: GPL-3.0-or-later
#include "AuthService.h"
#include "LibraryStore.h"
#include "Samples.h"
#include "TokenQuestion.h"

#include "Foundation/UserDefaults.h"
#include "LocalCloud/LocalCloud.h"

#include "Support/InMemoryDesktop.h"
#include "Support/Waiting.h"

#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <QUrlQuery>

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace {

AppConfiguration localConfiguration()
{
    AppConfiguration configuration = AppConfiguration::fallback();
    configuration.firebase.apiKey = u"the-key"_s;
    configuration.firebase.projectID = u"demo"_s;
    configuration.firebase.googleAppID = u"app"_s;
    configuration.firebase.clientID = u"the-client"_s;
    configuration.firebase.reversedClientID = u"app.brevix.test"_s;
    configuration.logicalLibraryAppID = u"brevix-app"_s;
    return configuration;
}

/// The whole sign-in against the local cloud over loopback, with the test as the browser.
class LocalCloudSignInTest : public testing::Test
{
protected:
    LocalCloudSignInTest() { startCloud(); }

    void startCloud()
    {
        store.reset();
        auth.reset();
        cloud.reset();
        const AppConfiguration configuration = localConfiguration();
        cloud = std::make_unique<LocalCloud>(
            LocalCloud::Options{.dataFolder = folder.filePath(u"cloud"_s),
                                .projectID = configuration.firebase.projectID,
                                .apiKey = configuration.firebase.apiKey,
                                .libraryAppID = configuration.logicalLibraryAppID,
                                .clientID = configuration.firebase.clientID,
                                .redirectScheme = configuration.firebase.reversedClientID});
        ASSERT_TRUE(cloud->start()) << qPrintable(cloud->errorString());
        cloud->issueLocalSession(); // makes the local user
        const CloudEndpoints endpoints = CloudEndpoints::local(cloud->origin());
        const auto clock = [this] { return QDateTime::currentDateTimeUtc().addSecs(clockError); };
        auth = std::make_unique<AuthService>(configuration, endpoints, http, defaults, browser, clock);
        store = std::make_unique<LibraryStore>(configuration, endpoints, *auth, http, clock);
    }

    /// The page's answer to a request; its address when it leads elsewhere.
    QPair<QString, QByteArray> visit(const QUrl &url, const QByteArray &form = {})
    {
        QNetworkRequest request(url);
        request.setAttribute(QNetworkRequest::RedirectPolicyAttribute, QNetworkRequest::ManualRedirectPolicy);
        request.setHeader(QNetworkRequest::ContentTypeHeader, u"application/x-www-form-urlencoded"_s);
        QNetworkReply *reply = form.isEmpty() ? network.get(request) : network.post(request, form);
        EXPECT_TRUE(waitUntil([&] { return reply->isFinished(); }));
        reply->deleteLater();
        return {QString::fromUtf8(reply->rawHeader("Location")), reply->readAll()};
    }

    /// What the page that the browser shows leads to once @p choice is made.
    QString choose(const QByteArray &choice)
    {
        const QByteArray page = visit(browser.running->url).second;
        static const QRegularExpression hidden(u"name=\"request\" value=\"([^\"]+)\""_s);
        const QString sealed = hidden.match(QString::fromUtf8(page)).captured(1);
        EXPECT_FALSE(sealed.isEmpty()) << page.toStdString();
        const QUrl action = browser.running->url.adjusted(QUrl::RemoveQuery);
        return visit(action, "request=" + QUrl::toPercentEncoding(sealed) + '&' + choice).first;
    }

    bool begin()
    {
        detach(auth->signIn(true), "signing in");
        return browser.running.has_value();
    }

    bool signIn(const QByteArray &choice = "account=local-user")
    {
        if (!begin())
            return false;
        browser.openURL(choose(choice));
        return waitUntil([&] { return !auth->isAuthenticating(); });
    }

    /// Binds the library to the signed-in user and waits for its outcome.
    SyncState sync()
    {
        store->unbind();
        store->bind(auth->currentUser()->uid);
        waitUntil([&] {
            const SyncState::Kind kind = store->syncState().kind;
            return kind == SyncState::Kind::synced || kind == SyncState::Kind::error;
        });
        return store->syncState();
    }

    std::optional<StoredAuthSession> stored() const
    {
        return StoredAuthSession::fromJson(defaults.data(AuthService::storageKey).value_or(QByteArray()));
    }

    /// @p answers must outlive the call.
    static QCoro::Task<> keepToken(AuthService &service, QStringList &answers)
    {
        const QString answer = co_await askForToken(service);
        answers.append(answer);
    }

    QTemporaryDir folder;
    UserDefaults defaults{folder.filePath(u"preferences.plist"_s)};
    HttpClient http;
    QNetworkAccessManager network;
    InMemoryWebAuthenticationSession browser;
    qint64 clockError = 0;
    std::unique_ptr<LocalCloud> cloud;
    std::unique_ptr<AuthService> auth;
    std::unique_ptr<LibraryStore> store;
};

} // namespace

TEST_F(LocalCloudSignInTest, leadsToTheLibrary)
{
    ASSERT_TRUE(signIn());
    ASSERT_TRUE(auth->currentUser()) << qPrintable(auth->authErrorMessage().value_or(QString()));
    EXPECT_EQ(auth->currentUser()->email, u"local@localhost"_s);
    EXPECT_EQ(sync().kind, SyncState::Kind::synced);
    EXPECT_FALSE(store->prompts().isEmpty());
}

TEST_F(LocalCloudSignInTest, signingOutAndInAgainWorks)
{
    ASSERT_TRUE(signIn());
    auth->signOut();
    EXPECT_EQ(auth->currentUser(), std::nullopt);
    ASSERT_TRUE(signIn());
    ASSERT_TRUE(auth->currentUser());
    EXPECT_EQ(sync().kind, SyncState::Kind::synced);
}

TEST_F(LocalCloudSignInTest, aNewAccountGetsALibraryOfItsOwn)
{
    ASSERT_TRUE(signIn("create=1&name=Ada+Example&email=ada%40b.example"));
    ASSERT_TRUE(auth->currentUser()) << qPrintable(auth->authErrorMessage().value_or(QString()));
    EXPECT_EQ(auth->currentUser()->email, u"ada@b.example"_s);
    EXPECT_EQ(auth->currentUser()->displayName, u"Ada Example"_s);
    EXPECT_EQ(sync().kind, SyncState::Kind::synced);
}

TEST_F(LocalCloudSignInTest, aRefusalOnThePageIsShown)
{
    ASSERT_TRUE(signIn("cancel=1"));
    EXPECT_EQ(auth->authErrorMessage(), u"access_denied"_s);
    EXPECT_EQ(auth->currentUser(), std::nullopt);
}

TEST_F(LocalCloudSignInTest, aCodeIsGoodForOneExchangeOfItsOwnAttempt)
{
    ASSERT_TRUE(begin());
    const QString callback = choose("account=local-user");
    auth->cancelSignIn();
    ASSERT_TRUE(begin());
    // Its code in the answer to another attempt, whose verifier it does not belong to.
    QUrl swapped(choose("account=local-user"));
    QUrlQuery query(swapped);
    const QString state = query.queryItemValue(u"state"_s);
    query = QUrlQuery(QUrl(callback));
    query.removeAllQueryItems(u"state"_s);
    query.addQueryItem(u"state"_s, state);
    swapped.setQuery(query);
    browser.openURL(swapped.toString(QUrl::FullyEncoded));
    ASSERT_TRUE(waitUntil([&] { return !auth->isAuthenticating(); }));
    EXPECT_EQ(auth->currentUser(), std::nullopt);
    EXPECT_TRUE(auth->authErrorMessage());
}

TEST_F(LocalCloudSignInTest, anOldSessionIsRefreshedOnceForManyCallersAndTheTokenRotates)
{
    ASSERT_TRUE(signIn());
    const QString firstRefreshToken = stored()->refreshToken;
    clockError = 2 * 3600;
    QStringList answers;
    for (int i = 0; i < 4; ++i)
        detach(keepToken(*auth, answers), "asking for a token");
    ASSERT_TRUE(waitUntil([&] { return answers.size() == 4; }));
    EXPECT_FALSE(answers.first().startsWith(u"error"_s)) << answers.first().toStdString();
    EXPECT_EQ(QSet<QString>(answers.begin(), answers.end()).size(), 1);
    EXPECT_EQ(sync().kind, SyncState::Kind::synced);
    EXPECT_FALSE(stored()->refreshToken.isEmpty());
    EXPECT_NE(stored()->refreshToken, firstRefreshToken);
}

TEST_F(LocalCloudSignInTest, aSessionLastsAcrossARestartOnAnotherPort)
{
    ASSERT_TRUE(signIn());
    const BrevixUserSession user = *auth->currentUser();
    for (const qint64 error : {0, 2 * 3600}) {
        clockError = error;
        startCloud();
        auth->start();
        ASSERT_TRUE(waitUntil([&] { return auth->currentUser() || auth->authErrorMessage(); }));
        EXPECT_EQ(auth->currentUser(), user) << qPrintable(auth->authErrorMessage().value_or(QString()));
        EXPECT_EQ(sync().kind, SyncState::Kind::synced);
    }
}

TEST_F(LocalCloudSignInTest, aSessionOfALostDataFolderIsNamedAndCanBeReplaced)
{
    ASSERT_TRUE(signIn());
    store.reset();
    auth.reset();
    cloud.reset();
    ASSERT_TRUE(QDir(folder.filePath(u"cloud"_s)).removeRecursively());
    startCloud();
    auth->start();
    ASSERT_TRUE(waitUntil([&] { return auth->currentUser().has_value(); }));
    EXPECT_EQ(sync().kind, SyncState::Kind::error);
    clockError = 2 * 3600;
    EXPECT_TRUE(await(askForToken(*auth)).startsWith(u"error: "_s));
    auth->signOut();
    ASSERT_TRUE(signIn());
    EXPECT_EQ(sync().kind, SyncState::Kind::synced);
}
