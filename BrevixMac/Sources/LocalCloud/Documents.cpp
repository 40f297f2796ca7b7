// SPDX-License-Identifier: GPL-3.0-or-later
#include "Documents.h"

#include "Answers.h"
#include "Database.h"

#include <QJsonDocument>
#include <QSqlQuery>

namespace Cloud {

namespace {

Timestamp timestampAt(const QSqlQuery &query, int column)
{
    return Timestamp(std::chrono::microseconds(query.value(column).toLongLong()));
}

/// Of a row "id, fields, created, updated, owner".
StoredDocument documentAt(const QSqlQuery &query)
{
    return {query.value(0).toString(), query.value(1).toByteArray(), timestampAt(query, 2),
            timestampAt(query, 3), query.value(4).toString()};
}

} // namespace

QByteArray documentJson(const QString &collectionName, const StoredDocument &document)
{
    QByteArray json = R"({"name":)" + jsonString(collectionName + u'/' + document.id);
    if (document.fields != "{}")
        json += R"(,"fields":)" + document.fields;
    json += R"(,"createTime":")" + formatTimestamp(document.createdAt) + R"(","updateTime":")" +
            formatTimestamp(document.updatedAt) + "\"}";
    return json;
}

QList<StoredDocument> Documents::list(const QString &collection, int limit, const QString &afterID) const
{
    QList<StoredDocument> documents;
    visit(collection, limit, afterID, [&documents](const StoredDocument &document) {
        documents.append(document);
        return true;
    });
    return documents;
}

void Documents::visit(const QString &collection, int limit, const QString &afterID, const Visit &visit) const
{
    // A null text would be bound as NULL, which no id comes after.
    const QString after = afterID.isNull() ? QStringLiteral("") : afterID;
    QSqlQuery query =
        m_database.run(QStringLiteral("SELECT id, fields, created, updated, owner FROM documents"
                                      " WHERE collection = ? AND id > ? ORDER BY id LIMIT ?"),
                       {collection, after, limit});
    while (query.next())
        if (!visit(documentAt(query)))
            return;
}

std::optional<StoredDocument> Documents::find(const QString &collection, const QString &id) const
{
    QSqlQuery query =
        m_database.run(QStringLiteral("SELECT id, fields, created, updated, owner FROM documents"
                                      " WHERE collection = ? AND id = ?"),
                       {collection, id});
    return query.next() ? std::optional(documentAt(query)) : std::nullopt;
}

void Documents::put(const QString &collection, const QString &id, const QJsonObject &fields, Timestamp now,
                    const QString &owner)
{
    const qint64 micros = now.time_since_epoch().count();
    m_database.run(QStringLiteral("INSERT INTO documents(collection, id, fields, created, updated, owner)"
                                  " VALUES(?, ?, ?, ?, ?, ?) ON CONFLICT(collection, id)"
                                  " DO UPDATE SET fields = excluded.fields, updated = excluded.updated"),
                   {collection, id, QJsonDocument(fields).toJson(QJsonDocument::Compact), micros, micros,
                    owner.isEmpty() ? QVariant() : QVariant(owner)});
}

void Documents::remove(const QString &collection, const QString &id)
{
    m_database.run(QStringLiteral("DELETE FROM documents WHERE collection = ? AND id = ?"), {collection, id});
}

} // namespace Cloud
