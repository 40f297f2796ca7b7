// SPDX-License-Identifier: GPL-3.0-or-later
#include "PromptSearchRanker.h"
#include "Samples.h"
#include "SearchRanking.h"
#include "SkillSearchRanker.h"

#include <QRandomGenerator>

#include "Support/Waiting.h"

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace {

QStringList promptIDs(const QString &query, const QList<PromptItem> &prompts,
                      const QStringList &recentIDs = {}, const CategoriesByID &categories = {},
                      const std::optional<QString> &selected = {})
{
    return idsOf(PromptSearchRanker::rankedPrompts(query, prompts, categories, recentIDs, selected));
}

QStringList skillIDs(const QString &query, const QList<SkillItem> &skills, const QStringList &recentIDs = {})
{
    return idsOf(SkillSearchRanker::rankedSkills(query, skills, recentIDs));
}

const CategoriesByID mailCategories{{u"c"_s, makeCategory(u"c"_s, u"Email"_s)}};

/// The rule in its plainest form, without any cache.
QStringList plainRanking(const QString &query, const QList<PromptItem> &prompts, const QStringList &recentIDs)
{
    struct Entry
    {
        PromptItem prompt;
        qint64 score;
    };
    const QString needle = Text::lowercased(Text::trimmed(query));
    std::vector<Entry> entries;
    for (const PromptItem &prompt : prompts) {
        const QString title = Text::lowercased(prompt.title);
        const Text::Needle test(needle);
        qint64 score = test.isPrefixOf(title) ? 100 : 0;
        score += test.isContainedIn(title) ? 50 : 0;
        score += test.isContainedIn(Text::lowercased(prompt.text)) ? 20 : 0;
        const qsizetype position = recentIDs.indexOf(prompt.id);
        if (score > 0)
            entries.push_back({prompt, score - (position >= 0 ? position : recentIDs.size() + 10)});
    }
    std::stable_sort(entries.begin(), entries.end(), [](const Entry &left, const Entry &right) {
        if (left.score != right.score)
            return left.score > right.score;
        return Text::compareTitles(left.prompt.title, right.prompt.title) < 0;
    });
    QStringList ids;
    for (const Entry &entry : entries)
        ids.append(entry.prompt.id);
    return ids;
}

} // namespace

TEST(PromptSearchRanker, titlesComeBeforeTextsBeforeCategories)
{
    const QList<PromptItem> prompts{
        makePrompt(u"category"_s, u"a"_s, u"b"_s, u"c"_s),
        makePrompt(u"text"_s, u"a"_s, u"read the MAIL"_s),
        makePrompt(u"contains"_s, u"Send mail"_s),
        makePrompt(u"begins"_s, u"Mailing list"_s),
        makePrompt(u"nothing"_s, u"a"_s, u"b"_s, u"unknown"_s),
    };
    const QStringList expected{u"begins"_s, u"contains"_s, u"text"_s, u"category"_s};
    EXPECT_EQ(promptIDs(u"  Mail\n"_s, prompts, {}, mailCategories), expected);
}

TEST(PromptSearchRanker, pointsAndRecencyAddUpAsTheTableSays)
{
    // The probe matches by its title alone (50); its rival's score is known from its place in the recent
    // list. Not recent loses the number of recent identifiers plus 10, so with one recent identifier the
    // probe has 50 - 11.
    const PromptItem probe = makePrompt(u"probe"_s, u"z mail"_s);
    const PromptItem textAndCategory = makePrompt(u"rival"_s, u"a"_s, u"mail"_s, u"c"_s); // 30
    EXPECT_EQ(promptIDs(u"mail"_s, {textAndCategory, probe}, {u"rival"_s}, mailCategories).first(),
              u"probe"_s);

    // From ten recent identifiers on, 30 - 0 is ahead of 50 - 20: the accepted price of recency.
    QStringList recent{u"rival"_s};
    for (int index = 1; index < 10; ++index)
        recent.append(u"r%1"_s.arg(index));
    EXPECT_EQ(promptIDs(u"mail"_s, {probe, textAndCategory}, recent, mailCategories),
              (QStringList{u"rival"_s, u"probe"_s})); // 30 against 30: the title decides
    recent.append(u"r10"_s);
    const PromptItem early = makePrompt(u"probe"_s, u"! mail"_s);
    EXPECT_EQ(promptIDs(u"mail"_s, {early, textAndCategory}, recent, mailCategories).first(), u"rival"_s);
}

TEST(PromptSearchRanker, aTitleThatBeginsWithTheQueryHas150Points)
{
    // 100 for its beginning and 50 for holding it: with 90 recent prompts as much as the most recent one that
    // only holds it, 150 - (90 + 10) against 50 - 0, and then the title decides.
    const PromptItem begins = makePrompt(u"begins"_s, u"Mailing list"_s);
    const PromptItem holds = makePrompt(u"holds"_s, u"A mail"_s);
    QStringList recent{u"holds"_s};
    for (int index = 1; index < 89; ++index)
        recent.append(u"r%1"_s.arg(index));
    ASSERT_EQ(recent.size(), 89);
    EXPECT_EQ(promptIDs(u"mail"_s, {holds, begins}, recent).first(), u"begins"_s); // 51 against 50
    recent.append(u"r89"_s);
    EXPECT_EQ(promptIDs(u"mail"_s, {begins, holds}, recent).first(), u"holds"_s); // 50 each: "A" before "M"
    const PromptItem late = makePrompt(u"holds"_s, u"Z mail"_s);
    EXPECT_EQ(promptIDs(u"mail"_s, {late, begins}, recent).first(), u"begins"_s); // 50 each: "M" before "Z"
    recent.append(u"r90"_s);
    EXPECT_EQ(promptIDs(u"mail"_s, {begins, late}, recent).first(), u"holds"_s); // 49 against 50
}

TEST(PromptSearchRanker, aRecentTextMatchIsAheadOfAnOldTextAndCategoryMatch)
{
    const QList<PromptItem> prompts{makePrompt(u"old"_s, u"a"_s, u"mail"_s, u"c"_s),
                                    makePrompt(u"recent"_s, u"b"_s, u"mail"_s)};
    EXPECT_EQ(promptIDs(u"mail"_s, prompts, {u"x"_s, u"recent"_s}, mailCategories),
              (QStringList{u"recent"_s, u"old"_s}));
}

TEST(PromptSearchRanker, scoresBelowZeroAreStillListed)
{
    QStringList recent;
    for (int index = 0; index < 40; ++index)
        recent.append(u"r%1"_s.arg(index));
    EXPECT_EQ(promptIDs(u"mail"_s, {makePrompt(u"p"_s, u"a"_s, u"mail"_s)}, recent), QStringList{u"p"_s});
}

TEST(PromptSearchRanker, whatMatchesNothingIsDroppedEvenIfItIsTheMostRecent)
{
    EXPECT_EQ(promptIDs(u"mail"_s, {makePrompt(u"p"_s, u"a"_s)}, {u"p"_s}), QStringList());
    EXPECT_EQ(promptIDs(u"p"_s, {makePrompt(u"p"_s, u"a"_s)}), QStringList()); // identifiers are not searched
}

TEST(PromptSearchRanker, blankQueriesSortByRecencyThenOrderThenTitleThenInput)
{
    const QList<PromptItem> prompts{
        makePrompt(u"late"_s, u"a"_s, {}, {}, 2),
        makePrompt(u"b"_s, u"beta"_s, {}, {}, 0),
        makePrompt(u"A"_s, u"Alpha"_s, {}, {}, 0),
        makePrompt(u"a"_s, u"alpha"_s, {}, {}, 0),
        makePrompt(u"r1"_s, u"z"_s, {}, {}, 9),
        makePrompt(u"r0"_s, u"zz"_s, {}, {}, 99),
        makePrompt(u"min"_s, u"zzz"_s, {}, {}, std::numeric_limits<qint64>::min()),
    };
    const QStringList expected{u"r0"_s, u"r1"_s, u"min"_s, u"A"_s, u"a"_s, u"b"_s, u"late"_s};
    for (const QString &query : {u""_s, u"   "_s, u"\n\t\u00a0"_s})
        EXPECT_EQ(promptIDs(query, prompts, {u"r0"_s, u"r1"_s}), expected);
}

TEST(PromptSearchRanker, theSelectedCategoryFiltersWithAndWithoutAQuery)
{
    const QList<PromptItem> prompts{makePrompt(u"1"_s, u"mail"_s, {}, u"c"_s),
                                    makePrompt(u"2"_s, u"mail"_s, {}, u"C"_s), makePrompt(u"3"_s, u"mail"_s)};
    EXPECT_EQ(promptIDs(u""_s, prompts, {}, {}, u"c"_s), QStringList{u"1"_s});
    EXPECT_EQ(promptIDs(u"mail"_s, prompts, {}, {}, u"c"_s), QStringList{u"1"_s});
    EXPECT_EQ(promptIDs(u"mail"_s, prompts, {}, {}, u""_s), QStringList{u"3"_s});
    EXPECT_EQ(promptIDs(u"mail"_s, prompts, {}, {}, u"none"_s), QStringList());
}

TEST(PromptSearchRanker, equalScoresAndTitlesKeepTheInputOrder)
{
    const QList<PromptItem> prompts{makePrompt(u"1"_s, u"MAIL"_s, {}, {}, 5),
                                    makePrompt(u"2"_s, u"mail"_s, {}, {}, 1),
                                    makePrompt(u"3"_s, u"Mail"_s, {}, {}, 3)};
    EXPECT_EQ(promptIDs(u"mail"_s, prompts), (QStringList{u"1"_s, u"2"_s, u"3"_s}));
}

TEST(PromptSearchRanker, aQueryIsOneNeedleAndFoldsNothingButCase)
{
    struct Case
    {
        QString query, title;
        bool found;
    };
    const Case cases[] = {
        {u"send mail"_s, u"Send Mail"_s, true},
        {u"mail send"_s, u"Send Mail"_s, false},
        {u"cafe"_s, u"Café"_s, false},
        {u"cafe"_s, u"Cafe\u0301"_s, false}, // the last letter there is an é
        {u"CAFÉ"_s, u"cafe\u0301"_s, true},
        {u"cafe\u0301"_s, u"Le Café"_s, true},
        {u"ПРИВЕТ"_s, u"привет, мир"_s, true},
        {u"i"_s, u"I"_s, true},
        {u"abc"_s, u"ａｂｃ"_s, false},
        {u"straße"_s, u"STRASSE"_s, false},
    };
    for (const Case &test : cases) {
        EXPECT_EQ(promptIDs(test.query, {makePrompt(u"p"_s, test.title)}).size(), test.found ? 1 : 0)
            << test.query.toStdString() << " in " << test.title.toStdString();
    }
}

TEST(PromptSearchRankerDeathTest, aRepeatedRecentIdentifierStopsTheProgram)
{
    EXPECT_DEATH(promptIDs(u""_s, {}, {u"a"_s, u"b"_s, u"a"_s}),
                 "duplicate identifier among the recent ones: a");
}

TEST(SkillSearchRanker, titlesComeBeforeFileNamesBeforeTexts)
{
    const QList<SkillItem> skills{
        makeSkill(u"text"_s, u"a"_s, u"my NOTES"_s),
        makeSkill(u"file"_s, u"a"_s, u"b"_s, u"Meeting-Notes.md"_s),
        makeSkill(u"contains"_s, u"Take notes"_s),
        makeSkill(u"begins"_s, u"Notes"_s),
        makeSkill(u"nothing"_s, u"a"_s, u"b"_s),
    };
    EXPECT_EQ(skillIDs(u"notes"_s, skills), (QStringList{u"begins"_s, u"contains"_s, u"file"_s, u"text"_s}));
}

TEST(SkillSearchRanker, aTextMatchWithFiveRecentSkillsIsListedBehindARecentOne)
{
    const QList<SkillItem> skills{makeSkill(u"old"_s, u"a"_s, u"notes"_s),
                                  makeSkill(u"r4"_s, u"b"_s, u"notes"_s)};
    EXPECT_EQ(skillIDs(u"notes"_s, skills, {u"r0"_s, u"r1"_s, u"r2"_s, u"r3"_s, u"r4"_s}),
              (QStringList{u"r4"_s, u"old"_s}));
}

TEST(SkillSearchRanker, blankQueriesSortByRecencyThenOrderThenTitle)
{
    const QList<SkillItem> skills{makeSkill(u"2"_s, u"b"_s, {}, {}, 1), makeSkill(u"1"_s, u"a"_s, {}, {}, 1),
                                  makeSkill(u"0"_s, u"z"_s, {}, {}, 0),
                                  makeSkill(u"r"_s, u"zz"_s, {}, {}, 7)};
    EXPECT_EQ(skillIDs(u" "_s, skills, {u"r"_s}), (QStringList{u"r"_s, u"0"_s, u"1"_s, u"2"_s}));
}

TEST(SkillSearchRankerDeathTest, aRepeatedRecentIdentifierStopsTheProgram)
{
    EXPECT_DEATH(skillIDs(u"x"_s, {}, {u"a"_s, u"a"_s}), "duplicate identifier among the recent ones: a");
}

TEST(SearchRanking, editedTextsAreNeverAnsweredFromTheCache)
{
    QList<PromptItem> prompts{makePrompt(u"p"_s, u"Title"_s, u"Alpha"_s.repeated(20))};
    EXPECT_EQ(promptIDs(u"alpha"_s, prompts).size(), 1);
    prompts[0].text[0] = u'O';
    prompts[0].text.replace(u"Alpha"_s, u"Omega"_s);
    prompts[0].text.replace(u"Olpha"_s, u"Omega"_s);
    EXPECT_EQ(promptIDs(u"alpha"_s, prompts).size(), 0);
    EXPECT_EQ(promptIDs(u"omega"_s, prompts).size(), 1);
}

TEST(SearchRanking, textsThatBorrowTheirCharactersAreNotCached)
{
    char16_t characters[] = u"ALPHA";
    SearchRanking::LowercaseCache cache(1000);
    const QString borrowed = QString::fromRawData(reinterpret_cast<const QChar *>(characters), 5);
    EXPECT_EQ(cache.lowercased(borrowed), u"alpha"_s);
    characters[0] = u'X';
    EXPECT_EQ(cache.lowercased(borrowed), u"xlpha"_s);
    EXPECT_EQ(cache.entryCount(), 0);
}

TEST(SearchRanking, theCacheIsBoundedAndAnswersTheSameBeyondIt)
{
    SearchRanking::LowercaseCache cache(100);
    const QString first = QString(60, u'A');
    const QString second = QString(60, u'B');
    EXPECT_EQ(cache.lowercased(first), QString(60, u'a'));
    EXPECT_EQ(cache.lowercased(second), QString(60, u'b'));
    EXPECT_EQ(cache.lowercased(first), QString(60, u'a'));
    EXPECT_EQ(cache.entryCount(), 1);
}

TEST(SearchRanking, textsNobodyAsksForAreForgotten)
{
    SearchRanking::LowercaseCache cache(1'000'000);
    for (int index = 0; index < 1000; ++index)
        cache.lowercased(u"Gone %1"_s.arg(index));
    cache.endRanking();
    EXPECT_EQ(cache.entryCount(), 1000);
    const QString kept = u"Kept %1"_s.arg(1);
    for (int ranking = 0; ranking < 20; ++ranking) {
        cache.lowercased(kept);
        cache.endRanking();
    }
    EXPECT_EQ(cache.entryCount(), 1);
}

TEST(SearchRanking, theCacheAnswersRightInEveryOrder)
{
    SearchRanking::LowercaseCache cache(1'000'000);
    QStringList texts;
    for (int index = 0; index < 600; ++index)
        texts.append(u"Text %1"_s.arg(index));
    const auto expectAnswers = [&](int from, int to, int step) {
        for (int index = from; index != to; index += step)
            EXPECT_EQ(cache.lowercased(texts[index]), u"text %1"_s.arg(index));
        cache.endRanking();
    };
    expectAnswers(0, 600, 1);
    expectAnswers(0, 600, 1);
    expectAnswers(598, 0, -2);
    // The odd ones are forgotten, the others move up.
    for (int ranking = 0; ranking < 40; ++ranking)
        expectAnswers(0, 200, 2);
    EXPECT_EQ(cache.entryCount(), 300);
    expectAnswers(599, -1, -1);
    expectAnswers(0, 600, 3);
    cache.clear();
    expectAnswers(0, 600, 1);
    EXPECT_EQ(cache.entryCount(), 600);
}

TEST(SearchRanking, whatIsPreparedIsFoundInTheCache)
{
    SearchRanking::LowercaseCache cache(1000);
    const QString text = u"Alpha %1"_s.arg(1);
    cache.insert(text, u"prepared"_s);
    EXPECT_EQ(cache.lowercased(text), u"prepared"_s);
    cache.insert(text, u"later"_s);
    EXPECT_EQ(cache.lowercased(text), u"prepared"_s);
    EXPECT_EQ(cache.entryCount(), 1);
}

TEST(SearchRanking, preparingPutsTheTextsIntoTheCache)
{
    const QStringList texts{u"Prepared %1"_s.arg(1), u"Prepared %1"_s.arg(2), QString()};
    await(SearchRanking::prepare(texts, {}));
    EXPECT_EQ(SearchRanking::lowercaseCache().entryCount(), 2);
    EXPECT_EQ(SearchRanking::lowercaseCache().lowercased(texts[1]), u"prepared 2"_s);
    EXPECT_EQ(SearchRanking::lowercaseCache().entryCount(), 2);
}

TEST(SearchRanking, preparingALibraryForgetsTheOneBefore)
{
    for (int library = 0; library < 100; ++library)
        await(SearchRanking::prepare({u"Library %1"_s.arg(library)}, {}));
    EXPECT_EQ(SearchRanking::lowercaseCache().entryCount(), 1);
    await(SearchRanking::prepare({}, {}));
    EXPECT_EQ(SearchRanking::lowercaseCache().entryCount(), 0);
}

TEST(SearchRanking, aPreparationThatIsReplacedPutsNothingThere)
{
    const qsizetype before = SearchRanking::lowercaseCache().entryCount();
    std::stop_source source;
    QCoro::Task<> task = SearchRanking::prepare({u"Replaced %1"_s.arg(1)}, source.get_token());
    source.request_stop();
    await(std::move(task));
    EXPECT_EQ(SearchRanking::lowercaseCache().entryCount(), before);
}

TEST(SearchRanking, theCacheNeverChangesAResult)
{
    QRandomGenerator random(7);
    const QString alphabet = u"aAbBeE\u00e9\u0301 жЖ"_s;
    const auto word = [&](int length) {
        QString text;
        for (int index = 0; index < length; ++index)
            text += alphabet[random.bounded(alphabet.size())];
        return text;
    };
    for (int round = 0; round < 60; ++round) {
        QList<PromptItem> prompts;
        for (int index = 0; index < 30; ++index)
            prompts.append(makePrompt(u"p%1"_s.arg(index), word(4), word(40)));
        const QStringList recent{u"p3"_s, u"p17"_s, u"p1"_s};
        for (int keystroke = 1; keystroke < 4; ++keystroke) {
            const QString query = word(keystroke);
            if (!Text::trimmed(query).isEmpty()) {
                ASSERT_EQ(promptIDs(query, prompts, recent), plainRanking(query, prompts, recent));
            }
        }
    }
}
