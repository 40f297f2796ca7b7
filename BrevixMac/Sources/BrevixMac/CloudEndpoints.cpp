// SPDX-License-Identifier: GPL-3.0-or-later
#include "CloudEndpoints.h"

#include <QLoggingCategory>
#include <QProcessEnvironment>

namespace {

Q_LOGGING_CATEGORY(log, "brevix.cloud", QtInfoMsg)

const QString firestoreHost = QStringLiteral("firestore.googleapis.com");
const QString secureTokenHost = QStringLiteral("securetoken.googleapis.com");

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
QUrl secureTokenAt(const QUrl &origin)
{
    if (!origin.isValid())
        return {};
    QUrl base = origin;
    base.setPath(u'/' + secureTokenHost);
    return base;
}

std::optional<QUrl> urlBelow(const QUrl &base, const QString &encodedPathAndQuery)
{
    if (!base.isValid())
        return std::nullopt;
    const QUrl url(base.toString(QUrl::FullyEncoded) + encodedPathAndQuery, QUrl::StrictMode);
    return url.isValid() ? std::optional(url) : std::nullopt;
}

} // namespace

CloudEndpoints CloudEndpoints::production(const QProcessEnvironment &environment)
{
    const auto firestore = emulatorOrigin(environment, QStringLiteral("FIRESTORE_EMULATOR_HOST"));
    const auto authentication = emulatorOrigin(environment, QStringLiteral("FIREBASE_AUTH_EMULATOR_HOST"));

    CloudEndpoints endpoints;
    endpoints.m_firestoreBase = firestore.value_or(httpsOrigin(firestoreHost));
    endpoints.m_secureTokenBase =
        authentication ? secureTokenAt(*authentication) : httpsOrigin(secureTokenHost);
    return endpoints;
}

CloudEndpoints CloudEndpoints::local(const QUrl &origin)
{
    CloudEndpoints endpoints;
    endpoints.m_firestoreBase = origin;
    endpoints.m_secureTokenBase = secureTokenAt(origin);
    return endpoints;
}

std::optional<QUrl> CloudEndpoints::firestoreDocuments(const QString &projectID, const QString &encodedPath,
                                                       const QString &query) const
{
    const QString documents = u"/v1/projects/" + projectID + u"/databases/(default)/documents/" + encodedPath;
    return urlBelow(m_firestoreBase, query.isEmpty() ? documents : documents + u'?' + query);
}

std::optional<QUrl> CloudEndpoints::secureToken(const QString &apiKey) const
{
    const QString key = QString::fromLatin1(QUrl::toPercentEncoding(apiKey));
    return urlBelow(m_secureTokenBase, u"/v1/token?key=" + key);
}
