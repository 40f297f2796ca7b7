// SPDX-License-Identifier: GPL-3.0-or-later
#include "LibraryServer.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QTcpSocket>

#include <memory>

namespace {

QJsonObject stringValue(const QString &text)
{
    return {{QStringLiteral("stringValue"), text}};
}

QJsonObject document(const QString &id, qint64 order, QJsonObject fields)
{
    fields.insert(QStringLiteral("order"),
                  QJsonObject{{QStringLiteral("integerValue"), QString::number(order)}});
    const QString name = u"projects/p/databases/(default)/documents/collection/" + id;
    return {{QStringLiteral("name"), name}, {QStringLiteral("fields"), fields}};
}

QJsonObject document(const PromptCategory &category)
{
    return document(category.id, category.order, {{QStringLiteral("name"), stringValue(category.name)}});
}

QJsonObject document(const PromptItem &prompt)
{
    return document(prompt.id, prompt.order,
                    {{QStringLiteral("title"), stringValue(prompt.title)},
                     {QStringLiteral("text"), stringValue(prompt.text)},
                     {QStringLiteral("categoryId"), stringValue(prompt.categoryID)}});
}

QJsonObject document(const SkillItem &skill)
{
    return document(skill.id, skill.order,
                    {{QStringLiteral("title"), stringValue(skill.title)},
                     {QStringLiteral("text"), stringValue(skill.text)}});
}

template <typename Item>
QByteArray list(const QList<Item> &items)
{
    QJsonArray documents;
    for (const Item &item : items)
        documents.append(document(item));
    return QJsonDocument(QJsonObject{{QStringLiteral("documents"), documents}}).toJson();
}

} // namespace

LibraryServer::LibraryServer()
{
    m_server.listen(QHostAddress::LocalHost);
    QObject::connect(&m_server, &QTcpServer::newConnection, &m_server, [this] {
        while (QTcpSocket *socket = m_server.nextPendingConnection()) {
            const auto received = std::make_shared<QByteArray>();
            QObject::connect(socket, &QTcpSocket::readyRead, socket,
                             [this, socket, received] { onBytes(socket, *received); });
            QObject::connect(socket, &QTcpSocket::disconnected, socket, &QObject::deleteLater);
        }
    });
}

QUrl LibraryServer::origin() const
{
    return QUrl(QStringLiteral("http://127.0.0.1:%1").arg(m_server.serverPort()));
}

void LibraryServer::onBytes(QTcpSocket *socket, QByteArray &received)
{
    received += socket->readAll();
    if (!received.contains("\r\n\r\n"))
        return;
    const QByteArray requestLine = received.left(received.indexOf('\r'));
    received.clear();
    requestLines.append(requestLine);
    const QByteArray body = answerTo(requestLine);
    socket->write("HTTP/1.1 200 OK\r\nContent-Type: application/json\r\nContent-Length: " +
                  QByteArray::number(body.size()) + "\r\n\r\n" + body);
}

QByteArray LibraryServer::answerTo(const QByteArray &requestLine) const
{
    if (requestLine.contains("/categories?"))
        return list(categories);
    if (requestLine.contains("/prompts?"))
        return list(prompts);
    return list(skills);
}
