// SPDX-License-Identifier: GPL-3.0-or-later
#include "ScriptedServer.h"

#include <memory>

namespace {

qsizetype announcedSize(const QByteArray &head)
{
    const QByteArray name = "content-length:";
    const qsizetype at = head.toLower().indexOf(name);
    if (at < 0)
        return 0;
    const qsizetype start = at + name.size();
    return head.sliced(start, head.indexOf('\r', start) - start).trimmed().toLongLong();
}

} // namespace

ScriptedServer::ScriptedServer(Script script)
    : script(std::move(script))
{
    QObject::connect(&m_server, &QTcpServer::newConnection, &m_server, [this] { onConnection(); });
    if (!m_server.listen(QHostAddress::LocalHost))
        qFatal("The test server cannot listen");
}

QUrl ScriptedServer::url(const QString &path) const
{
    return QUrl(QStringLiteral("http://127.0.0.1:%1%2").arg(m_server.serverPort()).arg(path));
}

ScriptedServer::Script ScriptedServer::answer(const QByteArray &bytes)
{
    return [bytes](QTcpSocket *socket) { socket->write(bytes); };
}

void ScriptedServer::onConnection()
{
    QTcpSocket *socket = m_server.nextPendingConnection();
    ++connections;
    const auto received = std::make_shared<QByteArray>();
    QObject::connect(socket, &QTcpSocket::readyRead, &m_server,
                     [this, socket, received] { onBytes(socket, *received); });
    QObject::connect(socket, &QTcpSocket::disconnected, &m_server, [this] { ++disconnections; });
}

void ScriptedServer::onBytes(QTcpSocket *socket, QByteArray &received)
{
    received += socket->readAll();
    const qsizetype headSize = received.indexOf("\r\n\r\n") + 4;
    if (headSize < 4)
        return;
    const qsizetype bodySize = announcedSize(received.first(headSize));
    if (received.size() < headSize + bodySize)
        return;
    requests.append({received.first(headSize), received.sliced(headSize, bodySize)});
    received.remove(0, headSize + bodySize);
    script(socket);
}
