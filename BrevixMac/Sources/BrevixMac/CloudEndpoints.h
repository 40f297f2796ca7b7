// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>
#include <QStringList>
#include <QUrl>

#include <optional>

class QProcessEnvironment;

/// The one place that builds the addresses of the cloud services: the real hosts, a local cloud, or the
/// official emulators. A value.
class CloudEndpoints
{
public:
    /// The real hosts, each replaced by the emulator that its environment variable names
    /// (FIRESTORE_EMULATOR_HOST, FIREBASE_AUTH_EMULATOR_HOST: "host:port" without a scheme).
    static CloudEndpoints production(const QProcessEnvironment &environment);

    /// Everything at one origin, in the emulators' URL shapes: "http://127.0.0.1:PORT".
    static CloudEndpoints local(const QUrl &origin);

    /// The same for a library server that somebody else runs. It must be HTTPS, or on this computer: nothing
    /// for any other address.
    static std::optional<CloudEndpoints> server(const QUrl &origin);

    /// Which set of services these are. A session that another set has issued must not be used here: its
    /// tokens would reach a server that has not issued them. All local clouds of a user count as one, since
    /// only their port changes from start to start.
    QString issuer() const { return m_issuer; }

    // Each gives nothing when no valid URL comes out.

    /// "…/o/oauth2/v2/auth": Google's authorization page, without its query.
    std::optional<QUrl> authorization() const;

    /// "…/token": where an authorization code becomes Google tokens.
    std::optional<QUrl> tokenExchange() const;

    /// "…/v1/accounts:signInWithIdp?key=…" of the Identity Toolkit.
    std::optional<QUrl> signInWithIdp(const QString &apiKey) const;

    /// "…/v1/projects/{projectID}/databases/(default)/documents/" followed by @p encodedPath and, when not
    /// empty, "?" and @p query.
    std::optional<QUrl> firestoreDocuments(const QString &projectID, const QString &encodedPath,
                                           const QString &query = {}) const;

    /// "…/v1/token?key=…" of the Secure Token service.
    std::optional<QUrl> secureToken(const QString &apiKey) const;

    /// The callable function @p name of @p projectID in the region us-central1.
    std::optional<QUrl> callableFunction(const QString &projectID, const QString &name) const;

private:
    QString m_issuer;
    QUrl m_authorizationBase;
    QUrl m_tokenExchangeBase;
    QUrl m_identityToolkitBase;
    QUrl m_firestoreBase;
    QUrl m_secureTokenBase;
    std::optional<QUrl> m_functionsOrigin; ///< nothing: Google's host of the project
};
