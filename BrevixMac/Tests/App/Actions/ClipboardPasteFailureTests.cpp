// SPDX-License-Identifier: GPL-3.0-or-later
#include "InsertionServiceFixture.h"

#include <QTimer>

namespace {

using namespace std::chrono_literals;
using testing::ElementsAre;

} // namespace

// What can go wrong with a paste

TEST_F(ClipboardPasteTest, withoutPostingTheClipboardIsUntouched)
{
    deny(false, true);

    EXPECT_EQ(insertInto(target()), postingNotAllowed);

    expectClipboardUntouched();
    EXPECT_TRUE(workspace.activations.isEmpty());
}

TEST_F(ClipboardPasteTest, anApplicationThatHasQuitCannotBeReactivatedAndTheClipboardIsBackAtOnce)
{
    const auto into = target();
    workspace.running.remove(editorPid);

    EXPECT_EQ(insertInto(into), notReactivated(QStringLiteral("Editor")));

    expectClipboardKept();
    EXPECT_THAT(pasteboard.history, ElementsAre(u"items"_qs, u"setTransientString"_qs, u"restore"_qs));
    EXPECT_LT(elapsed(), 180ms) << "a failure does not wait";
    EXPECT_TRUE(keyEvents.postedChords.isEmpty());
}

TEST_F(ClipboardPasteTest, aTargetWithoutAnApplicationAndANameIsThePreviousApp)
{
    const auto into = target();
    into->application.reset();
    into->applicationName.reset();

    EXPECT_EQ(insertInto(into), notReactivated(QStringLiteral("the previous app")));

    expectClipboardKept();
    EXPECT_TRUE(workspace.activations.isEmpty());
    EXPECT_TRUE(keyEvents.postedChords.isEmpty());
}

TEST_F(ClipboardPasteTest, aRefusedActivationPostsNothing)
{
    workspace.refusesActivation = true;

    EXPECT_EQ(insertInto(target()).message, reactivationMessage);

    expectClipboardKept();
    EXPECT_TRUE(keyEvents.postedChords.isEmpty());
}

TEST_F(ClipboardPasteTest, aUserWhoHasMovedOnBeforeTheChordGetsNothingPasted)
{
    workspace.onActivation = [this] {
        QTimer::singleShot(50ms, &workspace, [this] { workspace.bringToFront(otherPid); });
    };

    EXPECT_EQ(insertInto(target()), notReactivated(QStringLiteral("Editor")));

    expectClipboardKept();
    EXPECT_TRUE(keyEvents.postedChords.isEmpty());
}

TEST_F(ClipboardPasteTest, aDesktopWithNothingInFrontGetsNothingPasted)
{
    workspace.onActivation = [this] { workspace.frontmost.reset(); };

    EXPECT_EQ(insertInto(target()), notReactivated(QStringLiteral("Editor")));

    expectClipboardKept();
    EXPECT_TRUE(keyEvents.postedChords.isEmpty());
}

TEST_F(ClipboardPasteTest, anotherWindowOfTheSameProcessGetsNothingPasted)
{
    workspace.running[editorPid].window = 7;
    const auto into = target();
    workspace.onActivation = [this] { workspace.running[editorPid].window = 8; };

    EXPECT_EQ(insertInto(into), notReactivated(QStringLiteral("Editor")));

    expectClipboardKept();
    EXPECT_TRUE(keyEvents.postedChords.isEmpty());
}

TEST_F(ClipboardPasteTest, anotherFieldOfTheSameWindowGetsNothingPasted)
{
    field().isFocused = false;

    EXPECT_EQ(insertInto(target()), notReactivated(QStringLiteral("Editor")));

    expectClipboardKept();
    EXPECT_TRUE(keyEvents.postedChords.isEmpty());
}

TEST_F(ClipboardPasteTest, aFieldThatHasTheFocusOrDoesNotTellIsPastedInto)
{
    for (const std::optional<bool> answer : {std::optional(true), std::optional<bool>()}) {
        field().isFocused = answer;
        EXPECT_EQ(insertInto(target()), pastedInto(QStringLiteral("Editor")));
    }
}

TEST_F(ClipboardPasteTest, aUserWhoMovesOnWhileModifiersAreHeldGetsNothingPasted)
{
    keyEvents.onHeldModifiers = [this] { workspace.bringToFront(otherPid); };

    EXPECT_EQ(insertInto(target()), notReactivated(QStringLiteral("Editor")));

    expectClipboardKept();
    EXPECT_TRUE(keyEvents.postedChords.isEmpty());
}

TEST_F(ClipboardPasteTest, aUserWhoMovesOnAfterTheChordIsNoFailure)
{
    keyEvents.onPaste = [this] { workspace.bringToFront(otherPid); };

    EXPECT_EQ(insertInto(target()), pastedInto(QStringLiteral("Editor")));
    expectClipboardKept();
}

TEST_F(ClipboardPasteTest, aChordThatCannotBePostedIsAFailureAndTheClipboardIsBack)
{
    keyEvents.fails = true;

    EXPECT_EQ(insertInto(target()), postingNotAllowed);

    expectClipboardKept();
    EXPECT_EQ(pasteboard.history.last(), u"restore"_qs);
}

TEST_F(ClipboardPasteTest, aClipboardWhoseOwnerHangsIsNotOverwrittenAndNothingIsPasted)
{
    pasteboard.isOwnerHung = true;

    const InsertionResult result = insertInto(target());

    EXPECT_EQ(result, InsertionResult::failure(InsertionFailureReason::unknown,
                                               u"Brevix couldn't save your clipboard, so nothing was pasted. "
                                               u"Copy instead to replace it."_qs));
    expectClipboardKept();
    EXPECT_THAT(pasteboard.history, ElementsAre(u"items"_qs));
    EXPECT_TRUE(workspace.activations.isEmpty());
    EXPECT_TRUE(keyEvents.postedChords.isEmpty());
}

TEST_F(ClipboardPasteTest, aClipboardThatRefusesTheTextIsPutBackAndNothingIsPasted)
{
    pasteboard.refusesText = true;

    const InsertionResult result = insertInto(target());

    EXPECT_FALSE(result.succeeded);
    EXPECT_EQ(result.failureReason, InsertionFailureReason::unknown);
    expectClipboardKept();
    EXPECT_TRUE(keyEvents.postedChords.isEmpty());
}

TEST_F(ClipboardPasteTest, twoPastesOneAfterTheOtherBothKeepTheClipboard)
{
    EXPECT_TRUE(insertInto(target()).succeeded);
    EXPECT_TRUE(insertInto(target()).succeeded);

    EXPECT_THAT(pastedTexts, ElementsAre(promptText, promptText));
    expectClipboardKept();
}

// The service goes while a paste is under way

TEST_F(ClipboardPasteTest, aServiceDestroyedInTheFirstWaitGivesTheClipboardBack)
{
    auto task = startInsertion(target());
    ASSERT_EQ(pasteboard.text(), promptText);
    ASSERT_TRUE(keyEvents.postedChords.isEmpty());

    service.reset();
    await(std::move(task));

    expectClipboardKept();
    EXPECT_LT(elapsed(), 180ms) << "an interrupted wait is over at once";
}

TEST_F(ClipboardPasteTest, aServiceDestroyedInTheSecondWaitGivesTheClipboardBack)
{
    auto task = startInsertion(target());
    ASSERT_TRUE(waitUntil([this] { return !keyEvents.postedChords.isEmpty(); }));
    ASSERT_EQ(pasteboard.text(), promptText);

    service.reset();
    await(std::move(task));

    expectClipboardKept();
    EXPECT_EQ(keyEvents.postedChords.size(), 1);
}

TEST_F(ClipboardPasteTest, aServiceDestroyedDuringTheActivationGivesTheClipboardBack)
{
    workspace.delay = 10ms;
    auto task = startInsertion(target());
    ASSERT_EQ(pasteboard.text(), promptText);

    service.reset();
    await(std::move(task));

    expectClipboardKept();
}

TEST_F(ClipboardPasteTest, aServiceDestroyedBeforeTheClipboardWasSavedNeitherTakesItNorPastes)
{
    pasteboard.delay = 10ms;
    auto task = startInsertion(target());

    service.reset();
    const InsertionResult result = await(std::move(task));

    EXPECT_FALSE(result.succeeded);
    expectClipboardKept();
    EXPECT_THAT(pasteboard.history, ElementsAre(u"items"_qs));
    EXPECT_TRUE(keyEvents.postedChords.isEmpty());
}
