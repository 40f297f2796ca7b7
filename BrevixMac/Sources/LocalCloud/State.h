// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Accounts.h"
#include "AuthorizationCodes.h"
#include "AuthorizationRequest.h"
#include "Database.h"
#include "Documents.h"
#include "IdTokens.h"
#include "Site.h"

namespace Cloud {

/// What the interfaces of one server share. Belongs to the server's thread.
struct State
{
    State(const Site &site, const QString &databasePath, const QByteArray &signingKey, Clock clock);

    Clock clock;
    Database database;
    Documents documents;
    Accounts accounts;
    AuthorizationCodes codes;
    AuthorizationForms forms;
    IdTokens idTokens;       ///< the ones that open a library
    IdTokens providerTokens; ///< the ones that prove who somebody is, and open nothing
};

} // namespace Cloud
