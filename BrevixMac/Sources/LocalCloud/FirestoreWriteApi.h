// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "DocumentWrites.h"
#include "Request.h"

namespace Cloud {

class Database;

/// Answers the writing half of the Firestore REST interface (v1). The caller has checked who @p uid is; what
/// that user may write is checked here. Throws RequestRefused and StorageError.
class FirestoreWriteApi
{
public:
    FirestoreWriteApi(Database &database, Documents &documents, DocumentAccess access, Clock clock);

    /// POST on a collection: a new document, named by the server unless the request names it.
    Response create(const ResourcePath &collection, const Request &request, const QString &uid);

    /// PATCH on a document.
    Response patch(const ResourcePath &document, const Request &request, const QString &uid);

    /// DELETE on a document.
    Response remove(const ResourcePath &document, const Request &request, const QString &uid);

    /// POST on "documents:commit": all writes or none.
    Response commit(const Request &request, const QString &uid);

private:
    Response writeOne(const DocumentWrite &write, const QString &uid);

    Database &m_database;
    DocumentWriter m_writer;
    Clock m_clock;
};

} // namespace Cloud
