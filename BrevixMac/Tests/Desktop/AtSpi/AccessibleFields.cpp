// SPDX-License-Identifier: GPL-3.0-or-later
#include "AccessibleFields.h"

#include "Foundation/Text.h"
#include "Support/Waiting.h"

void AccessibleFields::SetUp()
{
    ASSERT_TRUE(waitUntil([&] { return tree.isProcessTrusted(); }));
}

AccessibilityElement AccessibleFields::focusedElement(qint64 pid, const QString &role)
{
    AccessibilityElement found;
    waitUntil(
        [&] {
            const auto value = await(tree.attribute(tree.applicationElement(pid), AX::focusedUIElement));
            if (!value)
                return false;
            found = std::get<AccessibilityElement>(*value);
            return textAttribute(found, AX::role) == role;
        },
        std::chrono::seconds(20));
    return found;
}

std::optional<QString> AccessibleFields::textAttribute(const AccessibilityElement &element,
                                                       const QString &name)
{
    const auto value = await(tree.attribute(element, name));
    return value && std::holds_alternative<QString>(*value) ? std::optional(std::get<QString>(*value))
                                                            : std::nullopt;
}

std::optional<TextRange> AccessibleFields::range(const AccessibilityElement &element)
{
    const auto value = await(tree.attribute(element, AX::selectedTextRange));
    return value && std::holds_alternative<TextRange>(*value) ? std::optional(std::get<TextRange>(*value))
                                                              : std::nullopt;
}

bool AccessibleFields::select(const AccessibilityElement &element, TextRange range)
{
    return await(tree.setAttribute(element, AX::selectedTextRange, range)) == WriteOutcome::done;
}

bool AccessibleFields::insert(const AccessibilityElement &element, const QString &text)
{
    if (!await(tree.isAttributeSettable(element, AX::value)))
        return false;
    const auto value = textAttribute(element, AX::value);
    const auto selected = range(element);
    if (!value || !selected)
        return await(tree.setAttribute(element, AX::value, text)) == WriteOutcome::done;
    const qsizetype start = Text::utf16OffsetOfCharacter(*value, selected->location);
    const qsizetype end = Text::utf16OffsetOfCharacter(*value, selected->location + selected->length);
    const QString wanted = value->first(start) + text + value->sliced(end);
    if (await(tree.setAttribute(element, AX::value, wanted)) != WriteOutcome::done)
        return false;
    select(element, {selected->location + Text::characterCount(text), 0});
    return true;
}
