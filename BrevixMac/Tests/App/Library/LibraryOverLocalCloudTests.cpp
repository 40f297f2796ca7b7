// SPDX-License-Identifier: GPL-3.0-or-later
#include "LocalCloud/Database.h"
#include "LocalCloud/Documents.h"
#include "LocalCloud/LocalCloud.h"

#include "RefreshTimer.h"
#include "Support/AppBench.h"
#include "Support/Waiting.h"

#include <QJsonArray>
#include <QJsonObject>

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace {

/// An application over the real local cloud, signed in there.
class LibraryOverLocalCloudTest : public testing::Test, protected AppBench
{
protected:
    void SetUp() override
    {
        ASSERT_TRUE(cloud.start()) << qPrintable(cloud.errorString());
        endpoints = CloudEndpoints::local(cloud.origin());
        configuration.publicShareBaseURL = cloud.origin();
        const LocalCloud::Session session = cloud.issueLocalSession();
        userID = session.uid;
        time = QDateTime::currentDateTimeUtc();
        storeSession(userID, session.idToken);
        start();
        ASSERT_TRUE(waitForLibrary());
    }

    LibraryStore &store() { return appState->libraryStore(); }

    /// Lets the time of the next refresh come, and no further one.
    void refreshAfterTheInterval()
    {
        time = time.addSecs(45);
        fireRefreshTimer(store());
    }

    /// Puts documents into the user's @p collection, beside the running server.
    void put(const QString &collection, const QHash<QString, QJsonObject> &documents) const
    {
        Cloud::Database database(folder.filePath(u"cloud/library.sqlite"_s));
        ASSERT_TRUE(database.open());
        Cloud::Transaction transaction(database);
        for (auto document = documents.cbegin(); document != documents.cend(); ++document)
            Cloud::Documents(database).put(
                u"artifacts/%1/users/%2/%3"_s.arg(configuration.logicalLibraryAppID, userID, collection),
                document.key(), document.value(), Cloud::systemTime());
        transaction.commit();
    }

    /// Adds @p count skills with a text of @p size characters, beside the running server.
    void addSkills(int count, qsizetype size) const
    {
        const QJsonObject text{{u"stringValue"_s, QString(size, u'x')}};
        QHash<QString, QJsonObject> documents;
        for (int i = 0; i < count; ++i)
            documents.insert(u"large-%1"_s.arg(i), {{u"text"_s, text}});
        put(u"skills"_s, documents);
    }

    QString userID;
    LocalCloud cloud{{.dataFolder = folder.filePath(u"cloud"_s),
                      .projectID = configuration.firebase.projectID,
                      .apiKey = configuration.firebase.apiKey,
                      .libraryAppID = configuration.logicalLibraryAppID,
                      .clientID = configuration.firebase.clientID,
                      .redirectScheme = configuration.firebase.reversedClientID}};
};

} // namespace

TEST_F(LibraryOverLocalCloudTest, theStarterLibraryArrives)
{
    EXPECT_FALSE(store().categories().isEmpty());
    EXPECT_FALSE(store().prompts().isEmpty());
    EXPECT_FALSE(store().skills().isEmpty());
    for (const PromptItem &prompt : store().prompts()) {
        EXPECT_TRUE(appState->categoriesByID().contains(prompt.categoryID)) << qPrintable(prompt.title);
        EXPECT_FALSE(prompt.text.isEmpty());
        EXPECT_TRUE(prompt.createdAt);
    }
}

TEST_F(LibraryOverLocalCloudTest, aRefreshOfAnUnchangedLibraryAnnouncesNoList)
{
    int changes = 0;
    QObject::connect(&store(), &LibraryStore::promptsChanged, &store(), [&] { ++changes; });
    refreshAfterTheInterval();
    EXPECT_TRUE(waitUntil([this] { return store().syncState() == SyncState::synced(time); }));
    EXPECT_EQ(changes, 0);
}

TEST_F(LibraryOverLocalCloudTest, whatIsCreatedIsStillThereAfterARefreshAndARestart)
{
    const QString text = u"\"Hi\" {{name}}\n\t🎉"_s + QString(1 << 18, u'é');
    const auto category = await(appState->createCategory(u"Zebra"_s, u"#8b5cf6"_s));
    ASSERT_TRUE(category.value) << qPrintable(category.problem);
    const auto prompt = await(appState->createPrompt(u"Mail"_s, text, category.value->id));
    ASSERT_TRUE(prompt.value) << qPrintable(prompt.problem);
    const auto skill = await(appState->createSkill(u"Review"_s, u"Look."_s, u"review.md"_s));
    ASSERT_TRUE(skill.value) << qPrintable(skill.problem);
    EXPECT_EQ(prompt.value->text, text);
    EXPECT_EQ(prompt.value->createdAt, time);
    EXPECT_EQ(skill.value->sourceFilename, u"review.md"_s);

    start();
    ASSERT_TRUE(waitForLibrary());
    EXPECT_TRUE(store().categories().contains(*category.value));
    EXPECT_TRUE(store().prompts().contains(*prompt.value));
    EXPECT_TRUE(store().skills().contains(*skill.value));
}

TEST_F(LibraryOverLocalCloudTest, theRefreshAfterACreationFindsTheSame)
{
    const auto prompt = await(appState->createPrompt(u"Mail"_s, u"Hi"_s, u"c"_s));
    ASSERT_TRUE(prompt.value) << qPrintable(prompt.problem);
    const QList<PromptItem> shown = store().prompts();
    time = time.addSecs(1);
    EXPECT_TRUE(waitUntil([this] { return store().syncState() == SyncState::synced(time); }));
    EXPECT_EQ(store().prompts(), shown);
}

TEST_F(LibraryOverLocalCloudTest, everyKindOfItemIsShared)
{
    await(appState->share(store().prompts().first()));
    EXPECT_EQ(appState->lastInsertionResult()->message, u"Share link copied to clipboard."_s);
    const QString first = pasteboard.text();
    await(appState->share(store().skills().first()));
    EXPECT_EQ(appState->lastInsertionResult()->message, u"Share link copied to clipboard."_s);
    await(appState->share(store().categories().first()));
    EXPECT_EQ(appState->lastInsertionResult()->message, u"Share link copied to clipboard."_s);
    await(appState->share(PromptCategory{.id = u"empty"_s, .name = u"Empty"_s}));
    EXPECT_EQ(appState->lastInsertionResult()->message, u"Share link copied to clipboard."_s);
    time = time.addMSecs(1);
    await(appState->share(store().prompts().first()));
    EXPECT_NE(pasteboard.text(), first);
}

TEST_F(LibraryOverLocalCloudTest, valuesOfEveryTypeAreTakenAsTheyComeAndHideNothingElse)
{
    const QJsonObject text{{u"stringValue"_s, u"Text"_s}};
    const QJsonObject map{{u"fields"_s, QJsonObject{{u"a"_s, text}}}};
    const QJsonObject nested{{u"fields"_s, QJsonObject{{u"m"_s, QJsonObject{{u"mapValue"_s, map}}}}}};
    const QHash<QString, QJsonValue> values{
        {u"nullValue"_s, QJsonValue::Null},
        {u"booleanValue"_s, true},
        {u"integerValue"_s, u"9223372036854775807"_s},
        {u"doubleValue"_s, 1.5},
        {u"timestampValue"_s, u"2024-05-01T09:30:12.345Z"_s},
        {u"stringValue"_s, u"Text"_s},
        {u"bytesValue"_s, u"AAEC"_s},
        {u"referenceValue"_s, u"projects/p/databases/(default)/documents/a/b"_s},
        {u"geoPointValue"_s, QJsonObject{{u"latitude"_s, 48.1}, {u"longitude"_s, 11.6}}},
        {u"arrayValue"_s, QJsonObject{{u"values"_s, QJsonArray{text, QJsonObject{{u"mapValue"_s, map}}}}}},
        {u"mapValue"_s, nested}};
    QHash<QString, QJsonObject> documents;
    for (auto value = values.cbegin(); value != values.cend(); ++value) {
        const QJsonObject typed{{value.key(), value.value()}};
        documents.insert(value.key(), {{u"title"_s, typed},
                                       {u"text"_s, typed},
                                       {u"order"_s, typed},
                                       {u"createdAt"_s, typed},
                                       {u"unknown"_s, typed}});
    }
    const QList<PromptItem> before = store().prompts();
    put(u"prompts"_s, documents);
    refreshAfterTheInterval();
    EXPECT_TRUE(waitUntil([this] { return store().syncState() == SyncState::synced(time); }));
    EXPECT_EQ(store().prompts().size(), before.size() + documents.size());
    for (const PromptItem &prompt : store().prompts()) {
        const bool isNew = documents.contains(prompt.id);
        EXPECT_TRUE(isNew || before.contains(prompt)) << qPrintable(prompt.id);
        EXPECT_EQ(isNew && prompt.text == u"Text"_s, prompt.id == u"stringValue"_s) << qPrintable(prompt.id);
    }
}

TEST_F(LibraryOverLocalCloudTest, aLibraryOfManyLargeSkillsArrivesWhole)
{
    const qsizetype before = store().skills().size();
    addSkills(40, 1024 * 1024);
    refreshAfterTheInterval();
    EXPECT_TRUE(waitUntil([this] { return store().syncState() == SyncState::synced(time); },
                          std::chrono::seconds(60)));
    EXPECT_EQ(store().skills().size(), before + 40);
}

TEST_F(LibraryOverLocalCloudTest, aLibraryTooLargeToLoadIsReportedAndNotShownInPart)
{
    const QList<SkillItem> shown = store().skills();
    addSkills(90, 1800 * 1024); // more than the client takes, and more than the server puts on a page
    refreshAfterTheInterval();
    EXPECT_TRUE(waitUntil([this] { return store().syncState().kind == SyncState::Kind::error; },
                          std::chrono::seconds(60)));
    EXPECT_EQ(store().syncState().message, u"The answer of 127.0.0.1 is too large."_s);
    EXPECT_EQ(store().skills(), shown);
}
