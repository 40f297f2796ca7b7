// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "AuthorizationCodes.h"
#include "AuthorizationRequest.h"
#include "Passwords.h"
#include "Request.h"
#include "SignInThrottle.h"

#include <functional>
#include <memory>

namespace Cloud {

class Accounts;
struct Account;
struct SignInPage;

/// The OAuth 2.0 authorization endpoint: a page that asks who somebody is and leads back to the program that
/// wants to know, with a code. Throws StorageError.
class AuthorizationApi
{
public:
    /// What happens to an account that was just made.
    using Welcome = std::function<void(const Account &)>;

    /// Who may choose an account on the page: whoever opens it, who may also make new ones; or only who knows
    /// the account's password.
    enum class Entry { open, password };

    AuthorizationApi(Accounts &accounts, AuthorizationCodes &codes, OAuthClient client,
                     AuthorizationForms forms, Entry entry, const Clock &clock, Welcome welcome);

    /// /o/oauth2/v2/auth: GET shows the page, POST takes one of its forms.
    Response handle(const Request &request);

private:
    Response page(const Request &request) const;
    Response submit(const Request &request);
    Response choose(const AuthorizationRequest &request, const QUrlQuery &form);
    Response logIn(const AuthorizationRequest &request, const QUrlQuery &form);
    Response finishLogIn(const AuthorizationRequest &request, const QString &email,
                         const std::optional<Account> &account, bool matches);
    Response refuseLogIn(const AuthorizationRequest &request, const QString &email,
                         const QString &problem) const;
    SignInPage pageFor(const AuthorizationRequest &request) const;
    Response create(const AuthorizationRequest &request, const QUrlQuery &form);
    Response grant(const AuthorizationRequest &request, const QString &uid);

    Accounts &m_accounts;
    AuthorizationCodes &m_codes;
    OAuthClient m_client;
    AuthorizationForms m_forms;
    Welcome m_welcome;
    SignInThrottle m_throttle;
    std::unique_ptr<PasswordChecks> m_passwords; ///< null: none are asked
};

} // namespace Cloud
