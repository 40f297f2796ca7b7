// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QDateTime>
#include <QString>
#include <QUrl>

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
        QString projectID;  ///< the only project it serves
        QString apiKey;     ///< the key its token endpoint expects
        QString libraryAppID;
        QString clientID;       ///< the OAuth client that may sign people in
        QString redirectScheme; ///< of the addresses at which that client takes the answer
    };

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

    /// "http://127.0.0.1:PORT" once started.
    QUrl origin() const;

    /// Signs the local user in, in place of the session handed out before. Waits for the server's thread, a
    /// few milliseconds. An empty idToken when the database cannot be used; errorString() says why.
    Session issueLocalSession();

    LocalCloud(const LocalCloud &) = delete;
    LocalCloud &operator=(const LocalCloud &) = delete;

private:
    struct Parts;
    std::unique_ptr<Parts> m_parts;
};
