// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>
#include <QStringView>

#include <vector>

/// Unicode text operations over ICU. Pure functions, safe on any thread.
/// "Character" here always means a user-perceived character: an extended grapheme cluster (UAX #29).
namespace Text {

/// @p text without the White_Space characters and line breaks at both ends.
QString trimmed(QStringView text);

/// Whether nothing is left of @p text when it is trimmed.
bool isBlank(QStringView text);

/// Full Unicode lower-case mapping in the root locale (so "I" is "i" for Turkish users too).
QString lowercased(QStringView text);

/// A lower-cased needle prepared once and tested against many haystacks. Tests compare whole
/// characters under canonical equivalence (UAX #15) and fold nothing else: "é" matches "e" + U+0301,
/// and "e" matches neither. An empty needle matches nothing.
class Needle
{
public:
    /// @p needle as it should be compared; the caller has lower-cased it if case must not matter.
    explicit Needle(QStringView needle);

    /// Both tests expect @p haystack to be lower-cased by lowercased() already.
    bool isPrefixOf(QStringView haystack) const;
    bool isContainedIn(QStringView haystack) const;

    bool isEmpty() const { return m_normalized.isEmpty(); }

private:
    QString m_normalized;
    bool m_hasOneSpelling = false; ///< no other code units are canonically equivalent
};

/// Number of user-perceived characters in @p text.
qsizetype characterCount(QStringView text);

/// UTF-16 offset at which the character number @p characters begins; the length of @p text when it has fewer.
qsizetype utf16OffsetOfCharacter(QStringView text, qsizetype characters);

/// Number of characters that begin before the UTF-16 offset @p utf16Offset (clamped to the text).
qsizetype characterIndexAtUtf16Offset(QStringView text, qsizetype utf16Offset);

/// The first @p characters characters of @p text, all of it when it has fewer.
QString prefix(const QString &text, qsizetype characters);

/// UTF-16 offsets of every character boundary in @p text, 0 and the length included.
std::vector<qsizetype> characterBoundaries(QStringView text);

/// Order of two titles in the user's locale, letter case ignored: negative, zero or positive.
/// Canonically equivalent titles compare as equal.
int compareTitles(const QString &left, const QString &right);

/// Number of words in @p text by the rules of UAX #29: runs of letters, digits or ideographs. Punctuation and
/// symbols are no words, "don't" is one, "e-mail" is two, and scripts without blanks between words are
/// divided by ICU's dictionaries.
qsizetype wordCount(QStringView text);

/// Number of lines in @p text, which line feeds divide. An empty text has none.
qsizetype lineCount(QStringView text);

} // namespace Text
