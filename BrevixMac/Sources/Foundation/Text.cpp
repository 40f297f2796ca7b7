// SPDX-License-Identifier: GPL-3.0-or-later
#include "Text.h"

#include <QLocale>

#include <unicode/ubrk.h>
#include <unicode/uchar.h>
#include <unicode/ucol.h>
#include <unicode/unorm2.h>
#include <unicode/ustring.h>

#include <algorithm>
#include <memory>

namespace {

struct CloseBreakIterator
{
    void operator()(UBreakIterator *iterator) const { ubrk_close(iterator); }
};
struct CloseCollator
{
    void operator()(UCollator *collator) const { ucol_close(collator); }
};
using BreakIterator = std::unique_ptr<UBreakIterator, CloseBreakIterator>;
using Collator = std::unique_ptr<UCollator, CloseCollator>;

/// Below this code point every character is in its composed form and takes part in no composition with one
/// before it.
constexpr char16_t firstCombiningCharacter = 0x0300;

int32_t icuSize(QStringView text)
{
    return static_cast<int32_t>(text.size());
}

bool isWhiteSpace(QChar unit)
{
    return u_isUWhiteSpace(unit.unicode()) != 0;
}

/// Tells whether all code units are below @p limit. Whole blocks at a time, so that the compiler can
/// vectorise it.
bool isAllBelow(QStringView text, char16_t limit)
{
    constexpr qsizetype blockSize = 64;
    const char16_t *units = text.utf16();
    qsizetype index = 0;
    for (; index + blockSize <= text.size(); index += blockSize) {
        unsigned char isAbove = 0;
        for (qsizetype step = 0; step < blockSize; ++step)
            isAbove |= static_cast<unsigned char>(units[index + step] >= limit);
        if (isAbove)
            return false;
    }
    return std::all_of(units + index, units + text.size(), [limit](char16_t unit) { return unit < limit; });
}

/// UTF-16 offset of @p needle (not empty) in @p haystack at or after @p from, or -1. Looks for the first and
/// the last code unit of the needle at once, in whole blocks that the compiler can vectorise, and compares
/// only where both are found: several times as fast as a search that looks at one code unit after the other.
qsizetype find(QStringView haystack, QStringView needle, qsizetype from)
{
    constexpr qsizetype blockSize = 64;
    const qsizetype positions = haystack.size() - needle.size() + 1;
    const char16_t first = needle.front().unicode();
    const char16_t last = needle.back().unicode();
    const char16_t *firsts = haystack.utf16();
    const char16_t *lasts = firsts + needle.size() - 1;
    while (from < positions) {
        const qsizetype end = std::min(from + blockSize, positions);
        unsigned char isPossible = end - from < blockSize ? 1 : 0;
        if (!isPossible) {
            for (qsizetype step = 0; step < blockSize; ++step)
                isPossible |= static_cast<unsigned char>(firsts[from + step] == first) &
                              static_cast<unsigned char>(lasts[from + step] == last);
        }
        for (; isPossible && from < end; ++from) {
            if (firsts[from] == first && lasts[from] == last &&
                haystack.sliced(from, needle.size()) == needle)
                return from;
        }
        from = end;
    }
    return -1;
}

/// Finds character boundaries in one text. Most neighbours can be judged by themselves; only for the others
/// (combining marks, joiners, flags, conjoining jamo, line breaks) ICU's rules are run.
class Boundaries
{
public:
    explicit Boundaries(QStringView text)
        : m_text(text)
    {
    }

    bool isBoundary(qsizetype offset)
    {
        return offset <= 0 || offset >= m_text.size() || isPlainBoundary(offset) ||
               ubrk_isBoundary(iterator(), static_cast<int32_t>(offset));
    }

    /// The first boundary after @p offset, which is a boundary itself and not the end.
    qsizetype next(qsizetype offset)
    {
        const qsizetype candidate = offset + (startsSurrogatePair(offset) ? 2 : 1);
        if (candidate >= m_text.size() || isPlainBoundary(candidate))
            return candidate;
        return ubrk_following(iterator(), static_cast<int32_t>(offset));
    }

private:
    bool startsSurrogatePair(qsizetype offset) const
    {
        return m_text[offset].isHighSurrogate() && offset + 1 < m_text.size() &&
               m_text[offset + 1].isLowSurrogate();
    }

    // Outside of the classes that the rules for grapheme clusters name, characters stand alone.
    static bool standsAlone(UChar32 character)
    {
        if (character < firstCombiningCharacter)
            return character >= 0x20 && character != 0x7F && !(character >= 0x80 && character < 0xA0) &&
                   character != 0xAD;
        return u_getIntPropertyValue(character, UCHAR_GRAPHEME_CLUSTER_BREAK) == U_GCB_OTHER;
    }

    bool isPlainBoundary(qsizetype offset) const
    {
        const char16_t *units = m_text.utf16();
        if (U16_IS_LEAD(units[offset - 1]) && U16_IS_TRAIL(units[offset]))
            return false;
        UChar32 before = 0;
        UChar32 after = 0;
        U16_GET(units, 0, offset - 1, m_text.size(), before);
        U16_GET(units, 0, offset, m_text.size(), after);
        return standsAlone(before) && standsAlone(after);
    }

    // Opening an iterator is dear, so each thread has one, which no two texts use in turns.
    UBreakIterator *iterator()
    {
        thread_local const BreakIterator shared = [] {
            UErrorCode status = U_ZERO_ERROR;
            return BreakIterator(ubrk_open(UBRK_CHARACTER, "", nullptr, 0, &status));
        }();
        if (!m_isIteratorSet) {
            UErrorCode status = U_ZERO_ERROR;
            ubrk_setText(shared.get(), m_text.utf16(), icuSize(m_text), &status);
            m_isIteratorSet = true;
        }
        return shared.get();
    }

    QStringView m_text;
    bool m_isIteratorSet = false;
};

/// Runs an ICU operation that writes UTF-16, with more room if the first guess was too small.
template <typename Operation>
QString writtenBy(Operation operation, qsizetype expectedSize)
{
    QString result(expectedSize, Qt::Uninitialized);
    UErrorCode status = U_ZERO_ERROR;
    int32_t size = operation(reinterpret_cast<UChar *>(result.data()), icuSize(result), &status);
    if (status == U_BUFFER_OVERFLOW_ERROR) {
        status = U_ZERO_ERROR;
        result.resize(size);
        size = operation(reinterpret_cast<UChar *>(result.data()), icuSize(result), &status);
    }
    result.resize(U_SUCCESS(status) ? size : 0);
    return result;
}

const UNormalizer2 *composition()
{
    static const UNormalizer2 *const instance = [] {
        UErrorCode status = U_ZERO_ERROR;
        return unorm2_getNFCInstance(&status);
    }();
    return instance;
}

/// True for the letters of everyday text that are composed already and neither combine with a character
/// before them nor have an order among combining marks: Latin, Greek, Cyrillic, punctuation, kana, ideographs
/// and Hangul syllables. Branch-free, so that the compiler can vectorise a loop over it. Code units, because
/// none of these are surrogates.
bool isSurelyComposed(char16_t unit)
{
    const auto isWithin = [unit](char16_t first, char16_t end) {
        return static_cast<char16_t>(unit - first) < static_cast<char16_t>(end - first);
    };
    return (unit < firstCombiningCharacter) | isWithin(0x0388, 0x0483) | isWithin(0x2010, 0x2028) |
           isWithin(0x3001, 0x302A) | isWithin(0x3041, 0x3097) | isWithin(0x30A1, 0x3100) |
           isWithin(0x4E00, 0xA000) | isWithin(0xAC00, 0xD7A4);
}

/// Length of the part at the start of @p text, in whole blocks, whose blocks all have or all lack a character
/// that needs a closer look, as @p isSure says.
qsizetype runOfBlocks(QStringView text, bool isSure)
{
    constexpr qsizetype blockSize = 32;
    const char16_t *units = text.utf16();
    qsizetype index = 0;
    for (; index + blockSize <= text.size(); index += blockSize) {
        unsigned char areSure = 1;
        for (qsizetype step = 0; step < blockSize; ++step)
            areSure &= static_cast<unsigned char>(isSurelyComposed(units[index + step]));
        if ((areSure != 0) != isSure)
            return index;
    }
    const bool isRestSure = std::all_of(units + index, units + text.size(), isSurelyComposed);
    return isRestSure == isSure ? text.size() : index;
}

/// Tells whether @p text is in normalization form C. Says no, at worst, of a text that is.
bool isComposed(QStringView text)
{
    while (!text.isEmpty()) {
        text = text.sliced(runOfBlocks(text, true));
        const QStringView doubtful = text.first(runOfBlocks(text, false));
        UErrorCode status = U_ZERO_ERROR;
        if (unorm2_quickCheck(composition(), doubtful.utf16(), icuSize(doubtful), &status) != UNORM_YES)
            return false;
        text = text.sliced(doubtful.size());
    }
    return true;
}

QString composed(QStringView text)
{
    if (isComposed(text))
        return text.toString();
    return writtenBy(
        [text](UChar *target, int32_t capacity, UErrorCode *status) {
            return unorm2_normalize(composition(), text.utf16(), icuSize(text), target, capacity, status);
        },
        text.size() + 16);
}

/// Tells whether nothing but these very code units is canonically equivalent to @p text. That holds for
/// ASCII, but for the three characters that have a twin: the Greek question mark, the Greek varia and the
/// Kelvin sign.
bool hasOneSpelling(QStringView text)
{
    return std::all_of(text.begin(), text.end(), [](QChar unit) {
        return unit.unicode() < 0x80 && unit != u';' && unit != u'`' && unit != u'K';
    });
}

bool beginsWithCharacters(QStringView haystack, QStringView needle)
{
    return haystack.startsWith(needle) && Boundaries(haystack).isBoundary(needle.size());
}

bool containsCharacters(QStringView haystack, QStringView needle)
{
    Boundaries boundaries(haystack);
    for (qsizetype at = find(haystack, needle, 0); at >= 0; at = find(haystack, needle, at + 1)) {
        if (boundaries.isBoundary(at) && boundaries.isBoundary(at + needle.size()))
            return true;
    }
    return false;
}

Collator titleCollator()
{
    const QString name = QLocale().collation().name();
    const QByteArray locale = name == u"C" ? QByteArray() : name.toLatin1();
    UErrorCode status = U_ZERO_ERROR;
    Collator collator(ucol_open(locale.constData(), &status));
    if (!collator)
        return collator;
    ucol_setStrength(collator.get(), UCOL_SECONDARY);
    ucol_setAttribute(collator.get(), UCOL_NORMALIZATION_MODE, UCOL_ON, &status);
    return collator;
}

} // namespace

QString Text::trimmed(QStringView text)
{
    while (!text.isEmpty() && isWhiteSpace(text.front()))
        text = text.sliced(1);
    while (!text.isEmpty() && isWhiteSpace(text.back()))
        text.chop(1);
    return text.toString();
}

bool Text::isBlank(QStringView text)
{
    return std::all_of(text.begin(), text.end(), isWhiteSpace);
}

QString Text::lowercased(QStringView text)
{
    if (isAllBelow(text, 0x80)) {
        QString result(text.size(), Qt::Uninitialized);
        std::transform(text.utf16(), text.utf16() + text.size(), reinterpret_cast<char16_t *>(result.data()),
                       [](char16_t unit) {
                           return static_cast<char16_t>(unit + (unit >= u'A' && unit <= u'Z' ? 0x20 : 0));
                       });
        return result;
    }
    return writtenBy(
        [text](UChar *target, int32_t capacity, UErrorCode *status) {
            return u_strToLower(target, capacity, text.utf16(), icuSize(text), "", status);
        },
        text.size() + 16);
}

Text::Needle::Needle(QStringView needle)
    : m_normalized(composed(needle))
    , m_hasOneSpelling(hasOneSpelling(m_normalized))
{
}

bool Text::Needle::isPrefixOf(QStringView haystack) const
{
    if (isEmpty())
        return false;
    if (beginsWithCharacters(haystack, m_normalized))
        return true;
    return !m_hasOneSpelling && !isComposed(haystack) &&
           beginsWithCharacters(composed(haystack), m_normalized);
}

bool Text::Needle::isContainedIn(QStringView haystack) const
{
    if (isEmpty())
        return false;
    if (containsCharacters(haystack, m_normalized))
        return true;
    return !m_hasOneSpelling && !isComposed(haystack) && containsCharacters(composed(haystack), m_normalized);
}

qsizetype Text::characterCount(QStringView text)
{
    return characterIndexAtUtf16Offset(text, text.size());
}

qsizetype Text::utf16OffsetOfCharacter(QStringView text, qsizetype characters)
{
    Boundaries boundaries(text);
    qsizetype offset = 0;
    for (; characters > 0 && offset < text.size(); --characters)
        offset = boundaries.next(offset);
    return offset;
}

qsizetype Text::characterIndexAtUtf16Offset(QStringView text, qsizetype utf16Offset)
{
    Boundaries boundaries(text);
    const qsizetype limit = std::min(utf16Offset, text.size());
    qsizetype index = 0;
    for (qsizetype offset = 0; offset < limit; ++index)
        offset = boundaries.next(offset);
    return index;
}

QString Text::prefix(const QString &text, qsizetype characters)
{
    return text.first(utf16OffsetOfCharacter(text, characters));
}

std::vector<qsizetype> Text::characterBoundaries(QStringView text)
{
    Boundaries boundaries(text);
    std::vector<qsizetype> offsets{0};
    while (offsets.back() < text.size())
        offsets.push_back(boundaries.next(offsets.back()));
    return offsets;
}

int Text::compareTitles(const QString &left, const QString &right)
{
    thread_local const Collator collator = titleCollator();
    if (!collator)
        return QString::compare(left, right, Qt::CaseInsensitive);
    const auto units = [](const QString &text) { return reinterpret_cast<const UChar *>(text.utf16()); };
    return ucol_strcoll(collator.get(), units(left), icuSize(left), units(right), icuSize(right));
}

qsizetype Text::wordCount(QStringView text)
{
    UErrorCode status = U_ZERO_ERROR;
    const auto *units = reinterpret_cast<const UChar *>(text.utf16());
    const BreakIterator words(ubrk_open(UBRK_WORD, "", units, icuSize(text), &status));
    if (U_FAILURE(status))
        return 0;
    qsizetype count = 0;
    while (ubrk_next(words.get()) != UBRK_DONE) {
        if (ubrk_getRuleStatus(words.get()) >= UBRK_WORD_NONE_LIMIT)
            ++count;
    }
    return count;
}

qsizetype Text::lineCount(QStringView text)
{
    return text.isEmpty() ? 0 : text.count(u'\n') + 1;
}
