// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QDateTime>
#include <QString>
#include <QUrl>

#include <optional>

/// The published signed-in user. A value.
struct BrevixUserSession
{
    QString uid;
    std::optional<QString> email = {};
    std::optional<QString> displayName = {};
    std::optional<QUrl> photoURL = {};

    bool operator==(const BrevixUserSession &) const = default;
};

/// The persisted session. Its JSON keys are the field names; the date is a number of seconds since 2001-01-01
/// UTC.
struct StoredAuthSession
{
    QString uid;
    std::optional<QString> email = {};
    std::optional<QString> displayName = {};
    std::optional<QString> photoURLString = {};
    QString firebaseIDToken;
    QString refreshToken;
    QDateTime expiresAt;

    QByteArray toJson() const;
    static std::optional<StoredAuthSession> fromJson(const QByteArray &json);
    BrevixUserSession user() const;

    bool operator==(const StoredAuthSession &) const = default;
};
