// SPDX-License-Identifier: GPL-3.0-or-later
#include "StoredAuthSession.h"

#include "JsonDate.h"

#include <QJsonDocument>
#include <QJsonObject>

namespace {

const QString uidKey = QStringLiteral("uid");
const QString emailKey = QStringLiteral("email");
const QString displayNameKey = QStringLiteral("displayName");
const QString photoURLStringKey = QStringLiteral("photoURLString");
const QString firebaseIDTokenKey = QStringLiteral("firebaseIDToken");
const QString refreshTokenKey = QStringLiteral("refreshToken");
const QString expiresAtKey = QStringLiteral("expiresAt");

void insertIfPresent(QJsonObject &object, const QString &key, const std::optional<QString> &value)
{
    if (value)
        object.insert(key, *value);
}

/// False when there is something else than a text.
bool readOptional(const QJsonObject &object, const QString &key, std::optional<QString> &target)
{
    const QJsonValue value = object.value(key);
    if (value.isString())
        target = value.toString();
    return value.isString() || value.isNull() || value.isUndefined();
}

bool readText(const QJsonObject &object, const QString &key, QString &target)
{
    const QJsonValue value = object.value(key);
    target = value.toString();
    return value.isString();
}

} // namespace

QByteArray StoredAuthSession::toJson() const
{
    QJsonObject object{
        {uidKey, uid},
        {firebaseIDTokenKey, firebaseIDToken},
        {refreshTokenKey, refreshToken},
        {expiresAtKey, JsonDate::toJson(expiresAt)},
    };
    insertIfPresent(object, emailKey, email);
    insertIfPresent(object, displayNameKey, displayName);
    insertIfPresent(object, photoURLStringKey, photoURLString);
    return QJsonDocument(object).toJson(QJsonDocument::Compact);
}

std::optional<StoredAuthSession> StoredAuthSession::fromJson(const QByteArray &json)
{
    const QJsonObject object = QJsonDocument::fromJson(json).object();
    const auto expiresAt = JsonDate::fromJson(object.value(expiresAtKey));
    if (!expiresAt)
        return std::nullopt;

    StoredAuthSession session;
    session.expiresAt = *expiresAt;
    const bool isComplete = readText(object, uidKey, session.uid) &&
                            readText(object, firebaseIDTokenKey, session.firebaseIDToken) &&
                            readText(object, refreshTokenKey, session.refreshToken) &&
                            readOptional(object, emailKey, session.email) &&
                            readOptional(object, displayNameKey, session.displayName) &&
                            readOptional(object, photoURLStringKey, session.photoURLString);
    return isComplete ? std::optional(session) : std::nullopt;
}

BrevixUserSession StoredAuthSession::user() const
{
    BrevixUserSession user{.uid = uid, .email = email, .displayName = displayName};
    const QUrl url(photoURLString.value_or(QString()), QUrl::StrictMode);
    if (url.isValid())
        user.photoURL = url;
    return user;
}
