// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "FirestoreReadApi.h"
#include "Request.h"
#include "RequestGate.h"
#include "SecureTokenApi.h"

#include <QString>
#include <QStringList>

namespace Cloud {

/// Finds who may ask for what, and the interface that answers it. Every request gets an answer of the cloud's
/// error shape at least; nothing is thrown.
class Router
{
public:
    struct Site
    {
        quint16 port = 0;
        QString projectID;
        QString libraryAppID;
        QString apiKey;
    };

    Router(Site site, Documents &documents, Accounts &accounts, const IdTokens &idTokens);

    Response handle(const Request &request);

private:
    Response route(const Request &request);
    Response data(const Request &request, const QStringList &pieces);
    std::optional<QString> userOf(const Request &request) const;
    bool mayRead(const QString &uid, const QStringList &segments) const;

    Site m_site;
    RequestGate m_gate;
    const IdTokens &m_idTokens;
    FirestoreReadApi m_firestore;
    SecureTokenApi m_secureToken;
};

} // namespace Cloud
