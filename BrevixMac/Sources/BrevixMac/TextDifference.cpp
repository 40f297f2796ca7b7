// SPDX-License-Identifier: GPL-3.0-or-later
#include "TextDifference.h"

#include <QTextCursor>
#include <QTextDocument>

#include <algorithm>

namespace {

qsizetype commonPrefix(QStringView one, QStringView other)
{
    const auto ends = std::mismatch(one.begin(), one.end(), other.begin(), other.end());
    qsizetype length = ends.first - one.begin();
    // Never between the halves of a character.
    if (length > 0 && one[length - 1].isHighSurrogate())
        --length;
    return length;
}

qsizetype commonSuffix(QStringView one, QStringView other)
{
    qsizetype length = 0;
    const qsizetype most = std::min(one.size(), other.size());
    while (length < most && one[one.size() - 1 - length] == other[other.size() - 1 - length])
        ++length;
    if (length > 0 && one[one.size() - length].isLowSurrogate())
        --length;
    return length;
}

} // namespace

void TextDifference::apply(QTextDocument &document, const QString &shown, const QString &text)
{
    const qsizetype prefix = commonPrefix(shown, text);
    const qsizetype suffix =
        commonSuffix(QStringView(shown).sliced(prefix), QStringView(text).sliced(prefix));
    if (prefix == shown.size() && prefix == text.size())
        return;
    QTextCursor cursor(&document);
    cursor.beginEditBlock();
    cursor.setPosition(static_cast<int>(prefix));
    cursor.setPosition(static_cast<int>(shown.size() - suffix), QTextCursor::KeepAnchor);
    cursor.insertText(text.sliced(prefix, text.size() - prefix - suffix));
    cursor.endEditBlock();
}
