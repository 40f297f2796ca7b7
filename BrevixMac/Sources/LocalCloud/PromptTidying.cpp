// SPDX-License-Identifier: GPL-3.0-or-later
#include "PromptTidying.h"

#include <QRegularExpression>

namespace Cloud {

namespace {

/// Stands for one protected piece while the rules are applied. No text may hold a noncharacter.
constexpr QChar placeholder(u'\ufdd0');

QRegularExpression expression(const QString &pattern)
{
    return QRegularExpression(pattern, QRegularExpression::UseUnicodePropertiesOption);
}

/// Fenced code, code and variables: what a rule for prose would spoil.
const QRegularExpression &protectedPieces()
{
    static const QRegularExpression pieces =
        expression(QStringLiteral("```[\\s\\S]*?```|`[^`\\n]*`|\\{\\{[^{}]*\\}\\}"));
    return pieces;
}

QStringList takePieces(QString &text)
{
    QStringList pieces;
    QString rest;
    qsizetype end = 0;
    for (auto match = protectedPieces().globalMatch(text); match.hasNext();) {
        const auto piece = match.next();
        rest += text.sliced(end, piece.capturedStart() - end) + placeholder;
        end = piece.capturedEnd();
        pieces.append(piece.captured());
    }
    text = rest + text.sliced(end);
    return pieces;
}

QString withPieces(const QString &text, const QStringList &pieces)
{
    QString result;
    qsizetype next = 0;
    for (const QChar character : text) {
        if (character == placeholder)
            result += pieces.value(next++);
        else
            result += character;
    }
    return result;
}

/// "Could you please summarise this?" asks for "Summarise this."
void makeDirect(QString &text)
{
    static const QRegularExpression introduction = expression(QStringLiteral(
        "^(?:(?:hi|hello|hey)(?: there)?[,!.]\\s+)?"
        "(?:(?:please|kindly)\\s+|(?:can|could|would|will)\\s+you\\s+(?:please\\s+|kindly\\s+)?|"
        "i(?:\\s+would|'d)\\s+like\\s+you\\s+to\\s+|i\\s+(?:want|need)\\s+you\\s+to\\s+)"));
    const QRegularExpression anyCase(introduction.pattern(), introduction.patternOptions() |
                                                                 QRegularExpression::CaseInsensitiveOption);
    const auto match = anyCase.match(text);
    if (!match.hasMatch() || match.capturedEnd() == text.size())
        return;
    const bool wasQuestion = match.captured().contains(u"you", Qt::CaseInsensitive) &&
                             !match.captured().contains(u"you to", Qt::CaseInsensitive);
    text.remove(0, match.capturedEnd());
    static const QRegularExpression sentenceEnd = expression(QStringLiteral("[.!?](?=\\s|$)"));
    const auto end = sentenceEnd.match(text);
    if (wasQuestion && end.captured() == QLatin1String("?"))
        text[end.capturedStart()] = u'.';
}

void tidySpaces(QString &text)
{
    static const QRegularExpression lineEnd = expression(QStringLiteral("\\r\\n?"));
    static const QRegularExpression trailing = expression(QStringLiteral("(?<![ \\t])[ \\t]++(?=\\n|$)"));
    static const QRegularExpression repeated = expression(QStringLiteral("(?<=\\S)[ \\t]{2,}(?=\\S)"));
    static const QRegularExpression emptyLines = expression(QStringLiteral("\\n{3,}"));
    text.replace(lineEnd, QStringLiteral("\n")).remove(trailing);
    text.replace(repeated, QStringLiteral(" ")).replace(emptyLines, QStringLiteral("\n\n"));
    text = text.trimmed();
}

void tidyPunctuation(QString &text)
{
    static const QRegularExpression bullet(QStringLiteral("^([ \\t]*)[*\\x{2022}\\x{00b7}][ \\t]+"),
                                           QRegularExpression::MultilineOption);
    static const QRegularExpression spaceBefore =
        expression(QStringLiteral("(?<=[\\p{L}\\p{N}]) +(?=[,;!?](?:\\s|$))"));
    static const QRegularExpression repeated = expression(QStringLiteral("([!?])\\1+"));
    text.replace(bullet, QStringLiteral("\\1- ")).replace(repeated, QStringLiteral("\\1"));
    text.remove(spaceBefore);
}

void tidyEnds(QString &text)
{
    if (text.isEmpty())
        return;
    if (text.front().isLower())
        text.front() = text.front().toUpper();
    const QString lastLine = text.sliced(text.lastIndexOf(u'\n') + 1).trimmed();
    const bool isSentence =
        lastLine.contains(u' ') && !lastLine.startsWith(u'-') && !lastLine.startsWith(u'#');
    if (isSentence && text.back().isLetterOrNumber())
        text += u'.';
}

} // namespace

QString tidiedPrompt(const QString &prompt)
{
    QString text = prompt.trimmed();
    if (text.contains(placeholder))
        return text;
    const QStringList pieces = takePieces(text);
    tidySpaces(text);
    tidyPunctuation(text);
    makeDirect(text);
    tidyEnds(text);
    return withPieces(text, pieces);
}

QStringList variablesOf(const QString &text)
{
    static const QRegularExpression variable(QStringLiteral("\\{\\{[^{}]*\\}\\}"));
    QStringList variables;
    for (auto match = variable.globalMatch(text); match.hasNext();)
        variables.append(match.next().captured());
    variables.removeDuplicates();
    return variables;
}

} // namespace Cloud
