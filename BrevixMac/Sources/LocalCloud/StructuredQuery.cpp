// SPDX-License-Identifier: GPL-3.0-or-later
#include "StructuredQuery.h"

#include "Answers.h"
#include "DocumentWrites.h"
#include "RequestRefused.h"
#include "Values.h"

#include <algorithm>
#include <utility>

namespace Cloud {

namespace {

const FieldPath nameField{QStringLiteral("__name__")};

const QStringList doneParts{QStringLiteral("from"),    QStringLiteral("where"),  QStringLiteral("orderBy"),
                            QStringLiteral("select"),  QStringLiteral("offset"), QStringLiteral("limit"),
                            QStringLiteral("startAt"), QStringLiteral("endAt")};

[[noreturn]] void refuse(const QString &reason)
{
    throw RequestRefused(invalidArgument(reason));
}

FieldPath fieldOf(const QJsonObject &json)
{
    const QString text = json.value(u"field").toObject().value(u"fieldPath").toString();
    return parseFieldPaths({text}).constFirst();
}

bool isNull(const QJsonObject &value)
{
    return typeRank(value) == 0;
}

bool contains(const QJsonArray &values, const QJsonObject &value)
{
    return std::any_of(values.begin(), values.end(), [&](const QJsonValue &element) {
        return compareValues(element.toObject(), value) == 0;
    });
}

QJsonArray elementsOf(const QJsonObject &value)
{
    return value.value(u"arrayValue").toObject().value(u"values").toArray();
}

/// Whether @p value stands to @p operand as @p op says; both exist. NaN equals nothing.
std::function<bool(const QJsonObject &, const QJsonObject &)> comparison(const QString &op)
{
    using Value = const QJsonObject &;
    const auto ordered = [](auto test) {
        return [test](Value value, Value operand) {
            return typeRank(value) == typeRank(operand) && !isNaN(value) && !isNaN(operand) &&
                   test(compareValues(value, operand));
        };
    };
    if (op == QLatin1String("EQUAL"))
        return ordered([](int order) { return order == 0; });
    if (op == QLatin1String("LESS_THAN"))
        return ordered([](int order) { return order < 0; });
    if (op == QLatin1String("LESS_THAN_OR_EQUAL"))
        return ordered([](int order) { return order <= 0; });
    if (op == QLatin1String("GREATER_THAN"))
        return ordered([](int order) { return order > 0; });
    if (op == QLatin1String("GREATER_THAN_OR_EQUAL"))
        return ordered([](int order) { return order >= 0; });
    if (op == QLatin1String("NOT_EQUAL"))
        return
            [](Value value, Value operand) { return !isNull(value) && compareValues(value, operand) != 0; };
    if (op == QLatin1String("ARRAY_CONTAINS"))
        return [](Value value, Value operand) { return contains(elementsOf(value), operand); };
    if (op == QLatin1String("IN"))
        return [](Value value, Value operand) { return contains(elementsOf(operand), value); };
    if (op == QLatin1String("NOT_IN"))
        return [](Value value, Value operand) {
            return !isNull(value) && !contains(elementsOf(operand), value);
        };
    if (op == QLatin1String("ARRAY_CONTAINS_ANY"))
        return [](Value value, Value operand) {
            const QJsonArray elements = elementsOf(value);
            return std::any_of(elements.begin(), elements.end(), [&](const QJsonValue &element) {
                return contains(elementsOf(operand), element.toObject());
            });
        };
    return {};
}

/// Filters whose field the results are sorted by when nothing else is asked.
bool isInequality(const QString &op)
{
    return op.startsWith(u"LESS_") || op.startsWith(u"GREATER_") || op.startsWith(u"NOT_");
}

/// A count, which may come as a number, as text, or wrapped in an object.
qint64 countOf(const QJsonValue &json, qint64 whenMissing)
{
    const QJsonValue value = json.isObject() ? json.toObject().value(u"value") : json;
    if (value.isUndefined())
        return whenMissing;
    bool isCount = value.isDouble();
    const qint64 count = isCount ? value.toInteger(-1) : value.toString().toLongLong(&isCount);
    if (!isCount || count < 0)
        refuse(QStringLiteral("A limit or an offset is no count."));
    return count;
}

} // namespace

QJsonObject QueriedDocument::value(const FieldPath &path) const
{
    if (path == nameField)
        return {{QStringLiteral("referenceValue"), name}};
    return valueAt(fields, path).toObject();
}

StructuredQuery::StructuredQuery(const QJsonObject &json)
{
    for (const QString &part : json.keys())
        if (!doneParts.contains(part))
            throw RequestRefused(unimplemented());
    readSource(json.value(u"from"));
    if (json.contains(u"where"))
        m_filter = readFilter(json.value(u"where").toObject());
    readOrder(json.value(u"orderBy").toArray());
    m_start = readCursor(json.value(u"startAt"));
    m_end = readCursor(json.value(u"endAt"));
    readSelection(json.value(u"select"));
    m_offset = countOf(json.value(u"offset"), 0);
    m_limit = countOf(json.value(u"limit"), -1);
}

QList<QueriedDocument> StructuredQuery::run(QList<QueriedDocument> documents) const
{
    documents.removeIf([this](const QueriedDocument &document) {
        const bool lacksOrder = std::any_of(m_orders.begin(), m_orders.end(), [&](const Order &order) {
            return document.value(order.path).isEmpty();
        });
        return lacksOrder || (m_filter && !m_filter(document)) || !isInWindow(document);
    });
    std::stable_sort(documents.begin(), documents.end(),
                     [this](const auto &left, const auto &right) { return compare(left, right) < 0; });
    documents = documents.mid(m_offset, m_limit);
    if (m_selection)
        for (QueriedDocument &document : documents)
            document.fields = projected(document.fields, *m_selection);
    return documents;
}

void StructuredQuery::readSource(const QJsonValue &from)
{
    const QJsonArray sources = from.toArray();
    const QJsonObject source = sources.at(0).toObject();
    if (sources.size() != 1 || source.value(u"allDescendants").toBool())
        throw RequestRefused(unimplemented());
    m_collectionID = source.value(u"collectionId").toString();
}

StructuredQuery::Predicate StructuredQuery::readFilter(const QJsonObject &filter)
{
    if (filter.contains(u"compositeFilter"))
        return readComposite(filter.value(u"compositeFilter").toObject());
    if (filter.contains(u"fieldFilter"))
        return readField(filter.value(u"fieldFilter").toObject());
    if (filter.contains(u"unaryFilter"))
        return readUnary(filter.value(u"unaryFilter").toObject());
    refuse(QStringLiteral("The filter cannot be understood."));
}

StructuredQuery::Predicate StructuredQuery::readComposite(const QJsonObject &filter)
{
    QList<Predicate> parts;
    const QJsonArray filters = filter.value(u"filters").toArray();
    for (const QJsonValue part : filters)
        parts.append(readFilter(part.toObject()));
    const auto holdsFor = [](const QueriedDocument &document) {
        return [&document](const Predicate &part) { return part(document); };
    };
    const QString op = filter.value(u"op").toString();
    if (op == QLatin1String("AND"))
        return [parts, holdsFor](const QueriedDocument &document) {
            return std::all_of(parts.begin(), parts.end(), holdsFor(document));
        };
    if (op == QLatin1String("OR"))
        return [parts, holdsFor](const QueriedDocument &document) {
            return std::any_of(parts.begin(), parts.end(), holdsFor(document));
        };
    refuse(QStringLiteral("Filters are joined by AND or OR."));
}

StructuredQuery::Predicate StructuredQuery::readField(const QJsonObject &filter)
{
    const FieldPath path = fieldOf(filter);
    const QString op = filter.value(u"op").toString();
    const QJsonObject operand = canonicalValue(filter.value(u"value"));
    const auto holds = comparison(op);
    if (!holds)
        refuse(QStringLiteral("\"%1\" is no comparison.").arg(op.left(100)));
    if (isInequality(op) && !m_inequalities.contains(path))
        m_inequalities.append(path);
    return [path, operand, holds](const QueriedDocument &document) {
        const QJsonObject value = document.value(path);
        return !value.isEmpty() && holds(value, operand);
    };
}

StructuredQuery::Predicate StructuredQuery::readUnary(const QJsonObject &filter) const
{
    const FieldPath path = fieldOf(filter);
    const QString op = filter.value(u"op").toString();
    const auto with = [path](auto test) {
        return [path, test](const QueriedDocument &document) {
            const QJsonObject value = document.value(path);
            return !value.isEmpty() && test(value);
        };
    };
    if (op == QLatin1String("IS_NULL"))
        return with([](const QJsonObject &value) { return isNull(value); });
    if (op == QLatin1String("IS_NOT_NULL"))
        return with([](const QJsonObject &value) { return !isNull(value); });
    if (op == QLatin1String("IS_NAN"))
        return with([](const QJsonObject &value) { return isNaN(value); });
    if (op == QLatin1String("IS_NOT_NAN"))
        return with([](const QJsonObject &value) { return !isNull(value) && !isNaN(value); });
    refuse(QStringLiteral("\"%1\" is no test of a field.").arg(op.left(100)));
}

void StructuredQuery::readOrder(const QJsonArray &orders)
{
    for (const QJsonValue json : orders) {
        const QString direction = json.toObject().value(u"direction").toString();
        m_orders.append({fieldOf(json.toObject()), direction == QLatin1String("DESCENDING") ? -1 : 1});
    }
    for (const FieldPath &path : std::as_const(m_inequalities))
        addOrder(path);
    addOrder(nameField);
}

/// Sorts by @p path at last, unless it is sorted by already, in the direction of what comes before.
void StructuredQuery::addOrder(const FieldPath &path)
{
    const bool isPresent =
        std::any_of(m_orders.begin(), m_orders.end(), [&](const Order &order) { return order.path == path; });
    if (!isPresent)
        m_orders.append({path, m_orders.isEmpty() ? 1 : m_orders.constLast().direction});
}

void StructuredQuery::readSelection(const QJsonValue &select)
{
    if (!select.isObject())
        return;
    QStringList texts;
    const QJsonArray fields = select.toObject().value(u"fields").toArray();
    for (const QJsonValue field : fields)
        texts.append(field.toObject().value(u"fieldPath").toString());
    m_selection = parseFieldPaths(texts);
}

std::optional<StructuredQuery::Cursor> StructuredQuery::readCursor(const QJsonValue &json) const
{
    if (!json.isObject())
        return std::nullopt;
    Cursor cursor;
    cursor.isBefore = json.toObject().value(u"before").toBool();
    const QJsonArray values = json.toObject().value(u"values").toArray();
    if (values.size() > m_orders.size())
        refuse(QStringLiteral("A cursor has more values than the order has fields."));
    for (const QJsonValue value : values)
        cursor.values.append(canonicalValue(value));
    return cursor;
}

int StructuredQuery::compare(const QueriedDocument &left, const QueriedDocument &right) const
{
    for (const Order &order : m_orders)
        if (const int result = compareValues(left.value(order.path), right.value(order.path)))
            return result * order.direction;
    return 0;
}

int StructuredQuery::compare(const QueriedDocument &document, const Cursor &cursor) const
{
    for (qsizetype i = 0; i < cursor.values.size(); ++i)
        if (const int result = compareValues(document.value(m_orders[i].path), cursor.values[i]))
            return result * m_orders[i].direction;
    return 0;
}

bool StructuredQuery::isInWindow(const QueriedDocument &document) const
{
    if (m_start) {
        const int order = compare(document, *m_start);
        if (m_start->isBefore ? order < 0 : order <= 0)
            return false;
    }
    if (m_end) {
        const int order = compare(document, *m_end);
        if (m_end->isBefore ? order >= 0 : order > 0)
            return false;
    }
    return true;
}

} // namespace Cloud
