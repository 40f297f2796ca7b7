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

    /// "…/v1/projects/{projectID}/databases/(default)/documents/" followed by @p encodedPath and, when not
    /// empty,
    /// "?" and @p query. Nothing when no valid URL comes out.
    std::optional<QUrl> firestoreDocuments(const QString &projectID, const QString &encodedPath,
                                           const QString &query = {}) const;

    /// "…/v1/token?key=…" of the Secure Token service.
    std::optional<QUrl> secureToken(const QString &apiKey) const;

private:
    QUrl m_firestoreBase;
    QUrl m_secureTokenBase;
};
