// SPDX-License-Identifier: GPL-3.0-or-later
#include "LocalCloud/SignInFixture.h"

#include <QRegularExpression>

using namespace Cloud;

// The pair of RFC 7636, appendix B.
const QByteArray SignInFixture::verifier = "dBjftJeZ4CVP-mB92K27uhbUJU1p1r_wW1gFWFOEjXk";
const QByteArray SignInFixture::redirectUri = "app.brevix.test:/oauthredirect";

QUrlQuery SignInFixture::goodQuery()
{
    QUrlQuery query;
    query.addQueryItem(QStringLiteral("client_id"), QStringLiteral("the-client"));
    query.addQueryItem(QStringLiteral("redirect_uri"), QString::fromLatin1(redirectUri));
    query.addQueryItem(QStringLiteral("response_type"), QStringLiteral("code"));
    query.addQueryItem(QStringLiteral("scope"), QStringLiteral("openid email profile"));
    query.addQueryItem(QStringLiteral("state"), QStringLiteral("st~at-e"));
    query.addQueryItem(QStringLiteral("code_challenge"),
                       QStringLiteral("E9Melhoa2OwvFrEMTJguCHaoeK1t8URWbuGJSstw-cM"));
    query.addQueryItem(QStringLiteral("code_challenge_method"), QStringLiteral("S256"));
    query.addQueryItem(QStringLiteral("include_granted_scopes"), QStringLiteral("true"));
    query.addQueryItem(QStringLiteral("prompt"), QStringLiteral("select_account"));
    return query;
}

Response SignInFixture::openPage(const QUrlQuery &query) const
{
    return service->handle(
        getWithoutToken("/o/oauth2/v2/auth", query.toString(QUrl::FullyEncoded).toLatin1()));
}

Response SignInFixture::submit(const Response &page, const QByteArray &fields) const
{
    static const QRegularExpression hidden(QStringLiteral("name=\"request\" value=\"([^\"]*)\""));
    const QString sealed = hidden.match(QString::fromUtf8(page.body)).captured(1);
    return service->handle(formPost("/o/oauth2/v2/auth", "request=" + sealed.toLatin1() + '&' + fields));
}

QByteArray SignInFixture::freshCode() const
{
    const Response response = submit(openPage(), "account=local-user");
    EXPECT_EQ(response.status, 303);
    return valueOf(redirectedQuery(response), QStringLiteral("code")).toLatin1();
}

Response SignInFixture::exchange(const QByteArray &code, const QMap<QString, QString> &replaced) const
{
    QMap<QString, QString> fields{{QStringLiteral("grant_type"), QStringLiteral("authorization_code")},
                                  {QStringLiteral("client_id"), QStringLiteral("the-client")},
                                  {QStringLiteral("code"), QString::fromLatin1(code)},
                                  {QStringLiteral("code_verifier"), QString::fromLatin1(verifier)},
                                  {QStringLiteral("redirect_uri"), QString::fromLatin1(redirectUri)}};
    fields.insert(replaced);
    QByteArray body;
    for (auto field = fields.cbegin(); field != fields.cend(); ++field)
        body += '&' + field.key().toLatin1() + '=' + QUrl::toPercentEncoding(field.value());
    return service->handle(formPost("/token", body.sliced(1)));
}

QString SignInFixture::providerToken(const QString &uid) const
{
    const Response response = exchange(
        valueOf(redirectedQuery(submit(openPage(), "account=" + uid.toLatin1())), QStringLiteral("code"))
            .toLatin1());
    return jsonOf(response).value(u"id_token").toString();
}

Response SignInFixture::identityToolkit(const QByteArray &operation, const QJsonObject &body,
                                        const QByteArray &prefix) const
{
    Request request = formPost(prefix + "/v1/accounts:" + operation, QJsonDocument(body).toJson());
    request.query = "key=the-key";
    return service->handle(request);
}

Response SignInFixture::signInWith(const QString &idToken) const
{
    return identityToolkit(
        "signInWithIdp",
        {{QStringLiteral("postBody"), QStringLiteral("id_token=%1&providerId=google.com").arg(idToken)},
         {QStringLiteral("requestUri"), QStringLiteral("http://localhost")},
         {QStringLiteral("returnIdpCredential"), true},
         {QStringLiteral("returnSecureToken"), true}});
}

QUrlQuery redirectedQuery(const Response &response)
{
    return QUrlQuery(QUrl(QString::fromLatin1(headerOf(response, "Location"))));
}

QByteArray headerOf(const Response &response, const QByteArray &name)
{
    for (const auto &[header, value] : response.headers)
        if (header == name)
            return value;
    return {};
}

QString valueOf(const QUrlQuery &query, const QString &name)
{
    return query.queryItemValue(name, QUrl::FullyDecoded);
}
