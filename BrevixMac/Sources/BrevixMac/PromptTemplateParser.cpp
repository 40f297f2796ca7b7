// SPDX-License-Identifier: GPL-3.0-or-later
#include "PromptTemplateParser.h"

#include "Foundation/Text.h"

#include <QSet>

#include <algorithm>

namespace {

bool isBrace(QChar character)
{
    return character == u'{' || character == u'}';
}

/// Calls @p visit with what stands between the braces of every field, in order. The fields are the matches of
/// \{\{([^{}]+)\}\}; a scanner, because regular-expression engines refuse texts with unpaired surrogates.
template <typename Visit>
void forEachField(QStringView text, Visit visit)
{
    qsizetype open = text.indexOf(u"{{");
    while (open >= 0) {
        const qsizetype begin = open + 2;
        const qsizetype end = std::find_if(text.begin() + begin, text.end(), isBrace) - text.begin();
        const bool isField = end > begin && text.sliced(end).startsWith(u"}}");
        if (isField)
            visit(text.sliced(begin, end - begin));
        open = text.indexOf(u"{{", isField ? end + 2 : open + 1);
    }
}

/// Whether @p text keeps to the limit with @p value in place of @p placeholder. Values may hold placeholders
/// of later variables, so that a few short ones can grow without end.
bool fits(const QString &text, const QString &placeholder, const QString &value)
{
    const qsizetype growth = value.size() - placeholder.size();
    return growth <= 0 ||
           text.count(placeholder) <= (PromptTemplateParser::maximumRenderedLength - text.size()) / growth;
}

} // namespace

namespace PromptTemplateParser {

QList<VariableToken> variables(const QString &text)
{
    QList<VariableToken> tokens;
    QSet<QString> seen;
    forEachField(text, [&](QStringView field) {
        const QString name = Text::trimmed(field);
        if (name.isEmpty() || seen.contains(name))
            return;
        seen.insert(name);
        tokens.append({name});
    });
    return tokens;
}

QList<Placeholder> placeholders(const QString &text)
{
    QList<Placeholder> places;
    forEachField(text, [&](QStringView field) {
        constexpr qsizetype braces = 2;
        if (!Text::isBlank(field))
            places.append(
                {.start = field.begin() - text.constBegin() - braces, .length = field.size() + 2 * braces});
    });
    return places;
}

RenderedPrompt render(const PromptItem &prompt, const VariableValues &values)
{
    QString text = prompt.text;
    for (const VariableToken &token : variables(prompt.text)) {
        const auto value = values.constFind(token.name);
        const QString placeholder = u"{{" + token.name + u"}}";
        if (value != values.cend() && fits(text, placeholder, *value))
            text.replace(placeholder, *value);
    }
    return {.prompt = prompt, .text = text, .variables = values};
}

} // namespace PromptTemplateParser
