// SPDX-License-Identifier: GPL-3.0-or-later
#include "AppStateFixture.h"

#include <QCoreApplication>

// How the application comes up, and the rule that chooses its main screen.

namespace {

using Destination = AppState::RootDestination;

const QString incompleteConfiguration = QStringLiteral(
    "Add BrevixMac/Sources/BrevixMac/Resources/GoogleService-Info.plist or update the fallback "
    "FirebaseConfig.plist with valid native macOS Firebase values.");

class AppStateStartupTest : public AppStateFixture
{
protected:
    bool isOnboardingStored() { return PreferenceStore(defaults).onboardingCompleted(); }
};

struct OnboardingCase
{
    bool isConfigured;
    bool trusted;
    bool postingAllowed;
    bool signedIn;
    bool completedBefore;
};

} // namespace

TEST_F(AppStateStartupTest, onboardingEndsOnlyWhenAllFourConditionsHoldAndNeverComesBack)
{
    for (int bits = 0; bits < 32; ++bits) {
        const OnboardingCase each{(bits & 1) != 0, (bits & 2) != 0, (bits & 4) != 0, (bits & 8) != 0,
                                  (bits & 16) != 0};
        SCOPED_TRACE(bits);
        state.reset();
        const QString apiKey = each.isConfigured ? QStringLiteral("key") : QStringLiteral("REPLACE_ME");
        configuration.firebase.apiKey = apiKey;
        tree.trusted = each.trusted;
        keyEvents.allowed = each.postingAllowed;
        PreferenceStore(defaults).setOnboardingCompleted(each.completedBefore);
        defaults.remove(AuthService::storageKey);
        if (each.signedIn)
            storeSession();

        start();
        ASSERT_TRUE(
            waitUntil([&] { return state->authService().currentUser().has_value() == each.signedIn; }));

        const bool isReady = each.isConfigured && each.trusted && each.postingAllowed && each.signedIn;
        const bool isCompleted = isReady || each.completedBefore;
        EXPECT_EQ(state->rootDestination(), isCompleted ? Destination::library : Destination::onboarding);
        EXPECT_EQ(isOnboardingStored(), isCompleted);
    }
}

TEST_F(AppStateStartupTest, theLastMissingConditionEndsOnboardingWhicheverItIs)
{
    const std::function<void()> lastSteps[] = {
        [this] {
            tree.trusted = true;
            Q_EMIT tree.trustChanged();
        },
        [this] {
            keyEvents.allowed = true;
            Q_EMIT keyEvents.postingAllowedChanged();
        },
    };
    for (int step = 0; step < 2; ++step) {
        state.reset();
        PreferenceStore(defaults).setOnboardingCompleted(false);
        tree.trusted = step != 0;
        keyEvents.allowed = step != 1;
        storeSession();
        start();
        ASSERT_TRUE(waitUntil([this] { return state->authService().currentUser().has_value(); }));
        ASSERT_EQ(state->rootDestination(), Destination::onboarding);

        lastSteps[step]();

        EXPECT_EQ(state->rootDestination(), Destination::library);
        EXPECT_TRUE(isOnboardingStored());
    }
}

TEST_F(AppStateStartupTest, signingOutAfterOnboardingKeepsTheLibrary)
{
    startWithLibrary();
    ASSERT_EQ(state->rootDestination(), Destination::library);

    state->signOut();

    EXPECT_EQ(state->rootDestination(), Destination::library);
}

TEST_F(AppStateStartupTest, aPermissionLostAfterOnboardingKeepsTheLibrary)
{
    startWithLibrary();

    tree.trusted = false;
    state->applicationDidBecomeActive();

    EXPECT_EQ(state->rootDestination(), Destination::library);
}

TEST_F(AppStateStartupTest, settingsAreNotLeftWhenOnboardingEnds)
{
    keyEvents.allowed = false;
    startWithLibrary();
    state->setRootDestination(Destination::settings);

    keyEvents.allowed = true;
    state->applicationDidBecomeActive();

    EXPECT_EQ(state->rootDestination(), Destination::settings);
    EXPECT_TRUE(isOnboardingStored());
}

TEST_F(AppStateStartupTest, anIncompleteConfigurationIsAnIssueAndDoesNotStopTheStart)
{
    configuration = AppConfiguration::fallback();

    start();

    EXPECT_EQ(state->configurationIssue(), incompleteConfiguration);
    EXPECT_TRUE(state->hotkeyService().isRegistered());
}

TEST_F(AppStateStartupTest, aCompleteConfigurationIsNoIssue)
{
    EXPECT_EQ(start().configurationIssue(), std::nullopt);
}

TEST_F(AppStateStartupTest, theFirstStateIsTheSharedOneUntilItGoes)
{
    EXPECT_EQ(AppState::shared(), nullptr);
    start();
    EXPECT_EQ(AppState::shared(), state.get());
    state.reset();
    EXPECT_EQ(AppState::shared(), nullptr);
}

// The session and the library

TEST_F(AppStateStartupTest, aStoredSessionBindsTheLibraryOfItsUser)
{
    server.prompts = {prompt(QStringLiteral("p"), QStringLiteral("text"))};

    startWithLibrary();

    EXPECT_EQ(state->preferences().lastSignedInUserID(), QStringLiteral("user"));
    EXPECT_EQ(state->libraryPrompts().size(), 1);
    ASSERT_FALSE(server.requests().isEmpty());
    EXPECT_TRUE(server.requests().first().target.contains("/users/user/categories?"))
        << server.requests().first().target.data();
}

TEST_F(AppStateStartupTest, withoutASessionNoServerIsAsked)
{
    start();

    EXPECT_FALSE(waitUntil([this] { return !server.requests().isEmpty(); }, std::chrono::milliseconds(50)));
    EXPECT_EQ(state->libraryStore().syncState(), SyncState::idle());
    EXPECT_EQ(state->preferences().lastSignedInUserID(), std::nullopt);
}

TEST_F(AppStateStartupTest, signingOutUnbindsTheLibraryAndForgetsTheUser)
{
    server.prompts = {prompt(QStringLiteral("p"), QStringLiteral("text"))};
    startWithLibrary();

    state->signOut();

    EXPECT_TRUE(state->libraryPrompts().isEmpty());
    EXPECT_EQ(state->libraryStore().syncState(), SyncState::idle());
    EXPECT_EQ(state->preferences().lastSignedInUserID(), std::nullopt);
}

// The hotkey

TEST_F(AppStateStartupTest, thePreferredShortcutIsRegisteredAtTheStart)
{
    const KeyboardShortcut preferred{.keyCode = 49, .modifiers = KeyboardShortcut::control};
    PreferenceStore(defaults).setPreferredShortcut(preferred);

    start();

    EXPECT_EQ(hotKeys.registered, std::pair(preferred.keyCode, preferred.modifiers));
    EXPECT_EQ(state->hotkeyLabel(), QStringLiteral("⌃Space"));
}

TEST_F(AppStateStartupTest, aNewShortcutIsStoredAndRegisteredInPlaceOfTheOld)
{
    start();
    const KeyboardShortcut recorded{.keyCode = 0, .modifiers = KeyboardShortcut::option};

    state->updateShortcut(recorded);

    EXPECT_EQ(hotKeys.registered, std::pair(recorded.keyCode, recorded.modifiers));
    EXPECT_EQ(hotKeys.registrations, 2);
    EXPECT_EQ(PreferenceStore(defaults).preferredShortcut(), recorded);
    EXPECT_EQ(state->hotkeyLabel(), QStringLiteral("⌥A"));

    Q_EMIT hotKeys.pressed();
    EXPECT_TRUE(waitUntil([this] { return presented == 1; }));
}

TEST_F(AppStateStartupTest, aTakenShortcutDoesNotStopTheStart)
{
    hotKeys.isTaken = true;

    start();

    EXPECT_TRUE(state->hotkeyService().wasRefused());
}

// Permissions

TEST_F(AppStateStartupTest, askingForPostingAsksTheSessionAndLooksAtOnboardingAgain)
{
    keyEvents.allowed = false;
    startWithLibrary();
    ASSERT_EQ(state->rootDestination(), Destination::onboarding);
    keyEvents.allowed = true;

    state->requestPostEventPermission();

    EXPECT_EQ(keyEvents.requests, 1);
    EXPECT_TRUE(state->permissions().postEventGranted());
    EXPECT_EQ(state->rootDestination(), Destination::library);
}

TEST_F(AppStateStartupTest, askingForAccessibilityAsksTheSessionAndLooksAtOnboardingAgain)
{
    tree.trusted = false;
    startWithLibrary();
    tree.trusted = true;

    state->requestAccessibilityPermission();

    EXPECT_EQ(tree.trustRequests, 1);
    EXPECT_EQ(state->rootDestination(), Destination::library);
}

TEST_F(AppStateStartupTest, startingAsksTheUserForNothing)
{
    tree.trusted = false;
    keyEvents.allowed = false;

    start();

    EXPECT_EQ(tree.trustRequests, 0);
    EXPECT_EQ(keyEvents.requests, 0);
}

TEST_F(AppStateStartupTest, comingToTheFrontReadsThePermissionsNowAndShortlyAfter)
{
    tree.trusted = false;
    keyEvents.allowed = false;
    start();
    keyEvents.allowed = true;

    state->applicationDidBecomeActive();
    EXPECT_TRUE(state->permissions().postEventGranted());
    EXPECT_FALSE(state->permissions().accessibilityGranted());

    tree.trusted = true;
    EXPECT_TRUE(waitUntil([this] { return state->permissions().accessibilityGranted(); },
                          std::chrono::milliseconds(900)));
}

// Focus tracking

TEST_F(AppStateStartupTest, focusTrackingIsInstalledOnceAndEndsWithTheState)
{
    start();
    EXPECT_EQ(eventMonitor.entries.size(), 1);
    state.reset();
    EXPECT_TRUE(eventMonitor.entries.isEmpty());
}

TEST_F(AppStateStartupTest, focusTrackingThatIsAskedForTwiceIsInstalledOnce)
{
    start();
    state->startExternalFocusTracking();
    EXPECT_EQ(eventMonitor.entries.size(), 1);
    int captures = 0;
    tree.onRequest = [&captures](const QString &request) {
        captures += request == u"read " + AX::focusedUIElement;
    };
    workspace.bringToFront(editorPid);
    ASSERT_TRUE(waitUntil([&captures] { return captures > 0; }));
    EXPECT_FALSE(waitUntil([&captures] { return captures > 1; }, std::chrono::milliseconds(100)));
}

TEST_F(AppStateStartupTest, theApplicationInFrontAtTheStartIsNoted)
{
    workspace.frontmost = editorPid;
    start();
    workspace.frontmost = ownPid;

    openPicker();

    ASSERT_TRUE(state->focusedTarget());
    EXPECT_EQ(state->focusedTarget()->pid, editorPid);
}

TEST_F(AppStateStartupTest, thisApplicationInFrontAtTheStartIsNotNoted)
{
    workspace.frontmost = ownPid;
    start();

    openPicker();

    EXPECT_EQ(state->focusedTarget(), nullptr);
}

TEST_F(AppStateStartupTest, aProgramWithoutABundleIdentifierKnowsItselfByItsProcess)
{
    bundleIdentifier.clear();
    workspace.addApplication(editorPid, QStringLiteral("Editor"), QString());
    start();
    switchTo(editorPid);

    openPicker();

    ASSERT_TRUE(state->focusedTarget());
    EXPECT_EQ(state->focusedTarget()->element.path, editorField);
}
