// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "App/Core/Samples.h"
#include "AuthService.h"
#include "LibraryStore.h"

#include "Foundation/UserDefaults.h"
#include "Support/InMemoryDesktop.h"
#include "Support/LibraryServer.h"
#include "Support/Waiting.h"

#include <QTemporaryDir>

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

/// A store over a library on loopback, for a signed-in user.
class LibraryFixture : public testing::Test
{
protected:
    using Fault = FaultyServer::Reply::Fault;

    LibraryFixture()
    {
        storeSession(now.addDays(1));
        configuration.publicShareBaseURL = QUrl(u"https://share.example"_s);
        makeStore();
    }

    void storeSession(const QDateTime &expiresAt)
    {
        const StoredAuthSession session{.uid = u"u1"_s,
                                        .email = {},
                                        .displayName = {},
                                        .photoURLString = {},
                                        .firebaseIDToken = u"token"_s,
                                        .refreshToken = u"refresh"_s,
                                        .expiresAt = expiresAt};
        defaults.setData(AuthService::storageKey, session.toJson());
    }

    /// Makes the store anew, as after a change of the configuration.
    void makeStore()
    {
        store = std::make_unique<LibraryStore>(configuration, endpoints, auth, http, [this] { return now; });
    }

    SyncState::Kind kind() const { return store->syncState().kind; }
    bool isSynced() const { return kind() == SyncState::Kind::synced; }

    /// Shows @p userID's library.
    void bind(const QString &userID = u"u1"_s)
    {
        store->bind(userID);
        ASSERT_TRUE(waitUntil([this] { return isSynced(); }));
    }

    /// Requests whose method is @p method.
    QList<FaultyServer::Request> requests(const QByteArray &method) const
    {
        QList<FaultyServer::Request> found;
        for (const FaultyServer::Request &request : server.requests()) {
            if (request.method == method)
                found.append(request);
        }
        return found;
    }

    QByteArray documentsRoot() const
    {
        return "/v1/projects/" + configuration.firebase.projectID.toUtf8() +
               "/databases/(default)/documents/artifacts/" + configuration.logicalLibraryAppID.toUtf8();
    }

    QTemporaryDir folder;
    UserDefaults defaults{folder.filePath(u"preferences.plist"_s)};
    HttpClient http;
    LibraryServer server;
    QDateTime now = utc(9);
    AppConfiguration configuration = AppConfiguration::fallback();
    CloudEndpoints endpoints = CloudEndpoints::local(server.origin());
    InMemoryWebAuthenticationSession webAuthenticationSession;
    AuthService auth{configuration,         endpoints, http, defaults, webAuthenticationSession,
                     [this] { return now; }};
    std::unique_ptr<LibraryStore> store;
};

/// What @p task ends in, as the user would read it.
template <typename T>
QCoro::Task<QString> problemIn(QCoro::Task<T> task)
{
    QString problem = u"(no problem)"_s;
    try {
        co_await task;
    } catch (const std::exception &error) {
        problem = QString::fromUtf8(error.what());
    }
    co_return problem;
}

template <typename T>
QString problemOf(QCoro::Task<T> task)
{
    return await(problemIn(std::move(task)));
}
