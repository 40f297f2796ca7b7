// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Timestamp.h"

#include <QByteArray>
#include <QJsonObject>
#include <QList>
#include <QString>

#include <functional>
#include <optional>

namespace Cloud {

class Database;

/// A document as it is kept. @p fields is the compact JSON of its "fields" object, so that an answer is a
/// concatenation.
struct StoredDocument
{
    QString id;
    QByteArray fields;
    Timestamp createdAt;
    Timestamp updatedAt;
    QString owner; ///< uid of the user who created it; empty for the server's own
};

/// {"name":…,"fields":…,"createTime":…,"updateTime":…} as documents are answered; "fields" is left out when
/// there are none. @p collectionName is the full one.
QByteArray documentJson(const QString &collectionName, const StoredDocument &document);

/// The documents of all users by collection path ("artifacts/…/prompts", decoded). Belongs to the database's
/// thread; everything throws StorageError.
class Documents
{
public:
    explicit Documents(Database &database)
        : m_database(database)
    {
    }

    /// Up to @p limit documents of @p collection whose id comes after @p afterID, in byte order of their ids.
    QList<StoredDocument> list(const QString &collection, int limit, const QString &afterID) const;

    /// Gives the same ones to @p visit, one after the other, until it answers false.
    using Visit = std::function<bool(const StoredDocument &)>;
    void visit(const QString &collection, int limit, const QString &afterID, const Visit &visit) const;

    std::optional<StoredDocument> find(const QString &collection, const QString &id) const;

    /// Creates the document or replaces its fields; creation time and owner of an existing one stay.
    void put(const QString &collection, const QString &id, const QJsonObject &fields, Timestamp now,
             const QString &owner = {});

    void remove(const QString &collection, const QString &id);

private:
    Database &m_database;
};

} // namespace Cloud
