// SPDX-License-Identifier: GPL-3.0-or-later
#include "State.h"

#include "SecureRandom.h"

#include <utility>

namespace Cloud {

State::State(const Site &site, const QString &databasePath, const QByteArray &signingKey, Clock time)
    : clock(std::move(time))
    , database(databasePath)
    , documents(database)
    , accounts(database, clock)
    , codes(clock)
    , forms(derivedKey(signingKey, "sign-in form"), clock)
    , idTokens(signingKey, site.projectID, clock)
    , providerTokens(derivedKey(signingKey, "identity provider"), site.clientID, clock)
{
}

} // namespace Cloud
