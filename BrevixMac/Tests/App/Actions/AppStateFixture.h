// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "AppState.h"
#include "LibraryServer.h"

#include "Foundation/HttpClient.h"
#include "Foundation/UserDefaults.h"

#include "Support/InMemoryDesktop.h"
#include "Support/Waiting.h"

#include <QTemporaryDir>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>

/// An application's state over a desktop in memory with two applications, each with a focused field, and a
/// library on loopback. The clock stands still; a test moves it.
class AppStateFixture : public testing::Test
{
protected:
    static constexpr qint64 ownPid = 1;
    static constexpr qint64 editorPid = 42;
    static constexpr qint64 browserPid = 43;

    AppStateFixture();
    ~AppStateFixture() override;

    /// Makes the state; members set before are what it starts with.
    AppState &start();

    /// Has a session stored, as after an earlier sign-in.
    void storeSession();

    /// Starts with a session and waits for the library.
    AppState &startWithLibrary();

    /// The focus is in @p path; nowhere when it is empty.
    void focus(const QString &path);

    /// The same with its application in front.
    void switchTo(qint64 pid);

    InMemoryAccessibilityTree::Field &field(const QString &path) { return tree.fields[path]; }

    /// Opens the picker and waits for it.
    void openPicker(bool allowCachedTarget = true);

    /// Waits for the outcome of the insertion that @p action starts.
    InsertionResult resultOf(const std::function<void()> &action);

    /// Makes the next insertion fail.
    void refuseInsertion();

    static PromptItem prompt(const QString &id, const QString &text, const QString &categoryID = {});
    static SkillItem skill(const QString &id, const QString &text);

    QTemporaryDir folder;
    UserDefaults defaults{folder.filePath(QStringLiteral("defaults.plist"))};
    HttpClient http;
    LibraryServer server;
    QDateTime time{QDate(2026, 3, 1), QTime(10, 0), Qt::UTC};
    AppConfiguration configuration;
    QString bundleIdentifier = QStringLiteral("app.brevix.Brevix");

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

    const QString editorField = QStringLiteral("/editor/field");
    const QString browserField = QStringLiteral("/browser/field");
    const QString ownField = QStringLiteral("/own/search");

    std::unique_ptr<AppState> state;
    int presented = 0;
    int dismissed = 0;
};
