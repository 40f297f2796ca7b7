// SPDX-License-Identifier: GPL-3.0-or-later
#include "Router.h"

#include "Answers.h"
#include "RequestRefused.h"
#include "StarterLibrary.h"
#include "State.h"

#include <QLoggingCategory>

#include <exception>
#include <utility>

namespace Cloud {

namespace {

Q_LOGGING_CATEGORY(logRouter, "brevix.localcloud.router")

/// The emulators' URLs name the host of the real service in front of the path.
const QStringList servicePrefixes{QStringLiteral("firestore.googleapis.com"),
                                  QStringLiteral("securetoken.googleapis.com"),
                                  QStringLiteral("identitytoolkit.googleapis.com")};

const QStringList authorizationPath{QStringLiteral("o"), QStringLiteral("oauth2"), QStringLiteral("v2"),
                                    QStringLiteral("auth")};
const QStringList tokenPath{QStringLiteral("token")};
const QStringList sharePath{QStringLiteral("public")};
const QString accountsPrefix = QStringLiteral("accounts:");

Response noSuchRoute()
{
    return notFound(QStringLiteral("There is nothing at this address."));
}

} // namespace

Router::Router(Site site, State &state)
    : m_site(std::move(site))
    , m_gate(m_site)
    , m_state(state)
    , m_firestore(state, DocumentAccess(m_site.projectID, m_site.libraryAppID))
    , m_authorization(state.accounts, state.codes, {m_site.clientID, m_site.redirectScheme}, state.forms,
                      m_site.asksPasswords ? AuthorizationApi::Entry::password
                                           : AuthorizationApi::Entry::open,
                      state.clock, [this](const Account &account) { welcome(account); })
    , m_tokenExchange(state.accounts, state.codes, state.providerTokens, m_site.clientID)
    , m_identityToolkit(state.accounts, state.idTokens, state.providerTokens, m_site.apiKey)
    , m_secureToken(state.accounts, state.idTokens, m_site.apiKey, m_site.projectID)
    , m_sharePage(state.documents, m_site.libraryAppID)
    , m_functions(state.idTokens, m_site.model)
{
}

Response Router::handle(const Request &request)
{
    try {
        const auto refusal = m_gate.refusal(request);
        return refusal ? *refusal : route(request);
    } catch (const RequestRefused &refused) {
        return refused.answer();
    } catch (const StorageError &error) {
        qCWarning(logRouter) << "A request failed in the database:" << error.what();
        return errorAnswer(503, "UNAVAILABLE",
                           QStringLiteral("The library database cannot be used right now."));
    } catch (const std::exception &error) {
        qCCritical(logRouter) << "A request failed:" << error.what();
        return errorAnswer(500, "INTERNAL", QStringLiteral("The server could not carry this out."));
    }
}

/// "{project}/us-central1/{function}"
bool Router::isFunction(const QStringList &pieces) const
{
    return pieces.size() == 3 && pieces[0] == m_site.projectID && pieces[1] == QLatin1String("us-central1");
}

Response Router::route(const Request &request)
{
    auto pieces = decodedPath(request.path);
    if (!pieces)
        return invalidArgument(QStringLiteral("The address is not valid."));
    if (!pieces->isEmpty() && servicePrefixes.contains(pieces->constFirst()))
        pieces->removeFirst();
    if (*pieces == authorizationPath)
        return m_authorization.handle(request);
    if (*pieces == sharePath)
        return m_sharePage.handle(request);
    if (isFunction(*pieces) && request.method == "POST")
        return m_functions.call(pieces->constLast(), request);
    if (*pieces == tokenPath && request.method == "POST")
        return m_tokenExchange.exchange(request);
    if (pieces->size() < 2 || pieces->takeFirst() != QLatin1String("v1"))
        return noSuchRoute();
    const QString service = pieces->constFirst();
    if (service == QLatin1String("projects"))
        return m_firestore.handle(request, *pieces);
    if (service == QLatin1String("token") && pieces->size() == 1 && request.method == "POST")
        return m_secureToken.refresh(request);
    if (service.startsWith(accountsPrefix) && pieces->size() == 1 && request.method == "POST")
        return m_identityToolkit.handle(service.sliced(accountsPrefix.size()), request);
    return noSuchRoute();
}

/// A new account has something to try, like a new installation.
void Router::welcome(const Account &account)
{
    seedStarterLibrary(m_state.database, m_site.libraryAppID, account.uid, m_state.clock());
}

} // namespace Cloud
