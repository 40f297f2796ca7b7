// SPDX-License-Identifier: GPL-3.0-or-later
#include "Values.h"

#include "Answers.h"
#include "RequestRefused.h"
#include "Timestamp.h"

#include <QJsonArray>
#include <QJsonDocument>

#include <array>
#include <cmath>
#include <limits>
#include <optional>

namespace Cloud {

namespace {

constexpr qsizetype maximumNameSize = 1500; // bytes of UTF-8
constexpr qsizetype maximumDocumentSize =
    qsizetype(2) * 1024 * 1024; // of JSON, which is larger than what it says

[[noreturn]] void refuse(const QString &reason)
{
    throw RequestRefused(invalidArgument(reason));
}

QJsonObject canonical(const QJsonValue &value, int depth, bool isInArray);

QJsonObject canonicalMembers(const QJsonValue &fields, int depth)
{
    if (!fields.isObject() && !fields.isUndefined())
        refuse(QStringLiteral("\"fields\" must be an object."));
    const QJsonObject source = fields.toObject();
    QJsonObject result;
    for (auto field = source.begin(); field != source.end(); ++field) {
        const QString &name = field.key();
        const bool isReserved = name.size() >= 4 && name.startsWith(u"__") && name.endsWith(u"__");
        if (name.isEmpty() || isReserved || name.toUtf8().size() > maximumNameSize)
            refuse(QStringLiteral("\"%1\" is no name that a field can have.").arg(name.left(100)));
        result.insert(name, canonical(field.value(), depth + 1, false));
    }
    return result;
}

QJsonValue canonicalInteger(const QJsonValue &value)
{
    bool isInteger = false;
    qint64 number = value.toString().toLongLong(&isInteger);
    if (value.isDouble()) { // what is no whole number of 64 bits gives the default, whichever that is
        number = value.toInteger(0);
        isInteger = number == value.toInteger(1);
    }
    if (!isInteger)
        refuse(QStringLiteral("An integerValue must be a whole number of 64 bits."));
    return QString::number(number);
}

QJsonValue canonicalDouble(const QJsonValue &value)
{
    static const QStringList special{QStringLiteral("NaN"), QStringLiteral("Infinity"),
                                     QStringLiteral("-Infinity")};
    if (value.isDouble() || special.contains(value.toString()))
        return value;
    bool isNumber = false;
    const double number = value.toString().toDouble(&isNumber);
    if (!isNumber || !std::isfinite(number))
        refuse(QStringLiteral("A doubleValue must be a number."));
    return number;
}

QJsonValue canonicalTimestamp(const QJsonValue &value)
{
    const auto time = parseTimestamp(value.toString());
    if (!time)
        refuse(QStringLiteral("A timestampValue must be a time such as 2024-05-01T09:30:12.345Z."));
    return QString::fromLatin1(formatTimestamp(*time));
}

QJsonValue canonicalBytes(const QJsonValue &value)
{
    QByteArray text = value.toString().toLatin1().replace('-', '+').replace('_', '/');
    const auto decoded = QByteArray::fromBase64Encoding(text, QByteArray::AbortOnBase64DecodingErrors);
    if (!value.isString() || !decoded)
        refuse(QStringLiteral("A bytesValue must be base64."));
    return QString::fromLatin1(decoded.decoded.toBase64());
}

QJsonValue canonicalPoint(const QJsonValue &value)
{
    const QJsonObject point = value.toObject();
    const double latitude = point.value(u"latitude").toDouble();
    const double longitude = point.value(u"longitude").toDouble();
    if (!value.isObject() || std::abs(latitude) > 90 || std::abs(longitude) > 180)
        refuse(QStringLiteral("A geoPointValue must be a place on earth."));
    return QJsonObject{{QStringLiteral("latitude"), latitude}, {QStringLiteral("longitude"), longitude}};
}

QJsonValue canonicalArray(const QJsonValue &value, int depth)
{
    const QJsonValue values = value.toObject().value(u"values");
    if (!value.isObject() || !(values.isArray() || values.isUndefined()))
        refuse(QStringLiteral("An arrayValue must hold values."));
    QJsonArray result;
    const QJsonArray elements = values.toArray();
    for (const QJsonValue element : elements)
        result.append(canonical(element, depth + 1, true));
    return result.isEmpty() ? QJsonObject() : QJsonObject{{QStringLiteral("values"), result}};
}

QJsonValue canonicalMap(const QJsonValue &value, int depth)
{
    if (!value.isObject())
        refuse(QStringLiteral("A mapValue must hold fields."));
    const QJsonObject fields = canonicalMembers(value.toObject().value(u"fields"), depth);
    return fields.isEmpty() ? QJsonObject() : QJsonObject{{QStringLiteral("fields"), fields}};
}

QJsonValue canonicalScalar(const QString &type, const QJsonValue &value)
{
    if (type == QLatin1String("integerValue"))
        return canonicalInteger(value);
    if (type == QLatin1String("doubleValue"))
        return canonicalDouble(value);
    if (type == QLatin1String("timestampValue"))
        return canonicalTimestamp(value);
    if (type == QLatin1String("bytesValue"))
        return canonicalBytes(value);
    if (type == QLatin1String("geoPointValue"))
        return canonicalPoint(value);
    if (type == QLatin1String("nullValue") && (value.isNull() || value == QLatin1String("NULL_VALUE")))
        return QJsonValue(QJsonValue::Null);
    const bool isText = type == QLatin1String("stringValue") || type == QLatin1String("referenceValue");
    if ((isText && value.isString()) || (type == QLatin1String("booleanValue") && value.isBool()))
        return value;
    refuse(QStringLiteral("\"%1\" is no value of a field.").arg(type.left(100)));
}

QJsonObject canonical(const QJsonValue &value, int depth, bool isInArray)
{
    const QJsonObject object = value.toObject();
    if (object.size() != 1)
        refuse(QStringLiteral("A value must be an object with the one key that names its type."));
    if (depth > maximumDepth)
        refuse(QStringLiteral("Values may be nested %1 deep.").arg(maximumDepth));
    const QString type = object.begin().key();
    const QJsonValue content = object.begin().value();
    if (type == QLatin1String("mapValue"))
        return {{type, canonicalMap(content, depth)}};
    if (type != QLatin1String("arrayValue"))
        return {{type, canonicalScalar(type, content)}};
    if (isInArray)
        refuse(QStringLiteral("An array cannot hold an array."));
    return {{type, canonicalArray(content, depth)}};
}

template <typename T>
int compared(const T &left, const T &right)
{
    return left < right ? -1 : right < left ? 1 : 0;
}

/// Wide enough for every integer of 64 bits and every double.
long double numberOf(const QJsonObject &value)
{
    if (value.contains(u"integerValue"))
        return static_cast<long double>(value.value(u"integerValue").toString().toLongLong());
    const QJsonValue number = value.value(u"doubleValue");
    if (number.isDouble())
        return number.toDouble();
    const long double infinity = std::numeric_limits<long double>::infinity();
    return number.toString().startsWith(u'-') ? -infinity : infinity;
}

int compareNumbers(const QJsonObject &left, const QJsonObject &right)
{
    if (isNaN(left) || isNaN(right))
        return int(isNaN(right)) - int(isNaN(left));
    return compared(numberOf(left), numberOf(right));
}

int compareArrays(const QJsonArray &left, const QJsonArray &right)
{
    for (qsizetype i = 0; i < std::min(left.size(), right.size()); ++i)
        if (const int order = compareValues(left[i].toObject(), right[i].toObject()))
            return order;
    return compared(left.size(), right.size());
}

int compareMaps(const QJsonObject &left, const QJsonObject &right)
{
    auto l = left.begin();
    auto r = right.begin();
    for (; l != left.end() && r != right.end(); ++l, ++r) {
        if (const int order = compared(l.key().toUtf8(), r.key().toUtf8()))
            return order;
        if (const int order = compareValues(l.value().toObject(), r.value().toObject()))
            return order;
    }
    return compared(left.size(), right.size());
}

int comparePoints(const QJsonObject &left, const QJsonObject &right)
{
    const int order = compared(left.value(u"latitude").toDouble(), right.value(u"latitude").toDouble());
    return order ? order
                 : compared(left.value(u"longitude").toDouble(), right.value(u"longitude").toDouble());
}

constexpr std::array typesInOrder{"nullValue",      "booleanValue", "integerValue", "doubleValue",
                                  "timestampValue", "stringValue",  "bytesValue",   "referenceValue",
                                  "geoPointValue",  "arrayValue",   "mapValue"};

} // namespace

QJsonObject canonicalValue(const QJsonValue &value)
{
    return canonical(value, 1, false);
}

QJsonObject canonicalFields(const QJsonValue &fields)
{
    QJsonObject result = canonicalMembers(fields, 0);
    if (QJsonDocument(result).toJson(QJsonDocument::Compact).size() > maximumDocumentSize)
        refuse(QStringLiteral("The document is too large."));
    return result;
}

int typeRank(const QJsonObject &value)
{
    const QString type = value.isEmpty() ? QString() : value.begin().key();
    for (int rank = 0; rank < int(typesInOrder.size()); ++rank)
        if (type == QLatin1String(typesInOrder[std::size_t(rank)]))
            return rank == 3 ? 2 : rank; // integers and doubles are one
    return -1;
}

int compareValues(const QJsonObject &left, const QJsonObject &right)
{
    const int rank = typeRank(left);
    if (rank != typeRank(right))
        return compared(rank, typeRank(right));
    const QJsonValue l = left.isEmpty() ? QJsonValue() : left.begin().value();
    const QJsonValue r = right.isEmpty() ? QJsonValue() : right.begin().value();
    switch (rank) {
    case 1:
        return compared(l.toBool(), r.toBool());
    case 2:
        return compareNumbers(left, right);
    case 4:
        return compared(parseTimestamp(l.toString()), parseTimestamp(r.toString()));
    case 5:
        return compared(l.toString().toUtf8(), r.toString().toUtf8());
    case 6:
        return compared(QByteArray::fromBase64(l.toString().toLatin1()),
                        QByteArray::fromBase64(r.toString().toLatin1()));
    case 7:
        return compared(l.toString().split(u'/'), r.toString().split(u'/'));
    case 8:
        return comparePoints(l.toObject(), r.toObject());
    case 9:
        return compareArrays(l.toObject().value(u"values").toArray(),
                             r.toObject().value(u"values").toArray());
    case 10:
        return compareMaps(l.toObject().value(u"fields").toObject(),
                           r.toObject().value(u"fields").toObject());
    default:
        return 0;
    }
}

bool isNumber(const QJsonObject &value)
{
    return typeRank(value) == 2;
}

bool isNaN(const QJsonObject &value)
{
    return value.value(u"doubleValue").toString() == QLatin1String("NaN");
}

QJsonObject sumOf(const QJsonObject &left, const QJsonObject &right)
{
    if (left.contains(u"integerValue") && right.contains(u"integerValue")) {
        const qint64 l = left.value(u"integerValue").toString().toLongLong();
        const qint64 r = right.value(u"integerValue").toString().toLongLong();
        qint64 sum = 0;
        if (__builtin_add_overflow(l, r, &sum))
            sum = r > 0 ? std::numeric_limits<qint64>::max() : std::numeric_limits<qint64>::min();
        return {{QStringLiteral("integerValue"), QString::number(sum)}};
    }
    const double sum = isNaN(left) || isNaN(right) ? std::nan("") : double(numberOf(left) + numberOf(right));
    QJsonValue number(sum);
    if (std::isnan(sum))
        number = QStringLiteral("NaN");
    else if (std::isinf(sum))
        number = sum > 0 ? QStringLiteral("Infinity") : QStringLiteral("-Infinity");
    return {{QStringLiteral("doubleValue"), number}};
}

} // namespace Cloud
