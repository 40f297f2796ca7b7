// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "AtSpiObject.h"

#include <optional>

/// Conversions between the units in which toolkits count text, and the smallest edit between two texts.
/// Pure functions. "UTF-16" offsets are QString's.
namespace AtSpiTextEdit {

/// What a toolkit's text offsets count.
enum class OffsetUnit { codePoint, utf16 };
OffsetUnit offsetUnit(AtSpiToolkit toolkit);

/// Offset in the toolkit's unit of the UTF-16 offset @p utf16 in @p text.
qsizetype toToolkitOffset(QStringView text, qsizetype utf16, OffsetUnit unit);

/// UTF-16 offset of a toolkit's @p offset, clamped to the text.
qsizetype fromToolkitOffset(QStringView text, qsizetype offset, OffsetUnit unit);

/// The "length" argument of InsertText: UTF-8 bytes, but UTF-16 units for Qt, which appends NUL characters
/// when it is given more, while the others cut the text when they are given less.
qsizetype insertionLength(QStringView text, AtSpiToolkit toolkit);

/// Deleting [start, start + removed) and inserting @p inserted there. UTF-16 offsets into the old text.
struct Edit
{
    qsizetype start = 0;
    qsizetype removed = 0;
    QString inserted;

    bool operator==(const Edit &) const = default;
    bool isEmpty() const { return removed == 0 && inserted.isEmpty(); }
};

/// The smallest edit that turns @p before into @p after without cutting a user-perceived character of either.
/// Where several are as small, the one at @p caret (UTF-16, in the old text).
Edit smallestEdit(const QString &before, const QString &after, qsizetype caret);

/// Whether a user-perceived character begins or ends at @p utf16 in @p text.
bool isCharacterBoundary(QStringView text, qsizetype utf16);

} // namespace AtSpiTextEdit
