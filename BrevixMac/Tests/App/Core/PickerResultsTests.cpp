// SPDX-License-Identifier: GPL-3.0-or-later
#include "PickerResults.h"

#include "Samples.h"

#include <QLocale>

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace {

QStringList rowIDs(const QList<PickerResult> &results)
{
    QStringList ids;
    for (const PickerResult &result : results)
        ids.append(result.id());
    return ids;
}

QList<PromptItem> prompts(int count)
{
    QList<PromptItem> list;
    for (int index = 0; index < count; ++index)
        list.append(makePrompt(u"p%1"_s.arg(index), u"Prompt %1"_s.arg(index), u"text"_s,
                               u"c%1"_s.arg(index % 2), index));
    return list;
}

QList<SkillItem> skills(int count)
{
    QList<SkillItem> list;
    for (int index = 0; index < count; ++index)
        list.append(makeSkill(u"s%1"_s.arg(index), u"Skill %1"_s.arg(index), u"text"_s, {}, index));
    return list;
}

RecentPromptRecord recentPrompt(const QString &id, const QDateTime &at)
{
    return {.id = id, .title = u"old"_s, .categoryName = {}, .preview = u"old"_s, .lastUsedAt = at};
}

RecentSkillRecord recentSkill(const QString &id, const QDateTime &at)
{
    return {.id = id, .title = u"old"_s, .preview = u"old"_s, .lastUsedAt = at};
}

QList<PickerResult> tenRecents()
{
    QList<RecentPromptRecord> records;
    for (int index = 0; index < 10; ++index)
        records.append(recentPrompt(u"p%1"_s.arg(index), utc(index)));
    return PickerResults::recentPickerResults(prompts(10), {}, records, {});
}

} // namespace

TEST(PickerResults, aPromptAndASkillWithTheSameIdentifierStayApart)
{
    EXPECT_EQ((PickerResult{makePrompt(u"x"_s, u"t"_s)}.id()), u"prompt:x"_s);
    EXPECT_EQ((PickerResult{makeSkill(u"x"_s, u"t"_s)}.id()), u"skill:x"_s);
}

TEST(PickerResults, recentsShowLiveItemsNewestFirst)
{
    const auto results = PickerResults::recentPickerResults(
        prompts(3), skills(2),
        {recentPrompt(u"p2"_s, utc(9)), recentPrompt(u"gone"_s, utc(12)), recentPrompt(u"p0"_s, utc(8))},
        {recentSkill(u"s1"_s, utc(10)), recentSkill(u"s0"_s, utc(9)), recentSkill(u"gone"_s, utc(11))});
    EXPECT_EQ(rowIDs(results), (QStringList{u"skill:s1"_s, u"prompt:p2"_s, u"skill:s0"_s, u"prompt:p0"_s}));
    EXPECT_EQ(results[1].title(), u"Prompt 2"_s);
    EXPECT_EQ(results[1].text(), u"text"_s);
}

TEST(PickerResultsDeathTest, aRepeatedIdentifierInTheLibraryStopsTheProgram)
{
    const QList<PromptItem> twice{makePrompt(u"p"_s, u"a"_s), makePrompt(u"p"_s, u"b"_s)};
    const QList<SkillItem> skillTwice{makeSkill(u"s"_s, u"a"_s), makeSkill(u"s"_s, u"b"_s)};
    EXPECT_DEATH(PickerResults::recentPickerResults(twice, {}, {}, {}),
                 "duplicate identifier in the library: p");
    EXPECT_DEATH(PickerResults::recentPickerResults({}, skillTwice, {}, {}),
                 "duplicate identifier in the library: s");
}

TEST(PickerResults, aBlankSearchShowsTheEightNewestRecentsAlone)
{
    const auto sections =
        PickerResults::resultSections(u" \n"_s, tenRecents(), prompts(3), skills(3), SyncState::loading());
    ASSERT_EQ(sections.size(), 1);
    EXPECT_EQ(sections[0].id, u"recent"_s);
    EXPECT_EQ(sections[0].title, u"Recent"_s);
    EXPECT_EQ(sections[0].subtitle, u"Syncing..."_s);
    ASSERT_EQ(sections[0].results.size(), 8);
    EXPECT_EQ(sections[0].results.first().id(), u"prompt:p9"_s);
    EXPECT_TRUE(PickerResults::hasResults(sections));
}

TEST(PickerResults, withoutRecentsOrWithASearchUpToSixOfEachAreShown)
{
    for (const auto &[query, recents] :
         {std::pair(u""_s, QList<PickerResult>()), std::pair(u"prompt"_s, tenRecents())}) {
        const auto sections =
            PickerResults::resultSections(query, recents, prompts(9), skills(7), SyncState::idle());
        ASSERT_EQ(sections.size(), 2);
        EXPECT_EQ(sections[0].id, u"prompts"_s);
        EXPECT_EQ(sections[0].title, u"Prompts"_s);
        EXPECT_EQ(sections[0].subtitle, u"Idle"_s);
        EXPECT_EQ(sections[0].results.size(), 6);
        EXPECT_EQ(sections[1].id, u"skills"_s);
        EXPECT_EQ(sections[1].title, u"Skills"_s);
        EXPECT_EQ(sections[1].subtitle, u"Reusable instructions"_s);
        EXPECT_EQ(sections[1].results.size(), 6);
    }
}

TEST(PickerResults, emptySectionsAreLeftOut)
{
    const auto onlyPrompts = PickerResults::resultSections(u"x"_s, {}, prompts(1), {}, SyncState::idle());
    ASSERT_EQ(onlyPrompts.size(), 1);
    EXPECT_EQ(onlyPrompts[0].id, u"prompts"_s);
    const auto onlySkills = PickerResults::resultSections(u"x"_s, {}, {}, skills(1), SyncState::idle());
    ASSERT_EQ(onlySkills.size(), 1);
    EXPECT_EQ(onlySkills[0].id, u"skills"_s);
    const auto nothing = PickerResults::resultSections(u"x"_s, tenRecents(), {}, {}, SyncState::idle());
    EXPECT_TRUE(nothing.isEmpty());
    EXPECT_FALSE(PickerResults::hasResults(nothing));
}

TEST(PickerResults, libraryFiltersChooseAndOrderTheirRows)
{
    const auto rows = [](const QString &query, const LibraryFilter &filter) {
        return rowIDs(
            PickerResults::libraryResults(query, filter, prompts(3), skills(2), {}, {u"p2"_s}, {u"s1"_s}));
    };
    using F = LibraryFilter;
    EXPECT_EQ(rows(u""_s, F::all()),
              (QStringList{u"prompt:p0"_s, u"prompt:p1"_s, u"prompt:p2"_s, u"skill:s0"_s, u"skill:s1"_s}));
    EXPECT_EQ(rows(u""_s, F::prompts()), (QStringList{u"prompt:p0"_s, u"prompt:p1"_s, u"prompt:p2"_s}));
    EXPECT_EQ(rows(u""_s, F::skills()), (QStringList{u"skill:s0"_s, u"skill:s1"_s}));
    EXPECT_EQ(rows(u""_s, F::category(u"c0"_s)), (QStringList{u"prompt:p0"_s, u"prompt:p2"_s}));
    EXPECT_EQ(rows(u""_s, F::category(u"none"_s)), QStringList());
    EXPECT_EQ(rows(u"skill"_s, F::all()), (QStringList{u"skill:s1"_s, u"skill:s0"_s}));
    EXPECT_EQ(rows(u"prompt"_s, F::category(u"c0"_s)), (QStringList{u"prompt:p2"_s, u"prompt:p0"_s}));
    // Blanks are a search: they show the recency order.
    EXPECT_EQ(rows(u" "_s, F::all()),
              (QStringList{u"prompt:p2"_s, u"prompt:p0"_s, u"prompt:p1"_s, u"skill:s1"_s, u"skill:s0"_s}));
}

TEST(PickerResults, filtersHaveTitlesAndCounts)
{
    const CategoriesByID categories{{u"c0"_s, makeCategory(u"c0"_s, u"Work"_s)}};
    struct Row
    {
        LibraryFilter filter;
        QString title;
        qsizetype count;
    };
    const Row rows[] = {
        {LibraryFilter::all(), u"All Library Items"_s, 5},
        {LibraryFilter::prompts(), u"Prompts"_s, 3},
        {LibraryFilter::skills(), u"Skills"_s, 2},
        {LibraryFilter::category(u"c0"_s), u"Work"_s, 2},
        {LibraryFilter::category(u"c1"_s), u"Category"_s, 1},
        {LibraryFilter::category(u"none"_s), u"Category"_s, 0},
    };
    for (const Row &row : rows) {
        EXPECT_EQ(PickerResults::libraryFilterTitle(row.filter, categories), row.title);
        EXPECT_EQ(PickerResults::libraryItemCount(row.filter, prompts(3), skills(2)), row.count);
    }
}

TEST(PickerResults, theTargetStatusNamesTheFirstObstacle)
{
    using Tint = PickerTargetStatus::Tint;
    const auto target = std::make_shared<FocusedTarget>();
    const PickerTargetStatus permissions{.ready = false,
                                         .appName = {},
                                         .title = u"Permissions needed"_s,
                                         .detail = u"Grant permissions before using insert."_s,
                                         .icon = u"hand.raised"_s,
                                         .tint = Tint::orange};
    EXPECT_EQ(PickerResults::targetStatus(false, true, target, true, u"⇧⌘P"_s), permissions);
    EXPECT_EQ(PickerResults::targetStatus(true, false, nullptr, false, u"⇧⌘P"_s), permissions);

    const PickerTargetStatus noField{.ready = false,
                                     .appName = {},
                                     .title = u"No editable field captured"_s,
                                     .detail = u"Click a text field, then press ⇧⌘P."_s,
                                     .icon = u"exclamationmark.circle"_s,
                                     .tint = Tint::orange};
    EXPECT_EQ(PickerResults::targetStatus(true, true, nullptr, false, u"⇧⌘P"_s), noField);

    const PickerTargetStatus secure{.ready = false,
                                    .appName = {},
                                    .title = u"Password fields are not supported"_s,
                                    .detail = u"Copy instead if you need to paste manually."_s,
                                    .icon = u"lock.circle"_s,
                                    .tint = Tint::red};
    EXPECT_EQ(PickerResults::targetStatus(true, true, target, true, u"⇧⌘P"_s), secure);

    EXPECT_EQ(PickerResults::targetStatus(true, true, target, false, {}).appName, u"the selected app"_s);
    target->applicationName = u"Editor"_s;
    const PickerTargetStatus ready = PickerResults::targetStatus(true, true, target, false, {});
    EXPECT_TRUE(ready.ready);
    EXPECT_EQ(ready.appName, u"Editor"_s);
}

TEST(SyncState, titlesSayHowTheLibraryStands)
{
    EXPECT_EQ(SyncState::idle().title(), u"Idle"_s);
    EXPECT_EQ(SyncState::loading().title(), u"Syncing..."_s);
    EXPECT_EQ(SyncState::error(u"no network"_s).title(), u"no network"_s);
    // Without seconds, also in the C locale, whose short form has them.
    const QString time = QLocale::c().toString(utc(9, 30).toLocalTime().time(), u"HH:mm"_s);
    EXPECT_EQ(SyncState::synced(utc(9, 30)).title(), QString(u"Updated "_s + time));
    EXPECT_FALSE(SyncState::synced(utc(9)) == SyncState::synced(utc(10)));
    EXPECT_FALSE(SyncState::error(u"a"_s) == SyncState::error(u"b"_s));
    EXPECT_FALSE(SyncState::idle() == SyncState::loading());
}
