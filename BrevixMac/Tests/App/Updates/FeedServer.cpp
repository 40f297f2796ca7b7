// SPDX-License-Identifier: GPL-3.0-or-later
#include "FeedServer.h"

#include "TestCertificates.h"

#include <QSslCertificate>
#include <QSslConfiguration>
#include <QSslKey>
#include <QSslSocket>

#include <memory>

FeedServer::FeedServer()
{
    QSslConfiguration configuration = QSslConfiguration::defaultConfiguration();
    configuration.setLocalCertificate(QSslCertificate(TestCertificates::server));
    configuration.setPrivateKey(QSslKey(TestCertificates::serverKey, QSsl::Ec));
    configuration.setPeerVerifyMode(QSslSocket::VerifyNone);
    m_server.setSslConfiguration(configuration);
    QObject::connect(&m_server, &QSslServer::pendingConnectionAvailable, &m_server,
                     [this] { onConnection(); });
    if (!m_server.listen(QHostAddress::LocalHost))
        qFatal("The feed server cannot listen");
}

QUrl FeedServer::url(const QString &path) const
{
    return QUrl(QStringLiteral("https://127.0.0.1:%1%2").arg(m_server.serverPort()).arg(path));
}

void FeedServer::serve(const QByteArray &body)
{
    answer("HTTP/1.1 200 OK\r\nContent-Length: " + QByteArray::number(body.size()) +
           "\r\nConnection: close\r\n\r\n" + body);
}

void FeedServer::answer(const QByteArray &bytes)
{
    m_script = [bytes](QSslSocket &socket) { socket.write(bytes); };
}

void FeedServer::stall()
{
    m_script = [](QSslSocket &) {};
}

void FeedServer::trustAuthority(bool isTrusted)
{
    QSslConfiguration configuration = QSslConfiguration::defaultConfiguration();
    configuration.setCaCertificates(isTrusted ? QList{QSslCertificate(TestCertificates::authority)}
                                              : QList<QSslCertificate>());
    QSslConfiguration::setDefaultConfiguration(configuration);
}

void FeedServer::onConnection()
{
    auto *socket = static_cast<QSslSocket *>(m_server.nextPendingConnection());
    const auto received = std::make_shared<QByteArray>();
    QObject::connect(socket, &QSslSocket::readyRead, &m_server, [this, socket, received] {
        *received += socket->readAll();
        if (!received->contains("\r\n\r\n"))
            return;
        received->clear();
        ++requests;
        m_script(*socket);
    });
}
