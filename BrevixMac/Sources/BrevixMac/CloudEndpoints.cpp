// SPDX-License-Identifier: GPL-3.0-or-later
#include "CloudEndpoints.h"

#include <QHostAddress>
#include <QLoggingCategory>
#include <QProcessEnvironment>

namespace {

Q_LOGGING_CATEGORY(log, "brevix.cloud", QtInfoMsg)

const QString authorizationHost = QStringLiteral("accounts.google.com");
const QString tokenExchangeHost = QStringLiteral("oauth2.googleapis.com");
const QString identityToolkitHost = QStringLiteral("identitytoolkit.googleapis.com");
const QString firestoreHost = QStringLiteral("firestore.googleapis.com");
const QString secureTokenHost = QStringLiteral("securetoken.googleapis.com");
const QString functionsRegion = QStringLiteral("us-central1");
const QString functionsDomain = QStringLiteral("cloudfunctions.net");

QUrl httpsOrigin(const QString &host)
{
    return QUrl(u"https://" + host, QUrl::StrictMode);
}

/// The origin that @p variable names. An unusable value gives an invalid URL and no request at all: somebody
/// who asked for an emulator must not reach the real service by a slip of the pen.
std::optional<QUrl> emulatorOrigin(const QProcessEnvironment &environment, const QString &variable)
{
    const QString value = environment.value(variable);
    if (value.isEmpty())
        return std::nullopt;
    const QUrl origin(u"http://" + value, QUrl::StrictMode);
    const bool isHostAndPort = origin.isValid() && !origin.host().isEmpty() && origin.authority() == value;
    if (isHostAndPort)
        return origin;
    qCWarning(log) << variable << "must be host:port without a scheme, not" << value;
    return QUrl();
}

/// The authentication emulator serves each service under a folder named after the service's own host.
QUrl emulated(const QString &host, const QUrl &origin)
{
    if (!origin.isValid())
        return {};
    QUrl base = origin;
    base.setPath(u'/' + host);
    return base;
}

std::optional<QUrl> urlBelow(const QUrl &base, const QString &encodedPathAndQuery)
{
    if (!base.isValid())
        return std::nullopt;
    const QUrl url(base.toString(QUrl::FullyEncoded) + encodedPathAndQuery, QUrl::StrictMode);
    return url.isValid() ? std::optional(url) : std::nullopt;
}

QString keyQuery(const QString &apiKey)
{
    return u"?key=" + QString::fromLatin1(QUrl::toPercentEncoding(apiKey));
}

} // namespace

CloudEndpoints CloudEndpoints::production(const QProcessEnvironment &environment)
{
    const auto firestore = emulatorOrigin(environment, QStringLiteral("FIRESTORE_EMULATOR_HOST"));
    const auto authentication = emulatorOrigin(environment, QStringLiteral("FIREBASE_AUTH_EMULATOR_HOST"));

    CloudEndpoints endpoints;
    const auto authenticationBase = [&](const QString &host) {
        return authentication ? emulated(host, *authentication) : httpsOrigin(host);
    };
    endpoints.m_authorizationBase = httpsOrigin(authorizationHost);
    endpoints.m_tokenExchangeBase = httpsOrigin(tokenExchangeHost);
    endpoints.m_identityToolkitBase = authenticationBase(identityToolkitHost);
    endpoints.m_secureTokenBase = authenticationBase(secureTokenHost);
    endpoints.m_firestoreBase = firestore.value_or(httpsOrigin(firestoreHost));
    endpoints.m_issuer = endpoints.m_secureTokenBase.toString() + u' ' + endpoints.m_firestoreBase.toString();
    return endpoints;
}

CloudEndpoints CloudEndpoints::local(const QUrl &origin)
{
    CloudEndpoints endpoints;
    endpoints.m_issuer = QStringLiteral("local");
    endpoints.m_authorizationBase = origin;
    endpoints.m_tokenExchangeBase = origin;
    endpoints.m_identityToolkitBase = emulated(identityToolkitHost, origin);
    endpoints.m_firestoreBase = origin;
    endpoints.m_secureTokenBase = emulated(secureTokenHost, origin);
    endpoints.m_functionsOrigin = origin;
    return endpoints;
}

std::optional<CloudEndpoints> CloudEndpoints::server(const QUrl &origin)
{
    const bool isOwnComputer =
        origin.host() == QLatin1String("localhost") || QHostAddress(origin.host()).isLoopback();
    const bool isPrivate = origin.scheme() == QLatin1String("https") ||
                           (origin.scheme() == QLatin1String("http") && isOwnComputer);
    const bool isOrigin = origin.isValid() && !origin.host().isEmpty() && origin.path().isEmpty() &&
                          origin.userInfo().isEmpty() && !origin.hasQuery() && !origin.hasFragment();
    if (!isPrivate || !isOrigin)
        return std::nullopt;
    CloudEndpoints endpoints = local(origin);
    endpoints.m_issuer = origin.toString();
    return endpoints;
}

std::optional<QUrl> CloudEndpoints::authorization() const
{
    return urlBelow(m_authorizationBase, QStringLiteral("/o/oauth2/v2/auth"));
}

std::optional<QUrl> CloudEndpoints::tokenExchange() const
{
    return urlBelow(m_tokenExchangeBase, QStringLiteral("/token"));
}

std::optional<QUrl> CloudEndpoints::signInWithIdp(const QString &apiKey) const
{
    return urlBelow(m_identityToolkitBase, u"/v1/accounts:signInWithIdp" + keyQuery(apiKey));
}

std::optional<QUrl> CloudEndpoints::firestoreDocuments(const QString &projectID, const QString &encodedPath,
                                                       const QString &query) const
{
    const QString documents = u"/v1/projects/" + projectID + u"/databases/(default)/documents/" + encodedPath;
    return urlBelow(m_firestoreBase, query.isEmpty() ? documents : documents + u'?' + query);
}

std::optional<QUrl> CloudEndpoints::secureToken(const QString &apiKey) const
{
    return urlBelow(m_secureTokenBase, u"/v1/token" + keyQuery(apiKey));
}

std::optional<QUrl> CloudEndpoints::callableFunction(const QString &projectID, const QString &name) const
{
    if (m_functionsOrigin)
        return urlBelow(*m_functionsOrigin, u'/' + projectID + u'/' + functionsRegion + u'/' + name);
    const QUrl origin = httpsOrigin(functionsRegion + u'-' + projectID + u'.' + functionsDomain);
    // The project's name must stay a piece of the host: a "/" or "@" in it would send the token elsewhere.
    const bool isProjectHost = origin.host().endsWith(u'.' + functionsDomain) && origin.path().isEmpty();
    return isProjectHost ? urlBelow(origin, u'/' + name) : std::nullopt;
}
