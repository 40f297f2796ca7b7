// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Request.h"

#include <QString>

namespace Cloud {

class Accounts;
class AuthorizationCodes;
class IdTokens;

/// The OAuth 2.0 token endpoint for authorization codes with PKCE (RFC 7636). Throws StorageError.
class TokenExchangeApi
{
public:
    /// @p providerTokens issues the identity provider's ID tokens.
    TokenExchangeApi(Accounts &accounts, AuthorizationCodes &codes, const IdTokens &providerTokens,
                     QString clientID);

    /// POST /token
    Response exchange(const Request &request);

private:
    Accounts &m_accounts;
    AuthorizationCodes &m_codes;
    const IdTokens &m_providerTokens;
    QString m_clientID;
};

} // namespace Cloud
