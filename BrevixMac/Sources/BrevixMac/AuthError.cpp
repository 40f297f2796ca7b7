// SPDX-License-Identifier: GPL-3.0-or-later
#include "AuthError.h"

#include "HttpErrorBody.h"

#include "Desktop/WebAuthenticationSession.h"
#include "Foundation/Text.h"

namespace {

/// The wording of the server's error codes; @p message for a code without one.
QString describeApiError(const QString &code, const QString &message)
{
    if (code == u"INVALID_IDP_RESPONSE")
        return QStringLiteral("Google sign-in returned an expired or invalid credential. Please try again.");
    if (code == u"OPERATION_NOT_ALLOWED")
        return QStringLiteral("Google sign-in isn't enabled for this Firebase project.");
    if (code == u"INVALID_REQUEST_URI") {
        return QStringLiteral(
            "Firebase rejected the OAuth request URI. Please rebuild BrevixMac and try Google "
            "sign-in again.");
    }
    if (code == u"PROJECT_NUMBER_MISMATCH")
        return QStringLiteral("The Firebase refresh token doesn't match this project's API key.");
    if (code == u"TOKEN_EXPIRED" || code == u"INVALID_REFRESH_TOKEN" || code == u"INVALID_ID_TOKEN")
        return QStringLiteral("Your Brevix session expired. Please sign in again.");
    return message;
}

QString describe(AuthError::Kind kind, const QString &code, const QString &message)
{
    using Kind = AuthError::Kind;
    switch (kind) {
    case Kind::oauthCallbackError:
        return message;
    case Kind::apiError:
        return describeApiError(code, message);
    case Kind::invalidAuthorizationURL:
        return QStringLiteral("Brevix couldn't build the Google sign-in URL.");
    case Kind::invalidTokenExchangeURL:
        return QStringLiteral("Brevix couldn't reach Google's token exchange endpoint.");
    case Kind::invalidFirebaseExchangeURL:
        return QStringLiteral("Brevix couldn't reach Firebase sign-in.");
    case Kind::invalidRefreshURL:
        return QStringLiteral("Brevix couldn't refresh the Firebase session.");
    case Kind::invalidCallbackURL:
        return QStringLiteral("Google sign-in returned an invalid callback URL.");
    case Kind::missingCallbackURL:
        return QStringLiteral("Google sign-in completed without returning a callback URL.");
    case Kind::missingAuthorizationCode:
        return QStringLiteral("Google sign-in didn't return an authorization code.");
    case Kind::stateMismatch:
        return QStringLiteral(
            "Brevix rejected the Google sign-in callback because the request state didn't match.");
    case Kind::failedToStartWebAuthenticationSession:
        return QStringLiteral("Brevix couldn't start the Google sign-in window.");
    case Kind::sessionUnavailable:
        return QStringLiteral("Brevix lost the Google sign-in session before it completed.");
    case Kind::invalidServerResponse:
        return QStringLiteral("Brevix received an invalid server response during sign-in.");
    case Kind::unexpectedResponse:
        return QStringLiteral("Brevix couldn't decode the sign-in response.");
    case Kind::notSignedIn:
        return QStringLiteral("You're not signed in.");
    }
    Q_UNREACHABLE();
}

QString describe(const WebAuthenticationError &error)
{
    if (error.code() == WebAuthenticationError::Code::canceledLogin)
        return QStringLiteral("Google sign-in was canceled.");
    QString description = Text::trimmed(error.description());
    const QString reason = Text::trimmed(error.failureReason());
    if (reason.isEmpty() || reason == description)
        return description;
    return description + u'\n' + reason;
}

QString describe(const std::exception &error)
{
    if (const auto *authError = dynamic_cast<const AuthError *>(&error))
        return authError->description();
    if (const auto *browserError = dynamic_cast<const WebAuthenticationError *>(&error))
        return describe(*browserError);
    return Text::trimmed(QString::fromUtf8(error.what()));
}

} // namespace

AuthError::AuthError(Kind kind, const QString &code, const QString &message)
    : std::runtime_error(describe(kind, code, message).toStdString())
    , m_kind(kind)
    , m_code(code)
    , m_message(message)
{
}

QString AuthError::description() const
{
    return describe(m_kind, m_code, m_message);
}

AuthError AuthError::fromResponse(const QByteArray &body, int statusCode)
{
    if (const auto message = HttpErrorBody::message(body))
        return AuthError(Kind::apiError, *message, *message);
    const QString code = u"HTTP_" + QString::number(statusCode);
    const QString unexpected = QStringLiteral("The server returned an unexpected response.");
    return AuthError(Kind::apiError, code, HttpErrorBody::text(body).value_or(unexpected));
}

QString formatAuthError(const std::exception &error)
{
    const QString description = describe(error);
    // An empty text would be a failure that nobody sees.
    return description.isEmpty() ? QStringLiteral("Brevix couldn't complete Google sign-in.") : description;
}
