// SPDX-License-Identifier: GPL-3.0-or-later
#include "LocalCloud/LocalCloud.h"

#include "Support/AppBench.h"
#include "Support/Waiting.h"

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
    time = time.addSecs(45);
    QTimer *const timer = store().findChild<QTimer *>();
    QObject::connect(
        timer, &QTimer::timeout, timer, [timer] { timer->setInterval(LibraryStore::refreshInterval); },
        Qt::SingleShotConnection);
    timer->setInterval(1);
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
