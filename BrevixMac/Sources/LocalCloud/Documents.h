// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Timestamp.h"

#include <QByteArray>
#include <QJsonObject>
#include <QList>
#include <QString>

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
};

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

    std::optional<StoredDocument> find(const QString &collection, const QString &id) const;

    /// Creates the document or replaces its fields; the creation time of an existing one stays.
    void put(const QString &collection, const QString &id, const QJsonObject &fields, Timestamp now);

    void remove(const QString &collection, const QString &id);

private:
    Database &m_database;
};

} // namespace Cloud
