// SPDX-License-Identifier: GPL-3.0-or-later
#include "LocalCloud/SignInFixture.h"

using namespace Cloud;

namespace {

class TokenExchangeTest : public SignInFixture
{
protected:
    static QString error(const Response &response)
    {
        EXPECT_EQ(response.status, 400);
        return jsonOf(response).value(u"error").toString();
    }
};

class IdentityToolkitTest : public SignInFixture
{
protected:
    static QString message(const Response &response)
    {
        EXPECT_EQ(response.status, 400);
        EXPECT_FALSE(errorOf(response).contains(u"status"));
        return errorOf(response).value(u"message").toString();
    }
};

} // namespace

TEST_F(TokenExchangeTest, codeBecomesTokens)
{
    const Response response = exchange(freshCode());
    ASSERT_EQ(response.status, 200) << response.body.constData();
    const QJsonObject tokens = jsonOf(response);
    EXPECT_EQ(tokens.value(u"id_token").toString().split(u'.').size(), 3);
    EXPECT_FALSE(tokens.value(u"access_token").toString().isEmpty());
    EXPECT_EQ(tokens.value(u"expires_in").toInt(), 3600);
    EXPECT_EQ(tokens.value(u"token_type").toString(), QStringLiteral("Bearer"));
}

TEST_F(TokenExchangeTest, whatDoesNotBelongToTheCodeIsRefused)
{
    struct Row
    {
        QString name, value, error;
    };
    const QString badGrant = QStringLiteral("invalid_grant");
    const QString verifierName = QStringLiteral("code_verifier");
    const QList<Row> rows{
        {verifierName, QStringLiteral("E9Melhoa2OwvFrEMTJguCHaoeK1t8URWbuGJSstw-cM"), badGrant},
        {verifierName, QString(), badGrant},
        {verifierName, QString::fromLatin1(verifier).left(42), badGrant},
        {verifierName, QString(129, u'a'), badGrant},
        {verifierName, QString::fromLatin1(verifier) + u' ', badGrant},
        {QStringLiteral("redirect_uri"), QStringLiteral("http://127.0.0.1:80/"), badGrant},
        {QStringLiteral("code"), QStringLiteral("nonsense"), badGrant},
        {QStringLiteral("code"), QString(), badGrant},
        {QStringLiteral("client_id"), QStringLiteral("other"), QStringLiteral("invalid_client")},
        {QStringLiteral("grant_type"), QStringLiteral("password"), QStringLiteral("unsupported_grant_type")},
    };
    for (const Row &row : rows)
        EXPECT_EQ(error(exchange(freshCode(), {{row.name, row.value}})), row.error) << qPrintable(row.name);
}

TEST_F(TokenExchangeTest, codeIsGoodForOneTryOnly)
{
    QByteArray code = freshCode();
    EXPECT_EQ(exchange(code).status, 200);
    EXPECT_EQ(error(exchange(code)), QStringLiteral("invalid_grant"));

    code = freshCode();
    EXPECT_EQ(exchange(code, {{QStringLiteral("code_verifier"), QString(43, u'a')}}).status, 400);
    EXPECT_EQ(error(exchange(code)), QStringLiteral("invalid_grant")) << "after a wrong verifier";
}

TEST_F(TokenExchangeTest, codeLivesAMinute)
{
    QByteArray code = freshCode();
    now += std::chrono::seconds(59);
    EXPECT_EQ(exchange(code).status, 200);
    code = freshCode();
    now += std::chrono::seconds(60);
    EXPECT_EQ(error(exchange(code)), QStringLiteral("invalid_grant"));
}

TEST_F(IdentityToolkitTest, providerTokenBecomesASession)
{
    const Response response = signInWith(providerToken());
    ASSERT_EQ(response.status, 200) << response.body.constData();
    const QJsonObject signedIn = jsonOf(response);
    EXPECT_EQ(signedIn.value(u"localId").toString(), QStringLiteral("local-user"));
    EXPECT_EQ(signedIn.value(u"email").toString(), QStringLiteral("local@localhost"));
    EXPECT_EQ(signedIn.value(u"displayName").toString(), QStringLiteral("Local Library"));
    EXPECT_EQ(signedIn.value(u"expiresIn").toString(), QStringLiteral("3600"));
    session.idToken = signedIn.value(u"idToken").toString().toLatin1();
    EXPECT_EQ(status(get(libraryPath("prompts"))), 200);
    EXPECT_EQ(status(refreshRequest(signedIn.value(u"refreshToken").toString().toLatin1())), 200);
}

TEST_F(IdentityToolkitTest, eachSignInIsASessionOfItsOwn)
{
    const QByteArray first = jsonOf(signInWith(providerToken())).value(u"refreshToken").toString().toLatin1();
    signInWith(providerToken());
    EXPECT_EQ(status(refreshRequest(first)), 200);
    EXPECT_EQ(status(refreshRequest(session.refreshToken)), 200) << "of the local session";
}

TEST_F(IdentityToolkitTest, emulatorsAddressIsTheSame)
{
    const QString idToken = jsonOf(signInWith(providerToken())).value(u"idToken").toString();
    const Response response =
        identityToolkit("lookup", {{QStringLiteral("idToken"), idToken}}, "/identitytoolkit.googleapis.com");
    ASSERT_EQ(response.status, 200) << response.body.constData();
    const QJsonArray users = jsonOf(response).value(u"users").toArray();
    ASSERT_EQ(users.size(), 1);
    EXPECT_EQ(users[0].toObject().value(u"localId").toString(), QStringLiteral("local-user"));
    EXPECT_EQ(users[0].toObject().value(u"lastLoginAt").toString(), QStringLiteral("1800000000000"));
}

TEST_F(IdentityToolkitTest, tokensOfTheWrongKindOpenNothing)
{
    const QString provider = providerToken();
    EXPECT_EQ(message(signInWith(QString::fromLatin1(session.idToken))),
              QStringLiteral("INVALID_IDP_RESPONSE"));
    EXPECT_EQ(message(identityToolkit("lookup", {{QStringLiteral("idToken"), provider}})),
              QStringLiteral("INVALID_ID_TOKEN"));
    session.idToken = provider.toLatin1();
    EXPECT_EQ(status(get(libraryPath("prompts"))), 401);
    EXPECT_EQ(message(signInWith(QStringLiteral("{\"sub\":\"local-user\"}"))),
              QStringLiteral("INVALID_IDP_RESPONSE"));
    now += IdTokens::lifetime;
    EXPECT_EQ(message(signInWith(provider)), QStringLiteral("INVALID_IDP_RESPONSE")) << "an hour later";
}

TEST_F(IdentityToolkitTest, requestsThatCannotBeServedAreRefused)
{
    const auto signIn = [&](const QByteArray &postBody,
                            const QString &uri = QStringLiteral("http://localhost")) {
        return identityToolkit("signInWithIdp", {{QStringLiteral("postBody"), QString::fromLatin1(postBody)},
                                                 {QStringLiteral("requestUri"), uri}});
    };
    EXPECT_EQ(message(signIn("id_token=x&providerId=facebook.com")), QStringLiteral("OPERATION_NOT_ALLOWED"));
    EXPECT_EQ(message(signIn("id_token=x")), QStringLiteral("INVALID_CREDENTIAL_OR_PROVIDER_ID"));
    EXPECT_EQ(message(signIn("access_token=x&providerId=google.com")),
              QStringLiteral("INVALID_IDP_RESPONSE"));
    EXPECT_EQ(message(signIn("id_token=x&providerId=google.com", {})), QStringLiteral("INVALID_REQUEST_URI"));
    EXPECT_EQ(identityToolkit("signInWithIdp", {{QStringLiteral("idToken"), QStringLiteral("x")}}).status,
              501);
    for (const QByteArray operation : {"signUp", "update", "delete", "signInWithPassword", ""})
        EXPECT_EQ(identityToolkit(operation, {}).status, 501) << operation.constData();

    Request request = formPost("/v1/accounts:lookup", "not json");
    EXPECT_TRUE(message(service->handle(request)).startsWith(QStringLiteral("API key not valid")));
    request.query = "key=the-key";
    EXPECT_EQ(message(service->handle(request)), QStringLiteral("INVALID_JSON_PAYLOAD"));
    request.method = "GET";
    EXPECT_EQ(status(request), 404);
}
