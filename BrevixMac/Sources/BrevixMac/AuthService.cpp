// SPDX-License-Identifier: GPL-3.0-or-later
#include "AuthService.h"

#include "DecimalInteger.h"

#include "Foundation/UserDefaults.h"

#include <QCoroFuture>
#include <QJsonDocument>
#include <QJsonObject>
#include <QPromise>

#include <algorithm>

// The session's life: restored, refreshed, forgotten. How it begins is in AuthServiceSignIn.cpp.

namespace {

using namespace std::chrono_literals;

/// A token with less than this left is refreshed first, so that it does not expire on its way to the server.
constexpr auto minimumLifetime = 120s;
constexpr auto defaultLifetime = 3600s;
constexpr auto longestLifetime = std::chrono::seconds(10LL * 365 * 24 * 3600); // what dates can safely add

std::chrono::seconds lifetime(const QString &expiresIn)
{
    const std::optional<qint64> seconds = decimalInteger(expiresIn);
    return seconds ? std::min(std::chrono::seconds(*seconds), longestLifetime) : defaultLifetime;
}

} // namespace

const QString AuthService::storageKey = QStringLiteral("brevix.oauthSession");
const QString AuthService::issuerKey = QStringLiteral("brevix.oauthSessionIssuer");

AuthService::AuthService(AppConfiguration configuration, CloudEndpoints endpoints, HttpClient &http,
                         UserDefaults &defaults, WebAuthenticationSession &webAuthenticationSession,
                         std::function<QDateTime()> now)
    : m_configuration(std::move(configuration))
    , m_endpoints(std::move(endpoints))
    , m_http(http)
    , m_defaults(defaults)
    , m_webAuthenticationSession(webAuthenticationSession)
    , m_now(std::move(now))
{
    connect(&m_webAuthenticationSession, &WebAuthenticationSession::browserUnavailable, this,
            &AuthService::onBrowserUnavailable);
    connect(&m_webAuthenticationSession, &WebAuthenticationSession::callbackRejected, this,
            &AuthService::onCallbackRejected);
}

AuthService::~AuthService()
{
    if (m_pendingAuthorization)
        m_webAuthenticationSession.cancel();
}

void AuthService::start()
{
    detach(restorePreviousSignInIfNeeded(), "restoring the session");
}

void AuthService::signOut()
{
    abandonSignIn();
    // A refresh that is under way would store the session anew.
    m_refreshTasks.restart();
    m_refresh.reset();
    removeStoredSession();
    publishCurrentUserIfNeeded(std::nullopt);
    setAuthErrorMessage(std::nullopt);
}

QCoro::Task<QString> AuthService::validFirebaseIDToken()
{
    const std::stop_token token = m_refreshTasks.token();
    std::optional<StoredAuthSession> session = loadStoredSession();
    if (!session)
        throw AuthError(AuthError::Kind::notSignedIn);
    if (!isFresh(*session)) {
        const QFuture<StoredAuthSession> refresh = sharedRefresh(*session);
        const StoredAuthSession refreshed = co_await refresh;
        if (token.stop_requested())
            throw CancelledError();
        session = refreshed;
    } else if (session->firebaseIDToken == m_rejectedToken || m_refresh) {
        const StoredAuthSession usable = co_await refreshRejected(*session);
        if (token.stop_requested())
            throw CancelledError();
        session = usable;
    }
    const QString idToken = session->firebaseIDToken;
    publishCurrentUserIfNeeded(session->user());
    co_return idToken;
}

void AuthService::noteRejectedToken(const QString &idToken)
{
    m_rejectedToken = idToken;
}

QCoro::Task<> AuthService::restorePreviousSignInIfNeeded()
{
    const std::stop_token token = m_refreshTasks.token();
    if (!loadStoredSession())
        co_return;
    QString failure;
    try {
        co_await validFirebaseIDToken();
        co_return;
    } catch (const CancelledError &) {
        co_return; // signed out, signed in anew, or quit: the session at hand is not the failed one
    } catch (const std::exception &error) {
        failure = formatAuthError(error);
    }
    if (token.stop_requested())
        co_return;
    removeStoredSession();
    publishCurrentUserIfNeeded(std::nullopt);
    setAuthErrorMessage(failure);
}

QCoro::Task<StoredAuthSession> AuthService::refreshRejected(StoredAuthSession session)
{
    m_rejectedToken.clear(); // one try for each rejection
    try {
        const QFuture<StoredAuthSession> refresh = sharedRefresh(session);
        const StoredAuthSession refreshed = co_await refresh;
        co_return refreshed;
    } catch (const CancelledError &) {
        throw;
    } catch (const std::exception &) {
        // By the clock the token is good, so the server that rejected it has the last word on why.
    }
    co_return session;
}

QFuture<StoredAuthSession> AuthService::sharedRefresh(const StoredAuthSession &session)
{
    if (m_refresh)
        return *m_refresh;
    const auto promise = std::make_shared<QPromise<StoredAuthSession>>();
    promise->start();
    QFuture<StoredAuthSession> future = promise->future();
    m_refresh = future; // first: the refresh may be over, and this reset, before the call returns
    detach(runRefresh(session, promise, m_refreshTasks.token()), "refreshing the session");
    return future;
}

QCoro::Task<> AuthService::runRefresh(StoredAuthSession session, RefreshPromise promise,
                                      std::stop_token token)
{
    try {
        const StoredAuthSession refreshed = co_await refreshFirebaseSession(session, token);
        if (token.stop_requested())
            throw CancelledError();
        persist(refreshed);
        promise->addResult(refreshed);
    } catch (...) {
        promise->setException(std::current_exception());
    }
    if (!token.stop_requested())
        m_refresh.reset();
    promise->finish();
}

QCoro::Task<StoredAuthSession> AuthService::refreshFirebaseSession(StoredAuthSession previous,
                                                                   std::stop_token token)
{
    const std::optional<QUrl> url = m_endpoints.secureToken(m_configuration.firebase.apiKey);
    if (!url)
        throw AuthError(AuthError::Kind::invalidRefreshURL);
    const HttpRequest request =
        HttpRequest::post(*url, "application/x-www-form-urlencoded",
                          GoogleAuthorization::formEncodedQuery(
                              {{QStringLiteral("grant_type"), QStringLiteral("refresh_token")},
                               {QStringLiteral("refresh_token"), previous.refreshToken}}));
    const QJsonObject answer = co_await performRequest(request, token);
    if (token.stop_requested())
        throw CancelledError();

    const FirebaseRefreshResponse response = FirebaseRefreshResponse::fromJson(answer);
    StoredAuthSession session = previous;
    session.uid = response.userId;
    session.firebaseIDToken = response.idToken;
    session.refreshToken = response.refreshToken;
    session.expiresAt = expiryOf(response.expiresIn);
    co_return session;
}

QCoro::Task<QJsonObject> AuthService::performRequest(HttpRequest request, std::stop_token token)
{
    const HttpResponse response = co_await m_http.send(request, token);
    if (!response.isHttp())
        throw AuthError(AuthError::Kind::invalidServerResponse);
    if (!response.isSuccess())
        throw AuthError::fromResponse(response.body, response.statusCode);
    const QJsonDocument document = QJsonDocument::fromJson(response.body);
    if (!document.isObject())
        throw AuthError(AuthError::Kind::unexpectedResponse);
    co_return document.object();
}

bool AuthService::isFresh(const StoredAuthSession &session) const
{
    // A clock that was set back would make an old token look young.
    if (session.firebaseIDToken == m_timedToken && m_timedTokenDeadline.hasExpired())
        return false;
    return session.expiresAt > m_now().addSecs(minimumLifetime.count());
}

QDateTime AuthService::expiryOf(const QString &expiresIn) const
{
    return m_now().addSecs(lifetime(expiresIn).count());
}

void AuthService::persist(const StoredAuthSession &session)
{
    const QString issuer = m_endpoints.issuer();
    if (m_defaults.text(issuerKey) != issuer) {
        // At no moment may the file call a session of one issuer that of another.
        m_defaults.remove(storageKey);
        m_defaults.setText(issuerKey, issuer);
    }
    m_defaults.setData(storageKey, session.toJson());
    m_timedToken = session.firebaseIDToken;
    m_timedTokenDeadline.setRemainingTime(std::chrono::seconds(m_now().secsTo(session.expiresAt)) -
                                          minimumLifetime);
}

std::optional<StoredAuthSession> AuthService::loadStoredSession() const
{
    const std::optional<QString> issuer = m_defaults.text(issuerKey);
    if (issuer && *issuer != m_endpoints.issuer())
        return std::nullopt;
    const auto json = m_defaults.data(storageKey);
    return json ? StoredAuthSession::fromJson(*json) : std::nullopt;
}

void AuthService::removeStoredSession()
{
    m_defaults.remove(storageKey);
    m_defaults.remove(issuerKey);
}

void AuthService::publishCurrentUserIfNeeded(const std::optional<BrevixUserSession> &user)
{
    if (m_currentUser == user)
        return;
    m_currentUser = user;
    Q_EMIT currentUserChanged();
}

void AuthService::setIsAuthenticating(bool isAuthenticating)
{
    if (m_isAuthenticating == isAuthenticating)
        return;
    m_isAuthenticating = isAuthenticating;
    Q_EMIT isAuthenticatingChanged();
}

void AuthService::setAuthErrorMessage(const std::optional<QString> &message)
{
    if (m_authErrorMessage == message)
        return;
    m_authErrorMessage = message;
    Q_EMIT authErrorMessageChanged();
}

void AuthService::setPendingAuthorization(const std::optional<PendingAuthorization> &pending)
{
    if (m_pendingAuthorization == pending)
        return;
    m_pendingAuthorization = pending;
    Q_EMIT pendingAuthorizationChanged();
}
