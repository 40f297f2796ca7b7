// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "AppConfiguration.h"
#include "AuthAnswers.h"
#include "AuthError.h"
#include "CloudEndpoints.h"
#include "GoogleAuthorization.h"
#include "StoredAuthSession.h"

#include "Desktop/WebAuthenticationSession.h"
#include "Foundation/HttpClient.h"
#include "Foundation/TaskScope.h"

#include <QDeadlineTimer>
#include <QFuture>
#include <QObject>

#include <functional>
#include <memory>
#include <optional>

class UserDefaults;
template <typename T>
class QPromise;

/// Signs in with Google and keeps the Firebase session: restores it at start, hands out fresh ID tokens,
/// signs out. Main thread only. validFirebaseIDToken() throws; every other failure becomes
/// authErrorMessage(). Neither tokens nor authorization codes are ever logged.
class AuthService : public QObject
{
    Q_OBJECT

public:
    static const QString storageKey; ///< "brevix.oauthSession"
    /// Who issued the stored session (CloudEndpoints::issuer()). A session without it counts as ours.
    static const QString issuerKey;

    /// A sign-in page that waits for the user.
    struct PendingAuthorization
    {
        QUrl url;
        bool isBrowserMissing = false; ///< no browser could be opened: the user must open the address

        bool operator==(const PendingAuthorization &) const = default;
    };

    /// @p http, @p defaults and @p webAuthenticationSession must outlive this object.
    AuthService(AppConfiguration configuration, CloudEndpoints endpoints, HttpClient &http,
                UserDefaults &defaults, WebAuthenticationSession &webAuthenticationSession,
                std::function<QDateTime()> now = &QDateTime::currentDateTimeUtc);
    ~AuthService() override;

    const std::optional<BrevixUserSession> &currentUser() const { return m_currentUser; }
    bool isAuthenticating() const { return m_isAuthenticating; }
    const std::optional<QString> &authErrorMessage() const { return m_authErrorMessage; }
    /// Present while a sign-in waits for the browser.
    const std::optional<PendingAuthorization> &pendingAuthorization() const { return m_pendingAuthorization; }

    /// Restores a stored session in the background.
    void start();

    /// Signs in through the browser. Does nothing while a sign-in runs. @p hasPresentingWindow tells whether
    /// the user has a window of ours before them.
    QCoro::Task<> signIn(bool hasPresentingWindow);

    /// Ends a running sign-in, wherever it is, with a message. Does nothing without one.
    void cancelSignIn();

    /// Forgets the session; a sign-in or refresh under way ends as cancelled. The server is not told.
    void signOut();

    /// A token good for more than 120 s, refreshed when needed; callers at the same time share one refresh,
    /// since the server may take each refresh token only once. Throws AuthError, TransportError or
    /// CancelledError.
    QCoro::Task<QString> validFirebaseIDToken();

    /// Notes that a server did not take @p idToken: the next validFirebaseIDToken() tries to refresh it
    /// whatever the clock says, and hands it out again only if that fails.
    void noteRejectedToken(const QString &idToken);

Q_SIGNALS:
    void currentUserChanged();
    void isAuthenticatingChanged();
    void authErrorMessageChanged();
    void pendingAuthorizationChanged();
    /// A sign-in that took the user to the browser is over, by success or failure but not by the user's
    /// cancel: they should see the outcome.
    void signInReturned();

private:
    using RefreshPromise = std::shared_ptr<QPromise<StoredAuthSession>>;

    // Sign-in
    QCoro::Task<StoredAuthSession> signInThroughBrowser(std::stop_token token);
    QCoro::Task<GoogleTokenResponse> authorizeWithGoogle(std::stop_token token);
    QCoro::Task<QUrl> callbackOf(GoogleAuthorization::Attempt attempt, QUrl page);
    QCoro::Task<GoogleTokenResponse>
    exchangeAuthorizationCodeForGoogleTokens(QString authorizationCode, GoogleAuthorization::Attempt attempt,
                                             std::stop_token token);
    QCoro::Task<StoredAuthSession> exchangeGoogleTokenForFirebaseSession(QString googleIDToken,
                                                                         std::stop_token token);
    void finishSignIn(const StoredAuthSession &session, const std::stop_token &token);
    void failSignIn(const std::exception &error, const std::stop_token &token);
    void abandonSignIn();
    void onBrowserUnavailable();
    void onCallbackRejected();

    // Session
    QCoro::Task<> restorePreviousSignInIfNeeded();
    QFuture<StoredAuthSession> sharedRefresh(const StoredAuthSession &session);
    QCoro::Task<> runRefresh(StoredAuthSession session, RefreshPromise promise, std::stop_token token);
    QCoro::Task<StoredAuthSession> refreshFirebaseSession(StoredAuthSession previous, std::stop_token token);
    QCoro::Task<StoredAuthSession> refreshRejected(StoredAuthSession session);
    QCoro::Task<QJsonObject> performRequest(HttpRequest request, std::stop_token token);
    bool isFresh(const StoredAuthSession &session) const;
    QDateTime expiryOf(const QString &expiresIn) const;
    void persist(const StoredAuthSession &session);
    std::optional<StoredAuthSession> loadStoredSession() const;
    void removeStoredSession();

    void publishCurrentUserIfNeeded(const std::optional<BrevixUserSession> &user);
    void setIsAuthenticating(bool isAuthenticating);
    void setAuthErrorMessage(const std::optional<QString> &message);
    void setPendingAuthorization(const std::optional<PendingAuthorization> &pending);

    AppConfiguration m_configuration;
    CloudEndpoints m_endpoints;
    HttpClient &m_http;
    UserDefaults &m_defaults;
    WebAuthenticationSession &m_webAuthenticationSession;
    std::function<QDateTime()> m_now;
    std::optional<BrevixUserSession> m_currentUser;
    bool m_isAuthenticating = false;
    std::optional<QString> m_authErrorMessage;
    std::optional<PendingAuthorization> m_pendingAuthorization;
    std::optional<QFuture<StoredAuthSession>> m_refresh;
    /// The token got last and when it must be refreshed by a clock that nobody can set back.
    QString m_timedToken;
    QDeadlineTimer m_timedTokenDeadline;
    QString m_rejectedToken;
    // Keep last: they stop the coroutines before the other members die.
    TaskScope m_signInTasks;
    TaskScope m_refreshTasks;
};
