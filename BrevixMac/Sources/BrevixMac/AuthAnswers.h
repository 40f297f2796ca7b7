// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QJsonObject>
#include <QString>

#include <optional>

// What the endpoints of sign-in answer. Each fromJson() throws AuthError::unexpectedResponse when something
// needed is missing or anything is of the wrong kind.

struct GoogleTokenResponse
{
    QString accessToken;
    std::optional<qint64> expiresIn;
    QString idToken;

    static GoogleTokenResponse fromJson(const QJsonObject &answer);
};

struct FirebaseSignInWithIdpResponse
{
    QString idToken;
    QString refreshToken;
    QString expiresIn; ///< a number of seconds as text
    QString localId;
    std::optional<QString> email;
    std::optional<QString> displayName;
    std::optional<QString> photoUrl;

    static FirebaseSignInWithIdpResponse fromJson(const QJsonObject &answer);
};

struct FirebaseRefreshResponse
{
    QString expiresIn; ///< a number of seconds as text
    QString refreshToken;
    QString idToken;
    QString userId;

    static FirebaseRefreshResponse fromJson(const QJsonObject &answer);
};
