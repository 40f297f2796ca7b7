// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QSslServer>
#include <QUrl>

#include <functional>

class QSslSocket;

/// A real HTTPS server on loopback whose certificate the tests' own authority has signed.
class FeedServer
{
public:
    FeedServer();

    QUrl url(const QString &path = QStringLiteral("/feed")) const;

    /// Answers with status 200 and @p body.
    void serve(const QByteArray &body);

    /// Answers with @p bytes, headers included.
    void answer(const QByteArray &bytes);

    /// Takes requests and says nothing.
    void stall();

    /// Makes this process trust the authority, or no longer.
    static void trustAuthority(bool isTrusted);

    int requests = 0;

private:
    void onConnection();

    QSslServer m_server;
    std::function<void(QSslSocket &)> m_script;
};
