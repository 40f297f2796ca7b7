// SPDX-License-Identifier: GPL-3.0-or-later
#include "Service.h"

#include "Answers.h"
#include "StarterLibrary.h"

#include <QLoggingCategory>

#include <utility>

namespace Cloud {

namespace {

Q_LOGGING_CATEGORY(logService, "brevix.localcloud")

}

Service::Service(const Site &site, const QString &databasePath, const QByteArray &signingKey, Clock clock)
    : m_state(site, databasePath, signingKey, std::move(clock))
    , m_router(site, m_state)
{
    openLibrary(site);
}

Response Service::handle(const Request &request)
{
    if (!m_isUsable)
        return errorAnswer(503, "UNAVAILABLE", QStringLiteral("The library database cannot be used."));
    return m_router.handle(request);
}

Service::Session Service::issueLocalSession()
{
    const Account &user = Accounts::localUser();
    Session session{.account = user, .idToken = {}, .refreshToken = {}, .expiresAt = {}};
    if (!m_isUsable)
        return session;
    try {
        session.refreshToken = m_state.accounts.openSession(user, QStringLiteral("local"));
        session.expiresAt = m_state.clock() + IdTokens::lifetime;
        session.idToken = m_state.idTokens.issue(user);
    } catch (const StorageError &error) {
        m_errorString = QString::fromUtf8(error.what());
        qCWarning(logService) << "The local user could not be signed in:" << m_errorString;
    }
    return session;
}

void Service::openLibrary(const Site &site)
{
    m_isUsable = m_state.database.open();
    m_errorString = m_isUsable ? m_state.database.damageReport() : m_state.database.errorString();
    if (!m_isUsable || site.asksPasswords) // the local user has no password
        return;
    try {
        m_state.accounts.put(Accounts::localUser());
        seedStarterLibrary(m_state.database, site.libraryAppID, Accounts::localUser().uid, m_state.clock());
    } catch (const StorageError &error) {
        m_isUsable = false;
        m_errorString = QString::fromUtf8(error.what());
        qCWarning(logService) << "The starter library could not be stored:" << m_errorString;
    }
}

} // namespace Cloud
