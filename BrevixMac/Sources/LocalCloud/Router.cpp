// SPDX-License-Identifier: GPL-3.0-or-later
#include "Router.h"

#include "Answers.h"
#include "StarterLibrary.h"
#include "State.h"

#include <QLoggingCategory>

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
const QString accountsPrefix = QStringLiteral("accounts:");

Response noSuchRoute()
{
    return notFound(QStringLiteral("There is nothing at this address."));
}

bool isDataMethod(const QByteArray &method)
{
    return method == "GET" || method == "POST" || method == "PATCH" || method == "DELETE";
}

} // namespace

Router::Router(Site site, State &state)
    : m_site(std::move(site))
    , m_gate(m_site.port)
    , m_state(state)
    , m_firestore(state.documents)
    , m_authorization(state.accounts, state.codes, {m_site.clientID, m_site.redirectScheme}, state.forms,
                      [this](const Account &account) { welcome(account); })
    , m_tokenExchange(state.accounts, state.codes, state.providerTokens, m_site.clientID)
    , m_identityToolkit(state.accounts, state.idTokens, state.providerTokens, m_site.apiKey)
    , m_secureToken(state.accounts, state.idTokens, m_site.apiKey, m_site.projectID)
{
}

Response Router::handle(const Request &request)
{
    try {
        const auto refusal = m_gate.refusal(request);
        return refusal ? *refusal : route(request);
    } catch (const StorageError &error) {
        qCWarning(logRouter) << "A request failed in the database:" << error.what();
        return errorAnswer(503, "UNAVAILABLE",
                           QStringLiteral("The library database cannot be used right now."));
    }
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
    if (*pieces == tokenPath && request.method == "POST")
        return m_tokenExchange.exchange(request);
    if (pieces->size() < 2 || pieces->takeFirst() != QLatin1String("v1"))
        return noSuchRoute();
    const QString service = pieces->constFirst();
    if (service == QLatin1String("projects"))
        return data(request, *pieces);
    if (service == QLatin1String("token") && pieces->size() == 1 && request.method == "POST")
        return m_secureToken.refresh(request);
    if (service.startsWith(accountsPrefix) && pieces->size() == 1 && request.method == "POST")
        return m_identityToolkit.handle(service.sliced(accountsPrefix.size()), request);
    return noSuchRoute();
}

/// Everything below "projects" belongs to somebody.
Response Router::data(const Request &request, const QStringList &pieces)
{
    const auto user = userOf(request);
    if (!user)
        return unauthenticated();
    if (!isDataMethod(request.method))
        return noSuchRoute();
    if (request.method != "GET")
        return unimplemented();
    const auto path = ResourcePath::fromPieces(pieces);
    if (!path || path->isRoot())
        return noSuchRoute();
    if (path->projectID() != m_site.projectID)
        return permissionDenied();
    if (path->databaseID() != QLatin1String("(default)"))
        return notFound(QStringLiteral("The database \"%1\" does not exist.").arg(path->databaseID()));
    return mayRead(*user, path->segments()) ? m_firestore.get(*path, request) : permissionDenied();
}

std::optional<QString> Router::userOf(const Request &request) const
{
    const QByteArray authorization = request.header("authorization");
    if (request.headerCount("authorization") != 1 || authorization.left(7).toLower() != "bearer ")
        return std::nullopt;
    return m_state.idTokens.userOf(authorization.sliced(7).trimmed());
}

/// A new account has something to try, like a new installation.
void Router::welcome(const Account &account)
{
    seedStarterLibrary(m_state.database, m_site.libraryAppID, account.uid, m_state.clock());
}

/// A user's own documents, and what anybody has shared.
bool Router::mayRead(const QString &uid, const QStringList &segments) const
{
    if (segments.size() < 5 || segments[0] != QLatin1String("artifacts") ||
        segments[1] != m_site.libraryAppID)
        return false;
    if (segments[2] == QLatin1String("users"))
        return segments[3] == uid;
    return segments[2] == QLatin1String("public") && segments[3] == QLatin1String("data");
}

} // namespace Cloud
