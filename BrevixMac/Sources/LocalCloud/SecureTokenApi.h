// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Request.h"

#include <QString>

namespace Cloud {

class Accounts;
class IdTokens;

/// Answers the token refresh of the Secure Token interface (v1). Throws StorageError.
class SecureTokenApi
{
public:
    SecureTokenApi(Accounts &accounts, const IdTokens &idTokens, QString apiKey, QString projectID);

    /// POST /v1/token?key=…
    Response refresh(const Request &request);

private:
    Accounts &m_accounts;
    const IdTokens &m_idTokens;
    QString m_apiKey;
    QString m_projectID;
};

} // namespace Cloud
