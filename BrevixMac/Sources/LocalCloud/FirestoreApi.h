// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "FirestoreQueryApi.h"
#include "FirestoreReadApi.h"
#include "FirestoreWriteApi.h"

namespace Cloud {

struct State;

/// Finds who asks the Firestore REST interface (v1) for what, and the operation that answers. Throws
/// RequestRefused and StorageError.
class FirestoreApi
{
public:
    /// @p state must outlive this object.
    FirestoreApi(State &state, const DocumentAccess &access);

    /// @p pieces are the decoded ones of the path, from "projects" on.
    Response handle(const Request &request, QStringList pieces);

private:
    Response read(const Request &request, const ResourcePath &path, const std::optional<QString> &uid) const;
    Response write(const Request &request, const ResourcePath &path, const QString &uid);
    Response operate(const QByteArray &operation, const Request &request, const ResourcePath &path,
                     const QString &uid);
    std::optional<QString> userOf(const Request &request) const;

    const State &m_state;
    DocumentAccess m_access;
    FirestoreReadApi m_reading;
    FirestoreWriteApi m_writing;
    FirestoreQueryApi m_querying;
};

} // namespace Cloud
