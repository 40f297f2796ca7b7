// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>
#include <QDateTime>
#include <QJsonObject>
#include <QJsonValue>
#include <QList>
#include <QMap>
#include <QString>
#include <QStringList>

#include <optional>
#include <stdexcept>
#include <variant>

/// A value written to Firestore; the REST form names its type. A value.
class FirestoreFieldValue
{
public:
    using Map = QMap<QString, FirestoreFieldValue>;
    using Array = QList<FirestoreFieldValue>;

    static FirestoreFieldValue string(const QString &text);
    static FirestoreFieldValue timestamp(const QDateTime &dateTime);
    static FirestoreFieldValue map(const Map &fields);
    static FirestoreFieldValue array(const Array &values);
    static FirestoreFieldValue null();

    /// The one-key object of the REST interface (Firestore v1 `Value`).
    QJsonObject restValue() const;

private:
    using Value = std::variant<std::monostate, QString, QDateTime, Map, Array>;

    explicit FirestoreFieldValue(Value value)
        : m_value(std::move(value))
    {
    }

    Value m_value;
};

/// A failed Firestore call; its description is for the user.
class FirestoreRESTError : public std::runtime_error
{
public:
    enum class Kind { apiError, invalidURL, invalidResponse, invalidPayload, notSignedIn };

    explicit FirestoreRESTError(Kind kind, const QString &message = {});

    Kind kind() const { return m_kind; }
    QString description() const;

private:
    Kind m_kind;
    QString m_message;
};

/// Tolerant readers of documents written by any client. Pure; "nothing" for what they do not understand.
namespace FirestoreCodec {

std::optional<QString> readString(const QJsonValue &value);

/// 0 when nothing usable is found. A double that no 64-bit integer can hold stops the program.
qint64 readInt(const QJsonValue &value);

std::optional<QDateTime> readDate(const QJsonValue &value);

/// Last piece of the document's name; a fresh upper-case UUID when there is none.
QString documentID(const QJsonObject &document);

/// Percent-encodes each component for a URL path (RFC 3986 pchar and "/") and joins them with "/".
QString encodedPath(const QStringList &components);

/// The error of an answer whose status is not 200 to 299.
FirestoreRESTError decodeFirestoreError(const QByteArray &data, int statusCode);

} // namespace FirestoreCodec
