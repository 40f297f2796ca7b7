// SPDX-License-Identifier: GPL-3.0-or-later
#include "AppDelegate.h"

#include "AppStateFixture.h"

namespace {

using namespace std::chrono_literals;

class AppDelegateTest : public AppStateFixture
{
protected:
    AppDelegateTest()
    {
        start();
        switchTo(editorPid);
        openPicker();
        delegate = std::make_unique<AppDelegate>(*state, pasteboard, [this] { ++ends; });
    }

    void insert() { state->insertRaw(prompt(QStringLiteral("p"), QStringLiteral("text"))); }

    std::unique_ptr<AppDelegate> delegate;
    int ends = 0;
};

} // namespace

TEST_F(AppDelegateTest, withNothingUnderWayTheEndComesAtOnce)
{
    delegate->quit();
    EXPECT_EQ(ends, 1);
}

TEST_F(AppDelegateTest, anInsertionIsWaitedFor)
{
    tree.delay = 20ms;
    insert();
    delegate->quit();
    EXPECT_EQ(ends, 0);
    ASSERT_TRUE(waitUntil([&] { return ends == 1; }));
    EXPECT_FALSE(state->isInserting());
    EXPECT_EQ(field(editorField).value, QStringLiteral("text"));
}

TEST_F(AppDelegateTest, theClipboardIsWaitedForAfterAPaste)
{
    field(editorField).isSettable = false;
    pasteboard.restoresLate = true;
    insert();
    delegate->quit();
    ASSERT_TRUE(waitUntil([&] { return !state->isInserting(); }));
    EXPECT_TRUE(pasteboard.isRestorePending());
    EXPECT_EQ(ends, 0);
    pasteboard.finishRestoring();
    EXPECT_EQ(ends, 1);
}

TEST_F(AppDelegateTest, aRestoreThatIsStillToComeIsWaitedForAlone)
{
    field(editorField).isSettable = false;
    pasteboard.restoresLate = true;
    insert();
    ASSERT_TRUE(waitUntil([&] { return !state->isInserting(); }));
    delegate->quit();
    EXPECT_EQ(ends, 0);
    pasteboard.finishRestoring();
    EXPECT_EQ(ends, 1);
}

TEST_F(AppDelegateTest, whoAsksTwiceIsNotKeptWaiting)
{
    tree.delay = 20ms;
    insert();
    delegate->quit();
    EXPECT_EQ(ends, 0);
    delegate->quit();
    EXPECT_EQ(ends, 1);
    // What is still on its way in the accessibility tree must not outlive it.
    ASSERT_TRUE(waitUntil([&] { return !state->isInserting(); }));
}
