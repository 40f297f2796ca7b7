// SPDX-License-Identifier: GPL-3.0-or-later
#include "FieldTransform.h"

#include "Answers.h"
#include "FieldPath.h"
#include "RequestRefused.h"
#include "Values.h"

#include <set>
#include <utility>

namespace Cloud {

namespace {

constexpr qsizetype maximumTransforms = 500; // of one write

const QJsonObject nullValue{{QStringLiteral("nullValue"), QJsonValue::Null}};

[[noreturn]] void refuse(const QString &reason)
{
    throw RequestRefused(invalidArgument(reason));
}

struct Outcome
{
    QJsonObject value;  ///< of the field from now on
    QJsonObject result; ///< in the answer
};

QJsonObject numberOperand(const QJsonValue &json)
{
    QJsonObject value = canonicalValue(json);
    if (!isNumber(value))
        refuse(QStringLiteral("The operand must be a number."));
    return value;
}

/// The larger one for @p wanted 1, the smaller one for -1; @p present when they are equal, @p operand when
/// the field is no number.
QJsonObject extremum(const QJsonObject &present, const QJsonObject &operand, int wanted)
{
    return isNumber(present) && compareValues(operand, present) * wanted <= 0 ? present : operand;
}

struct Before
{
    bool operator()(const QJsonObject &left, const QJsonObject &right) const
    {
        return compareValues(left, right) < 0;
    }
};

/// Values in their order, to look equal ones up: 1 and 1.0 are the same.
using ValueSet = std::set<QJsonObject, Before>;

ValueSet setOf(const QJsonArray &values)
{
    ValueSet set;
    for (const QJsonValue value : values)
        set.insert(value.toObject());
    return set;
}

QJsonArray elementsOf(const QJsonObject &array)
{
    return array.value(u"arrayValue").toObject().value(u"values").toArray();
}

QJsonObject arrayOf(const QJsonArray &elements)
{
    QJsonObject content;
    if (!elements.isEmpty())
        content.insert(QStringLiteral("values"), elements);
    return {{QStringLiteral("arrayValue"), content}};
}

/// The operand of an array transform, checked by the same rules as a value and for the size of a document.
QJsonArray arrayOperand(const QJsonValue &json)
{
    const QString name = QStringLiteral("operand");
    const QJsonObject array{{QStringLiteral("arrayValue"), json}};
    return elementsOf(canonicalFields(QJsonObject{{name, array}}).value(name).toObject());
}

QJsonObject withMissing(const QJsonObject &present, const QJsonArray &operand)
{
    QJsonArray elements = elementsOf(present);
    ValueSet missing = setOf(operand); // usually far fewer than the field holds
    for (const QJsonValue element : std::as_const(elements))
        missing.erase(element.toObject());
    for (const QJsonValue element : operand)
        if (missing.erase(element.toObject()) > 0)
            elements.append(element);
    return arrayOf(elements);
}

QJsonObject without(const QJsonObject &present, const QJsonArray &operand)
{
    const ValueSet removed = setOf(operand);
    QJsonArray elements;
    const QJsonArray before = elementsOf(present);
    for (const QJsonValue element : before)
        if (!removed.contains(element.toObject()))
            elements.append(element);
    return arrayOf(elements);
}

QJsonObject serverTime(const QJsonValue &json, Timestamp now)
{
    if (json != QLatin1String("REQUEST_TIME"))
        refuse(QStringLiteral("The only server value is REQUEST_TIME."));
    return {{QStringLiteral("timestampValue"), QString::fromLatin1(formatTimestamp(now))}};
}

Outcome outcomeOf(const QString &kind, const QJsonValue &operand, const QJsonObject &present, Timestamp now)
{
    const auto withItself = [](const QJsonObject &value) { return Outcome{value, value}; };
    if (kind == QLatin1String("setToServerValue"))
        return withItself(serverTime(operand, now));
    if (kind == QLatin1String("increment")) {
        const QJsonObject number = numberOperand(operand);
        return withItself(isNumber(present) ? sumOf(present, number) : number);
    }
    if (kind == QLatin1String("maximum"))
        return withItself(extremum(present, numberOperand(operand), 1));
    if (kind == QLatin1String("minimum"))
        return withItself(extremum(present, numberOperand(operand), -1));
    if (kind == QLatin1String("appendMissingElements"))
        return {withMissing(present, arrayOperand(operand)), nullValue};
    if (kind == QLatin1String("removeAllFromArray"))
        return {without(present, arrayOperand(operand)), nullValue};
    refuse(QStringLiteral("\"%1\" is no transform of a field.").arg(kind.left(100)));
}

} // namespace

QJsonArray transformFields(QJsonObject &fields, const QJsonArray &transforms, Timestamp now)
{
    if (transforms.size() > maximumTransforms)
        refuse(QStringLiteral("A write may transform at most %1 fields.").arg(maximumTransforms));
    QJsonArray results;
    for (const QJsonValue json : transforms) {
        QJsonObject transform = json.toObject();
        const auto path = parseFieldPath(transform.take(u"fieldPath").toString());
        if (!path || transform.size() != 1)
            refuse(QStringLiteral("A transform must name a field and one operation."));
        const Outcome outcome = outcomeOf(transform.begin().key(), transform.begin().value(),
                                          valueAt(fields, *path).toObject(), now);
        setValueAt(fields, *path, outcome.value);
        results.append(outcome.result);
    }
    return results;
}

} // namespace Cloud
