// SPDX-License-Identifier: GPL-3.0-or-later
#include "TokenExchangeApi.h"

#include "Accounts.h"
#include "Answers.h"
#include "AuthorizationCodes.h"
#include "AuthorizationRequest.h"
#include "Form.h"
#include "IdTokens.h"
#include "SecureRandom.h"

#include <utility>

namespace Cloud {

namespace {

constexpr qsizetype accessTokenSize = 32;

/// The error shape of RFC 6749, 5.2.
Response oauthError(const char *error, const char *description)
{
    Response response = jsonAnswer({{QStringLiteral("error"), QLatin1String(error)},
                                    {QStringLiteral("error_description"), QLatin1String(description)}});
    response.status = 400;
    return response;
}

} // namespace

TokenExchangeApi::TokenExchangeApi(Accounts &accounts, AuthorizationCodes &codes,
                                   const IdTokens &providerTokens, QString clientID)
    : m_accounts(accounts)
    , m_codes(codes)
    , m_providerTokens(providerTokens)
    , m_clientID(std::move(clientID))
{
}

Response TokenExchangeApi::exchange(const Request &request)
{
    const QUrlQuery form = parseForm(request.body);
    if (formValue(form, QStringLiteral("grant_type")) != QLatin1String("authorization_code"))
        return oauthError("unsupported_grant_type", "Only authorization codes are exchanged here.");
    // Redeemed before anything else is looked at, so that a code cannot be tried twice.
    const auto grant = m_codes.redeem(formValue(form, QStringLiteral("code")).toUtf8());
    if (formValue(form, QStringLiteral("client_id")) != m_clientID)
        return oauthError("invalid_client", "The client is not known.");
    if (!grant || formValue(form, QStringLiteral("redirect_uri")) != grant->redirectUri ||
        !answersChallenge(formValue(form, QStringLiteral("code_verifier")), grant->codeChallenge))
        return oauthError("invalid_grant", "The code is not valid, or was used before.");
    const auto account = m_accounts.find(grant->uid);
    if (!account)
        return oauthError("invalid_grant", "The account does not exist any more.");
    const QByteArray accessToken = base64Url(secureRandomBytes(accessTokenSize));
    return jsonAnswer({{QStringLiteral("access_token"), QString::fromLatin1(accessToken)},
                       {QStringLiteral("expires_in"), qint64(IdTokens::lifetime.count())},
                       {QStringLiteral("id_token"), QString::fromLatin1(m_providerTokens.issue(*account))},
                       {QStringLiteral("scope"), QStringLiteral("openid email profile")},
                       {QStringLiteral("token_type"), QStringLiteral("Bearer")}});
}

} // namespace Cloud
