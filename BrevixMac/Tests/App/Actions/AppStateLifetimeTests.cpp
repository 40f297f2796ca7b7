// SPDX-License-Identifier: GPL-3.0-or-later
#include "AppStateFixture.h"

// The state goes while something is under way: nothing may touch it any more, and nothing may be left behind
// in the session.

namespace {

using namespace std::chrono_literals;

class AppStateLifetimeTest : public AppStateFixture
{
protected:
    AppStateLifetimeTest()
    {
        start();
        switchTo(editorPid);
        pasteboard.content = {InMemoryPasteboard::textItem(QStringLiteral("the user's"))};
    }

    /// Lets everything end that still runs.
    static void settle(std::chrono::milliseconds time = 100ms)
    {
        waitUntil([] { return false; }, time);
    }

    const PromptItem item = prompt(QStringLiteral("p"), QStringLiteral("text"));
};

} // namespace

TEST_F(AppStateLifetimeTest, aStateDestroyedDuringACaptureShowsNoPicker)
{
    tree.delay = 10ms;
    state->handlePaletteInvocation(true);

    state.reset();
    settle();

    EXPECT_EQ(presented, 0);
}

TEST_F(AppStateLifetimeTest, aStateDestroyedAtAnyRoundTripOfACaptureShowsNoPicker)
{
    tree.delay = 3ms;
    workspace.frontmost = ownPid;
    focus(ownField); // the longest way: this application's own field first, then the last application's
    for (int roundTrip = 1; roundTrip <= 4; ++roundTrip) {
        start();
        workspace.bringToFront(editorPid);
        workspace.frontmost = ownPid;
        int requests = 0;
        tree.onRequest = [&requests](const QString &) { ++requests; };
        state->handlePaletteInvocation(true);
        ASSERT_TRUE(waitUntil([&] { return requests >= roundTrip; }));

        state.reset();
        settle(40ms);
    }
    EXPECT_EQ(presented, 0);
}

TEST_F(AppStateLifetimeTest, aStateDestroyedDuringADirectInsertionRecordsNothing)
{
    openPicker();
    tree.delay = 10ms;
    state->insertRaw(item);

    state.reset();
    settle();

    EXPECT_EQ(dismissed, 0);
    EXPECT_TRUE(RecentUsageStore(defaults).recentIDs().isEmpty());
}

TEST_F(AppStateLifetimeTest, aStateDestroyedDuringAPasteGivesTheClipboardBack)
{
    for (const bool isChordPosted : {false, true}) {
        start();
        state->preferences().setPreferredInsertionMethod(InsertionMethod::clipboardPaste);
        openPicker();
        keyEvents.postedChords.clear();
        state->insertRaw(item);
        ASSERT_EQ(pasteboard.text(), item.text);
        ASSERT_TRUE(waitUntil([&] { return keyEvents.postedChords.isEmpty() != isChordPosted; }));

        state.reset();

        EXPECT_TRUE(waitUntil([this] { return pasteboard.text() == QStringLiteral("the user's"); }, 170ms));
        EXPECT_TRUE(RecentUsageStore(defaults).recentIDs().isEmpty());
    }
}

TEST_F(AppStateLifetimeTest, aStateDestroyedDuringASkillInsertionRecordsNothing)
{
    openPicker();
    tree.delay = 10ms;
    state->use(skill(QStringLiteral("s"), QStringLiteral("text")));

    state.reset();
    settle();

    EXPECT_EQ(dismissed, 0);
    EXPECT_TRUE(RecentUsageStore(defaults).recentSkillIDs().isEmpty());
}

TEST_F(AppStateLifetimeTest, aStateDestroyedBeforeAPendingFocusCaptureReadsNothing)
{
    eventMonitor.post({.type = MonitoredEvent::pointerRelease, .position = {}});
    int requests = 0;
    tree.onRequest = [&requests](const QString &) { ++requests; };

    state.reset();
    settle(200ms);

    EXPECT_EQ(requests, 0);
}

TEST_F(AppStateLifetimeTest, aStateDestroyedDuringAFocusCaptureLetsItEnd)
{
    tree.delay = 5ms;
    int requests = 0;
    tree.onRequest = [&requests](const QString &) { ++requests; };
    eventMonitor.post({.type = MonitoredEvent::keyRelease, .position = {}});
    ASSERT_TRUE(waitUntil([&requests] { return requests > 0; }));

    state.reset();
    settle();
}

TEST_F(AppStateLifetimeTest, aHotkeyPressThatWaitsForADestroyedStateDoesNothing)
{
    Q_EMIT hotKeys.pressed();

    state.reset();
    settle();

    EXPECT_EQ(presented, 0);
    EXPECT_EQ(hotKeys.registered, std::nullopt);
}

TEST_F(AppStateLifetimeTest, aStateDestroyedWhileTheLibraryLoadsPublishesNothing)
{
    state.reset();
    storeSession();
    start();
    ASSERT_EQ(state->libraryStore().syncState().kind, SyncState::Kind::loading);

    state.reset();
    settle();
}
