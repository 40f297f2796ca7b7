// SPDX-License-Identifier: GPL-3.0-or-later
#include "InsertionService.h"

#include "AccessibilityService.h"
#include "PermissionsService.h"
#include "PreferenceStore.h"

#include "Desktop/AccessibilityTree.h"
#include "Desktop/KeyEvents.h"
#include "Desktop/Pasteboard.h"
#include "Desktop/Workspace.h"

#include <QDeadlineTimer>

namespace {

using namespace std::chrono_literals;

/// After reactivation, for the application to give the focus back to its field, and again after the chord,
/// for it to read the clipboard.
constexpr auto settleTime = 180ms;

constexpr auto focusPatience = 300ms;
constexpr auto focusPollInterval = 20ms;

InsertionResult noTargetResult()
{
    return InsertionResult::failure(
        InsertionFailureReason::noFocusedTarget,
        QStringLiteral(
            "We couldn't find an editable text field. Copy instead, or click a field and press your "
            "Brevix hotkey."));
}

InsertionResult secureFieldResult()
{
    return InsertionResult::failure(
        InsertionFailureReason::secureField,
        QStringLiteral("Password fields are protected. Copy instead if you want to paste manually."));
}

InsertionResult postEventResult()
{
    return InsertionResult::failure(
        InsertionFailureReason::postEventUnavailable,
        QStringLiteral("Allow keyboard event posting to enable paste fallback, or copy instead."));
}

InsertionResult reactivationResult(const FocusedTarget &target)
{
    const QString name = target.applicationName.value_or(QStringLiteral("the previous app"));
    return InsertionResult::failure(InsertionFailureReason::appReactivationFailed,
                                    QStringLiteral("Brevix couldn't reactivate %1. Copy instead.").arg(name));
}

/// Overwriting a clipboard that could not be saved would lose it, so nothing is pasted then.
InsertionResult clipboardNotSavedResult()
{
    return InsertionResult::failure(
        InsertionFailureReason::unknown,
        QStringLiteral("Brevix couldn't save your clipboard, so nothing was pasted. "
                       "Copy instead to replace it."));
}

/// The application took the text and fell silent. Inserting in another way could double it.
InsertionResult unknownOutcomeResult(const FocusedTarget &target)
{
    const QString name = target.applicationName.value_or(QStringLiteral("The current app"));
    return InsertionResult::failure(
        InsertionFailureReason::unknown,
        QStringLiteral("%1 isn't answering, so Brevix can't tell whether the text "
                       "arrived. Look there before you copy instead.")
            .arg(name));
}

InsertionResult copiedResult()
{
    return InsertionResult::success(InsertionMethod::copiedOnly,
                                    QStringLiteral("Prompt copied to clipboard."));
}

InsertionResult pastedResult(const FocusedTarget &target)
{
    const QString name = target.applicationName.value_or(QStringLiteral("the current app"));
    return InsertionResult::success(InsertionMethod::clipboardPaste,
                                    QStringLiteral("Prompt pasted into %1.").arg(name));
}

/// A terminal that is embedded in another program is known only by its field.
PasteConvention pasteConvention(const FocusedTarget &target)
{
    const PasteConvention convention =
        target.application ? target.application->pasteConvention : PasteConvention::standard;
    const bool isEmbeddedTerminal = target.subrole == AX::terminal && convention == PasteConvention::standard;
    return isEmbeddedTerminal ? PasteConvention::terminal : convention;
}

/// Whether what is typed now arrives in the process, the window and the field of the capture. A field whose
/// application does not tell is taken for the same.
QCoro::Task<bool> isStillTheTarget(InsertionService::Desktop desktop, FocusedTargetPtr target,
                                   std::stop_token token)
{
    // The window manager may be slower to give the focus than to say so.
    const QDeadlineTimer patience(focusPatience);
    while (!desktop.workspace.isInFront(*target->application)) {
        if (patience.hasExpired())
            co_return false;
        const bool hasSlept = co_await sleepFor(focusPollInterval, token);
        if (!hasSlept)
            break;
    }
    std::optional<bool> isFocused;
    if (desktop.accessibilityTree.isProcessTrusted() && !token.stop_requested())
        isFocused = co_await desktop.accessibilityTree.isFocused(target->element);
    // The window comes last, because nothing takes time between this look and the key.
    co_return isFocused.value_or(true) && desktop.workspace.isInFront(*target->application);
}

/// The same, noting a refusal in @p isTarget.
QCoro::Task<bool> lookAgain(InsertionService::Desktop desktop, FocusedTargetPtr target, std::stop_token token,
                            std::shared_ptr<bool> isTarget)
{
    const bool isSame = co_await isStillTheTarget(desktop, target, token);
    *isTarget = isSame;
    co_return isSame;
}

/// The steps between taking over the clipboard and giving it back. Touches only the seams, so that it ends
/// well even when the service is gone meanwhile.
QCoro::Task<InsertionResult> pasteInto(InsertionService::Desktop desktop, FocusedTargetPtr target,
                                       std::stop_token token)
{
    if (!target->application)
        co_return reactivationResult(*target);
    const RunningApplication application = *target->application;
    const bool activated = co_await desktop.workspace.activate(application);
    if (!activated)
        co_return reactivationResult(*target);
    co_await sleepFor(settleTime, token);
    // The user may have moved on during the wait, and may again while modifiers are waited for; a chord then
    // would land in another field.
    const auto isTarget = std::make_shared<bool>(true);
    const KeyEvents::Guard guard = [=] { return lookAgain(desktop, target, token, isTarget); };
    const bool posted = co_await desktop.keyEvents.postPasteChord(pasteConvention(*target), guard);
    if (!*isTarget)
        co_return reactivationResult(*target);
    if (!posted)
        co_return postEventResult();
    co_await sleepFor(settleTime, token);
    co_return pastedResult(*target);
}

QCoro::Task<InsertionResult> pasteKeepingClipboard(InsertionService::Desktop desktop, QString text,
                                                   FocusedTargetPtr target, std::stop_token token)
{
    const std::optional<QList<PasteboardItem>> snapshot = co_await desktop.pasteboard.items();
    if (!snapshot || token.stop_requested())
        co_return clipboardNotSavedResult();
    if (!desktop.pasteboard.setTransientString(text, pasteConvention(*target))) {
        desktop.pasteboard.restore(*snapshot);
        co_return clipboardNotSavedResult();
    }
    InsertionResult result = co_await pasteInto(desktop, target, token);
    desktop.pasteboard.restore(*snapshot);
    co_return result;
}

} // namespace

InsertionService::InsertionService(PermissionsService &permissions, AccessibilityService &accessibility,
                                   PreferenceStore &preferences, Desktop desktop)
    : m_permissions(permissions)
    , m_accessibility(accessibility)
    , m_preferences(preferences)
    , m_desktop(desktop)
{
}

QCoro::Task<InsertionResult> InsertionService::insert(RenderedPrompt rendered, FocusedTargetPtr target)
{
    const std::stop_token token = m_tasks.token();
    if (!target)
        co_return noTargetResult();
    if (AccessibilityService::isSecureField(*target))
        co_return secureFieldResult();

    const InsertionMethod method = m_preferences.preferredInsertionMethod();
    if (method == InsertionMethod::copiedOnly) {
        copy(rendered.text);
        co_return copiedResult();
    }
    if (method != InsertionMethod::clipboardPaste) {
        const std::optional<InsertionResult> inserted =
            co_await attemptAccessibilityInsertion(rendered.text, target);
        if (inserted)
            co_return *inserted;
        if (token.stop_requested())
            co_return noTargetResult();
    }
    co_return co_await attemptClipboardPaste(rendered.text, target);
}

bool InsertionService::copy(const QString &text)
{
    m_desktop.pasteboard.clearContents();
    return m_desktop.pasteboard.setString(text);
}

QCoro::Task<std::optional<InsertionResult>>
InsertionService::attemptAccessibilityInsertion(QString text, FocusedTargetPtr target)
{
    if (!m_permissions.accessibilityGranted() || AccessibilityService::isSecureField(*target))
        co_return std::nullopt;
    // insertText() asks first whether the value can be written, so the question costs one round trip, not
    // two.
    const WriteOutcome outcome = co_await m_accessibility.insertText(text, target);
    if (outcome == WriteOutcome::unknown)
        co_return unknownOutcomeResult(*target);
    if (outcome == WriteOutcome::refused)
        co_return std::nullopt;
    co_return InsertionResult::success(InsertionMethod::accessibility,
                                       QStringLiteral("Prompt inserted with Accessibility."));
}

QCoro::Task<InsertionResult> InsertionService::attemptClipboardPaste(QString text, FocusedTargetPtr target)
{
    if (!m_permissions.postEventGranted())
        co_return postEventResult();
    co_return co_await pasteKeepingClipboard(m_desktop, text, target, m_tasks.token());
}
