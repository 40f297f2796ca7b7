// SPDX-License-Identifier: GPL-3.0-or-later
#include "FuzzTarget.h"

#include "AuthAnswers.h"
#include "AuthError.h"

#include <QJsonDocument>

namespace {

template <typename Answer>
std::optional<Answer> answerIn(const QJsonObject &json)
{
    try {
        return Answer::fromJson(json);
    } catch (const AuthError &error) {
        require(error.kind() == AuthError::Kind::unexpectedResponse, "an answer is understood or unexpected");
        return std::nullopt;
    }
}

} // namespace

/// What the endpoints of sign-in may answer, successes and errors.
void readForeignBytes(const QByteArray &bytes)
{
    const AuthError error = AuthError::fromResponse(bytes, 400);
    require(error.kind() == AuthError::Kind::apiError && !formatAuthError(error).isEmpty(),
            "whatever a server refuses with is told in words");

    const QJsonObject json = QJsonDocument::fromJson(bytes).object();
    if (const auto google = answerIn<GoogleTokenResponse>(json))
        require(json.value(u"id_token") == google->idToken, "a token is taken as it came");
    if (const auto session = answerIn<FirebaseSignInWithIdpResponse>(json))
        require(json.value(u"localId") == session->localId, "an account is taken as it came");
    if (const auto refreshed = answerIn<FirebaseRefreshResponse>(json))
        require(json.value(u"refresh_token") == refreshed->refreshToken, "a token is taken as it came");
}
