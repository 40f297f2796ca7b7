// SPDX-License-Identifier: GPL-3.0-or-later
#include "Foundation/Text.h"

#include <QLocale>
#include <QStringList>

#include <gtest/gtest.h>

#include <thread>

using Text::Needle;
using namespace Qt::StringLiterals;

namespace {

struct SearchRow
{
    QString haystack;
    QString needle;
    bool isContained;
    bool isPrefix;
};

// Each stands among text of a length that keeps the block-wise search busy on both of its sides.
const QString padding = QStringLiteral("the quick brown fox jumps over the lazy dog; ").repeated(4);

// One string for each character that is easy to split wrongly.
const QStringList wholeCharacters{
    QStringLiteral("a"),
    QStringLiteral("é"),
    QStringLiteral("e\u0301"),
    QStringLiteral("e\u0323\u0301"),
    QStringLiteral("\r\n"),
    QStringLiteral("👍"),
    QStringLiteral("👍🏽"),
    QStringLiteral("👩‍👩‍👧"),
    QStringLiteral("🇩🇪"),
    QStringLiteral("❤️"),
    QStringLiteral("한"),
    QStringLiteral("\u1112\u1161\u11AB"),
    QStringLiteral("நி"),
    QStringLiteral("漢"),
    QStringLiteral("\t"),
    QStringLiteral("𝒳"),
    QStringLiteral("\u0600\u0661"),
    QStringLiteral("1\uFE0F\u20E3"),
};

QString joined(const QStringList &characters)
{
    return characters.join(QString());
}

} // namespace

TEST(TextTrimmed, takesWhiteSpaceAndLineBreaksOffBothEnds)
{
    const QString spaces =
        QStringLiteral(" \t\n\v\f\r\u0085\u00A0\u1680\u2003\u2028\u2029\u202F\u205F\u3000");
    EXPECT_EQ(Text::trimmed(QString(spaces + QStringLiteral("a b\n c") + spaces)), QStringLiteral("a b\n c"));
    EXPECT_EQ(Text::trimmed(spaces), QString());
    EXPECT_EQ(Text::trimmed(u""), QString());
    EXPECT_EQ(Text::trimmed(u"a"), QStringLiteral("a"));
    EXPECT_EQ(Text::trimmed(u"\u200Ba\uFEFF"), QStringLiteral("\u200Ba\uFEFF")) << "these are no white space";
}

TEST(TextLowercased, mapsAsTheRootLocaleDoes)
{
    const QList<std::pair<QString, QString>> rows{
        {QString(), QString()},
        {QStringLiteral("Mailing LIST [1] @Z`{"), QStringLiteral("mailing list [1] @z`{")},
        {QStringLiteral("ÄÖÜ ÉCOLE"), QStringLiteral("äöü école")},
        {QStringLiteral("I"), QStringLiteral("i")},
        {QStringLiteral("İ"), QStringLiteral("i\u0307")},
        {QStringLiteral("ΟΔΟΣ ΣΑΣ"), QStringLiteral("οδος σας")},
        {QStringLiteral("ПРИВЕТ"), QStringLiteral("привет")},
        {QStringLiteral("\u212A"), QStringLiteral("k")},
        {QStringLiteral("ẞ"), QStringLiteral("ß")},
        {QStringLiteral("𐐀"), QStringLiteral("𐐨")},
        {QStringLiteral("漢字 👍"), QStringLiteral("漢字 👍")},
    };
    for (const auto &[text, expected] : rows)
        EXPECT_EQ(Text::lowercased(text), expected) << qPrintable(text);
    EXPECT_EQ(Text::lowercased(QStringLiteral("İ").repeated(1000)), QStringLiteral("i\u0307").repeated(1000));
}

TEST(TextLowercased, doesNotDependOnTheUsersLanguage)
{
    const QLocale previous;
    QLocale::setDefault(QLocale(QLocale::Turkish));
    EXPECT_EQ(Text::lowercased(u"TITLE"), QStringLiteral("title"));
    EXPECT_EQ(Text::lowercased(u"TITLE É"), QStringLiteral("title é"));
    QLocale::setDefault(previous);
}

TEST(TextNeedle, comparesWholeCharactersUnderCanonicalEquivalence)
{
    const QList<SearchRow> rows{
        {QStringLiteral("mailing list"), QStringLiteral("mail"), true, true},
        {QStringLiteral("send mail"), QStringLiteral("mail"), true, false},
        {QStringLiteral("mai"), QStringLiteral("mail"), false, false},
        {QStringLiteral("mail"), QStringLiteral("mail"), true, true},
        {QStringLiteral(""), QStringLiteral("a"), false, false},
        // an accent belongs to its letter, however it is written
        {QStringLiteral("école"), QStringLiteral("e"), true, false},
        {QStringLiteral("é"), QStringLiteral("e"), false, false},
        {QStringLiteral("e\u0301"), QStringLiteral("e"), false, false},
        {QStringLiteral("e\u0301"), QStringLiteral("\u0301"), false, false},
        {QStringLiteral("cafe\u0301"), QStringLiteral("cafe"), false, false},
        {QStringLiteral("e\u0301 e"), QStringLiteral("e"), true, false},
        {QStringLiteral("cafe\u0301"), QStringLiteral("café"), true, true},
        {QStringLiteral("café"), QStringLiteral("cafe\u0301"), true, true},
        {QStringLiteral("un café noir"), QStringLiteral("fe\u0301 n"), true, false},
        {QStringLiteral("ệ"), QStringLiteral("e\u0302\u0323"), true, true},
        {QStringLiteral("e\u0302\u0323"), QStringLiteral("e\u0323\u0302"), true, true},
        {QStringLiteral("ệ"), QStringLiteral("ê"), false, false},
        // nothing else is folded
        {QStringLiteral("straße"), QStringLiteral("strasse"), false, false},
        {QStringLiteral("ﬁle"), QStringLiteral("file"), false, false},
        {QStringLiteral("mail"), QStringLiteral("MAIL"), false, false},
        // twins of ASCII characters
        {QStringLiteral("a\u037Eb"), QStringLiteral(";"), true, false},
        {QStringLiteral("a;b"), QStringLiteral("\u037E"), true, false},
        {QStringLiteral("\u212A"), QStringLiteral("K"), true, true},
        {QStringLiteral("\u1FEFx"), QStringLiteral("`x"), true, true},
        {QStringLiteral("≠"), QStringLiteral("="), false, false},
        {QStringLiteral("=\u0338"), QStringLiteral("≠"), true, true},
        // Hangul
        {QStringLiteral("\u1112\u1161\u11AB글"), QStringLiteral("한"), true, true},
        {QStringLiteral("한글"), QStringLiteral("\u1112\u1161\u11AB"), true, true},
        {QStringLiteral("한"), QStringLiteral("하"), false, false},
        {QStringLiteral("\u1112\u1161\u11AB"), QStringLiteral("\u1112\u1161"), false, false},
        // emoji, flags, joiners
        {QStringLiteral("👩‍👩‍👧"), QStringLiteral("👩"), false, false},
        {QStringLiteral("👍🏽 ok"), QStringLiteral("👍"), false, false},
        {QStringLiteral("👍👍🏽"), QStringLiteral("👍"), true, true},
        {QStringLiteral("😀😀"), QStringLiteral("😀"), true, true},
        {QStringLiteral("🇨🇩🇪🇨"), QStringLiteral("🇩🇪"), false, false},
        {QStringLiteral("🇨🇩🇩🇪"), QStringLiteral("🇩🇪"), true, false},
        {QStringLiteral("1\uFE0F\u20E3"), QStringLiteral("1"), false, false},
        // line breaks
        {QStringLiteral("a\r\nb"), QStringLiteral("\n"), false, false},
        {QStringLiteral("a\r\nb"), QStringLiteral("\r"), false, false},
        {QStringLiteral("a\r\nb"), QStringLiteral("a\r"), false, false},
        {QStringLiteral("a\r\nb"), QStringLiteral("\r\nb"), true, false},
        {QStringLiteral("\na"), QStringLiteral("\n"), true, true},
        // a sign that takes the next character along
        {QStringLiteral("\u0600a"), QStringLiteral("a"), false, false},
        // damaged text
        {QString(QChar(0xD83D)), QStringLiteral("😀"), false, false},
        {QStringLiteral("😀"), QString(QChar(0xD83D)), false, false},
    };
    for (const SearchRow &row : rows) {
        const Needle needle(row.needle);
        const std::string shown = row.haystack.toStdString() + " / " + row.needle.toStdString();
        EXPECT_EQ(needle.isContainedIn(row.haystack), row.isContained) << shown;
        EXPECT_EQ(needle.isPrefixOf(row.haystack), row.isPrefix) << shown;
    }
}

TEST(TextNeedle, anEmptyNeedleMatchesNothing)
{
    const Needle needle{QString()};
    EXPECT_TRUE(needle.isEmpty());
    EXPECT_FALSE(needle.isContainedIn(u"a"));
    EXPECT_FALSE(needle.isPrefixOf(u"a"));
    EXPECT_FALSE(needle.isContainedIn(u""));
}

TEST(TextNeedle, findsAtEveryPositionOfALongText)
{
    for (const QString &wanted :
         {QStringLiteral("zq"), QStringLiteral("ж"), QStringLiteral("zé#"), QStringLiteral("#")}) {
        const Needle needle(wanted);
        EXPECT_FALSE(needle.isContainedIn(padding));
        for (qsizetype size = 0; size < padding.size(); ++size) {
            const QString haystack = padding.first(size) + wanted;
            EXPECT_TRUE(needle.isContainedIn(haystack)) << size;
            EXPECT_TRUE(needle.isContainedIn(QString(haystack + padding))) << size;
            EXPECT_TRUE(needle.isContainedIn(haystack.normalized(QString::NormalizationForm_D))) << size;
            EXPECT_FALSE(needle.isContainedIn(haystack.chopped(1))) << size;
        }
    }
}

// Guards the table of letters whose normalization is not looked up.
TEST(TextNeedle, findsEveryCharacterOfTheBasicPlaneInEveryForm)
{
    for (char32_t point = 0x21; point < 0x10000; ++point) {
        const QString character(QChar(static_cast<char16_t>(point)));
        if (QChar::category(point) == QChar::Other_Surrogate ||
            QChar::category(point) == QChar::Other_NotAssigned)
            continue;
        const QString decomposed = character.normalized(QString::NormalizationForm_D);
        const QString composed = character.normalized(QString::NormalizationForm_C);
        for (const QString &wanted : {character, decomposed, composed}) {
            const Needle needle(wanted);
            for (const QString &form : {character, decomposed, composed}) {
                EXPECT_TRUE(needle.isPrefixOf(form)) << std::hex << unsigned(point);
                // A line break before it, because nothing joins that; 40 letters, so that whole blocks are
                // seen.
                EXPECT_TRUE(needle.isContainedIn(QString(padding.first(40) + u'\n' + form + u'\n')))
                    << std::hex << unsigned(point);
            }
        }
    }
}

TEST(TextNeedle, mayBeUsedOnSeveralThreads)
{
    const Needle needle(u"🇩🇪");
    const QString haystack = padding + QStringLiteral("🇨🇩🇩🇪");
    int found[4] = {};
    std::vector<std::thread> threads;
    for (int &count : found)
        threads.emplace_back([&count, &needle, &haystack] {
            for (int round = 0; round < 200; ++round)
                count += needle.isContainedIn(haystack) ? 1 : 0;
        });
    for (std::thread &thread : threads)
        thread.join();
    for (const int count : found)
        EXPECT_EQ(count, 200);
}

TEST(TextCharacters, eachOfTheseIsOne)
{
    for (const QString &character : wholeCharacters) {
        EXPECT_EQ(Text::characterCount(character), 1) << qPrintable(character);
        EXPECT_EQ(Text::characterBoundaries(character), (std::vector<qsizetype>{0, character.size()}));
    }
}

TEST(TextCharacters, countsBoundariesAndOffsetsAgree)
{
    QStringList characters = wholeCharacters;
    characters.removeAll(QStringLiteral("\u0600\u0661")); // would take a neighbour along
    const QString text = joined(characters);
    EXPECT_EQ(Text::characterCount(text), characters.size());
    const std::vector<qsizetype> boundaries = Text::characterBoundaries(text);
    ASSERT_EQ(boundaries.size(), static_cast<size_t>(characters.size()) + 1);
    for (qsizetype index = 0; index <= characters.size(); ++index) {
        const qsizetype offset = joined(characters.first(index)).size();
        EXPECT_EQ(boundaries[static_cast<size_t>(index)], offset);
        EXPECT_EQ(Text::utf16OffsetOfCharacter(text, index), offset);
        EXPECT_EQ(Text::characterIndexAtUtf16Offset(text, offset), index);
        EXPECT_EQ(Text::prefix(text, index), joined(characters.first(index)));
    }
}

TEST(TextCharacters, anOffsetInsideOfACharacterCountsTheCharacterThatBeganBefore)
{
    const QString text = QStringLiteral("a👩‍👩‍👧b");
    EXPECT_EQ(Text::characterIndexAtUtf16Offset(text, 0), 0);
    EXPECT_EQ(Text::characterIndexAtUtf16Offset(text, 1), 1);
    for (qsizetype offset = 2; offset < text.size(); ++offset)
        EXPECT_EQ(Text::characterIndexAtUtf16Offset(text, offset), 2) << offset;
    EXPECT_EQ(Text::characterIndexAtUtf16Offset(text, text.size()), 3);
}

TEST(TextCharacters, positionsOutsideOfTheTextAreClamped)
{
    const QString text = QStringLiteral("ae\u0301");
    EXPECT_EQ(Text::utf16OffsetOfCharacter(text, -1), 0);
    EXPECT_EQ(Text::utf16OffsetOfCharacter(text, 99), 3);
    EXPECT_EQ(Text::characterIndexAtUtf16Offset(text, -1), 0);
    EXPECT_EQ(Text::characterIndexAtUtf16Offset(text, 99), 2);
    EXPECT_EQ(Text::prefix(text, -1), QString());
    EXPECT_EQ(Text::prefix(text, 0), QString());
    EXPECT_EQ(Text::prefix(text, 1), QStringLiteral("a"));
    EXPECT_EQ(Text::prefix(text, 99), text);
}

TEST(TextCharacters, anEmptyTextHasNone)
{
    EXPECT_EQ(Text::characterCount(u""), 0);
    EXPECT_EQ(Text::characterBoundaries(u""), std::vector<qsizetype>{0});
    EXPECT_EQ(Text::utf16OffsetOfCharacter(u"", 3), 0);
    EXPECT_EQ(Text::prefix(QString(), 3), QString());
}

TEST(TextCharacters, loneSurrogatesAreCharacters)
{
    const char16_t units[] = {u'a', 0xDC00, 0xD800, u'b', 0xD83D};
    EXPECT_EQ(Text::characterCount(QStringView(units, 5)), 5);
}

TEST(TextCompareTitles, ignoresCaseButNotAccents)
{
    const QLocale previous;
    QLocale::setDefault(QLocale(QLocale::English));
    const auto compare = [](const char16_t *left, const char16_t *right) {
        return Text::compareTitles(QString::fromUtf16(left), QString::fromUtf16(right));
    };
    EXPECT_EQ(compare(u"Mail", u"mAIL"), 0);
    EXPECT_EQ(compare(u"", u""), 0);
    EXPECT_EQ(compare(u"café", u"cafe\u0301"), 0);
    EXPECT_EQ(compare(u"CAFÉ", u"cafe\u0301"), 0);
    EXPECT_EQ(compare(u"ệ", u"e\u0302\u0323"), 0);
    EXPECT_LT(compare(u"cafe", u"café"), 0);
    EXPECT_GT(compare(u"café", u"cafe"), 0);
    EXPECT_LT(compare(u"apple", u"Banana"), 0);
    EXPECT_LT(compare(u"Apple", u"banana"), 0);
    EXPECT_LT(compare(u"café", u"cafz"), 0) << "accents decide only between the same letters";
    EXPECT_LT(compare(u"", u"a"), 0);
    EXPECT_LT(compare(u"a", u"ab"), 0);
    EXPECT_GT(compare(u"Zebra", u"Ärger"), 0) << "no code point order";
    QLocale::setDefault(previous);
}

struct CountCase
{
    const char *name;
    QString text;
    qsizetype words;
    qsizetype lines;
};

TEST(TextCounts, followTheWordRulesOfUnicode)
{
    const CountCase cases[] = {
        {"nothing", QString(), 0, 0},
        {"one word", u"word"_s, 1, 1},
        {"several", u"one two  three"_s, 3, 1},
        {"lines", u"one\ntwo\n\nthree"_s, 3, 4},
        {"an apostrophe joins", u"don't stop"_s, 2, 1},
        {"a hyphen divides", u"e-mail"_s, 2, 1},
        {"numbers count", u"3.14 and 42"_s, 3, 1},
        {"punctuation does not", u"# -- *** !"_s, 0, 1},
        {"no blanks between words", u"\u6771\u4eac\u306b\u884c\u304f"_s, 3, 1},
        {"right to left", u"\u0645\u0631\u062d\u0628\u0627 \u0628\u0643"_s, 2, 1},
    };
    for (const CountCase &given : cases) {
        EXPECT_EQ(Text::wordCount(given.text), given.words) << given.name;
        EXPECT_EQ(Text::lineCount(given.text), given.lines) << given.name;
    }
}
