// SPDX-License-Identifier: GPL-3.0-or-later
#include "LibraryPage.h"
#include "PickerRowActions.h"
#include "PickerStage.h"
#include "ResultLine.h"
#include "ShareConfirmationBannerView.h"
#include "SidebarList.h"
#include "StatusCard.h"
#include "ThemedButton.h"

#include <QElapsedTimer>

#include <gtest/gtest.h>

namespace {

using namespace std::chrono_literals;

class SharingTest : public testing::Test
{
protected:
    PickerStage stage;

    void openSample()
    {
        stage.desk.addSampleLibrary();
        stage.open();
    }

    ShareConfirmationBannerView &banner() { return stage.view().banner(); }
    ThemedButton &share() { return stage.list().actions().shareButton(); }

    void click(ThemedButton &button) { QTest::mouseClick(&button, Qt::LeftButton); }

    void waitForBanner(const QString &title)
    {
        ASSERT_TRUE(waitUntil([&] { return banner().isVisible() && banner().title() == title; }));
    }

    QString clipboard() { return stage.desk.pasteboard.text(); }
};

// Requests

TEST_F(SharingTest, aPromptIsSharedFromItsRowAndConfirmedAtTheTopOfThePanel)
{
    openSample();
    EXPECT_EQ(share().accessibleName(), u"Share");
    EXPECT_EQ(share().toolTip(), u"Share Prompt");
    click(share());
    waitForBanner(QStringLiteral("Cold outreach follow-up"));
    EXPECT_EQ(banner().message(), u"Link copied to clipboard");
    EXPECT_EQ(banner().link(), stage.appState().shareConfirmation()->url.toString());
    EXPECT_EQ(clipboard(), stage.appState().shareConfirmation()->url.toString(QUrl::FullyEncoded));
    EXPECT_LT(banner().y(), 10);
    EXPECT_EQ(stage.page().resultLine().card().title(), u"Share link copied to clipboard.");
    EXPECT_TRUE(stage.controller->isPickerVisible());
    EXPECT_TRUE(stage.search().hasFocus());
}

TEST_F(SharingTest, aSkillIsSharedFromItsRow)
{
    openSample();
    stage.key(Qt::Key_End, Qt::ControlModifier);
    EXPECT_EQ(share().toolTip(), u"Share Skill");
    click(share());
    waitForBanner(QStringLiteral("Senior code reviewer"));
}

TEST_F(SharingTest, theButtonShowsProgressAndIsDisabledUntilTheAnswer)
{
    openSample();
    stage.desk.server.isHolding = true;
    click(share());
    EXPECT_EQ(share().accessibleName(), u"Sharing");
    EXPECT_TRUE(share().isBusy());
    EXPECT_FALSE(share().isEnabled());
    ASSERT_TRUE(waitUntil([&] { return stage.desk.server.heldWrites() == 1; }));
    stage.desk.server.release();
    ASSERT_TRUE(waitUntil([&] { return share().isEnabled(); }));
    EXPECT_EQ(share().accessibleName(), u"Share");
    EXPECT_FALSE(share().isBusy());
    EXPECT_TRUE(banner().isVisible());
}

TEST_F(SharingTest, otherItemsCanBeSharedMeanwhileButNotTheSameOneTwice)
{
    openSample();
    stage.desk.server.isHolding = true;
    click(share());
    stage.key(Qt::Key_Down);
    EXPECT_EQ(share().accessibleName(), u"Share");
    EXPECT_TRUE(share().isEnabled());
    click(share());
    stage.key(Qt::Key_Up);
    EXPECT_EQ(share().accessibleName(), u"Sharing");
    click(share()); // disabled
    ASSERT_TRUE(waitUntil([&] { return stage.desk.server.heldWrites() == 2; }));
    // The same item in another list is the same item.
    stage.view().setRoute(PickerPanelRoute::library);
    const ThemedButton &inLibrary = stage.view().libraryPage().list().actions().shareButton();
    EXPECT_EQ(inLibrary.accessibleName(), u"Sharing");
    EXPECT_FALSE(inLibrary.isEnabled());
    stage.desk.server.release();
    ASSERT_TRUE(waitUntil([&] { return inLibrary.isEnabled(); }));
    EXPECT_EQ(stage.desk.server.heldWrites(), 0);
}

TEST_F(SharingTest, aPromptAndASkillWithTheSameIdentifierAreTwoItems)
{
    stage.desk.server.addPrompt(QStringLiteral("x"), QStringLiteral("A prompt"), QStringLiteral("text"));
    stage.desk.server.addSkill(QStringLiteral("x"), QStringLiteral("A skill"), QStringLiteral("text"));
    stage.open();
    stage.desk.server.isHolding = true;
    click(share());
    stage.key(Qt::Key_Down);
    EXPECT_TRUE(share().isEnabled());
    stage.desk.server.release();
    waitForBanner(QStringLiteral("A prompt"));
}

TEST_F(SharingTest, aCategoryIsSharedFromTheSidebar)
{
    openSample();
    stage.view().setRoute(PickerPanelRoute::library);
    LibraryPage &library = stage.view().libraryPage();
    library.setFilter(LibraryFilter::category(QStringLiteral("hiring")));
    ThemedButton &button = library.sidebar().shareButton();
    stage.desk.server.isHolding = true;
    click(button);
    EXPECT_EQ(button.accessibleName(), u"Sharing");
    EXPECT_FALSE(button.isEnabled());
    library.setFilter(LibraryFilter::category(QStringLiteral("outreach")));
    EXPECT_EQ(button.accessibleName(), u"Share Category");
    EXPECT_TRUE(button.isEnabled());
    library.setFilter(LibraryFilter::category(QStringLiteral("hiring")));
    EXPECT_FALSE(button.isEnabled());
    ASSERT_TRUE(waitUntil([&] { return stage.desk.server.heldWrites() == 1; }));
    stage.desk.server.release();
    waitForBanner(QStringLiteral("Hiring"));
    EXPECT_TRUE(button.isEnabled());
    EXPECT_EQ(library.resultLine().card().title(), u"Share link copied to clipboard.");
}

TEST_F(SharingTest, aFailureIsToldAndRemovesAnEarlierBanner)
{
    openSample();
    click(share());
    waitForBanner(QStringLiteral("Cold outreach follow-up"));
    stage.desk.server.refusal = QStringLiteral("You may not do that.");
    click(share());
    ASSERT_TRUE(waitUntil([&] { return !banner().isVisible(); }));
    const StatusCard &card = stage.page().resultLine().card();
    EXPECT_EQ(card.title(), u"Couldn't create share link: " + *stage.desk.server.refusal);
    EXPECT_EQ(card.tint(), StatusCard::Tint::danger);
    EXPECT_TRUE(share().isEnabled());
}

TEST_F(SharingTest, aClipboardThatRefusesTheLinkShowsNoBanner)
{
    openSample();
    stage.desk.pasteboard.refusesText = true;
    click(share());
    ASSERT_TRUE(waitUntil([&] { return stage.appState().lastInsertionResult().has_value(); }));
    EXPECT_FALSE(banner().isVisible());
    EXPECT_EQ(stage.page().resultLine().card().title(), u"Share link created, but Brevix couldn't copy it.");
}

TEST_F(SharingTest, closingEverythingWhileARequestRunsIsSafe)
{
    openSample();
    stage.desk.server.isHolding = true;
    click(share());
    ASSERT_TRUE(waitUntil([&] { return stage.desk.server.heldWrites() == 1; }));
    stage.controller.reset();
    stage.desk.server.release();
    EXPECT_TRUE(waitUntil([&] { return stage.appState().shareConfirmation().has_value(); }));
}

// Banner

TEST_F(SharingTest, dismissClosesTheBannerAtOnce)
{
    openSample();
    click(share());
    waitForBanner(QStringLiteral("Cold outreach follow-up"));
    EXPECT_EQ(banner().dismissButton().accessibleName(), u"Dismiss");
    click(banner().dismissButton());
    EXPECT_FALSE(banner().isVisible());
    EXPECT_FALSE(stage.appState().shareConfirmation());
}

TEST_F(SharingTest, theBannerGoesByItselfAfterFiveSeconds)
{
    openSample();
    click(share());
    waitForBanner(QStringLiteral("Cold outreach follow-up"));
    QElapsedTimer shown;
    shown.start();
    ASSERT_TRUE(waitUntil([&] { return !banner().isVisible(); }, 8s));
    EXPECT_GE(shown.elapsed(), 4800);
    EXPECT_LE(shown.elapsed(), 6500);
    EXPECT_FALSE(stage.appState().shareConfirmation());
}

TEST_F(SharingTest, aSecondShareShowsItsLinkForFiveSecondsOfItsOwn)
{
    openSample();
    click(share());
    waitForBanner(QStringLiteral("Cold outreach follow-up"));
    const QString firstLink = banner().link();
    QElapsedTimer sinceFirst;
    sinceFirst.start();
    EXPECT_FALSE(waitUntil([&] { return !banner().isVisible(); }, 2500ms));
    stage.key(Qt::Key_Down);
    click(share());
    waitForBanner(QStringLiteral("Follow-up after interview"));
    EXPECT_NE(banner().link(), firstLink);
    QElapsedTimer sinceSecond;
    sinceSecond.start();
    ASSERT_TRUE(waitUntil([&] { return sinceFirst.elapsed() > 5300; }, 8s));
    EXPECT_TRUE(banner().isVisible());
    ASSERT_TRUE(waitUntil([&] { return !banner().isVisible(); }, 8s));
    EXPECT_GE(sinceSecond.elapsed(), 4800);
}

TEST_F(SharingTest, leavingThePanelStopsTheTimer)
{
    openSample();
    click(share());
    waitForBanner(QStringLiteral("Cold outreach follow-up"));
    stage.controller->closePicker();
    EXPECT_FALSE(waitUntil([&] { return !stage.appState().shareConfirmation(); }, 5300ms))
        << "nobody has seen it long enough";
    stage.controller->showPicker();
    EXPECT_TRUE(banner().isVisible());
    ASSERT_TRUE(waitUntil([&] { return !banner().isVisible(); }, 8s));
}

TEST_F(SharingTest, theBannerStaysOverEveryScreenOfThePanel)
{
    openSample();
    click(share());
    waitForBanner(QStringLiteral("Cold outreach follow-up"));
    stage.view().setRoute(PickerPanelRoute::library);
    EXPECT_TRUE(banner().isVisible());
    EXPECT_TRUE(stage.view().rect().adjusted(-1, -1, 1, 1).contains(banner().geometry()));
}

TEST_F(SharingTest, anInsertionOrACopyTakesTheBannerAway)
{
    openSample();
    stage.key(Qt::Key_Down);
    click(share());
    waitForBanner(QStringLiteral("Follow-up after interview"));
    stage.key(Qt::Key_Return, Qt::ControlModifier);
    EXPECT_FALSE(banner().isVisible());
}

TEST_F(SharingTest, theBannerShowsTitlesAsTheyStandAndElidesTheLinkInItsMiddle)
{
    stage.desk.server.addPrompt(QStringLiteral("p"), QStringLiteral("<b>bold</b>\nsecond line"),
                                QStringLiteral("text"));
    stage.open();
    click(share());
    waitForBanner(QStringLiteral("<b>bold</b> second line"));
    EXPECT_TRUE(banner().accessibleDescription().startsWith(u"http"));
}

} // namespace
