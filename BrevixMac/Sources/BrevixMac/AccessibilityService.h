// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "AppStateInterfaces.h"

#include "Desktop/AccessibilityTree.h"

#include <functional>

class Workspace;

/// Finds out which text field the user was in, in whatever application, and writes text into it. Holds no
/// state. Main thread only. Every platform error is "no value" or false.
class AccessibilityService final : public FocusedElementProviding
{
public:
    /// @p tree and @p workspace must outlive this object and its running tasks.
    AccessibilityService(AccessibilityTree &tree, Workspace &workspace,
                         std::function<QDateTime()> now = &QDateTime::currentDateTimeUtc);

    /// The field focused anywhere in the session now; null when there is none.
    QCoro::Task<FocusedTargetPtr> captureFocusedTarget() override;

    /// The field focused inside @p application; null when there is none.
    QCoro::Task<FocusedTargetPtr> captureFocusedTarget(RunningApplication application);

    /// A target that stands for @p application as a whole. Never null.
    FocusedTargetPtr applicationFallbackTarget(const RunningApplication &application) const;

    /// True for a field that must not be written: a password field by its role or subrole.
    static bool isSecureField(const FocusedTarget &target);

    /// Replaces the selection of @p target by @p text and puts the caret after it. The outcome is that of
    /// writing the text, wherever the caret has ended up.
    QCoro::Task<WriteOutcome> insertText(QString text, FocusedTargetPtr target);

private:
    AccessibilityTree &m_tree;
    Workspace &m_workspace;
    std::function<QDateTime()> m_now;
};
