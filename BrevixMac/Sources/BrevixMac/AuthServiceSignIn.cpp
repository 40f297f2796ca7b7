// SPDX-License-Identifier: GPL-3.0-or-later
#include "AuthService.h"

#include <QCoroFuture>
#include <QJsonDocument>
#include <QJsonObject>
#include <QPromise>

// How a session begins: Google's page in the browser, its callback, Google's tokens, the Firebase session.

namespace {

using GoogleAuthorization::Attempt;
using GoogleAuthorization::formEncodedQuery;

/// The identifier that Firebase Authentication gives to sign-in with Google.
const QString googleProviderID = QStringLiteral("google.com");

QByteArray signInWithIdpBody(const QString &googleIDToken)
{
    const QByteArray postBody = formEncodedQuery(
        {{QStringLiteral("id_token"), googleIDToken}, {QStringLiteral("providerId"), googleProviderID}});
    const QJsonObject body{
        {QStringLiteral("postBody"), QString::fromUtf8(postBody)},
        {QStringLiteral("requestUri"), QStringLiteral("http://localhost")},
        {QStringLiteral("returnIdpCredential"), true},
        {QStringLiteral("returnSecureToken"), true},
    };
    return QJsonDocument(body).toJson(QJsonDocument::Compact);
}

/// The callback that @p result carries; throws what it carries instead.
QUrl callbackIn(const WebAuthenticationSession::Result &result)
{
    if (result.error)
        throw *result.error;
    if (!result.callbackURL)
        throw AuthError(AuthError::Kind::missingCallbackURL);
    return *result.callbackURL;
}

bool isCancellation(const std::exception &error)
{
    const auto *browserError = dynamic_cast<const WebAuthenticationError *>(&error);
    return browserError && browserError->code() == WebAuthenticationError::Code::canceledLogin;
}

} // namespace

QCoro::Task<> AuthService::signIn(bool hasPresentingWindow)
{
    if (m_isAuthenticating)
        co_return;
    if (!m_configuration.firebase.isConfigured()) {
        setAuthErrorMessage(QStringLiteral("BrevixMac is missing its native Firebase configuration."));
        co_return;
    }
    if (!hasPresentingWindow) {
        setAuthErrorMessage(QStringLiteral("Brevix could not find a window to present Google sign-in."));
        co_return;
    }
    const std::stop_token token = m_signInTasks.token();
    setIsAuthenticating(true);
    setAuthErrorMessage(std::nullopt);
    try {
        const StoredAuthSession session = co_await signInThroughBrowser(token);
        if (!token.stop_requested())
            finishSignIn(session, token);
    } catch (const std::exception &error) {
        if (!token.stop_requested())
            failSignIn(error, token);
    }
}

void AuthService::finishSignIn(const StoredAuthSession &session, const std::stop_token &token)
{
    // A refresh of an earlier session would overwrite the new one.
    m_refreshTasks.restart();
    m_refresh.reset();
    persist(session);
    publishCurrentUserIfNeeded(session.user());
    if (token.stop_requested()) // an observer may sign out
        return;
    setAuthErrorMessage(std::nullopt);
    setIsAuthenticating(false);
    Q_EMIT signInReturned();
}

void AuthService::failSignIn(const std::exception &error, const std::stop_token &token)
{
    const auto *authError = dynamic_cast<const AuthError *>(&error);
    const bool wasInBrowser =
        !authError || (authError->kind() != AuthError::Kind::invalidAuthorizationURL &&
                       authError->kind() != AuthError::Kind::failedToStartWebAuthenticationSession);
    setPendingAuthorization(std::nullopt);
    setAuthErrorMessage(formatAuthError(error));
    if (token.stop_requested())
        return;
    setIsAuthenticating(false);
    if (wasInBrowser && !isCancellation(error))
        Q_EMIT signInReturned();
}

void AuthService::cancelSignIn()
{
    if (!m_isAuthenticating)
        return;
    abandonSignIn();
    setAuthErrorMessage(formatAuthError(WebAuthenticationError(WebAuthenticationError::Code::canceledLogin)));
}

void AuthService::abandonSignIn()
{
    m_signInTasks.restart();
    if (m_pendingAuthorization)
        m_webAuthenticationSession.cancel();
    setPendingAuthorization(std::nullopt);
    setIsAuthenticating(false);
}

void AuthService::onBrowserUnavailable()
{
    if (m_pendingAuthorization)
        setPendingAuthorization(PendingAuthorization{m_pendingAuthorization->url, true});
}

void AuthService::onCallbackRejected()
{
    // Said, since somebody has tried something; but the sign-in that the user has begun goes on.
    if (m_pendingAuthorization)
        setAuthErrorMessage(formatAuthError(AuthError(AuthError::Kind::stateMismatch)));
}

QCoro::Task<StoredAuthSession> AuthService::signInThroughBrowser(std::stop_token token)
{
    const GoogleTokenResponse google = co_await authorizeWithGoogle(token);
    if (token.stop_requested())
        throw CancelledError();
    const StoredAuthSession session = co_await exchangeGoogleTokenForFirebaseSession(google.idToken, token);
    co_return session;
}

QCoro::Task<GoogleTokenResponse> AuthService::authorizeWithGoogle(std::stop_token token)
{
    const FirebaseRuntimeConfiguration &firebase = m_configuration.firebase;
    const Attempt attempt = Attempt::make(firebase);
    const std::optional<QUrl> page = attempt.authorizationURL(m_endpoints, firebase);
    if (!page)
        throw AuthError(AuthError::Kind::invalidAuthorizationURL);
    const QUrl callback = co_await callbackOf(attempt, *page);
    if (token.stop_requested())
        throw CancelledError();
    setPendingAuthorization(std::nullopt);
    const QString code = GoogleAuthorization::authorizationCode(callback, attempt.state);
    const GoogleTokenResponse tokens =
        co_await exchangeAuthorizationCodeForGoogleTokens(code, attempt, token);
    co_return tokens;
}

QCoro::Task<QUrl> AuthService::callbackOf(Attempt attempt, QUrl page)
{
    // The session calls back once, or drops the promise, which ends the future too: this never hangs.
    auto promise = std::make_shared<QPromise<WebAuthenticationSession::Result>>();
    promise->start();
    const QFuture<WebAuthenticationSession::Result> future = promise->future();
    const bool hasStarted = m_webAuthenticationSession.start(
        {.url = page,
         .callbackScheme = m_configuration.firebase.reversedClientID,
         .isAnswer = [attempt](const QUrl &callback) { return attempt.isAnsweredBy(callback); }},
        [promise](const WebAuthenticationSession::Result &result) {
            promise->addResult(result);
            promise->finish();
        });
    promise.reset();
    if (!hasStarted)
        throw AuthError(AuthError::Kind::failedToStartWebAuthenticationSession);
    setPendingAuthorization(PendingAuthorization{page});
    const QFuture<void> end(future);
    co_await end;
    if (future.resultCount() == 0)
        throw AuthError(AuthError::Kind::sessionUnavailable);
    co_return callbackIn(future.result());
}

QCoro::Task<GoogleTokenResponse>
AuthService::exchangeAuthorizationCodeForGoogleTokens(QString authorizationCode, Attempt attempt,
                                                      std::stop_token token)
{
    const std::optional<QUrl> url = m_endpoints.tokenExchange();
    if (!url)
        throw AuthError(AuthError::Kind::invalidTokenExchangeURL);
    const HttpRequest request =
        HttpRequest::post(*url, "application/x-www-form-urlencoded",
                          attempt.tokenExchangeBody(authorizationCode, m_configuration.firebase.clientID));
    const QJsonObject answer = co_await performRequest(request, token);
    co_return GoogleTokenResponse::fromJson(answer);
}

QCoro::Task<StoredAuthSession> AuthService::exchangeGoogleTokenForFirebaseSession(QString googleIDToken,
                                                                                  std::stop_token token)
{
    const std::optional<QUrl> url = m_endpoints.signInWithIdp(m_configuration.firebase.apiKey);
    if (!url)
        throw AuthError(AuthError::Kind::invalidFirebaseExchangeURL);
    const HttpRequest request = HttpRequest::post(*url, "application/json", signInWithIdpBody(googleIDToken));
    const QJsonObject answer = co_await performRequest(request, token);
    if (token.stop_requested())
        throw CancelledError();

    const FirebaseSignInWithIdpResponse response = FirebaseSignInWithIdpResponse::fromJson(answer);
    co_return StoredAuthSession{.uid = response.localId,
                                .email = response.email,
                                .displayName = response.displayName,
                                .photoURLString = response.photoUrl,
                                .firebaseIDToken = response.idToken,
                                .refreshToken = response.refreshToken,
                                .expiresAt = expiryOf(response.expiresIn)};
}
