// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "DocumentAccess.h"
#include "Request.h"

namespace Cloud {

/// Answers the custom reading operations of the Firestore REST interface (v1). What @p uid may read is
/// checked here. Throws RequestRefused and StorageError.
class FirestoreQueryApi
{
public:
    static constexpr qsizetype maximumNames = 500; ///< of documents in one request
    static constexpr qsizetype usualMaximumSize = qsizetype(64) * 1024 * 1024; // bytes

    /// Answers larger than @p maximumSize bytes, and queries over larger collections, are refused.
    FirestoreQueryApi(const Documents &documents, DocumentAccess access, Clock clock,
                      qsizetype maximumSize = usualMaximumSize);

    /// POST on "documents:batchGet".
    Response batchGet(const Request &request, const QString &uid) const;

    /// POST on "…:runQuery" of the documents' root or of a document.
    Response runQuery(const ResourcePath &parent, const Request &request, const QString &uid) const;

private:
    const Documents &m_documents;
    DocumentAccess m_access;
    Clock m_clock;
    qsizetype m_maximumSize;
};

} // namespace Cloud
