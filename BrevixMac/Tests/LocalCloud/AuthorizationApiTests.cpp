// SPDX-License-Identifier: GPL-3.0-or-later
#include "LocalCloud/SignInFixture.h"

using namespace Cloud;

namespace {

class AuthorizationTest : public SignInFixture
{
protected:
    static QUrlQuery with(const QString &name, const QString &value)
    {
        QUrlQuery query = goodQuery();
        query.removeQueryItem(name);
        if (!value.isNull())
            query.addQueryItem(name, QString::fromLatin1(QUrl::toPercentEncoding(value)));
        return query;
    }

    static bool redirects(const Response &response) { return !headerOf(response, "Location").isEmpty(); }
};

} // namespace

TEST_F(AuthorizationTest, pageListsTheAccountsAndRunsNoScript)
{
    const Response page = openPage();
    EXPECT_EQ(page.status, 200);
    EXPECT_EQ(page.contentType, "text/html; charset=UTF-8");
    EXPECT_TRUE(page.body.contains("value=\"local-user\""));
    EXPECT_TRUE(page.body.contains("local@localhost"));
    EXPECT_FALSE(page.body.contains("<script"));
    const QByteArray policy = headerOf(page, "Content-Security-Policy");
    EXPECT_TRUE(policy.startsWith("default-src 'none'; style-src 'sha256-")) << policy.constData();
    EXPECT_TRUE(policy.contains("form-action 'self' app.brevix.test:;"));
    EXPECT_TRUE(policy.contains("frame-ancestors 'none'"));
    EXPECT_FALSE(policy.contains("unsafe"));
    EXPECT_FALSE(policy.contains("script-src"));
}

TEST_F(AuthorizationTest, choosingAnAccountLeadsBackWithACodeAndTheState)
{
    const Response response = submit(openPage(), "account=local-user");
    EXPECT_EQ(response.status, 303);
    EXPECT_TRUE(headerOf(response, "Location").startsWith("app.brevix.test:/oauthredirect?code="));
    EXPECT_EQ(valueOf(redirectedQuery(response), QStringLiteral("state")), QStringLiteral("st~at-e"));
    EXPECT_EQ(valueOf(redirectedQuery(response), QStringLiteral("code")).size(), 43);
}

TEST_F(AuthorizationTest, stateComesBackCharacterByCharacter)
{
    const QString state = QStringLiteral("a&b=c+d e%20#?/ü😀\"<");
    const Response response = submit(openPage(with(QStringLiteral("state"), state)), "account=local-user");
    EXPECT_EQ(valueOf(redirectedQuery(response), QStringLiteral("state")), state);
}

TEST_F(AuthorizationTest, cancelIsAnsweredToTheProgram)
{
    const Response response = submit(openPage(), "cancel=1");
    EXPECT_EQ(headerOf(response, "Location"),
              "app.brevix.test:/oauthredirect?error=access_denied&state=st~at-e");
}

TEST_F(AuthorizationTest, unknownClientsAndAddressesGetAPageAndNoRedirect)
{
    for (const QString &uri :
         {QStringLiteral("https://evil.example/"), QStringLiteral("app.brevix.test:/other"),
          QStringLiteral("app.brevix.test://oauthredirect"),
          QStringLiteral("app.brevix.test:/oauthredirect?x=1"), QStringLiteral("app.evil:/oauthredirect"),
          QStringLiteral("http://evil.example:80/"), QStringLiteral("http://127.0.0.1.evil.example:80/"),
          QStringLiteral("http://127.0.0.1/"), QStringLiteral("http://u@127.0.0.1:80/"),
          QStringLiteral("http://127.0.0.1:80/#f"), QStringLiteral("http://127.0.0.1:80/?q"),
          QStringLiteral("https://127.0.0.1:80/"), QStringLiteral("http://127.0.0.1:80/\r\nX: y"),
          QStringLiteral("javascript:alert(1)"), QString(), QStringLiteral("")}) {
        const Response response = openPage(with(QStringLiteral("redirect_uri"), uri));
        EXPECT_EQ(response.status, 400) << qPrintable(uri);
        EXPECT_FALSE(redirects(response)) << qPrintable(uri);
        EXPECT_EQ(response.contentType, "text/html; charset=UTF-8");
    }
    EXPECT_EQ(openPage(with(QStringLiteral("client_id"), QStringLiteral("other"))).status, 400);
    EXPECT_EQ(openPage(with(QStringLiteral("client_id"), {})).status, 400);
    QUrlQuery twice = goodQuery();
    twice.addQueryItem(QStringLiteral("redirect_uri"), QStringLiteral("app.brevix.test:/oauthredirect"));
    EXPECT_EQ(openPage(twice).status, 400);
}

TEST_F(AuthorizationTest, loopbackAddressesAreAccepted)
{
    for (const QString &uri :
         {QStringLiteral("http://127.0.0.1:8123/"), QStringLiteral("http://[::1]:8123/back"),
          QStringLiteral("http://localhost:8123")}) {
        const Response page = openPage(with(QStringLiteral("redirect_uri"), uri));
        ASSERT_EQ(page.status, 200) << qPrintable(uri);
        EXPECT_TRUE(headerOf(page, "Content-Security-Policy").contains("form-action 'self' http://"));
        EXPECT_TRUE(headerOf(submit(page, "account=local-user"), "Location")
                        .startsWith(QByteArray(uri.toLatin1() + "?code=")));
    }
}

TEST_F(AuthorizationTest, requestsThatCannotBeServedAreAnsweredToTheProgram)
{
    struct Row
    {
        QString name, value;
        QByteArray error;
    };
    const QList<Row> rows{
        {QStringLiteral("response_type"), QStringLiteral("token"), "unsupported_response_type"},
        {QStringLiteral("response_type"), {}, "unsupported_response_type"},
        {QStringLiteral("code_challenge_method"), QStringLiteral("plain"), "invalid_request"},
        {QStringLiteral("code_challenge_method"), {}, "invalid_request"},
        {QStringLiteral("code_challenge"), {}, "invalid_request"},
        {QStringLiteral("code_challenge"), QStringLiteral("short"), "invalid_request"},
        {QStringLiteral("code_challenge"), QString(43, u'='), "invalid_request"},
        {QStringLiteral("state"), QString(2001, u's'), "invalid_request"},
        {QStringLiteral("scope"), QStringLiteral("email"), "invalid_scope"},
        {QStringLiteral("prompt"), QStringLiteral("none"), "interaction_required"},
    };
    for (const Row &row : rows) {
        const Response response = openPage(with(row.name, row.value));
        EXPECT_EQ(response.status, 303) << qPrintable(row.name);
        EXPECT_TRUE(headerOf(response, "Location")
                        .startsWith(QByteArray(redirectUri + "?error=" + row.error + "&state=")))
            << headerOf(response, "Location").constData();
    }
}

TEST_F(AuthorizationTest, formsThatThisServerHasNotWrittenAreRefused)
{
    const Response page = openPage();
    for (const QByteArray body :
         {"account=local-user", "request=&account=local-user", "request=abc.def&account=local-user", "",
          "request=a.b.c&account=local-user"}) {
        const Response response = service->handle(formPost("/o/oauth2/v2/auth", body));
        EXPECT_EQ(response.status, 400) << body.constData();
        EXPECT_FALSE(redirects(response));
    }
    now += AuthorizationForms::lifetime;
    EXPECT_FALSE(redirects(submit(page, "account=local-user"))) << "ten minutes later";
}

TEST_F(AuthorizationTest, formSentByAnotherSitesPageIsRefused)
{
    const Response page = openPage();
    const QByteArray fields = page.body.mid(page.body.indexOf("value=\"") + 7);
    Request request =
        formPost("/o/oauth2/v2/auth", "account=local-user&request=" + fields.left(fields.indexOf('"')));
    EXPECT_TRUE(redirects(service->handle(request)));
    request.headers.emplaceBack("sec-fetch-site", "cross-site");
    EXPECT_FALSE(redirects(service->handle(request)));
}

TEST_F(AuthorizationTest, newAccountIsMadeSignedInAndGivenTheStarterLibrary)
{
    const Response response = submit(openPage(), "create=1&name=%20Ada++Lovelace&email=ada%40example.org");
    ASSERT_TRUE(redirects(response)) << response.body.constData();
    const Response tokens = exchange(valueOf(redirectedQuery(response), QStringLiteral("code")).toLatin1());
    const QJsonObject user = jsonOf(signInWith(jsonOf(tokens).value(u"id_token").toString()));
    EXPECT_EQ(user.value(u"email").toString(), QStringLiteral("ada@example.org"));
    EXPECT_EQ(user.value(u"displayName").toString(), QStringLiteral("Ada Lovelace"));
    const QByteArray uid = user.value(u"localId").toString().toLatin1();
    EXPECT_EQ(uid.size(), 28);
    Request list = getWithoutToken(documentsPath("artifacts/brevix-app/users/" + uid + "/categories"));
    list.headers.emplaceBack("authorization", "Bearer " + user.value(u"idToken").toString().toLatin1());
    EXPECT_EQ(answer(list).value(u"documents").toArray().size(), 5);
    EXPECT_TRUE(openPage().body.contains("Ada Lovelace"));
}

TEST_F(AuthorizationTest, accountsThatCannotBeAreRefusedWithTheirFieldsKept)
{
    for (const QByteArray fields : {"name=&email=a%40b", "name=A&email=", "name=A&email=nothing",
                                    "name=A&email=%40b", "name=A&email=a%40", "name=A&email=a%20b%40c",
                                    "name=A%00B&email=a%40b", "name=Other&email=LOCAL%40localhost"}) {
        const Response response = submit(openPage(), "create=1&" + fields);
        EXPECT_FALSE(redirects(response)) << fields.constData();
        EXPECT_TRUE(response.body.contains("role=\"alert\"")) << fields.constData();
    }
    const Response long_ = submit(openPage(), "create=1&name=" + QByteArray(101, 'n') + "&email=a%40b");
    EXPECT_TRUE(long_.body.contains(QByteArray(101, 'n')));
    EXPECT_FALSE(redirects(long_));
}

TEST_F(AuthorizationTest, whatPeopleTypeIsEscaped)
{
    const QByteArray hostile = "%22%3E%3Cscript%3Ealert(1)%3C%2Fscript%3E%251";
    Response response = submit(openPage(), "create=1&name=" + hostile + "&email=x");
    EXPECT_FALSE(response.body.contains("<script"));
    EXPECT_TRUE(response.body.contains("&quot;&gt;&lt;script&gt;"));
    submit(openPage(), "create=1&name=" + hostile + "&email=" + hostile + "%40e");
    response = openPage();
    EXPECT_FALSE(response.body.contains("<script"));
    EXPECT_TRUE(response.body.contains("&lt;script&gt;"));
}

TEST_F(AuthorizationTest, accountThatIsGoneIsReported)
{
    const Response response = submit(openPage(), "account=nobody");
    EXPECT_FALSE(redirects(response));
    EXPECT_TRUE(response.body.contains("does not exist any more"));
}

TEST_F(AuthorizationTest, otherMethodsAreNotDone)
{
    Request request = getWithoutToken("/o/oauth2/v2/auth");
    for (const QByteArray method : {"PUT", "DELETE", "PATCH"}) {
        request.method = method;
        EXPECT_EQ(status(request), 501);
    }
}
