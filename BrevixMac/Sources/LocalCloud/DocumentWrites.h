// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "DocumentAccess.h"
#include "FieldPath.h"

#include <QJsonArray>

namespace Cloud {

/// What must be true of a document before it is written. A value.
struct Precondition
{
    std::optional<bool> exists;
    std::optional<Timestamp> updateTime;

    /// From {"exists":…} or {"updateTime":…}. Throws RequestRefused.
    static Precondition fromJson(const QJsonValue &json);
};

/// One change of one document. A value.
struct DocumentWrite
{
    enum class Kind { update, remove, verify };

    Kind kind = Kind::update;
    ResourcePath path;
    QJsonObject fields;                        ///< canonical
    std::optional<QList<FieldPath>> mask = {}; ///< absent: the fields replace the whole document
    QJsonArray transforms = {}; ///< "fieldTransforms" as they came, carried out after the update
    Precondition precondition = {};

    /// From an element of the "writes" of a commit. Throws RequestRefused.
    static DocumentWrite fromJson(const QJsonObject &json, const DocumentAccess &access);
};

/// Carries writes out, each inside the caller's transaction. Throws RequestRefused and StorageError.
class DocumentWriter
{
public:
    DocumentWriter(Documents &documents, DocumentAccess access);

    struct Result
    {
        StoredDocument document;
        QJsonArray transformResults;
    };

    Result apply(const DocumentWrite &write, const QString &uid, Timestamp now);

    const DocumentAccess &access() const { return m_access; }

private:
    Documents &m_documents;
    DocumentAccess m_access;
};

/// Every field path of @p texts. Throws RequestRefused.
QList<FieldPath> parseFieldPaths(const QStringList &texts);

/// The texts of a JSON array. Throws RequestRefused when it holds something else.
QStringList textsOf(const QJsonValue &array);

} // namespace Cloud
