// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "AccessibilityService.h"
#include "InsertionService.h"
#include "PermissionsService.h"
#include "PreferenceStore.h"

#include "Foundation/UserDefaults.h"

#include "Support/InMemoryDesktop.h"
#include "Support/Waiting.h"

#include <QElapsedTimer>
#include <QTemporaryDir>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>

constexpr qint64 editorPid = 42;
constexpr qint64 otherPid = 43;
inline const QString fieldPath = QStringLiteral("/field");
inline const QString promptText = QStringLiteral("Write a haiku.");

inline const auto noTargetMessage =
    u"We couldn't find an editable text field. Copy instead, or click a field and press your Brevix hotkey."_qs;
inline const auto secureMessage =
    u"Password fields are protected. Copy instead if you want to paste manually."_qs;
inline const auto postEventMessage =
    u"Allow keyboard event posting to enable paste fallback, or copy instead."_qs;
inline const auto reactivationMessage = u"Brevix couldn't reactivate Editor. Copy instead."_qs;

inline InsertionResult pastedInto(const QString &name)
{
    return InsertionResult::success(InsertionMethod::clipboardPaste, u"Prompt pasted into %1."_qs.arg(name));
}

inline InsertionResult notReactivated(const QString &name)
{
    return InsertionResult::failure(InsertionFailureReason::appReactivationFailed,
                                    u"Brevix couldn't reactivate %1. Copy instead."_qs.arg(name));
}

inline const InsertionResult insertedDirectly =
    InsertionResult::success(InsertionMethod::accessibility, u"Prompt inserted with Accessibility."_qs);
inline const InsertionResult copied =
    InsertionResult::success(InsertionMethod::copiedOnly, u"Prompt copied to clipboard."_qs);
inline const InsertionResult postingNotAllowed =
    InsertionResult::failure(InsertionFailureReason::postEventUnavailable, postEventMessage);
inline const InsertionResult protectedField =
    InsertionResult::failure(InsertionFailureReason::secureField, secureMessage);

/// A clipboard of several items and types, one of them bytes that are no text, and one without any type.
inline QList<PasteboardItem> richClipboard()
{
    return {
        {.types = {{u"text/html"_qs, "<b>bold</b>"},
                   {u"text/plain"_qs, "bold"},
                   {u"text/rtf"_qs, "{\\b bold}"}}},
        {.types = {{u"image/png"_qs, QByteArray("\x89PNG\0\x01\xff", 7)}}},
        {.types = {}},
    };
}

/// An insertion service over a desktop in memory: an editor with one field, another program in front, and a
/// rich clipboard. Notes what happens to the clipboard in which order, and when.
class InsertionServiceTest : public testing::Test
{
protected:
    InsertionServiceTest()
    {
        workspace.addApplication(editorPid, QStringLiteral("Editor"));
        workspace.addApplication(otherPid, QStringLiteral("Other"));
        workspace.frontmost = otherPid;
        tree.fields.insert(
            fieldPath,
            {.pid = editorPid, .role = AX::textField, .value = QString(), .selectedRange = TextRange{0, 0}});
        pasteboard.content = richClipboard();
        workspace.onActivation = [this] { note(QStringLiteral("activated")); };
        keyEvents.onPaste = [this] {
            note(QStringLiteral("chord"));
            pastedTexts.append(pasteboard.text());
            applicationPastedInto = workspace.frontmost;
        };
        QObject::connect(&pasteboard, &Pasteboard::restored, &pasteboard, [this] { restoredAt = elapsed(); });
        clock.start();
    }

    std::chrono::nanoseconds elapsed() const { return std::chrono::nanoseconds(clock.nsecsElapsed()); }

    void note(const QString &step)
    {
        pasteboard.history.append(step);
        steps.insert(step, elapsed());
    }

    InMemoryAccessibilityTree::Field &field() { return tree.fields[fieldPath]; }

    std::shared_ptr<FocusedTarget> target()
    {
        auto target = std::make_shared<FocusedTarget>();
        target->pid = editorPid;
        target->application = workspace.application(editorPid);
        target->applicationName = QStringLiteral("Editor");
        target->element = InMemoryAccessibilityTree::element(fieldPath);
        target->role = AX::textField;
        return target;
    }

    QCoro::Task<InsertionResult> startInsertion(const FocusedTargetPtr &into)
    {
        clock.restart();
        return service->insert({.prompt = {}, .text = promptText, .variables = {}}, into);
    }

    InsertionResult insertInto(const FocusedTargetPtr &into) { return await(startInsertion(into)); }

    void prefer(InsertionMethod method) { preferences.setPreferredInsertionMethod(method); }

    void deny(bool accessibility, bool posting)
    {
        tree.trusted = !accessibility;
        keyEvents.allowed = !posting;
        permissions.refresh();
    }

    void expectClipboardKept() { EXPECT_EQ(pasteboard.content, richClipboard()); }

    void expectClipboardUntouched()
    {
        expectClipboardKept();
        EXPECT_THAT(pasteboard.history, testing::IsEmpty());
    }

    QTemporaryDir folder;
    UserDefaults defaults{folder.filePath(QStringLiteral("defaults.plist"))};
    PreferenceStore preferences{defaults};
    InMemoryAccessibilityTree tree;
    InMemoryPasteboard pasteboard;
    InMemoryWorkspace workspace;
    InMemoryKeyEvents keyEvents;
    AccessibilityService accessibility{tree, workspace};
    PermissionsService permissions{tree, keyEvents};
    std::unique_ptr<InsertionService> service =
        std::make_unique<InsertionService>(permissions, accessibility, preferences,
                                           InsertionService::Desktop{pasteboard, workspace, keyEvents, tree});

    QElapsedTimer clock;
    QMap<QString, std::chrono::nanoseconds> steps; ///< when each happened last
    std::chrono::nanoseconds restoredAt{0};
    QStringList pastedTexts;
    std::optional<qint64> applicationPastedInto;
};

/// The same with the paste as the preferred method.
class ClipboardPasteTest : public InsertionServiceTest
{
protected:
    ClipboardPasteTest() { prefer(InsertionMethod::clipboardPaste); }
};
