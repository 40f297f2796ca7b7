// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

/// How titles and names that somebody else may have chosen are shown.
namespace OneLine {

/// More than a line on any screen could show, in UTF-16 units.
constexpr qsizetype longest = 600;

/// @p text in one line and without the marks that turn the writing direction around, each run of blanks as
/// one. What is longer than @p length is cut off and ends in an ellipsis.
QString of(const QString &text, qsizetype length = longest);

} // namespace OneLine
