// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>
#include <QStringList>

namespace Cloud {

/// Tidies a prompt up by fixed rules, the same each time; no model is involved:
/// spaces, line breaks and bullets are made regular, an introduction such as "Could you please" becomes the
/// request itself, repeated punctuation is reduced, the first letter is a capital and the last sentence ends.
/// "{{variables}}" and everything between backticks stay as they are.
QString tidiedPrompt(const QString &prompt);

/// The "{{…}}" of @p text with their braces, each once, in order.
QStringList variablesOf(const QString &text);

} // namespace Cloud
