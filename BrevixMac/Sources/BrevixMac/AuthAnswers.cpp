// SPDX-License-Identifier: GPL-3.0-or-later
#include "AuthAnswers.h"

#include "AuthError.h"

#include <cmath>

namespace {

QString requiredText(const QJsonObject &answer, QStringView key)
{
    const QJsonValue value = answer.value(key);
    if (!value.isString())
        throw AuthError(AuthError::Kind::unexpectedResponse);
    return value.toString();
}

bool isAbsent(const QJsonValue &value)
{
    return value.isUndefined() || value.isNull();
}

std::optional<QString> optionalText(const QJsonObject &answer, QStringView key)
{
    return isAbsent(answer.value(key)) ? std::nullopt : std::optional(requiredText(answer, key));
}

std::optional<qint64> optionalInteger(const QJsonObject &answer, QStringView key)
{
    const QJsonValue value = answer.value(key);
    if (isAbsent(value))
        return std::nullopt;
    if (!value.isDouble() || std::trunc(value.toDouble()) != value.toDouble())
        throw AuthError(AuthError::Kind::unexpectedResponse);
    return value.toInteger();
}

} // namespace

GoogleTokenResponse GoogleTokenResponse::fromJson(const QJsonObject &answer)
{
    return {.accessToken = requiredText(answer, u"access_token"),
            .expiresIn = optionalInteger(answer, u"expires_in"),
            .idToken = requiredText(answer, u"id_token")};
}

FirebaseSignInWithIdpResponse FirebaseSignInWithIdpResponse::fromJson(const QJsonObject &answer)
{
    return {.idToken = requiredText(answer, u"idToken"),
            .refreshToken = requiredText(answer, u"refreshToken"),
            .expiresIn = requiredText(answer, u"expiresIn"),
            .localId = requiredText(answer, u"localId"),
            .email = optionalText(answer, u"email"),
            .displayName = optionalText(answer, u"displayName"),
            .photoUrl = optionalText(answer, u"photoUrl")};
}

FirebaseRefreshResponse FirebaseRefreshResponse::fromJson(const QJsonObject &answer)
{
    return {.expiresIn = requiredText(answer, u"expires_in"),
            .refreshToken = requiredText(answer, u"refresh_token"),
            .idToken = requiredText(answer, u"id_token"),
            .userId = requiredText(answer, u"user_id")};
}
