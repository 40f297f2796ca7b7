// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Request.h"
#include "ResourcePath.h"

namespace Cloud {

class Documents;

/// Answers the reading half of the Firestore REST interface (v1): one document, or a page of a collection.
/// The caller has checked who asks and what for. Throws RequestRefused and StorageError.
class FirestoreReadApi
{
public:
    static constexpr int defaultPageSize = 20;
    static constexpr int maximumPageSize = 500;

    /// A page ends early once it is larger than this, and the next one goes on. Brevix follows no page token,
    /// so this is more than it takes of a page: what it cannot have whole it reports rather than showing a
    /// part.
    static constexpr qsizetype usualMaximumAnswerSize = qsizetype(160) * 1024 * 1024; // bytes

    explicit FirestoreReadApi(const Documents &documents,
                              qsizetype maximumAnswerSize = usualMaximumAnswerSize)
        : m_documents(documents)
        , m_maximumAnswerSize(maximumAnswerSize)
    {
    }

    Response get(const ResourcePath &path, const Request &request) const;

private:
    Response document(const ResourcePath &path) const;
    Response list(const ResourcePath &path, int pageSize, const QString &afterID) const;

    const Documents &m_documents;
    qsizetype m_maximumAnswerSize;
};

} // namespace Cloud
