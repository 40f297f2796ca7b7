// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "AppConfiguration.h"
#include "CloudEndpoints.h"

#include <QMap>

#include <functional>

/// The pieces of one OAuth 2.0 authorization with PKCE (RFC 7636, method S256) for a native application.
namespace GoogleAuthorization {

/// 64 random bits from the system's secure source.
quint64 secureBits();

/// @p length characters, each as likely as every other, from the 66 that a URL takes unencoded.
/// @p draw gives 64 random bits.
QString randomURLSafeString(qsizetype length, const std::function<quint64()> &draw = &secureBits);

/// What the server is told of @p verifier before it sees it.
QString codeChallenge(const QString &verifier);

/// The secrets of one attempt. A value; never logged, never stored.
struct Attempt
{
    QString state;
    QString codeVerifier;
    QString redirectURI;

    static Attempt make(const FirebaseRuntimeConfiguration &firebase);

    /// The page to open. Nothing when no valid URL comes out.
    std::optional<QUrl> authorizationURL(const CloudEndpoints &endpoints,
                                         const FirebaseRuntimeConfiguration &firebase) const;

    /// Whether @p callback leads to the redirect path and carries this attempt's state, as every answer of
    /// the server does, a refusal included.
    bool isAnsweredBy(const QUrl &callback) const;

    /// The body that exchanges @p authorizationCode for tokens.
    QByteArray tokenExchangeBody(const QString &authorizationCode, const QString &clientID) const;
};

/// The code in @p callback. Throws AuthError for a refusal of the server, another attempt's callback, and one
/// without a code. Of a repeated query item the first counts.
QString authorizationCode(const QUrl &callback, const QString &expectedState);

/// application/x-www-form-urlencoded, in ascending order.
QByteArray formEncodedQuery(const QMap<QString, QString> &pairs);

} // namespace GoogleAuthorization
