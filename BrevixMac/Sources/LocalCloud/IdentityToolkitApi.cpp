// SPDX-License-Identifier: GPL-3.0-or-later
#include "IdentityToolkitApi.h"

#include "Accounts.h"
#include "Answers.h"
#include "Form.h"
#include "IdTokens.h"
#include "SecureRandom.h"

#include <QJsonArray>
#include <QJsonDocument>

#include <utility>

namespace Cloud {

namespace {

const QString googleProvider = QStringLiteral("google.com");

/// Fields of a sign-in that would make it something else: linking an account, a second factor, a tenant.
const QStringList otherSignIns{QStringLiteral("idToken"), QStringLiteral("pendingToken"),
                               QStringLiteral("tenantId"), QStringLiteral("mfaPendingCredential")};

/// The error shape of this interface, which carries no "status".
Response failure(const char *message)
{
    const QString text = QLatin1String(message);
    const QJsonObject detail{{QStringLiteral("message"), text},
                             {QStringLiteral("domain"), QStringLiteral("global")},
                             {QStringLiteral("reason"), QStringLiteral("invalid")}};
    const QJsonObject error{{QStringLiteral("code"), 400},
                            {QStringLiteral("message"), text},
                            {QStringLiteral("errors"), QJsonArray{detail}}};
    Response response = jsonAnswer({{QStringLiteral("error"), error}});
    response.status = 400;
    return response;
}

QString federatedID(const Account &account)
{
    return QStringLiteral("https://accounts.google.com/") + account.uid;
}

QString millis(Timestamp time)
{
    return QString::number(std::chrono::floor<std::chrono::milliseconds>(time).time_since_epoch().count());
}

QString profileOf(const Account &account)
{
    const QJsonObject profile{{QStringLiteral("sub"), account.uid},
                              {QStringLiteral("email"), account.email},
                              {QStringLiteral("name"), account.displayName}};
    return QString::fromUtf8(QJsonDocument(profile).toJson(QJsonDocument::Compact));
}

QJsonObject userRecord(const Account &account)
{
    const QJsonObject provider{{QStringLiteral("providerId"), googleProvider},
                               {QStringLiteral("rawId"), account.uid},
                               {QStringLiteral("federatedId"), federatedID(account)},
                               {QStringLiteral("email"), account.email},
                               {QStringLiteral("displayName"), account.displayName}};
    return {{QStringLiteral("localId"), account.uid},
            {QStringLiteral("email"), account.email},
            {QStringLiteral("displayName"), account.displayName},
            {QStringLiteral("emailVerified"), true},
            {QStringLiteral("providerUserInfo"), QJsonArray{provider}},
            {QStringLiteral("createdAt"), millis(account.createdAt)},
            {QStringLiteral("lastLoginAt"), millis(account.lastSignInAt)},
            {QStringLiteral("validSince"),
             QString::number(
                 std::chrono::floor<std::chrono::seconds>(account.createdAt).time_since_epoch().count())}};
}

} // namespace

IdentityToolkitApi::IdentityToolkitApi(Accounts &accounts, const IdTokens &idTokens,
                                       const IdTokens &providerTokens, QString apiKey)
    : m_accounts(accounts)
    , m_idTokens(idTokens)
    , m_providerTokens(providerTokens)
    , m_apiKey(std::move(apiKey))
{
}

Response IdentityToolkitApi::handle(const QString &operation, const Request &request)
{
    const QString key = formValue(parseForm(request.query), QStringLiteral("key"));
    if (!equalInConstantTime(key.toUtf8(), m_apiKey.toUtf8()))
        return failure("API key not valid. Please pass a valid API key.");
    const bool isSignIn = operation == QLatin1String("signInWithIdp");
    if (!isSignIn && operation != QLatin1String("lookup"))
        return unimplemented();
    const QJsonDocument body = QJsonDocument::fromJson(request.body);
    if (!body.isObject())
        return failure("INVALID_JSON_PAYLOAD");
    return isSignIn ? signInWithIdp(body.object()) : lookup(body.object());
}

Response IdentityToolkitApi::signInWithIdp(const QJsonObject &body)
{
    for (const QString &field : otherSignIns)
        if (!body.value(field).toString().isEmpty())
            return unimplemented();
    if (body.value(u"requestUri").toString().isEmpty())
        return failure("INVALID_REQUEST_URI");
    const QUrlQuery credential = parseForm(body.value(u"postBody").toString().toUtf8());
    const QString provider = formValue(credential, QStringLiteral("providerId"));
    if (provider != googleProvider)
        return failure(provider.isEmpty() ? "INVALID_CREDENTIAL_OR_PROVIDER_ID" : "OPERATION_NOT_ALLOWED");
    const QByteArray providerToken = formValue(credential, QStringLiteral("id_token")).toUtf8();
    const auto uid = m_providerTokens.userOf(providerToken);
    const auto account = uid ? m_accounts.find(*uid) : std::nullopt;
    if (!account)
        return failure("INVALID_IDP_RESPONSE");
    const QByteArray refreshToken = m_accounts.signIn(*account);
    QJsonObject answer{{QStringLiteral("kind"), QStringLiteral("identitytoolkit#VerifyAssertionResponse")},
                       {QStringLiteral("providerId"), googleProvider},
                       {QStringLiteral("federatedId"), federatedID(*account)},
                       {QStringLiteral("localId"), account->uid},
                       {QStringLiteral("email"), account->email},
                       {QStringLiteral("emailVerified"), true},
                       {QStringLiteral("displayName"), account->displayName},
                       {QStringLiteral("fullName"), account->displayName},
                       {QStringLiteral("rawUserInfo"), profileOf(*account)},
                       {QStringLiteral("idToken"), QString::fromLatin1(m_idTokens.issue(*account))},
                       {QStringLiteral("refreshToken"), QString::fromLatin1(refreshToken)},
                       {QStringLiteral("expiresIn"), QString::number(IdTokens::lifetime.count())}};
    if (body.value(u"returnIdpCredential").toBool())
        answer.insert(QStringLiteral("oauthIdToken"), QString::fromLatin1(providerToken));
    return jsonAnswer(answer);
}

Response IdentityToolkitApi::lookup(const QJsonObject &body) const
{
    const auto uid = m_idTokens.userOf(body.value(u"idToken").toString().toUtf8());
    if (!uid)
        return failure("INVALID_ID_TOKEN");
    const auto account = m_accounts.find(*uid);
    if (!account)
        return failure("USER_NOT_FOUND");
    return jsonAnswer({{QStringLiteral("kind"), QStringLiteral("identitytoolkit#GetAccountInfoResponse")},
                       {QStringLiteral("users"), QJsonArray{userRecord(*account)}}});
}

} // namespace Cloud
