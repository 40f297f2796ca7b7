// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "AppState.h"

#include "Foundation/UserDefaults.h"

#include "Support/InMemoryDesktop.h"

#include <QJsonArray>
#include <QJsonObject>
#include <QPointer>
#include <QTcpServer>
#include <QTemporaryDir>

#include <memory>

/// A library on loopback that can be written to, and a function that rewrites prompts. Has state: what is
/// created is listed from then on. Can refuse, and can keep an answer waiting.
class EditorServer final : public QTcpServer
{
public:
    EditorServer();

    QUrl origin() const;

    void addCategory(const QString &id, const QString &name, const QString &color);
    void removeCategory(const QString &id);

    /// The fields of what was created in a collection, oldest first.
    QList<QJsonObject> created(const QString &collection) const { return m_created.value(collection); }
    /// A text field of such a document.
    static QString text(const QJsonObject &fields, const QString &name);

    int writes = 0;                 ///< requests to create, refused ones too
    QStringList optimizeRequests;   ///< prompts sent to be rewritten
    std::optional<QString> refusal; ///< the message of every answer to a write, with status 400
    QString optimizedText = QStringLiteral("An optimized prompt for {{audience}}.");
    /// Ends the connections that clients keep open.
    void dropConnections();
    bool isHolding = false; ///< answers to writes wait until release()
    void release();

private:
    struct Request
    {
        QByteArray method;
        QByteArray path;
        QJsonObject body;
    };

    void onBytes(QTcpSocket *socket);
    void answer(QTcpSocket *socket, const Request &request);
    QJsonObject create(const QString &collection, const QJsonObject &fields);
    static void send(QTcpSocket *socket, int status, const QJsonObject &body);

    QHash<QString, QJsonArray> m_documents;
    QHash<QString, QList<QJsonObject>> m_created;
    QList<std::function<void()>> m_held;
    int m_nextID = 1;
};

/// An AppState over a desktop in memory with a library that can be written to. Arrange the public parts, then
/// start(). Starting again is starting the program again: what is on disk stays.
class EditorDesk
{
public:
    EditorDesk();
    ~EditorDesk();

    void start();

    /// An account signs in.
    void signInAs(const QString &userID);

    std::optional<QString> userID = QStringLiteral("user");

    QTemporaryDir folder;
    EditorServer server;
    InMemoryAccessibilityTree tree;
    InMemoryPasteboard pasteboard;
    InMemoryWorkspace workspace;
    InMemoryKeyEvents keyEvents;
    InMemoryEventMonitor eventMonitor;
    InMemoryHotKeys hotKeys;
    InMemoryWebAuthenticationSession webAuthenticationSession;
    InMemoryKeyCapture keyCapture;
    InMemoryStatusItem statusItem;
    InMemoryLoginItem loginItem;
    std::unique_ptr<UserDefaults> defaults;
    HttpClient http;
    std::unique_ptr<AppState> appState;

    QString draftFolder() const { return folder.filePath(QStringLiteral("drafts")); }
    QString write(const QString &name, const QByteArray &bytes) const;

private:
    void storeSession(const QString &id);
};
