// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "AppState.h"

#include "Foundation/UserDefaults.h"

#include "Support/InMemoryDesktop.h"

#include <QJsonArray>
#include <QPointer>
#include <QTcpServer>
#include <QTcpSocket>
#include <QTemporaryDir>

#include <memory>

/// Answers the three collections of a library over loopback, whatever the user and the project.
class LibraryServer final : public QTcpServer
{
public:
    LibraryServer();

    QUrl origin() const;

    void addCategory(const QString &id, const QString &name, const QString &color);
    void addPrompt(const QString &id, const QString &title, const QString &text,
                   const QString &categoryID = {});
    void addSkill(const QString &id, const QString &title, const QString &text);
    void clear();

    /// What becomes of requests that write something.
    enum class Writes { accepted, held, refused };
    Writes writes = Writes::accepted;

    /// What a refused write is told.
    static QString refusal();

    /// Writes that wait for releaseWrites().
    qsizetype heldWrites() const { return m_held.size(); }

    /// Accepts the held writes, the oldest first, and those that come from now on.
    void releaseWrites();

private:
    void answer(QTcpSocket *socket);
    static void reply(QTcpSocket *socket, const QByteArray &status, const QJsonObject &body);

    QJsonArray m_categories;
    QJsonArray m_prompts;
    QJsonArray m_skills;
    QList<QPointer<QTcpSocket>> m_held;
};

/// An AppState over a desktop in memory, with a signed-in user and a library on loopback: everything a picker
/// needs. Arrange the public parts, then call start().
class PickerDesk
{
public:
    static constexpr qint64 editorPid = 4242;

    PickerDesk();
    ~PickerDesk();

    /// The library of the examples: categories, prompts with and without variables, skills.
    void addSampleLibrary();

    /// Makes the coordinator and waits for the library when somebody is signed in.
    void start();

    /// Captures the editor's text field as a hotkey press would; the picker's present action runs.
    void press();

    bool isSignedIn = true;
    bool isConfigured = true; ///< whether the application knows its cloud
    std::optional<QString> email = QStringLiteral("ann@example.com");
    std::optional<QString> displayName;

    QTemporaryDir folder;
    LibraryServer server;
    InMemoryAccessibilityTree tree;
    InMemoryPasteboard pasteboard;
    InMemoryWorkspace workspace;
    InMemoryKeyEvents keyEvents;
    InMemoryEventMonitor eventMonitor;
    InMemoryHotKeys hotKeys;
    InMemoryWebAuthenticationSession webAuthenticationSession;
    InMemoryKeyCapture keyCapture;
    InMemoryLoginItem loginItem;
    InMemoryStatusItem statusItem;
    std::unique_ptr<UserDefaults> defaults;
    HttpClient http;
    std::unique_ptr<AppState> appState;

    InMemoryAccessibilityTree::Field &field() { return tree.fields[QStringLiteral("/field")]; }
};
