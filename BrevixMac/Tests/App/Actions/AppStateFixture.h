// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Support/AppBench.h"
#include "Support/Waiting.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

/// The bench with two applications on its desktop, each with a focused field.
class AppStateFixture : public testing::Test, protected AppBench
{
protected:
    static constexpr qint64 editorPid = 42;
    static constexpr qint64 browserPid = 43;

    AppStateFixture();
    ~AppStateFixture() override;

    /// Makes the state; members set before are what it starts with.
    AppState &start();

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

    const QString editorField = QStringLiteral("/editor/field");
    const QString browserField = QStringLiteral("/browser/field");
    const QString ownField = QStringLiteral("/own/search");

    std::unique_ptr<AppState> &state = appState;
    int presented = 0;
    int dismissed = 0;
};
