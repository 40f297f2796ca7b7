// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "AuthService.h"
#include "Samples.h"
#include "TokenQuestion.h"

#include "Foundation/UserDefaults.h"

#include "Support/FaultyServer.h"
#include "Support/InMemoryDesktop.h"
#include "Support/Waiting.h"

#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <memory>

/// An authentication service over a faulty server on loopback and a browser in memory. The clock stands
/// still; a test moves it.
class AuthServiceFixture : public testing::Test
{
protected:
    static AppConfiguration configured()
    {
        AppConfiguration configuration = AppConfiguration::fallback();
        configuration.firebase.apiKey = QStringLiteral("key 1");
        configuration.firebase.googleAppID = QStringLiteral("app");
        configuration.firebase.clientID = QStringLiteral("client");
        configuration.firebase.reversedClientID = QStringLiteral("org.example.tneilc");
        return configuration;
    }

    StoredAuthSession session(int secondsLeft) const
    {
        return {.uid = QStringLiteral("u"),
                .email = QStringLiteral("a@b.example"),
                .displayName = QStringLiteral("Ada"),
                .photoURLString = QStringLiteral("https://b.example/a.png"),
                .firebaseIDToken = QStringLiteral("i1"),
                .refreshToken = QStringLiteral("r&1"),
                .expiresAt = now.addSecs(secondsLeft)};
    }

    void store(const StoredAuthSession &session)
    {
        defaults.setData(AuthService::storageKey, session.toJson());
    }

    std::optional<StoredAuthSession> stored() const
    {
        return StoredAuthSession::fromJson(defaults.data(AuthService::storageKey).value_or(QByteArray()));
    }

    std::unique_ptr<AuthService> makeService(const AppConfiguration &configuration = configured())
    {
        return makeServiceAt(CloudEndpoints::local(server.origin()), configuration);
    }

    std::unique_ptr<AuthService> makeServiceAt(const CloudEndpoints &endpoints,
                                               const AppConfiguration &configuration = configured())
    {
        return std::make_unique<AuthService>(configuration, endpoints, http, defaults, browser,
                                             [this] { return now; });
    }

    static QString tokenOrError(AuthService &service) { return await(askForToken(service)); }

    QTemporaryDir folder;
    UserDefaults defaults{folder.filePath(QStringLiteral("preferences.plist"))};
    HttpClient http;
    FaultyServer server;
    InMemoryWebAuthenticationSession browser;
    QDateTime now = utc(9);
};
