// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "AtSpiBus.h"

#include "Desktop/AccessibilityTree.h"

/// What a text object holds at one moment. Offsets are UTF-16.
struct AtSpiText
{
    struct Selection
    {
        qsizetype start = 0;
        qsizetype end = 0; ///< equal to start when there is only a caret
        bool operator==(const Selection &) const = default;
    };

    QString value;
    int characterCount = 0; ///< in the toolkit's unit
    std::optional<Selection> selection;
};

/// Reading and writing the text of one object, in the units of its toolkit.
namespace AtSpiTextField {

/// Longest text that is read or written; beyond it a field has no value here.
inline constexpr qsizetype longestText = qsizetype(4) * 1024 * 1024;

/// Whether an insertion through EditableText is known to arrive in objects like this one, and where the user
/// sees it.
bool isWritable(const AtSpiDescription &description);

/// Whether the object may be read: it has text, and it is no password field.
bool isReadable(const AtSpiDescription &description);

/// What CharacterCount is for @p text in a field of @p toolkit.
int countOf(const QString &text, AtSpiToolkit toolkit);

/// The whole text and the caret. @p likelyCount is what the field is believed to hold (in its own unit); a
/// right guess saves a round trip.
QCoro::Task<std::optional<AtSpiText>> read(std::shared_ptr<AtSpiBus> bus, AtSpiObject object,
                                           AtSpiToolkit toolkit, int likelyCount);

/// Turns @p present, which the field holds now, into @p value by the smallest edit.
QCoro::Task<WriteOutcome> replace(std::shared_ptr<AtSpiBus> bus, AtSpiObject object, AtSpiToolkit toolkit,
                                  AtSpiText present, QString value);

/// Selects @p selection of @p present, or puts the caret there when it is empty.
QCoro::Task<bool> select(std::shared_ptr<AtSpiBus> bus, AtSpiObject object, AtSpiToolkit toolkit,
                         AtSpiText present, AtSpiText::Selection selection);

} // namespace AtSpiTextField
