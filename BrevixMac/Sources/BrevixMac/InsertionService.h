// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "AppStateInterfaces.h"

#include "Foundation/TaskScope.h"

class AccessibilityService;
class AccessibilityTree;
class KeyEvents;
class Pasteboard;
class PermissionsService;
class PreferenceStore;
class Workspace;

/// Places rendered text into a captured field: directly, by a paste that keeps the user's clipboard, or by a
/// plain copy. Main thread only. Every outcome is an InsertionResult whose message is for the user; nothing
/// is thrown.
class InsertionService final : public PromptInserting
{
public:
    struct Desktop
    {
        Pasteboard &pasteboard;
        Workspace &workspace;
        KeyEvents &keyEvents;
        AccessibilityTree &accessibilityTree;
    };

    /// All collaborators must outlive this object.
    InsertionService(PermissionsService &permissions, AccessibilityService &accessibility,
                     PreferenceStore &preferences, Desktop desktop);

    QCoro::Task<InsertionResult> insert(RenderedPrompt rendered, FocusedTargetPtr target) override;
    bool copy(const QString &text) override;

private:
    QCoro::Task<std::optional<InsertionResult>> attemptAccessibilityInsertion(QString text,
                                                                              FocusedTargetPtr target);
    QCoro::Task<InsertionResult> attemptClipboardPaste(QString text, FocusedTargetPtr target);

    PermissionsService &m_permissions;
    AccessibilityService &m_accessibility;
    PreferenceStore &m_preferences;
    Desktop m_desktop;
    TaskScope m_tasks; // keep last
};
