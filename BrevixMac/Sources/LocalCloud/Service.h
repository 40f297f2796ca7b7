// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Router.h"
#include "State.h"

namespace Cloud {

/// The whole server without a network: the database, the accounts and the interfaces over them. Belongs to
/// the thread that made it.
class Service
{
public:
    /// Opens the database at @p databasePath and seeds it. When that fails, errorString() says why and every
    /// request is answered with 503.
    Service(const Site &site, const QString &databasePath, const QByteArray &signingKey,
            Clock clock = &systemTime);

    Response handle(const Request &request);

    /// Empty unless the database cannot be used, or was damaged and replaced.
    const QString &errorString() const { return m_errorString; }
    bool isUsable() const { return m_isUsable; }

    struct Session
    {
        Account account;
        QByteArray idToken; ///< empty when the database cannot be used
        QByteArray refreshToken;
        Timestamp expiresAt;
    };

    /// Signs the local user in, in place of the former session.
    Session issueLocalSession();

private:
    void openLibrary(const Site &site);

    State m_state;
    Router m_router;
    QString m_errorString;
    bool m_isUsable = false;
};

} // namespace Cloud
