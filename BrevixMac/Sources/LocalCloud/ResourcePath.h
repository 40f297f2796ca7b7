// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>
#include <QString>
#include <QStringList>

#include <optional>

namespace Cloud {

/// The percent-decoded pieces of an URL path, empty ones at its ends dropped. Nothing when a piece is no
/// valid UTF-8 or holds an encoded "/" or NUL, which no name may contain.
std::optional<QStringList> decodedPath(const QByteArray &encodedPath);

/// What a Firestore URL names: a collection or a document of a project's database. A value.
class ResourcePath
{
public:
    /// From the pieces after the version: "projects", P, "databases", D, "documents", …. Nothing for any
    /// other shape or for names that documents cannot have.
    static std::optional<ResourcePath> fromPieces(const QStringList &pieces);

    /// The document @p id of this collection; nothing for an id that a document cannot have.
    std::optional<ResourcePath> child(const QString &id) const;

    const QString &projectID() const { return m_projectID; }
    const QString &databaseID() const { return m_databaseID; }

    /// The pieces below "documents".
    const QStringList &segments() const { return m_segments; }

    bool isRoot() const { return m_segments.isEmpty(); }
    bool isCollection() const { return m_segments.size() % 2 == 1; }
    bool isDocument() const { return !isRoot() && !isCollection(); }

    /// The path of the collection: this one, or the one that the document is in.
    QString collection() const;
    QString documentID() const { return m_segments.constLast(); }

    /// "projects/P/databases/D/documents/" and the collection, as documents are named.
    QString collectionName() const;

private:
    bool isValid() const;

    QString m_projectID;
    QString m_databaseID;
    QStringList m_segments;
};

} // namespace Cloud
