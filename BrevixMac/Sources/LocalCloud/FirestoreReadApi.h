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

    explicit FirestoreReadApi(const Documents &documents)
        : m_documents(documents)
    {
    }

    Response get(const ResourcePath &path, const Request &request) const;

private:
    Response document(const ResourcePath &path) const;
    Response list(const ResourcePath &path, int pageSize, const QString &afterID) const;

    const Documents &m_documents;
};

} // namespace Cloud
