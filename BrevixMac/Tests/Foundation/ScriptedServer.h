// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>
#include <QList>
#include <QTcpServer>
#include <QTcpSocket>
#include <QUrl>

#include <functional>

/// A server on loopback that collects whole requests and leaves it to the test what happens on the wire then.
class ScriptedServer
{
public:
    struct Request
    {
        QByteArray head; ///< request line and headers
        QByteArray body;
    };
    using Script = std::function<void(QTcpSocket *socket)>;

    explicit ScriptedServer(Script script);

    /// An address on this server with the given path.
    QUrl url(const QString &path = QStringLiteral("/")) const;

    /// Replies to every request with @p bytes and keeps the connection open.
    static Script answer(const QByteArray &bytes);

    Script script; ///< runs at the end of every request
    QList<Request> requests;
    int connections = 0;
    int disconnections = 0;

private:
    void onConnection();
    void onBytes(QTcpSocket *socket, QByteArray &received);

    QTcpServer m_server;
};
