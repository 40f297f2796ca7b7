// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Models.h"

/// The `{{variable}}` language of prompt texts. Pure functions.
namespace PromptTemplateParser {

/// Each distinct trimmed variable name of @p text once, in the order of its first occurrence.
/// A field is two opening braces, one or more characters other than braces, two closing braces.
QList<VariableToken> variables(const QString &text);

/// Where a field stands in a text, braces included, in UTF-16 units.
struct Placeholder
{
    qsizetype start = 0;
    qsizetype length = 0;

    bool operator==(const Placeholder &) const = default;
};

/// The places of all fields that variables() would find, repeated ones too, in order.
QList<Placeholder> placeholders(const QString &text);

/// The longest text that values may lead to, in UTF-16 units.
constexpr qsizetype maximumRenderedLength = 16LL * 1024 * 1024;

/// Replaces every exact `{{name}}` by its value, one variable after another. A variable without an entry in
/// @p values keeps its placeholder; so does a field written with spaces inside its braces, and one whose
/// value would make the text longer than maximumRenderedLength.
RenderedPrompt render(const PromptItem &prompt, const VariableValues &values);

} // namespace PromptTemplateParser
