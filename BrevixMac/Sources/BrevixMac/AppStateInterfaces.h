// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "FocusedTarget.h"
#include "InsertionOutcome.h"
#include "KeyboardShortcut.h"
#include "Models.h"
#include "SyncState.h"

#include <QCoroTask>

#include <functional>

/// The narrow interfaces through which AppState reaches its services.

/// The library that is shown. Implemented by LibraryStore.
class PromptLibraryProviding
{
public:
    virtual ~PromptLibraryProviding() = default;
    virtual const QList<PromptCategory> &categories() const = 0;
    virtual const QList<PromptItem> &prompts() const = 0;
    virtual const QList<SkillItem> &skills() const = 0;
    virtual const SyncState &syncState() const = 0;
    virtual void bind(const QString &userID) = 0;
    virtual void unbind() = 0;
};

/// Finds the field the user is in. Implemented by AccessibilityService.
class FocusedElementProviding
{
public:
    virtual ~FocusedElementProviding() = default;
    virtual QCoro::Task<FocusedTargetPtr> captureFocusedTarget() = 0;
};

/// Places text into a captured field. Implemented by InsertionService.
class PromptInserting
{
public:
    virtual ~PromptInserting() = default;
    virtual QCoro::Task<InsertionResult> insert(RenderedPrompt rendered, FocusedTargetPtr target) = 0;
    /// Puts plain text on the clipboard for good. False when the session refused.
    virtual bool copy(const QString &text) = 0;
};

/// The one global hotkey. Implemented by HotkeyService.
class HotkeyRegistering
{
public:
    virtual ~HotkeyRegistering() = default;
    virtual void registerHotkey(const KeyboardShortcut &shortcut, std::function<void()> handler) = 0;
    virtual void unregisterHotkey() = 0;
};
