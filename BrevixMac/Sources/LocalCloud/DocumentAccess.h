// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Documents.h"
#include "ResourcePath.h"

namespace Cloud {

/// Which documents this server has, and who may do what with them:
/// below artifacts/{library}/users/{uid} that user everything; below artifacts/{library}/public/data anybody
/// may read a document whose name he knows, whoever is signed in may create one, and only its creator may
/// change or delete it. Everything else is refused. A refusal is thrown as RequestRefused. A value.
class DocumentAccess
{
public:
    DocumentAccess(QString projectID, QString libraryAppID);

    /// The document or collection of a percent-decoded @p name, "projects/P/databases/D/documents/…".
    ResourcePath resolve(const QString &name) const;

    /// Refuses paths of another project or database.
    void requireOwn(const ResourcePath &path) const;

    /// @p uid is absent for somebody who has shown no token.
    void requireReading(const std::optional<QString> &uid, const ResourcePath &path) const;

    /// @p present is the document as it is; nothing when it does not exist.
    void requireWriting(const QString &uid, const ResourcePath &path,
                        const std::optional<StoredDocument> &present) const;

private:
    enum class Area { ownLibrary, shared, elsewhere };
    Area areaOf(const std::optional<QString> &uid, const QStringList &segments) const;

    QString m_projectID;
    QString m_libraryAppID;
};

} // namespace Cloud
