// SPDX-License-Identifier: GPL-3.0-or-later
#include "AtSpiTextEdit.h"

#include "Foundation/Text.h"

#include <algorithm>

namespace AtSpiTextEdit {

namespace {

// Characters between two of which there always is a boundary: printable ASCII and the common ideographs.
bool isPlain(QChar c)
{
    const char16_t unit = c.unicode();
    return (unit >= 0x20 && unit < 0x7f) || (unit >= 0x4e00 && unit <= 0x9fff);
}

bool isSafeStart(QStringView text, qsizetype offset)
{
    return offset == 0 || text[offset - 1] == u'\n' || (isPlain(text[offset - 1]) && isPlain(text[offset]));
}

qsizetype commonPrefix(QStringView left, QStringView right, qsizetype limit)
{
    const qsizetype most = std::min({left.size(), right.size(), limit});
    const auto difference = std::mismatch(left.begin(), left.begin() + most, right.begin());
    return difference.first - left.begin();
}

qsizetype commonSuffix(QStringView left, QStringView right, qsizetype limit)
{
    qsizetype length = 0;
    while (length < limit && left[left.size() - 1 - length] == right[right.size() - 1 - length])
        ++length;
    return length;
}

} // namespace

OffsetUnit offsetUnit(AtSpiToolkit toolkit)
{
    switch (toolkit) {
    case AtSpiToolkit::qt:
    case AtSpiToolkit::libreOffice:
    case AtSpiToolkit::gecko:
        return OffsetUnit::utf16;
    default:
        return OffsetUnit::codePoint;
    }
}

qsizetype toToolkitOffset(QStringView text, qsizetype utf16, OffsetUnit unit)
{
    const QStringView before = text.first(std::clamp<qsizetype>(utf16, 0, text.size()));
    if (unit == OffsetUnit::utf16)
        return before.size();
    return before.size() -
           std::count_if(before.begin(), before.end(), [](QChar c) { return c.isLowSurrogate(); });
}

qsizetype fromToolkitOffset(QStringView text, qsizetype offset, OffsetUnit unit)
{
    if (unit == OffsetUnit::utf16)
        return std::clamp<qsizetype>(offset, 0, text.size());
    qsizetype utf16 = 0;
    for (qsizetype codePoints = 0; codePoints < offset && utf16 < text.size(); ++codePoints) {
        const bool isPair = text[utf16].isHighSurrogate() && utf16 + 1 < text.size();
        utf16 += isPair ? 2 : 1;
    }
    return utf16;
}

qsizetype insertionLength(QStringView text, AtSpiToolkit toolkit)
{
    return toolkit == AtSpiToolkit::qt ? text.size() : text.toUtf8().size();
}

// Looks at the neighbourhood only, because texts are long: from a place that is a boundary for certain to the
// code point after the offset, on which the answer depends last.
bool isCharacterBoundary(QStringView text, qsizetype utf16)
{
    if (utf16 <= 0 || utf16 >= text.size() || isSafeStart(text, utf16))
        return true;
    qsizetype begin = utf16 - 1;
    while (!isSafeStart(text, begin))
        --begin;
    const qsizetype end = std::min(text.size(), utf16 + 2);
    const auto boundaries = Text::characterBoundaries(text.sliced(begin, end - begin));
    return std::binary_search(boundaries.begin(), boundaries.end(), utf16 - begin);
}

Edit smallestEdit(const QString &before, const QString &after, qsizetype caret)
{
    // No further than the caret, so that "a" typed into "aaa" goes where the user is.
    qsizetype prefix = commonPrefix(before, after, caret);
    qsizetype suffix = commonSuffix(before, after, std::min(before.size(), after.size()) - prefix);
    if (prefix == caret)
        prefix +=
            commonPrefix(QStringView(before).sliced(prefix, before.size() - suffix - prefix),
                         QStringView(after).sliced(prefix, after.size() - suffix - prefix), before.size());
    while (!isCharacterBoundary(before, prefix) || !isCharacterBoundary(after, prefix))
        --prefix;
    while (!isCharacterBoundary(before, before.size() - suffix) ||
           !isCharacterBoundary(after, after.size() - suffix))
        --suffix;
    return {.start = prefix,
            .removed = before.size() - prefix - suffix,
            .inserted = after.sliced(prefix, after.size() - prefix - suffix)};
}

} // namespace AtSpiTextEdit
