// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "AuthorizationApi.h"
#include "CallableApi.h"
#include "FirestoreApi.h"
#include "IdentityToolkitApi.h"
#include "Request.h"
#include "RequestGate.h"
#include "SecureTokenApi.h"
#include "SharePage.h"
#include "Site.h"
#include "TokenExchangeApi.h"

#include <QString>
#include <QStringList>

namespace Cloud {

struct State;

/// Finds who may ask for what, and the interface that answers it. Every request gets an answer of the cloud's
/// error shape at least; nothing is thrown.
class Router
{
public:
    /// @p state must outlive this object.
    Router(Site site, State &state);

    Response handle(const Request &request);

private:
    Response route(const Request &request);
    bool isFunction(const QStringList &pieces) const;
    void welcome(const Account &account);

    Site m_site;
    RequestGate m_gate;
    State &m_state;
    FirestoreApi m_firestore;
    AuthorizationApi m_authorization;
    TokenExchangeApi m_tokenExchange;
    IdentityToolkitApi m_identityToolkit;
    SecureTokenApi m_secureToken;
    SharePage m_sharePage;
    CallableApi m_functions;
};

} // namespace Cloud
