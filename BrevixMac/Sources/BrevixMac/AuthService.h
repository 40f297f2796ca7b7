// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "AppConfiguration.h"
#include "CloudEndpoints.h"

#include "Foundation/HttpClient.h"
#include "Foundation/TaskScope.h"

#include <QDateTime>
#include <QObject>
#include <QUrl>

#include <functional>
#include <optional>
#include <stdexcept>

class UserDefaults;

/// The published signed-in user. A value.
struct BrevixUserSession
{
    QString uid;
    std::optional<QString> email = {};
    std::optional<QString> displayName = {};
    std::optional<QUrl> photoURL = {};

    bool operator==(const BrevixUserSession &) const = default;
};

/// The persisted session. Its JSON keys are the field names; the date is a number of seconds since 2001-01-01
/// UTC.
struct StoredAuthSession
{
    QString uid;
    std::optional<QString> email = {};
    std::optional<QString> displayName = {};
    std::optional<QString> photoURLString = {};
    QString firebaseIDToken;
    QString refreshToken;
    QDateTime expiresAt;

    QByteArray toJson() const;
    static std::optional<StoredAuthSession> fromJson(const QByteArray &json);
    BrevixUserSession user() const;

    bool operator==(const StoredAuthSession &) const = default;
};

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

    Kind kind() const { return m_kind; }
    QString code() const { return m_code; }
    QString description() const;

private:
    Kind m_kind;
    QString m_code;
    QString m_message;
};

/// Keeps the Firebase session: restores it at start, hands out fresh ID tokens, signs out. Main thread only.
/// validFirebaseIDToken() throws; every other failure becomes authErrorMessage().
class AuthService : public QObject
{
    Q_OBJECT

public:
    static const QString storageKey; ///< "brevix.oauthSession"

    /// @p http and @p defaults must outlive this object.
    AuthService(AppConfiguration configuration, CloudEndpoints endpoints, HttpClient &http,
                UserDefaults &defaults, std::function<QDateTime()> now = &QDateTime::currentDateTimeUtc);

    const std::optional<BrevixUserSession> &currentUser() const { return m_currentUser; }
    bool isAuthenticating() const { return m_isAuthenticating; }
    const std::optional<QString> &authErrorMessage() const { return m_authErrorMessage; }

    /// Restores a stored session in the background.
    void start();

    /// Signs in over @p hasPresentingWindow's window. The browser half is not available yet: ends in a
    /// message.
    QCoro::Task<> signIn(bool hasPresentingWindow);

    /// Forgets the session; a refresh under way ends as cancelled. The server is not told.
    void signOut();

    /// A token good for more than 120 s, refreshed when needed. Throws AuthError, TransportError or
    /// CancelledError.
    QCoro::Task<QString> validFirebaseIDToken();

Q_SIGNALS:
    void currentUserChanged();
    void isAuthenticatingChanged();
    void authErrorMessageChanged();

private:
    QCoro::Task<> restorePreviousSignInIfNeeded();
    QCoro::Task<StoredAuthSession> refreshFirebaseSession(StoredAuthSession previous);
    QCoro::Task<QJsonObject> performRequest(HttpRequest request);
    bool isFresh(const StoredAuthSession &session) const;
    void persist(const StoredAuthSession &session);
    std::optional<StoredAuthSession> loadStoredSession() const;
    void publishCurrentUserIfNeeded(const std::optional<BrevixUserSession> &user);
    void setIsAuthenticating(bool isAuthenticating);
    void setAuthErrorMessage(const std::optional<QString> &message);

    AppConfiguration m_configuration;
    CloudEndpoints m_endpoints;
    HttpClient &m_http;
    UserDefaults &m_defaults;
    std::function<QDateTime()> m_now;
    std::optional<BrevixUserSession> m_currentUser;
    bool m_isAuthenticating = false;
    std::optional<QString> m_authErrorMessage;
    TaskScope m_tasks; // keep last: stops the coroutines before the other members die
};
