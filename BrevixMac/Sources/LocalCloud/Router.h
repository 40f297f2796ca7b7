// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "AuthorizationApi.h"
#include "FirestoreReadApi.h"
#include "IdentityToolkitApi.h"
#include "Request.h"
#include "RequestGate.h"
#include "SecureTokenApi.h"
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
    Response data(const Request &request, const QStringList &pieces);
    void welcome(const Account &account);
    std::optional<QString> userOf(const Request &request) const;
    bool mayRead(const QString &uid, const QStringList &segments) const;

    Site m_site;
    RequestGate m_gate;
    State &m_state;
    FirestoreReadApi m_firestore;
    AuthorizationApi m_authorization;
    TokenExchangeApi m_tokenExchange;
    IdentityToolkitApi m_identityToolkit;
    SecureTokenApi m_secureToken;
};

} // namespace Cloud
