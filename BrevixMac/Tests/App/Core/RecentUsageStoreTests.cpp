// SPDX-License-Identifier: GPL-3.0-or-later
#include "RecentUsageStore.h"

#include "Samples.h"

#include "Foundation/UserDefaults.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTemporaryDir>
#include <QThread>

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace {

const QString promptsKey = u"recentPromptRecords"_s;
const QString skillsKey = u"recentSkillRecords"_s;

class RecentUsageStoreTest : public testing::Test
{
protected:
    QJsonArray stored(const QString &key) const
    {
        return QJsonDocument::fromJson(defaults.data(key).value_or(QByteArray())).array();
    }

    QTemporaryDir folder;
    UserDefaults defaults{folder.filePath(u"preferences.plist"_s)};
    QDateTime now = utc(9);
    std::function<QDateTime()> clock = [this] { return now; };
};

} // namespace

TEST_F(RecentUsageStoreTest, recordingTwiceLeavesOneRecordInFrontWithTheNewerTime)
{
    RecentUsageStore store(defaults, clock);
    store.record(makePrompt(u"a"_s, u"Old"_s, u"x"_s), u"Work"_s);
    store.record(makePrompt(u"b"_s, u"B"_s), std::nullopt);
    now = utc(10);
    store.record(makePrompt(u"a"_s, u"New"_s, u"y"_s), std::nullopt);
    EXPECT_EQ(store.recentIDs(), (QStringList{u"a"_s, u"b"_s}));
    const RecentPromptRecord expected{
        .id = u"a"_s, .title = u"New"_s, .categoryName = {}, .preview = u"y"_s, .lastUsedAt = utc(10)};
    EXPECT_EQ(store.recents().first(), expected);
}

TEST_F(RecentUsageStoreTest, theTwentyFirstPushesTheOldestOut)
{
    RecentUsageStore store(defaults, clock);
    for (int index = 0; index < 21; ++index) {
        store.record(makePrompt(u"p%1"_s.arg(index), {}), std::nullopt);
        store.record(makeSkill(u"s%1"_s.arg(index), {}));
    }
    ASSERT_EQ(store.recents().size(), 20);
    EXPECT_EQ(store.recentIDs().first(), u"p20"_s);
    EXPECT_EQ(store.recentIDs().last(), u"p1"_s);
    EXPECT_EQ(store.recentSkillIDs().size(), 20);
    EXPECT_EQ(store.recentSkillIDs().last(), u"s1"_s);
    EXPECT_EQ(stored(promptsKey).size(), 20);
}

TEST_F(RecentUsageStoreTest, previewsAreOneLineOfAtMost110Characters)
{
    struct Case
    {
        QString text, preview;
    };
    const QString family = u"👨‍👩‍👧"_s; // one user-perceived character of eight UTF-16 units
    const Case cases[] = {
        {u""_s, u""_s},
        {u"a\nb\n\nc"_s, u"a b  c"_s},
        {u"a\r\nb\tc  d"_s, u"a\r b\tc  d"_s},
        {QString(110, u'a'), QString(110, u'a')},
        {QString(111, u'a'), QString(107, u'a') + u"..."_s},
        {family.repeated(110), family.repeated(110)},
        {family.repeated(111), family.repeated(107) + u"..."_s},
        {u"e\u0301"_s.repeated(111), u"e\u0301"_s.repeated(107) + u"..."_s},
    };
    for (const Case &test : cases)
        EXPECT_EQ(RecentUsageStore::preview(test.text), test.preview);
}

TEST_F(RecentUsageStoreTest, recordsAreStoredAsJsonWithSecondsSince2001)
{
    RecentUsageStore store(defaults, clock);
    now = QDateTime(QDate(2001, 1, 1), QTime(0, 0, 1, 500), Qt::UTC);
    store.record(makePrompt(u"p"_s, u"T"_s, u"x"_s), std::nullopt);
    QJsonObject object = stored(promptsKey).first().toObject();
    EXPECT_EQ(object.keys(), (QStringList{u"id"_s, u"lastUsedAt"_s, u"preview"_s, u"title"_s}));
    EXPECT_EQ(object.value(u"lastUsedAt").toDouble(), 1.5);
    store.record(makePrompt(u"p"_s, u"T"_s, u"x"_s), u"Work"_s);
    EXPECT_EQ(stored(promptsKey).first().toObject().value(u"categoryName").toString(), u"Work"_s);
    store.record(makeSkill(u"s"_s, u"T"_s));
    EXPECT_EQ(stored(skillsKey).size(), 1);
}

TEST_F(RecentUsageStoreTest, aRestartShowsTheSameLists)
{
    RecentUsageStore store(defaults, clock);
    store.record(makePrompt(u"p"_s, u"T"_s, u"x"_s), u"Work"_s);
    now = utc(10).addMSecs(123);
    store.record(makePrompt(u"q"_s, u"T"_s, u"x"_s), std::nullopt);
    store.record(makeSkill(u"s"_s, u"T"_s));
    defaults.waitForWrites();
    UserDefaults reread(defaults.filePath());
    const RecentUsageStore again(reread);
    EXPECT_EQ(again.recents(), store.recents());
    EXPECT_EQ(again.recentSkills(), store.recentSkills());
}

TEST_F(RecentUsageStoreTest, loadingSortsStablyAndKeepsWhatIsThere)
{
    QJsonArray list;
    for (int index = 0; index < 25; ++index) {
        list.append(QJsonObject{{u"id"_s, index < 2 ? u"same"_s : u"p%1"_s.arg(index)},
                                {u"title"_s, u"t"_s},
                                {u"preview"_s, u"x"_s},
                                {u"categoryName"_s, QJsonValue::Null},
                                {u"lastUsedAt"_s, index == 24 ? 5 : 1}});
    }
    defaults.setData(promptsKey, QJsonDocument(list).toJson());
    const RecentUsageStore store(defaults, clock);
    ASSERT_EQ(store.recents().size(), 25);
    EXPECT_EQ(store.recentIDs().mid(0, 4), (QStringList{u"p24"_s, u"same"_s, u"same"_s, u"p2"_s}));
    EXPECT_EQ(store.recents().last().categoryName, std::nullopt);
}

TEST_F(RecentUsageStoreTest, undecodableListsCountAsEmptyAndStayUntilTheNextUse)
{
    const QByteArray damaged[] = {
        "",
        "{}",
        "[1]",
        "[{}]",
        "nonsense",
        R"([{"id":"a","title":"t","preview":"x"}])",
        R"([{"id":"a","title":"t","preview":"x","lastUsedAt":"1"}])",
        R"([{"id":"a","title":"t","preview":"x","lastUsedAt":1e300}])",
        R"([{"id":1,"title":"t","preview":"x","lastUsedAt":1}])",
        R"([{"id":"a","title":"t","preview":"x","lastUsedAt":1,"categoryName":3}])",
        R"([{"id":"a","title":"t","preview":"x","lastUsedAt":1},{"id":"b"}])",
    };
    for (const QByteArray &json : damaged) {
        defaults.setData(promptsKey, json);
        RecentUsageStore store(defaults, clock);
        EXPECT_TRUE(store.recents().isEmpty()) << json.constData();
        EXPECT_EQ(defaults.data(promptsKey), json);
        store.record(makePrompt(u"p"_s, u"T"_s), std::nullopt);
        EXPECT_EQ(stored(promptsKey).size(), 1);
    }
}

TEST_F(RecentUsageStoreTest, recordsHashAsTheyCompare)
{
    const RecentPromptRecord absent{
        .id = u"a"_s, .title = u"t"_s, .categoryName = {}, .preview = u"x"_s, .lastUsedAt = now};
    RecentPromptRecord empty = absent;
    empty.categoryName = QString();
    EXPECT_FALSE(absent == empty);
    EXPECT_NE(qHash(absent), qHash(empty));
    EXPECT_EQ(qHash(absent), qHash(RecentPromptRecord(absent)));
    const RecentSkillRecord skill{.id = u"a"_s, .title = u"t"_s, .preview = u"x"_s, .lastUsedAt = now};
    EXPECT_EQ(qHash(skill), qHash(RecentSkillRecord(skill)));
}

TEST_F(RecentUsageStoreTest, observersHearOfEachUse)
{
    RecentUsageStore store(defaults, clock);
    int prompts = 0, skills = 0;
    QObject::connect(&store, &RecentUsageStore::recentsChanged, &store, [&] { ++prompts; });
    QObject::connect(&store, &RecentUsageStore::recentSkillsChanged, &store, [&] { ++skills; });
    store.record(makePrompt(u"p"_s, u"T"_s), std::nullopt);
    store.record(makeSkill(u"s"_s, u"T"_s));
    EXPECT_EQ(prompts, 1);
    EXPECT_EQ(skills, 1);
}

using RecentUsageStoreDeathTest = RecentUsageStoreTest;

TEST_F(RecentUsageStoreDeathTest, useOnAnotherThreadStopsTheProgram)
{
    testing::FLAGS_gtest_death_test_style = "threadsafe";
    RecentUsageStore store(defaults, clock);
    const auto useElsewhere = [&] {
        const std::unique_ptr<QThread> thread(QThread::create([&] { store.recentIDs(); }));
        thread->start();
        thread->wait();
    };
    EXPECT_DEATH(useElsewhere(), "away from the main thread");
}
