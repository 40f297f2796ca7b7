// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Models.h"

#include <QJsonObject>
#include <QTcpServer>
#include <QUrl>

/// Answers the list requests of the library's three collections on loopback with the records that a test has
/// put in.
class LibraryServer
{
public:
    LibraryServer();

    QUrl origin() const;

    QList<PromptCategory> categories;
    QList<PromptItem> prompts;
    QList<SkillItem> skills;
    QList<QByteArray> requestLines;

private:
    void onBytes(QTcpSocket *socket, QByteArray &received);
    QByteArray answerTo(const QByteArray &requestLine) const;

    QTcpServer m_server;
};
