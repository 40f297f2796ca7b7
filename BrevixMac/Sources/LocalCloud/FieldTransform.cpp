// SPDX-License-Identifier: GPL-3.0-or-later
#include "FieldTransform.h"

#include "Answers.h"
#include "FieldPath.h"
#include "RequestRefused.h"
#include "Values.h"

namespace Cloud {

namespace {

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
    const QJsonObject value = canonicalValue(json);
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

bool holds(const QJsonArray &values, const QJsonValue &value)
{
    return std::any_of(values.begin(), values.end(), [&](const QJsonValue &element) {
        return compareValues(element.toObject(), value.toObject()) == 0;
    });
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

/// The operand of an array transform, checked by the same rules as a value.
QJsonArray arrayOperand(const QJsonValue &json)
{
    return elementsOf(canonicalValue(QJsonObject{{QStringLiteral("arrayValue"), json}}));
}

QJsonObject withMissing(const QJsonObject &present, const QJsonArray &operand)
{
    QJsonArray elements = elementsOf(present);
    for (const QJsonValue &element : operand)
        if (!holds(elements, element))
            elements.append(element);
    return arrayOf(elements);
}

QJsonObject without(const QJsonObject &present, const QJsonArray &operand)
{
    QJsonArray elements;
    const QJsonArray before = elementsOf(present);
    for (const QJsonValue &element : before)
        if (!holds(operand, element))
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
    QJsonArray results;
    for (const QJsonValue &json : transforms) {
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
