// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "InMemoryDesktop.h"
#include "InMemorySessionProbe.h"
#include "InMemoryWebBrowser.h"
#include "LibraryServer.h"

#include "AppState.h"

#include "Foundation/HttpClient.h"
#include "Foundation/UserDefaults.h"

#include <QTemporaryDir>

#include <memory>

/// An application's state over a desktop in memory and a library on loopback. The clock stands still; a test
/// moves it. Arrange the public parts, then call start().
class AppBench
{
public:
    static constexpr qint64 ownPid = 1;

    AppBench();
    ~AppBench();

    AppBench(const AppBench &) = delete;
    AppBench &operator=(const AppBench &) = delete;

    /// Has a session stored, as after an earlier sign-in.
    void storeSession(const QString &userID = QStringLiteral("user"),
                      const QString &firebaseIDToken = QStringLiteral("token"));

    /// Makes the state anew.
    AppState &start();

    /// False when the library does not come.
    bool waitForLibrary();

    QDateTime time{QDate(2026, 3, 1), QTime(10, 0), Qt::UTC};
    AppConfiguration configuration;
    QString bundleIdentifier = QStringLiteral("app.brevix.Brevix");
    std::optional<QString> email;
    std::optional<QString> displayName;

    QTemporaryDir folder;
    UserDefaults defaults{folder.filePath(QStringLiteral("defaults.plist"))};
    HttpClient http;
    LibraryServer server;
    CloudEndpoints endpoints = CloudEndpoints::local(server.origin());

    InMemoryAccessibilityTree tree;
    InMemoryPasteboard pasteboard;
    InMemoryWorkspace workspace;
    InMemoryKeyEvents keyEvents;
    InMemoryEventMonitor eventMonitor;
    InMemoryHotKeys hotKeys;
    InMemoryWebAuthenticationSession webAuthenticationSession;
    InMemoryWebBrowser webBrowser;
    InMemoryKeyCapture keyCapture;
    InMemoryStatusItem statusItem;
    InMemoryLoginItem loginItem;
    InMemorySessionProbe sessionProbe;

    std::unique_ptr<AppState> appState;
};
