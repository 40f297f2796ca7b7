// SPDX-License-Identifier: GPL-3.0-or-later
#include "FuzzTarget.h"

#include "BrevixMac/PromptTemplateParser.h"
#include "BrevixMac/RecentUsageStore.h"

#include <QSet>

void readForeignBytes(const QByteArray &bytes)
{
    PromptItem prompt;
    prompt.text = QString::fromUtf8(bytes);
    const QList<VariableToken> tokens = PromptTemplateParser::variables(prompt.text);
    QSet<QString> names;
    for (const VariableToken &token : tokens) {
        require(!token.name.isEmpty(), "a variable has a name");
        require(!names.contains(token.name), "a variable is listed once");
        names.insert(token.name);
    }
    require(PromptTemplateParser::render(prompt, {}).text == prompt.text || !tokens.isEmpty(),
            "a text without variables is rendered as it stands");
    VariableValues values;
    for (const QString &name : std::as_const(names))
        values.insert(name, QStringLiteral("value"));
    const QString rendered = PromptTemplateParser::render(prompt, values).text;
    // No placeholder is shorter than "{{x}}".
    require(rendered.size() <= prompt.text.size(), "a value of five characters makes no text longer");
    RecentUsageStore::preview(prompt.text);
}
