// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Timestamp.h"

#include <QByteArray>
#include <QString>
#include <QUrlQuery>

#include <optional>
#include <utility>

namespace Cloud {

/// What a program that wants to sign somebody in has asked for, checked. A value.
struct AuthorizationRequest
{
    QString redirectUri;
    QString state;
    QString codeChallenge; ///< of the method S256

    /// The redirect with @p parameter and the state: "…?code=…&state=…".
    QByteArray redirectUrl(const QString &name, const QString &value) const;

    bool operator==(const AuthorizationRequest &) const = default;
};

/// True for "@p scheme:/oauthredirect" and for "http://" on a loopback name with a port: addresses that lead
/// to a program on the browser's own computer.
bool isAcceptableRedirect(const QString &uri, const QString &scheme);

/// True when @p verifier is one by RFC 7636 and @p challenge is its S256 challenge.
bool answersChallenge(const QString &verifier, const QString &challenge);

/// The client that this server signs people in for.
struct OAuthClient
{
    QString clientID;
    QString redirectScheme;
};

/// The outcome of reading an authorization request (RFC 6749, 4.1.1, with PKCE).
struct AuthorizationReading
{
    /// Filled except for what @p problem complains of.
    AuthorizationRequest request;
    QString problem;             ///< for the person at the browser, who must not be redirected; else empty
    const char *error = nullptr; ///< for the client, by a redirect; else null
};

AuthorizationReading readAuthorizationRequest(const QUrlQuery &query, const OAuthClient &client);

/// Carries a checked request through the sign-in page and back, signed, so that a form that this server has
/// not written is worth nothing. Any thread.
class AuthorizationForms
{
public:
    static constexpr std::chrono::minutes lifetime{10};

    AuthorizationForms(QByteArray key, Clock clock);

    QString seal(const AuthorizationRequest &request) const;

    /// Nothing for a text that was not sealed here, or too long ago.
    std::optional<AuthorizationRequest> open(const QString &sealed) const;

private:
    QByteArray signature(const QByteArray &payload) const;

    QByteArray m_key;
    Clock m_clock;
};

} // namespace Cloud
