// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "LocalCloud/Service.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTemporaryDir>

#include <gtest/gtest.h>

/// A server without a network, in a folder of its own, with a clock that tests turn.
class ServiceFixture : public testing::Test
{
protected:
    static constexpr quint16 port = 4711;

    ServiceFixture();

    static Cloud::Site demoSite();

    /// Stops the server and starts it again on the same files.
    void restart();

    /// A GET with a good Host header, signed in as the local user.
    Cloud::Request get(const QByteArray &path, const QByteArray &query = {}) const;
    Cloud::Request getWithoutToken(const QByteArray &path, const QByteArray &query = {}) const;
    /// A POST of @p body, a form, without a token.
    Cloud::Request formPost(const QByteArray &path, const QByteArray &body) const;
    Cloud::Request refreshRequest(const QByteArray &refreshToken) const;

    /// "/v1/projects/demo/databases/(default)/documents/" and @p path.
    static QByteArray documentsPath(const QByteArray &path);

    /// The documents path of one of the local user's collections.
    static QByteArray libraryPath(const QByteArray &collection);

    QJsonObject answer(const Cloud::Request &request);
    int status(const Cloud::Request &request);

    /// A token for another user of the same server.
    QByteArray tokenOf(const QString &uid) const;

    /// Writes documents straight into the local user's @p collection.
    void store(const QString &collection, const QString &id, const QJsonObject &fields);

    QString databasePath() const { return folder.filePath(QStringLiteral("library.sqlite")); }

    QTemporaryDir folder;
    Cloud::Timestamp now = Cloud::Timestamp(std::chrono::seconds(1'800'000'000));
    QByteArray signingKey = QByteArray(32, 'k');
    std::unique_ptr<Cloud::Service> service;
    Cloud::Service::Session session;
};

/// The "error" object of an answer.
QJsonObject errorOf(const Cloud::Response &response);
QJsonObject jsonOf(const Cloud::Response &response);
