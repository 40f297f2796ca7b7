// SPDX-License-Identifier: GPL-3.0-or-later
#include "AppStateFixture.h"

using namespace Qt::StringLiterals;

namespace {

using Fault = FaultyServer::Reply::Fault;

class AppStateSharingTest : public AppStateFixture
{
protected:
    AppStateSharingTest()
    {
        configuration.publicShareBaseURL = QUrl(u"https://share.example/app/"_s);
        startWithLibrary();
    }

    /// The last piece of the address at which @p contentID is published.
    QByteArray document(const QByteArray &contentID) const
    {
        return "user_" + contentID + '_' + QByteArray::number(time.toMSecsSinceEpoch());
    }

    QUrl link(const QByteArray &contentID, const QByteArray &item = "promptId") const
    {
        return QUrl::fromEncoded("https://share.example/app/public?" + item + '=' + document(contentID));
    }

    static InsertionResult copied()
    {
        return InsertionResult::success(InsertionMethod::copiedOnly, u"Share link copied to clipboard."_s);
    }

    static InsertionResult failed(const QString &message)
    {
        return InsertionResult::failure(InsertionFailureReason::unknown, message);
    }

    PromptItem item = prompt(u"p"_s, u"text"_s);
};

} // namespace

TEST_F(AppStateSharingTest, theLinkIsOnTheClipboardAndInTheBanner)
{
    await(state->share(item));
    EXPECT_EQ(pasteboard.text(), link("p").toString());
    EXPECT_EQ(state->lastInsertionResult(), copied());
    ASSERT_TRUE(state->shareConfirmation());
    EXPECT_FALSE(state->shareConfirmation()->id.isNull());
    EXPECT_EQ(state->shareConfirmation()->title, u"Title of p"_s);
    EXPECT_EQ(state->shareConfirmation()->url, link("p"));
    EXPECT_EQ(state->shareConfirmation()->createdAt, time);
}

TEST_F(AppStateSharingTest, skillsAndCategoriesAreSharedTheSameWay)
{
    await(state->share(skill(u"s"_s, u"text"_s)));
    EXPECT_EQ(pasteboard.text(), link("s").toString());
    EXPECT_EQ(state->shareConfirmation()->title, u"Title of s"_s);

    await(state->share(PromptCategory{.id = u"c"_s, .name = u"Work"_s}));
    EXPECT_EQ(pasteboard.text(), link("c", "categoryId").toString());
    EXPECT_EQ(state->shareConfirmation()->title, u"Work"_s);
    EXPECT_EQ(state->lastInsertionResult(), copied());
}

TEST_F(AppStateSharingTest, theLinkIsCopiedAsItIsTyped)
{
    await(state->share(prompt(u"ü 1&2"_s, u"text"_s)));
    EXPECT_TRUE(pasteboard.text().contains(u"promptId=user_%C3%BC%201%262_"_s))
        << pasteboard.text().toStdString();
}

TEST_F(AppStateSharingTest, theEarlierOutcomeIsClearedAtOnceButTheBannerStays)
{
    await(state->share(item));
    const auto banner = state->shareConfirmation();
    refuseInsertion();
    resultOf([this] { state->insertRaw(item); });
    ASSERT_TRUE(state->insertionRecovery());
    server.reply(document("p"), {.fault = Fault::stall});
    await(state->share(skill(u"s"_s, u"text"_s)));

    detach(state->share(item), "sharing");

    EXPECT_EQ(state->lastInsertionResult(), std::nullopt);
    EXPECT_EQ(state->insertionRecovery(), std::nullopt);
    EXPECT_TRUE(state->shareConfirmation());
}

TEST_F(AppStateSharingTest, openingThePickerTakesTheBannerAway)
{
    await(state->share(item));
    ASSERT_TRUE(state->shareConfirmation());
    openPicker();
    EXPECT_FALSE(state->shareConfirmation());
    EXPECT_FALSE(state->lastInsertionResult());
}

TEST_F(AppStateSharingTest, aFailedShareRemovesTheEarlierBanner)
{
    await(state->share(item));
    ASSERT_TRUE(state->shareConfirmation());
    const QString before = pasteboard.text();
    server.reply(document("p"), {.status = 403, .body = R"({"error": {"message": "PERMISSION_DENIED"}})"});
    await(state->share(item));
    EXPECT_EQ(state->shareConfirmation(), std::nullopt);
    EXPECT_EQ(state->lastInsertionResult(), failed(u"Couldn't create share link: PERMISSION_DENIED"_s));
    EXPECT_EQ(pasteboard.text(), before);
}

TEST_F(AppStateSharingTest, everyFailureIsTold)
{
    const QString host = server.origin().host();
    const std::pair<FaultyServer::Reply, QString> rows[] = {
        {{.status = 500, .body = ""}, u"Firestore returned HTTP 500."_s},
        {{.status = 429, .body = "slow down"}, u"slow down"_s},
        {{.status = 400, .body = R"({"error": {"message": ""}})"}, QString()},
        {{.fault = Fault::close}, u"The server %1 closed the connection without a valid answer."_s.arg(host)},
    };
    for (const auto &[reply, text] : rows) {
        server.reply(document("p"), reply);
        await(state->share(item));
        EXPECT_EQ(state->lastInsertionResult(), failed(u"Couldn't create share link: "_s + text));
        EXPECT_EQ(state->libraryStore().syncState().kind, SyncState::Kind::synced);
    }
}

TEST_F(AppStateSharingTest, withoutAUserItSaysSo)
{
    state->signOut();
    await(state->share(item));
    EXPECT_EQ(state->lastInsertionResult(),
              failed(u"Couldn't create share link: Sign in before creating or sharing prompts, skills, or "
                     "categories."_s));
}

TEST_F(AppStateSharingTest, aClipboardThatRefusesTheLinkGetsNoBanner)
{
    await(state->share(item));
    pasteboard.refusesText = true;
    await(state->share(item));
    EXPECT_EQ(state->shareConfirmation(), std::nullopt);
    EXPECT_EQ(state->lastInsertionResult(), failed(u"Share link created, but Brevix couldn't copy it."_s));
    EXPECT_EQ(server.documents.size(), 1) << "it is published all the same";
}

TEST_F(AppStateSharingTest, theLaterOfTwoToFinishIsShown)
{
    server.replyOnce(document("p"), {.delay = std::chrono::milliseconds(60)});
    QCoro::Task<> slow = state->share(item);
    ASSERT_TRUE(waitUntil([this] { return server.count(document("p")) == 1; }));
    await(state->share(prompt(u"q"_s, u"text"_s)));
    EXPECT_EQ(state->shareConfirmation()->title, u"Title of q"_s);
    await(std::move(slow));
    EXPECT_EQ(state->shareConfirmation()->title, u"Title of p"_s);
    EXPECT_EQ(pasteboard.text(), link("p").toString());
}

TEST_F(AppStateSharingTest, onlyTheBannerThatIsShownCanBeDismissed)
{
    await(state->share(item));
    const auto older = state->shareConfirmation();
    await(state->share(item));
    const auto newer = state->shareConfirmation();
    EXPECT_NE(older->id, newer->id);

    state->dismissShareConfirmation(older);
    EXPECT_EQ(state->shareConfirmation(), newer);
    state->dismissShareConfirmation(newer);
    EXPECT_EQ(state->shareConfirmation(), std::nullopt);
    state->dismissShareConfirmation(newer);
    EXPECT_EQ(state->shareConfirmation(), std::nullopt);

    await(state->share(item));
    state->dismissShareConfirmation({});
    EXPECT_EQ(state->shareConfirmation(), std::nullopt);
    EXPECT_EQ(state->lastInsertionResult(), copied()) << "only the banner goes";
}

TEST_F(AppStateSharingTest, signingOutMeanwhilePublishesNothing)
{
    server.reply(document("p"), {.fault = Fault::stall});
    QCoro::Task<> share = state->share(item);
    ASSERT_TRUE(waitUntil([this] { return server.count(document("p")) == 1; }));
    state->signOut();
    await(std::move(share));
    EXPECT_EQ(state->lastInsertionResult(), std::nullopt);
    EXPECT_EQ(state->shareConfirmation(), std::nullopt);
    EXPECT_EQ(pasteboard.text(), QString());
}

TEST_F(AppStateSharingTest, aStateThatDiesMeanwhileEndsIt)
{
    server.reply(document("p"), {.fault = Fault::stall});
    QCoro::Task<> share = state->share(item);
    ASSERT_TRUE(waitUntil([this] { return server.count(document("p")) == 1; }));
    state.reset();
    await(std::move(share));
    EXPECT_EQ(pasteboard.text(), QString());
}
