// SPDX-License-Identifier: GPL-3.0-or-later
#include "AccessibilityService.h"

#include "Desktop/AccessibilityTree.h"
#include "Desktop/Workspace.h"
#include "Foundation/Text.h"

#include <algorithm>

// The coroutines below touch only the seams, which outlive them, never the service: it may be gone when they
// resume.

namespace {

std::optional<QString> asText(const std::optional<AccessibilityValue> &value)
{
    const auto *text = value ? std::get_if<QString>(&*value) : nullptr;
    return text ? std::optional(*text) : std::nullopt;
}

std::optional<TextRange> asRange(const std::optional<AccessibilityValue> &value)
{
    const auto *range = value ? std::get_if<TextRange>(&*value) : nullptr;
    return range ? std::optional(*range) : std::nullopt;
}

std::optional<AccessibilityElement> asElement(const std::optional<AccessibilityValue> &value)
{
    const auto *element = value ? std::get_if<AccessibilityElement>(&*value) : nullptr;
    return element ? std::optional(*element) : std::nullopt;
}

void describeApplication(FocusedTarget &target, const RunningApplication &application)
{
    target.application = application;
    target.bundleID = application.bundleIdentifier;
    target.applicationName = application.localizedName;
}

QCoro::Task<FocusedTargetPtr> makeFocusedTarget(AccessibilityTree &tree, Workspace &workspace,
                                                AccessibilityElement element,
                                                std::optional<RunningApplication> fallback,
                                                QDateTime capturedAt)
{
    // Three questions to the same process at once: the capture costs one round trip, not three.
    auto pidTask = tree.processIdentifier(element);
    auto roleTask = tree.attribute(element, AX::role);
    auto subroleTask = tree.attribute(element, AX::subrole);
    const std::optional<qint64> pid = co_await pidTask;
    const std::optional<AccessibilityValue> role = co_await roleTask;
    const std::optional<AccessibilityValue> subrole = co_await subroleTask;

    auto target = std::make_shared<FocusedTarget>();
    target->pid = pid.value_or(fallback ? fallback->processIdentifier : 0);
    std::optional<RunningApplication> application = workspace.application(target->pid);
    if (!application)
        application = fallback;
    if (application)
        describeApplication(*target, *application);
    target->element = element;
    target->role = asText(role);
    target->subrole = asText(subrole);
    target->capturedAt = capturedAt;
    co_return target;
}

QCoro::Task<FocusedTargetPtr> captureFrom(AccessibilityTree &tree, Workspace &workspace,
                                          AccessibilityElement root,
                                          std::optional<RunningApplication> fallback,
                                          std::function<QDateTime()> now)
{
    const std::optional<AccessibilityValue> focused = co_await tree.attribute(root, AX::focusedUIElement);
    const std::optional<AccessibilityElement> element = asElement(focused);
    if (!element)
        co_return FocusedTargetPtr();
    co_return co_await makeFocusedTarget(tree, workspace, *element, fallback, now());
}

/// @p value with the characters of @p range, clamped into it, replaced by @p text.
QString replacing(const QString &value, const TextRange &range, const QString &text)
{
    const qsizetype count = Text::characterCount(value);
    const qsizetype start = std::clamp<qint64>(range.location, 0, count);
    const qsizetype length = std::clamp<qint64>(range.length, 0, count - start);
    const qsizetype from = Text::utf16OffsetOfCharacter(value, start);
    const qsizetype to = Text::utf16OffsetOfCharacter(value, start + length);
    return value.first(from) + text + value.sliced(to);
}

QCoro::Task<WriteOutcome> insertInto(AccessibilityTree &tree, QString text, AccessibilityElement element)
{
    const bool isSettable = co_await tree.isAttributeSettable(element, AX::value);
    if (!isSettable)
        co_return WriteOutcome::refused;
    auto valueTask = tree.attribute(element, AX::value);
    auto rangeTask = tree.attribute(element, AX::selectedTextRange);
    const std::optional<AccessibilityValue> readValue = co_await valueTask;
    const std::optional<AccessibilityValue> readRange = co_await rangeTask;
    const std::optional<QString> value = asText(readValue);
    const std::optional<TextRange> range = asRange(readRange);
    if (!value || !range)
        co_return co_await tree.setAttribute(element, AX::value, text);

    const QString replaced = replacing(*value, *range, text);
    const WriteOutcome outcome = co_await tree.setAttribute(element, AX::value, replaced);
    if (outcome != WriteOutcome::done)
        co_return outcome;
    const TextRange caret{.location = range->location + Text::characterCount(text), .length = 0};
    co_await tree.setAttribute(element, AX::selectedTextRange, caret);
    co_return outcome;
}

} // namespace

AccessibilityService::AccessibilityService(AccessibilityTree &tree, Workspace &workspace,
                                           std::function<QDateTime()> now)
    : m_tree(tree)
    , m_workspace(workspace)
    , m_now(std::move(now))
{
}

QCoro::Task<FocusedTargetPtr> AccessibilityService::captureFocusedTarget()
{
    return captureFrom(m_tree, m_workspace, m_tree.systemWideElement(), m_workspace.frontmostApplication(),
                       m_now);
}

QCoro::Task<FocusedTargetPtr> AccessibilityService::captureFocusedTarget(RunningApplication application)
{
    const AccessibilityElement root = m_tree.applicationElement(application.processIdentifier);
    return captureFrom(m_tree, m_workspace, root, application, m_now);
}

FocusedTargetPtr AccessibilityService::applicationFallbackTarget(const RunningApplication &application) const
{
    auto target = std::make_shared<FocusedTarget>();
    target->pid = application.processIdentifier;
    describeApplication(*target, application);
    target->element = m_tree.applicationElement(application.processIdentifier);
    target->role = AX::application;
    target->capturedAt = m_now();
    return target;
}

bool AccessibilityService::isSecureField(const FocusedTarget &target)
{
    if (target.subrole == AX::secureTextField)
        return true;
    const QString secure = QStringLiteral("secure");
    return Text::lowercased(target.role.value_or(QString())).contains(secure) ||
           Text::lowercased(target.subrole.value_or(QString())).contains(secure);
}

QCoro::Task<WriteOutcome> AccessibilityService::insertText(QString text, FocusedTargetPtr target)
{
    if (isSecureField(*target))
        co_return WriteOutcome::refused;
    co_return co_await insertInto(m_tree, text, target->element);
}
