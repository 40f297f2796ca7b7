// SPDX-License-Identifier: GPL-3.0-or-later
#include "SecureTokenApi.h"

#include "Accounts.h"
#include "Answers.h"
#include "Form.h"
#include "IdTokens.h"
#include "SecureRandom.h"

#include <utility>

namespace Cloud {

namespace {

Response badRequest(const char *message)
{
    return invalidArgument(QLatin1String(message));
}

} // namespace

SecureTokenApi::SecureTokenApi(Accounts &accounts, const IdTokens &idTokens, QString apiKey,
                               QString projectID)
    : m_accounts(accounts)
    , m_idTokens(idTokens)
    , m_apiKey(std::move(apiKey))
    , m_projectID(std::move(projectID))
{
}

Response SecureTokenApi::refresh(const Request &request)
{
    const QString key = formValue(parseForm(request.query), QStringLiteral("key"));
    if (!equalInConstantTime(key.toUtf8(), m_apiKey.toUtf8()))
        return badRequest("API key not valid. Please pass a valid API key.");
    const QUrlQuery form = parseForm(request.body);
    if (formValue(form, QStringLiteral("grant_type")) != QLatin1String("refresh_token"))
        return badRequest("INVALID_GRANT_TYPE");
    const QByteArray token = formValue(form, QStringLiteral("refresh_token")).toUtf8();
    if (token.isEmpty())
        return badRequest("MISSING_REFRESH_TOKEN");
    const Accounts::Refresh refresh = m_accounts.rotate(token);
    if (!refresh.account)
        return badRequest(refresh.refusal == Accounts::Refusal::expiredToken ? "TOKEN_EXPIRED"
                                                                             : "INVALID_REFRESH_TOKEN");
    const QString idToken = QString::fromLatin1(m_idTokens.issue(*refresh.account));
    return jsonAnswer({{QStringLiteral("access_token"), idToken},
                       {QStringLiteral("expires_in"), QString::number(IdTokens::lifetime.count())},
                       {QStringLiteral("token_type"), QStringLiteral("Bearer")},
                       {QStringLiteral("refresh_token"), QString::fromLatin1(refresh.refreshToken)},
                       {QStringLiteral("id_token"), idToken},
                       {QStringLiteral("user_id"), refresh.account->uid},
                       {QStringLiteral("project_id"), m_projectID}});
}

} // namespace Cloud
