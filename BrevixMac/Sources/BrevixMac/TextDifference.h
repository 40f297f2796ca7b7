// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

class QTextDocument;

namespace TextDifference {

/// Makes @p document, whose text is @p shown, show @p text. Only the part between their common beginning and
/// end is replaced, so that only that is laid out again. Positions are UTF-16 units: no character of either
/// text may stand for two of the document's, as a pair of carriage return and line feed would.
void apply(QTextDocument &document, const QString &shown, const QString &text);

} // namespace TextDifference
