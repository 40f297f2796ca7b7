// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Request.h"

#include <QJsonObject>
#include <QString>

namespace Cloud {

class Accounts;
class IdTokens;

/// The operations of the Identity Toolkit interface (v1) that a sign-in with an identity provider needs.
/// Throws StorageError.
class IdentityToolkitApi
{
public:
    IdentityToolkitApi(Accounts &accounts, const IdTokens &idTokens, const IdTokens &providerTokens,
                       QString apiKey);

    /// POST /v1/accounts:@p operation?key=…
    Response handle(const QString &operation, const Request &request);

private:
    Response signInWithIdp(const QJsonObject &body);
    Response lookup(const QJsonObject &body) const;

    Accounts &m_accounts;
    const IdTokens &m_idTokens;
    const IdTokens &m_providerTokens;
    QString m_apiKey;
};

} // namespace Cloud
