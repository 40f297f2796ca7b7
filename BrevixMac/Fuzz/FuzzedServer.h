// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "LocalCloud/Service.h"

#include <QCoreApplication>
#include <QHash>
#include <QTemporaryDir>

#include <memory>

/// A server without a network that every input of a fuzz target finds in the same state, and a client that
/// knows its secrets.
class FuzzedServer
{
public:
    static const QByteArray host; ///< the only one that is served

    FuzzedServer();

    /// Takes back whatever was written, and forgets what was learned.
    void reset();

    Cloud::Response handle(const Cloud::Request &request);

    /// @p text with each "{{name}}" replaced by the secret of that name: "token" and "refresh" of the local
    /// user's session, "other" of another user's, and those that were learned.
    QByteArray withSecrets(QByteArray text) const;

    /// Remembers what a client takes from one answer into its next request: the texts of a JSON object, the
    /// code of a redirect, the sealed request of a sign-in page.
    void learn(const Cloud::Response &response);

private:
    void start();

    QCoreApplication m_application; ///< the database driver asks for one
    QTemporaryDir m_folder;
    QByteArray m_pristine; ///< the database as a first start makes it
    std::unique_ptr<Cloud::Service> m_service;
    QHash<QByteArray, QByteArray> m_secrets;
    bool m_hasChanged = false;
};
