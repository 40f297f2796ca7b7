// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "ModelOptions.h"

#include <QDateTime>
#include <QHostAddress>
#include <QString>
#include <QUrl>

#include <functional>
#include <memory>

/// A small server that speaks the cloud protocols on loopback, with its data in one SQLite file.
///
/// The listening socket is opened on the caller's thread, so that origin() is known at once; everything else
/// (SQLite, parsing, answering) happens on a thread of its own that this object starts and joins. Seeds an
/// empty database once with the starter library of the local user.
class LocalCloud
{
public:
    struct Options
    {
        QString dataFolder; ///< holds the database and the signing key; created with mode 0700 when missing
        quint16 port = 0;   ///< 0: a free one

        // The names by which clients know the server. These are the ones of brevix --local.
        QString projectID = QStringLiteral("brevix-local"); ///< the only project it serves
        QString apiKey = QStringLiteral("local-api-key");   ///< the key its token endpoints expect
        QString libraryAppID = QStringLiteral("brevix-app-local");
        QString clientID =
            QStringLiteral("brevix-local-client"); ///< the OAuth client that may sign people in
        QString redirectScheme = QStringLiteral("app.brevix.local"); ///< of that client's own addresses

        Cloud::ModelOptions model = {}; ///< improves prompts; by rules when there is none

        // For others than the user of this computer; see problemOf().
        QHostAddress address = QHostAddress(QHostAddress::LocalHost);
        QString certificateFile = {}; ///< PEM, with its chain; empty: no encryption
        QString keyFile = {};         ///< PEM
        QUrl publicUrl = {}; ///< the origin that clients use, when it is another than address and port
        /// Else every program of the user who runs the server may sign in as anybody, and nobody else's may
        /// connect.
        bool asksPasswords = false;
    };

    /// Why a server of these options would be unsafe or cannot be: listening beyond loopback without
    /// encryption or without passwords, for example. Empty when nothing is wrong.
    static QString problemOf(const Options &options);

    /// A signed-in session of the local user, as the token endpoints would hand it out.
    struct Session
    {
        QString uid;
        QString email;
        QString displayName;
        QString idToken;
        QString refreshToken;
        QDateTime expiresAt;
    };

    explicit LocalCloud(Options options);
    ~LocalCloud();

    /// Opens the port and starts serving. False when the port or the data folder cannot be had; errorString()
    /// says why.
    bool start();
    QString errorString() const;

    /// "http://127.0.0.1:PORT", or as it is reached otherwise, once started.
    QUrl origin() const;

    /// Calls @p done later on the caller's thread, which needs an event loop, once the database is open
    /// (true) or cannot be used (false; errorString() says why). The database is read through and checked
    /// first: some milliseconds usually, minutes when it is large and the disk slow. Never called after this
    /// object's end.
    void whenOpened(std::function<void(bool)> done);

    /// Signs the local user in, in place of the session handed out before. Waits for the server's thread: a
    /// few milliseconds once the database is open, 5 s at most. An empty idToken when the database cannot be
    /// used; errorString() says why.
    Session issueLocalSession();

    LocalCloud(const LocalCloud &) = delete;
    LocalCloud &operator=(const LocalCloud &) = delete;

private:
    struct Parts;
    std::unique_ptr<Parts> m_parts;
};
