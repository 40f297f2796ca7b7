// SPDX-License-Identifier: GPL-3.0-or-later
#include "FirestoreFieldValue.h"

#include "DecimalInteger.h"
#include "HttpErrorBody.h"
#include "ProgrammingError.h"

#include "Foundation/Iso8601.h"

#include <QJsonArray>
#include <QUrl>
#include <QUuid>

#include <cmath>

namespace {

QString describe(FirestoreRESTError::Kind kind, const QString &message)
{
    switch (kind) {
    case FirestoreRESTError::Kind::apiError:
        return message;
    case FirestoreRESTError::Kind::invalidURL:
        return QStringLiteral("Brevix couldn't build the Firestore request URL.");
    case FirestoreRESTError::Kind::invalidResponse:
        return QStringLiteral("Brevix received an invalid Firestore response.");
    case FirestoreRESTError::Kind::invalidPayload:
        return QStringLiteral("Brevix couldn't decode the Firestore response.");
    case FirestoreRESTError::Kind::notSignedIn:
        return QStringLiteral("Sign in before creating or sharing prompts, skills, or categories.");
    }
    Q_UNREACHABLE();
}

QJsonObject restValueOf(std::monostate)
{
    return {{QStringLiteral("nullValue"), QStringLiteral("NULL_VALUE")}};
}

QJsonObject restValueOf(const QString &text)
{
    return {{QStringLiteral("stringValue"), text}};
}

QJsonObject restValueOf(const QDateTime &dateTime)
{
    return {{QStringLiteral("timestampValue"), Iso8601::format(dateTime)}};
}

QJsonObject restValueOf(const FirestoreFieldValue::Map &map)
{
    QJsonObject fields;
    for (auto it = map.cbegin(); it != map.cend(); ++it)
        fields.insert(it.key(), it.value().restValue());
    return {{QStringLiteral("mapValue"), QJsonObject{{QStringLiteral("fields"), fields}}}};
}

QJsonObject restValueOf(const FirestoreFieldValue::Array &array)
{
    QJsonArray values;
    for (const FirestoreFieldValue &value : array)
        values.append(value.restValue());
    return {{QStringLiteral("arrayValue"), QJsonObject{{QStringLiteral("values"), values}}}};
}

/// @p number without its fraction.
qint64 truncated(double number)
{
    constexpr double limit = 9223372036854775808.0; // 2 to the 63rd
    if (!std::isfinite(number) || number < -limit || number >= limit)
        stopOnProgrammingError(u"a Firestore double is no 64-bit integer: " + QString::number(number));
    return static_cast<qint64>(number);
}

QString encodedComponent(const QString &component)
{
    if (!component.isValidUtf16())
        return component;
    return QString::fromLatin1(QUrl::toPercentEncoding(component, "!$&'()*+,;=:@/"));
}

} // namespace

FirestoreFieldValue FirestoreFieldValue::string(const QString &text)
{
    return FirestoreFieldValue(text);
}

FirestoreFieldValue FirestoreFieldValue::timestamp(const QDateTime &dateTime)
{
    return FirestoreFieldValue(dateTime);
}

FirestoreFieldValue FirestoreFieldValue::map(const Map &fields)
{
    return FirestoreFieldValue(fields);
}

FirestoreFieldValue FirestoreFieldValue::array(const Array &values)
{
    return FirestoreFieldValue(values);
}

FirestoreFieldValue FirestoreFieldValue::null()
{
    return FirestoreFieldValue(std::monostate());
}

QJsonObject FirestoreFieldValue::restValue() const
{
    return std::visit([](const auto &value) { return restValueOf(value); }, m_value);
}

FirestoreRESTError::FirestoreRESTError(Kind kind, const QString &message)
    : std::runtime_error(describe(kind, message).toStdString())
    , m_kind(kind)
    , m_message(message)
{
}

QString FirestoreRESTError::description() const
{
    return describe(m_kind, m_message);
}

namespace FirestoreCodec {

std::optional<QString> readString(const QJsonValue &value)
{
    const QJsonObject object = value.toObject();
    if (const QJsonValue text = object.value(u"stringValue"); text.isString())
        return text.toString();
    if (const QJsonValue integer = object.value(u"integerValue"); integer.isString())
        return integer.toString();
    if (const QJsonValue boolean = object.value(u"booleanValue"); boolean.isBool())
        return boolean.toBool() ? QStringLiteral("true") : QStringLiteral("false");
    return std::nullopt;
}

qint64 readInt(const QJsonValue &value)
{
    const QJsonObject object = value.toObject();
    if (const QJsonValue integer = object.value(u"integerValue"); integer.isString()) {
        if (const auto number = decimalInteger(integer.toString()))
            return *number;
    }
    if (const QJsonValue number = object.value(u"doubleValue"); number.isDouble())
        return truncated(number.toDouble());
    return 0;
}

std::optional<QDateTime> readDate(const QJsonValue &value)
{
    const QString text = value.toObject().value(u"timestampValue").toString();
    if (auto date = Iso8601::parseWithFraction(text))
        return date;
    return Iso8601::parseWithoutFraction(text);
}

QString documentID(const QJsonObject &document)
{
    const QStringList pieces = document.value(u"name").toString().split(u'/', Qt::SkipEmptyParts);
    return pieces.isEmpty() ? QUuid::createUuid().toString(QUuid::WithoutBraces).toUpper() : pieces.last();
}

QString encodedPath(const QStringList &components)
{
    QStringList encoded;
    encoded.reserve(components.size());
    for (const QString &component : components)
        encoded.append(encodedComponent(component));
    return encoded.join(u'/');
}

FirestoreRESTError decodeFirestoreError(const QByteArray &data, int statusCode)
{
    const auto answer = [](const QString &message) {
        return FirestoreRESTError(FirestoreRESTError::Kind::apiError, message);
    };
    if (const auto message = HttpErrorBody::message(data))
        return answer(*message);
    if (const auto text = HttpErrorBody::text(data))
        return answer(*text);
    return answer(u"Firestore returned HTTP " + QString::number(statusCode) + u'.');
}

} // namespace FirestoreCodec
