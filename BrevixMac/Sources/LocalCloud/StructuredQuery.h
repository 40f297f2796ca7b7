// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Documents.h"
#include "FieldPath.h"

#include <QJsonArray>

#include <functional>

namespace Cloud {

/// A document while a query looks at it. A value.
struct QueriedDocument
{
    StoredDocument stored;
    QJsonObject fields;
    QString name; ///< the full one

    /// The value at @p path, which may be the document's name; empty when there is none.
    QJsonObject value(const FieldPath &path) const;
};

/// A query over one collection, read and checked once. Throws RequestRefused: 501 for what is not done here.
class StructuredQuery
{
public:
    explicit StructuredQuery(const QJsonObject &json);

    const QString &collectionID() const { return m_collectionID; }

    /// The documents that match, in their order, cut to the window and to the selected fields.
    QList<QueriedDocument> run(QList<QueriedDocument> documents) const;

private:
    using Predicate = std::function<bool(const QueriedDocument &)>;

    struct Order
    {
        FieldPath path;
        int direction; ///< 1 ascending, -1 descending
    };

    struct Cursor
    {
        QList<QJsonObject> values;
        bool isBefore = false;
    };

    void readSource(const QJsonValue &from);
    Predicate readFilter(const QJsonObject &filter);
    Predicate readComposite(const QJsonObject &filter);
    Predicate readField(const QJsonObject &filter);
    Predicate readUnary(const QJsonObject &filter) const;
    void readOrder(const QJsonArray &orders);
    void readSelection(const QJsonValue &select);
    std::optional<Cursor> readCursor(const QJsonValue &json) const;
    void addOrder(const FieldPath &path);
    int compare(const QueriedDocument &left, const QueriedDocument &right) const;
    int compare(const QueriedDocument &document, const Cursor &cursor) const;
    bool isInWindow(const QueriedDocument &document) const;

    QString m_collectionID;
    Predicate m_filter;
    QList<Order> m_orders;
    QList<FieldPath> m_inequalities;
    std::optional<Cursor> m_start;
    std::optional<Cursor> m_end;
    std::optional<QList<FieldPath>> m_selection;
    qint64 m_offset = 0;
    qint64 m_limit = -1;
};

} // namespace Cloud
