// SPDX-License-Identifier: GPL-3.0-or-later
#include "LocalCloud/Passwords.h"
#include "LocalCloud/SignInFixture.h"
#include "LocalCloud/SignInThrottle.h"
#include "Support/Waiting.h"

#include <QLoggingCategory>

using namespace Cloud;

namespace {

QStringList logLines;

void keepLine(QtMsgType, const QMessageLogContext &, const QString &message)
{
    logLines.append(message);
}

const QString goodPassword = QStringLiteral("correct horse é");

/// A server that asks for passwords, with one account.
class PasswordSignIn : public SignInFixture
{
protected:
    PasswordSignIn()
    {
        Site site = demoSite();
        site.asksPasswords = true;
        site.publicUrl = QUrl(QStringLiteral("https://library.example.org"));
        service = std::make_unique<Service>(site, databasePath(), signingKey, [this] { return now; });
        withAccounts([](Accounts &accounts) {
            const Account ada = accounts.create(QStringLiteral("Ada"), QStringLiteral("ada@example.org"));
            accounts.setPasswordHash(ada.uid, passwordHash(goodPassword));
        });
    }

    /// As the administrator's program does it, beside the running server.
    void withAccounts(const std::function<void(Accounts &)> &work)
    {
        Database database(databasePath());
        ASSERT_TRUE(database.open());
        Accounts accounts(database, [this] { return now; });
        work(accounts);
    }

    Response logIn(const QByteArray &email, const QString &password)
    {
        const Response response =
            submit(openPage(), "login=1&email=" + email + "&password=" + QUrl::toPercentEncoding(password));
        if (!response.later)
            return response;
        std::optional<Response> answer;
        response.later([&](const Response &given) { answer = given; });
        EXPECT_TRUE(waitUntil([&] { return answer.has_value(); }));
        return answer.value_or(Response());
    }

    static bool isGranted(const Response &response)
    {
        return headerOf(response, "Location").contains("?code=");
    }
};

} // namespace

TEST_F(PasswordSignIn, pageShowsNoAccountsAndTakesNoneWithoutItsPassword)
{
    const Response page = openPage();
    EXPECT_TRUE(page.body.contains("type=\"password\""));
    EXPECT_FALSE(page.body.contains("ada@example.org"));
    EXPECT_FALSE(page.body.contains("New account"));
    for (const QByteArray fields : {"account=local-user", "create=1&name=A&email=a%40b"}) {
        const Response pending = submit(page, fields);
        std::optional<Response> answer;
        ASSERT_TRUE(pending.later) << fields.constData();
        pending.later([&](const Response &given) { answer = given; });
        ASSERT_TRUE(waitUntil([&] { return answer.has_value(); }));
        EXPECT_FALSE(isGranted(*answer)) << fields.constData();
    }
    withAccounts([](Accounts &accounts) { EXPECT_FALSE(accounts.findByEmail(QStringLiteral("a@b"))); });
}

TEST_F(PasswordSignIn, passwordOpensItsAccount)
{
    const Response response = logIn("ADA%40example.org", goodPassword);
    ASSERT_TRUE(isGranted(response)) << response.body.constData();
    const QJsonObject tokens =
        jsonOf(exchange(valueOf(redirectedQuery(response), QStringLiteral("code")).toLatin1()));
    EXPECT_EQ(jsonOf(signInWith(tokens.value(u"id_token").toString())).value(u"displayName").toString(),
              QStringLiteral("Ada"));
}

TEST_F(PasswordSignIn, wrongPasswordAndUnknownAddressLookTheSame)
{
    const Response wrong = logIn("ada%40example.org", QStringLiteral("correct horse e"));
    const Response unknown = logIn("eve%40example.org", goodPassword);
    for (const Response &response : {wrong, unknown}) {
        EXPECT_FALSE(isGranted(response));
        EXPECT_TRUE(response.body.contains("The e-mail address or the password is wrong."));
        EXPECT_FALSE(response.body.contains("correct horse"));
    }
    EXPECT_FALSE(isGranted(logIn("ada%40example.org", {})));
}

TEST_F(PasswordSignIn, guessingIsSlowedDown)
{
    for (int i = 0; i < SignInThrottle::freeTries; ++i)
        EXPECT_FALSE(isGranted(logIn("ada%40example.org", QStringLiteral("guess"))));
    EXPECT_TRUE(logIn("ada%40example.org", goodPassword).body.contains("Please wait a second."));
    now += std::chrono::seconds(1);
    EXPECT_TRUE(isGranted(logIn("ada%40example.org", goodPassword)));
}

TEST_F(PasswordSignIn, guessesAtTheSameTimeAreNoFasterThanOneAfterTheOther)
{
    QList<Response> started;
    int answers = 0;
    for (int i = 0; i < SignInThrottle::freeTries + 3; ++i) {
        const Response response = submit(openPage(), "login=1&email=ada%40example.org&password=guess");
        EXPECT_EQ(bool(response.later), i < SignInThrottle::freeTries) << i;
        if (response.later)
            response.later([&](const Response &) { ++answers; });
        else
            EXPECT_TRUE(response.body.contains("Too many tries."));
    }
    EXPECT_TRUE(waitUntil([&] { return answers == SignInThrottle::freeTries; }, std::chrono::seconds(20)));
}

TEST_F(PasswordSignIn, whatNoAccountCanHaveIsRefusedUnseen)
{
    const struct
    {
        QString email;
        QString password;
        bool isSeen;
    } rows[] = {{QString(254, QLatin1Char('x')), QStringLiteral("p"), true},
                {QString(255, QLatin1Char('x')), QStringLiteral("p"), false},
                {QString(5'000'000, QLatin1Char('x')), QStringLiteral("p"), false},
                {QStringLiteral("ada@example.org"), QString(200, QLatin1Char('p')), true},
                {QStringLiteral("ada@example.org"), QString(201, QLatin1Char('p')), false}};
    for (const auto &[email, password, isSeen] : rows) {
        const Response response = submit(openPage(), "login=1&email=" + QUrl::toPercentEncoding(email) +
                                                         "&password=" + password.toLatin1());
        EXPECT_EQ(bool(response.later), isSeen) << email.size() << ' ' << password.size();
        if (!response.later) {
            EXPECT_TRUE(response.body.contains("The e-mail address or the password is wrong."));
            EXPECT_LT(response.body.size(), 20'000) << "it is not sent back whole";
        }
    }
}

TEST_F(PasswordSignIn, newPasswordEndsTheSessionsAndRemovalDeletesTheLibrary)
{
    const QJsonObject tokens = jsonOf(
        exchange(valueOf(redirectedQuery(logIn("ada%40example.org", goodPassword)), QStringLiteral("code"))
                     .toLatin1()));
    const QJsonObject user = jsonOf(signInWith(tokens.value(u"id_token").toString()));
    const QByteArray uid = user.value(u"localId").toString().toLatin1();
    Request note = getWithoutToken(documentsPath("artifacts/brevix-app/users/" + uid + "/notes/n"));
    note.method = "PATCH";
    note.headers.emplaceBack("authorization", "Bearer " + user.value(u"idToken").toString().toLatin1());
    EXPECT_EQ(status(note), 200);
    withAccounts([&](Accounts &accounts) {
        accounts.setPasswordHash(QString::fromLatin1(uid), passwordHash(QStringLiteral("another password")));
    });
    EXPECT_EQ(status(refreshRequest(user.value(u"refreshToken").toString().toLatin1())), 400);
    withAccounts(
        [&](Accounts &accounts) { accounts.remove(QString::fromLatin1(uid), QStringLiteral("brevix-app")); });
    note.method = "GET";
    EXPECT_EQ(status(note), 404);
    EXPECT_FALSE(isGranted(logIn("ada%40example.org", QStringLiteral("another password"))));
}

TEST_F(PasswordSignIn, noSecretReachesTheLog)
{
    logLines.clear();
    const auto former = qInstallMessageHandler(keepLine);
    QLoggingCategory::setFilterRules(QStringLiteral("brevix.*=true"));
    const QString wrongPassword = QStringLiteral("wrong-password");
    logIn("ada%40example.org", wrongPassword);
    const QString code =
        valueOf(redirectedQuery(logIn("ada%40example.org", goodPassword)), QStringLiteral("code"));
    const QString providerToken = jsonOf(exchange(code.toLatin1())).value(u"id_token").toString();
    exchange(code.toLatin1()); // a second time
    const QJsonObject user = jsonOf(signInWith(providerToken));
    signInWith(providerToken + u'x');
    const QString refreshToken = user.value(u"refreshToken").toString();
    const QString renewed =
        jsonOf(service->handle(refreshRequest(refreshToken.toLatin1()))).value(u"refresh_token").toString();
    now += std::chrono::hours(1);
    service->handle(refreshRequest(refreshToken.toLatin1())); // taken for stolen
    QLoggingCategory::setFilterRules(QString());
    qInstallMessageHandler(former);
    for (const QString &secret : {goodPassword, wrongPassword, code, providerToken,
                                  user.value(u"idToken").toString(), refreshToken, renewed}) {
        ASSERT_FALSE(secret.isEmpty());
        EXPECT_FALSE(logLines.join(u'\n').contains(secret)) << qPrintable(secret);
    }
}

TEST_F(PasswordSignIn, publicNameIsServedToo)
{
    Request request = getWithoutToken("/o/oauth2/v2/auth");
    request.headers = {{"host", "library.example.org"}, {"origin", "https://library.example.org"}};
    EXPECT_EQ(status(request), 400) << "a page, not a refusal of the host";
    EXPECT_EQ(service->handle(request).contentType, "text/html; charset=UTF-8");
    request.headers = {{"host", "library.example.org"}, {"origin", "http://library.example.org"}};
    EXPECT_EQ(status(request), 403);
}

TEST(Passwords, tooShortOnesAreRefused)
{
    EXPECT_FALSE(passwordProblem(QStringLiteral("123456789")).isEmpty());
    EXPECT_TRUE(passwordProblem(QStringLiteral("1234567890")).isEmpty());
    EXPECT_FALSE(passwordProblem(QString(201, u'x')).isEmpty());
}

TEST(Passwords, hashesAreSaltedAndSlow)
{
    const QByteArray hash = passwordHash(goodPassword);
    EXPECT_TRUE(hash.startsWith("$argon2id$"));
    EXPECT_NE(hash, passwordHash(goodPassword));
}

TEST(SignInThrottleTest, waitDoublesUpToItsBound)
{
    Timestamp now = Timestamp(std::chrono::seconds(1000));
    SignInThrottle throttle([&] { return now; });
    const QString email = QStringLiteral("a@b");
    for (int i = 0; i < SignInThrottle::freeTries - 1; ++i)
        throttle.tried(email);
    EXPECT_EQ(throttle.waitFor(email).count(), 0);
    for (const int expected : {1, 2, 4, 8, 16, 32, 60, 60, 60}) {
        throttle.tried(email);
        EXPECT_EQ(throttle.waitFor(QStringLiteral("A@b")).count(), expected);
    }
    EXPECT_EQ(throttle.waitFor(QStringLiteral("other@b")).count(), 0);
    throttle.succeeded(email);
    EXPECT_EQ(throttle.waitFor(email).count(), 0);
}

TEST(SignInThrottleTest, remembersAsManyAddressesAsItHasRoomFor)
{
    Timestamp now = Timestamp(std::chrono::seconds(1000));
    SignInThrottle throttle([&] { return now; });
    const QString email = QStringLiteral("ada@example.org");
    for (int i = 0; i < SignInThrottle::freeTries + 5; ++i)
        throttle.tried(email);
    for (int i = 0; i < SignInThrottle::maximumEntries + 500; ++i) {
        now += std::chrono::microseconds(1);
        throttle.tried(QString::number(i));
        if (i % 1000 == 0)
            throttle.tried(email); // is guessed at all the time
    }
    EXPECT_EQ(throttle.entries(), SignInThrottle::maximumEntries);
    EXPECT_GT(throttle.waitFor(email).count(), 0) << "many other addresses do not make it forgotten";
    now += std::chrono::minutes(16);
    throttle.tried(QStringLiteral("b"));
    EXPECT_EQ(throttle.entries(), 1);
}
