// SPDX-License-Identifier: GPL-3.0-or-later
#include "AppStateFixture.h"

using AppStateSettingsTest = AppStateFixture;

namespace {

const KeyboardShortcut recorded{.keyCode = 0, .modifiers = KeyboardShortcut::option};

}

TEST_F(AppStateSettingsTest, aShortcutThatSomebodyElseHoldsLeavesTheOldOneAndSaysSo)
{
    hotKeys.takenByOthers = {{recorded.keyCode, recorded.modifiers}};
    start();

    state->updateShortcut(recorded);

    EXPECT_EQ(hotKeys.registered, std::pair(KeyboardShortcut().keyCode, KeyboardShortcut().modifiers));
    EXPECT_TRUE(state->hotkeyService().isRegistered());
    EXPECT_EQ(PreferenceStore(defaults).preferredShortcut(), KeyboardShortcut());
    ASSERT_TRUE(state->shortcutProblem());
    EXPECT_TRUE(state->shortcutProblem()->startsWith(u"⌥A is held by another application"));

    Q_EMIT hotKeys.pressed();
    EXPECT_TRUE(waitUntil([this] { return presented == 1; })) << "the old shortcut must still work";
}

TEST_F(AppStateSettingsTest, theNextShortcutThatIsTakenClearsTheProblem)
{
    hotKeys.takenByOthers = {{recorded.keyCode, recorded.modifiers}};
    start();
    state->updateShortcut(recorded);
    hotKeys.takenByOthers.clear();

    state->updateShortcut(recorded);

    EXPECT_FALSE(state->shortcutProblem());
    EXPECT_EQ(state->preferences().preferredShortcut(), recorded);
}

TEST_F(AppStateSettingsTest, theSameShortcutCanBeTriedAgainOnceItsHolderHasGone)
{
    hotKeys.isTaken = true;
    start();
    EXPECT_TRUE(state->hotkeyService().wasRefused());
    hotKeys.isTaken = false;

    state->updateShortcut(state->preferences().preferredShortcut());

    EXPECT_TRUE(state->hotkeyService().isRegistered());
}

TEST_F(AppStateSettingsTest, whyTheHotkeyDoesNotWorkIsToldInOnePlace)
{
    const QString held = u"⇧⌘P is held by another application"_qs;
    const struct
    {
        bool isTaken;
        bool available;
        std::optional<QString> reason;
    } table[] = {{false, true, std::nullopt},
                 {true, true, held},
                 {false, false, QStringLiteral("This session has no global shortcuts")}};
    for (const auto &row : table) {
        hotKeys.isTaken = row.isTaken;
        hotKeys.available = row.available;
        start();
        const auto problem = state->hotkeyProblem();
        EXPECT_EQ(problem ? std::optional(problem->reason) : std::nullopt, row.reason);
        EXPECT_TRUE(!problem || problem->advice.contains(u"brevix toggle"));
    }
    hotKeys.available = true;
    start();
    Q_EMIT hotKeys.lost();
    ASSERT_TRUE(state->hotkeyProblem());
    EXPECT_EQ(state->hotkeyProblem()->reason, held);
    Q_EMIT hotKeys.regained();
    EXPECT_FALSE(state->hotkeyProblem());
}

TEST_F(AppStateSettingsTest, aSessionWithoutHotkeysIsNamedAsTheReason)
{
    hotKeys.available = false;
    start();
    state->updateShortcut(recorded);
    ASSERT_TRUE(state->shortcutProblem());
    EXPECT_TRUE(state->shortcutProblem()->contains(u"brevix toggle"));
}

TEST_F(AppStateSettingsTest, startingAtLoginIsRegisteredAndRemembered)
{
    start();
    state->setLaunchAtLogin(true);
    EXPECT_TRUE(loginItem.enabled);
    EXPECT_TRUE(PreferenceStore(defaults).launchAtLoginEnabled());
    state->setLaunchAtLogin(false);
    EXPECT_FALSE(loginItem.enabled);
    EXPECT_FALSE(PreferenceStore(defaults).launchAtLoginEnabled());
}

TEST_F(AppStateSettingsTest, aFailedLoginItemLeavesThePreferenceAndBecomesTheLastResult)
{
    loginItem.problem = QStringLiteral("The disk is full.");
    start();

    state->setLaunchAtLogin(true);

    EXPECT_FALSE(state->preferences().launchAtLoginEnabled());
    ASSERT_TRUE(state->lastInsertionResult());
    EXPECT_FALSE(state->lastInsertionResult()->succeeded);
    EXPECT_FALSE(state->lastInsertionResult()->method);
    EXPECT_EQ(state->lastInsertionResult()->message, QStringLiteral("The disk is full."));
    EXPECT_EQ(state->lastInsertionResult()->failureReason, InsertionFailureReason::unknown);
}

TEST_F(AppStateSettingsTest, aFailureToUnregisterKeepsThePreferenceOn)
{
    loginItem.enabled = true;
    loginItem.problem = QStringLiteral("The folder is read-only.");
    start();
    state->setLaunchAtLogin(false);
    EXPECT_TRUE(state->preferences().launchAtLoginEnabled());
}

TEST_F(AppStateSettingsTest, aLoginItemThatTheUserRemovedElsewhereIsNotClaimedToBeThere)
{
    PreferenceStore(defaults).setLaunchAtLoginEnabled(true);
    start();
    EXPECT_FALSE(state->preferences().launchAtLoginEnabled());

    loginItem.enabled = true;
    state->refreshLaunchAtLogin();
    EXPECT_TRUE(state->preferences().launchAtLoginEnabled());
}
