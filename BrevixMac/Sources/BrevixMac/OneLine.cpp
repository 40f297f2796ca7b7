// SPDX-License-Identifier: GPL-3.0-or-later
#include "OneLine.h"

#include <algorithm>

namespace {

bool turnsDirection(QChar character)
{
    const char16_t unit = character.unicode();
    return (unit >= 0x202a && unit <= 0x202e) || (unit >= 0x2066 && unit <= 0x2069);
}

bool isBlank(QChar character)
{
    return character.isSpace() || character.category() == QChar::Other_Control;
}

} // namespace

QString OneLine::of(const QString &text, qsizetype length)
{
    QString line;
    line.reserve(std::min(text.size(), length));
    bool isAfterBlank = true; // none at the start
    for (const QChar character : text) {
        if (turnsDirection(character))
            continue;
        const bool blank = isBlank(character);
        if (blank && isAfterBlank)
            continue;
        if (line.size() >= length) {
            if (line.back().isHighSurrogate())
                line.chop(1);
            return line + u'\u2026';
        }
        line += blank ? QChar(u' ') : character;
        isAfterBlank = blank;
    }
    if (line.endsWith(u' '))
        line.chop(1);
    return line;
}
