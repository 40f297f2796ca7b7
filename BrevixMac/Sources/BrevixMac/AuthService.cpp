// SPDX-License-Identifier: GPL-3.0-or-later
#include "AuthService.h"

#include "DecimalInteger.h"
#include "HttpErrorBody.h"

#include "Foundation/Text.h"
#include "Foundation/UserDefaults.h"

#include <QJsonDocument>
#include <QJsonObject>

#include <algorithm>

namespace {

/// A token with less than this left is refreshed first, so that it does not expire on its way to the server.
constexpr qint64 minimumLifetimeSeconds = 120;
constexpr qint64 defaultLifetimeSeconds = 3600;
constexpr qint64 longestLifetimeSeconds = 10LL * 365 * 24 * 3600; // what dates can safely add

QString encodedQueryPart(const QString &text)
{
    return QString::fromLatin1(QUrl::toPercentEncoding(text, "!$'()*,;:@/"));
}

/// application/x-www-form-urlencoded, in ascending order.
QByteArray formEncodedQuery(const QMap<QString, QString> &pairs)
{
    QStringList parts;
    for (auto it = pairs.cbegin(); it != pairs.cend(); ++it)
        parts.append(encodedQueryPart(it.key()) + u'=' + encodedQueryPart(it.value()));
    std::sort(parts.begin(), parts.end());
    return parts.join(u'&').toUtf8();
}

AuthError decodeErrorResponse(const QByteArray &body, int statusCode)
{
    if (const auto message = HttpErrorBody::message(body))
        return AuthError(AuthError::Kind::apiError, *message, *message);
    const QString code = u"HTTP_" + QString::number(statusCode);
    const QString unexpected = QStringLiteral("The server returned an unexpected response.");
    return AuthError(AuthError::Kind::apiError, code, HttpErrorBody::text(body).value_or(unexpected));
}

/// Throws when the answer lacks the text, since it is no answer then.
QString requiredText(const QJsonObject &answer, QStringView key)
{
    const QJsonValue value = answer.value(key);
    if (!value.isString())
        throw AuthError(AuthError::Kind::unexpectedResponse);
    return value.toString();
}

qint64 lifetimeSeconds(const QString &expiresIn)
{
    return std::min(decimalInteger(expiresIn).value_or(defaultLifetimeSeconds), longestLifetimeSeconds);
}

/// What the user reads about a failed sign-in.
QString formatAuthError(const std::exception &error)
{
    if (const auto *authError = dynamic_cast<const AuthError *>(&error))
        return authError->description();
    const QString description = Text::trimmed(QString::fromUtf8(error.what()));
    return description.isEmpty() ? QStringLiteral("Brevix couldn't complete Google sign-in.") : description;
}

} // namespace

const QString AuthService::storageKey = QStringLiteral("brevix.oauthSession");

AuthService::AuthService(AppConfiguration configuration, CloudEndpoints endpoints, HttpClient &http,
                         UserDefaults &defaults, std::function<QDateTime()> now)
    : m_configuration(std::move(configuration))
    , m_endpoints(std::move(endpoints))
    , m_http(http)
    , m_defaults(defaults)
    , m_now(std::move(now))
{
}

void AuthService::start()
{
    detach(restorePreviousSignInIfNeeded(), "restoring the session");
}

QCoro::Task<> AuthService::signIn(bool hasPresentingWindow)
{
    if (!m_configuration.firebase.isConfigured()) {
        setAuthErrorMessage(QStringLiteral("BrevixMac is missing its native Firebase configuration."));
        co_return;
    }
    if (!hasPresentingWindow) {
        setAuthErrorMessage(QStringLiteral("Brevix could not find a window to present Google sign-in."));
        co_return;
    }
    setIsAuthenticating(true);
    setAuthErrorMessage(std::nullopt);
    // No mechanism shows Google's page in a browser and takes its redirect yet.
    setAuthErrorMessage(formatAuthError(AuthError(AuthError::Kind::failedToStartWebAuthenticationSession)));
    setIsAuthenticating(false);
}

void AuthService::signOut()
{
    // A refresh that is under way would store the session anew.
    m_tasks.restart();
    m_defaults.remove(storageKey);
    publishCurrentUserIfNeeded(std::nullopt);
    setAuthErrorMessage(std::nullopt);
}

QCoro::Task<QString> AuthService::validFirebaseIDToken()
{
    const std::stop_token token = m_tasks.token();
    std::optional<StoredAuthSession> session = loadStoredSession();
    if (!session)
        throw AuthError(AuthError::Kind::notSignedIn);
    if (!isFresh(*session)) {
        const StoredAuthSession refreshed = co_await refreshFirebaseSession(*session);
        if (token.stop_requested())
            throw CancelledError();
        session = refreshed;
        persist(refreshed);
    }
    const QString idToken = session->firebaseIDToken;
    publishCurrentUserIfNeeded(session->user());
    co_return idToken;
}

QCoro::Task<> AuthService::restorePreviousSignInIfNeeded()
{
    const std::stop_token token = m_tasks.token();
    if (!loadStoredSession())
        co_return;
    QString failure;
    try {
        co_await validFirebaseIDToken();
        co_return;
    } catch (const std::exception &error) {
        failure = formatAuthError(error);
    }
    if (token.stop_requested())
        co_return;
    m_defaults.remove(storageKey);
    publishCurrentUserIfNeeded(std::nullopt);
    setAuthErrorMessage(failure);
}

QCoro::Task<StoredAuthSession> AuthService::refreshFirebaseSession(StoredAuthSession previous)
{
    const std::stop_token token = m_tasks.token();
    const std::optional<QUrl> url = m_endpoints.secureToken(m_configuration.firebase.apiKey);
    if (!url)
        throw AuthError(AuthError::Kind::invalidRefreshURL);
    HttpRequest request;
    request.method = "POST";
    request.url = *url;
    request.headers = {{"Content-Type", "application/x-www-form-urlencoded"}};
    request.body = formEncodedQuery({{QStringLiteral("grant_type"), QStringLiteral("refresh_token")},
                                     {QStringLiteral("refresh_token"), previous.refreshToken}});
    const QJsonObject answer = co_await performRequest(request);
    if (token.stop_requested())
        throw CancelledError();

    StoredAuthSession session = previous;
    session.uid = requiredText(answer, u"user_id");
    session.firebaseIDToken = requiredText(answer, u"id_token");
    session.refreshToken = requiredText(answer, u"refresh_token");
    session.expiresAt = m_now().addSecs(lifetimeSeconds(requiredText(answer, u"expires_in")));
    co_return session;
}

QCoro::Task<QJsonObject> AuthService::performRequest(HttpRequest request)
{
    const HttpResponse response = co_await m_http.send(request, m_tasks.token());
    if (!response.isHttp())
        throw AuthError(AuthError::Kind::invalidServerResponse);
    if (!response.isSuccess())
        throw decodeErrorResponse(response.body, response.statusCode);
    const QJsonDocument document = QJsonDocument::fromJson(response.body);
    if (!document.isObject())
        throw AuthError(AuthError::Kind::unexpectedResponse);
    co_return document.object();
}

bool AuthService::isFresh(const StoredAuthSession &session) const
{
    return session.expiresAt > m_now().addSecs(minimumLifetimeSeconds);
}

void AuthService::persist(const StoredAuthSession &session)
{
    m_defaults.setData(storageKey, session.toJson());
}

std::optional<StoredAuthSession> AuthService::loadStoredSession() const
{
    const auto json = m_defaults.data(storageKey);
    return json ? StoredAuthSession::fromJson(*json) : std::nullopt;
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
