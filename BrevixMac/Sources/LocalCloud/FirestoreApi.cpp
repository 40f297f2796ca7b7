// SPDX-License-Identifier: GPL-3.0-or-later
#include "FirestoreApi.h"

#include "Answers.h"
#include "BearerToken.h"
#include "RequestRefused.h"
#include "State.h"

namespace Cloud {

namespace {

const QList<QByteArray> dataMethods{"GET", "POST", "PATCH", "DELETE"};

/// The custom operation that a POST asks for: what follows the last ":" of the path as it was sent, where the
/// colon of a name would be encoded. Empty when there is none.
QByteArray operationOf(const Request &request)
{
    const QByteArray last = request.path.mid(request.path.lastIndexOf('/') + 1);
    const qsizetype colon = last.lastIndexOf(':');
    return request.method == "POST" && colon >= 0 ? last.sliced(colon + 1) : QByteArray();
}

Response nothingHere()
{
    return notFound(QStringLiteral("There is nothing at this address."));
}

} // namespace

FirestoreApi::FirestoreApi(State &state, const DocumentAccess &access)
    : m_state(state)
    , m_access(access)
    , m_reading(state.documents)
    , m_writing(state.database, state.documents, access, state.clock)
    , m_querying(state.documents, access, state.clock)
{
}

Response FirestoreApi::handle(const Request &request, QStringList pieces)
{
    const auto uid = userOf(request);
    if (!uid && request.method != "GET")
        return unauthenticated();
    if (!dataMethods.contains(request.method))
        return nothingHere();
    const QByteArray operation = operationOf(request);
    if (!operation.isEmpty())
        pieces.last().chop(operation.size() + 1);
    const auto path = ResourcePath::fromPieces(pieces);
    if (!path || (path->isRoot() && operation.isEmpty()))
        return uid ? nothingHere() : unauthenticated();
    if (request.method == "GET")
        return read(request, *path, uid);
    m_access.requireOwn(*path);
    return operation.isEmpty() ? write(request, *path, *uid) : operate(operation, request, *path, *uid);
}

Response FirestoreApi::read(const Request &request, const ResourcePath &path,
                            const std::optional<QString> &uid) const
{
    m_access.requireReading(uid, path);
    m_access.requireOwn(path);
    return m_reading.get(path, request);
}

Response FirestoreApi::write(const Request &request, const ResourcePath &path, const QString &uid)
{
    if (request.method == "POST" && path.isCollection())
        return m_writing.create(path, request, uid);
    if (request.method == "PATCH" && path.isDocument())
        return m_writing.patch(path, request, uid);
    if (request.method == "DELETE" && path.isDocument())
        return m_writing.remove(path, request, uid);
    return nothingHere();
}

Response FirestoreApi::operate(const QByteArray &operation, const Request &request, const ResourcePath &path,
                               const QString &uid)
{
    if (operation == "runQuery" && !path.isCollection())
        return m_querying.runQuery(path, request, uid);
    if (operation == "batchGet" && path.isRoot())
        return m_querying.batchGet(request, uid);
    if (operation == "commit" && path.isRoot())
        return m_writing.commit(request, uid);
    return unimplemented();
}

/// Nothing when no token was sent. One that is not good is refused, not overlooked.
std::optional<QString> FirestoreApi::userOf(const Request &request) const
{
    if (request.headerCount("authorization") == 0)
        return std::nullopt;
    auto uid = m_state.idTokens.userOf(bearerToken(request));
    if (!uid)
        throw RequestRefused(unauthenticated());
    return uid;
}

} // namespace Cloud
