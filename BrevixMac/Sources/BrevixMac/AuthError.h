// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>
#include <QString>

#include <stdexcept>

/// A failed sign-in or token call; its description is for the user.
class AuthError : public std::runtime_error
{
public:
    enum class Kind {
        oauthCallbackError,
        apiError,
        invalidAuthorizationURL,
        invalidTokenExchangeURL,
        invalidFirebaseExchangeURL,
        invalidRefreshURL,
        invalidCallbackURL,
        missingCallbackURL,
        missingAuthorizationCode,
        stateMismatch,
        failedToStartWebAuthenticationSession,
        sessionUnavailable,
        invalidServerResponse,
        unexpectedResponse,
        notSignedIn,
    };

    explicit AuthError(Kind kind)
        : AuthError(kind, {}, {})
    {
    }
    /// @p code only for apiError; @p message for apiError and oauthCallbackError.
    AuthError(Kind kind, const QString &code, const QString &message);

    /// What a failed answer with @p body means.
    static AuthError fromResponse(const QByteArray &body, int statusCode);

    Kind kind() const { return m_kind; }
    QString code() const { return m_code; }
    QString description() const;

private:
    Kind m_kind;
    QString m_code;
    QString m_message;
};

/// What the user reads about a sign-in or a restored session that ended with @p error.
QString formatAuthError(const std::exception &error);
