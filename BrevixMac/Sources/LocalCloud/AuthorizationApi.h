// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "AuthorizationCodes.h"
#include "AuthorizationRequest.h"
#include "Request.h"

#include <functional>

namespace Cloud {

class Accounts;
struct Account;

/// The OAuth 2.0 authorization endpoint: a page that asks who somebody is and leads back to the program that
/// wants to know, with a code. Throws StorageError.
class AuthorizationApi
{
public:
    /// What happens to an account that was just made.
    using Welcome = std::function<void(const Account &)>;

    AuthorizationApi(Accounts &accounts, AuthorizationCodes &codes, OAuthClient client,
                     AuthorizationForms forms, Welcome welcome);

    /// /o/oauth2/v2/auth: GET shows the page, POST takes one of its forms.
    Response handle(const Request &request);

private:
    Response page(const Request &request) const;
    Response submit(const Request &request);
    Response create(const AuthorizationRequest &request, const QUrlQuery &form);
    Response grant(const AuthorizationRequest &request, const QString &uid);

    Accounts &m_accounts;
    AuthorizationCodes &m_codes;
    OAuthClient m_client;
    AuthorizationForms m_forms;
    Welcome m_welcome;
};

} // namespace Cloud
