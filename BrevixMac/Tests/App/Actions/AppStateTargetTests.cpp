// SPDX-License-Identifier: GPL-3.0-or-later
#include "AppStateFixture.h"

#include <QElapsedTimer>

#include <algorithm>

// Which field an insertion goes to, and how the field the user was in last is remembered.

namespace {

using namespace std::chrono_literals;

class AppStateTargetTest : public AppStateFixture
{
protected:
    AppStateTargetTest() { start(); }

    /// Element path of the picker's target; empty for none, the role in front of a whole application.
    QString pathOfTarget() const
    {
        const FocusedTargetPtr &target = state->focusedTarget();
        return target ? target->element.path : QString();
    }

    QString targetOfPicker(bool allowCachedTarget = true)
    {
        openPicker(allowCachedTarget);
        return pathOfTarget();
    }

    /// A pointer release in another application, and the capture that follows it.
    void click()
    {
        bool isCaptured = false;
        tree.onRequest = [&isCaptured](const QString &request) {
            isCaptured = isCaptured || request == u"read " + AX::focusedUIElement;
        };
        eventMonitor.post({.type = MonitoredEvent::pointerRelease, .position = {}});
        EXPECT_TRUE(waitUntil([&isCaptured] { return isCaptured; }));
        tree.onRequest = nullptr;
    }

    /// The user clicks into the field of the editor, and then nothing can be captured any more.
    void rememberEditorField()
    {
        switchTo(editorPid);
        click();
        focus({});
        workspace.frontmost.reset();
        tree.trusted = false;
    }

    /// From the event that @p cause posts until the capture that it leads to.
    std::chrono::nanoseconds delayUntilCapture(const std::function<void()> &cause)
    {
        QElapsedTimer clock;
        std::optional<std::chrono::nanoseconds> captured;
        tree.onRequest = [&](const QString &) {
            if (!captured)
                captured = std::chrono::nanoseconds(clock.nsecsElapsed());
        };
        clock.start();
        cause();
        EXPECT_TRUE(waitUntil([&captured] { return captured.has_value(); }));
        tree.onRequest = nullptr;
        return captured.value_or(0ns);
    }
};

} // namespace

// Opening the picker

TEST_F(AppStateTargetTest, theHotkeyOpensThePickerForTheFocusedFieldWithTheSearchReady)
{
    switchTo(editorPid);
    state->presentPaletteAction = [this] {
        ++presented;
        EXPECT_TRUE(state->palettePresented());
        EXPECT_TRUE(state->pickerAutoFocusSearch());
        EXPECT_EQ(pathOfTarget(), editorField) << "the target is known before the picker is shown";
    };

    Q_EMIT hotKeys.pressed();

    ASSERT_TRUE(waitUntil([this] { return presented > 0; }));
    EXPECT_EQ(presented, 1);
    EXPECT_TRUE(state->palettePresented());
}

TEST_F(AppStateTargetTest, openingByOtherMeansDoesNotAskForTheSearchField)
{
    openPicker();

    EXPECT_FALSE(state->pickerAutoFocusSearch());
}

TEST_F(AppStateTargetTest, twoPressesInARowShowThePickerOnce)
{
    switchTo(editorPid);
    tree.delay = 5ms;

    state->handlePaletteInvocation(true);
    state->handlePaletteInvocation(true);

    ASSERT_TRUE(waitUntil([this] { return presented > 0; }));
    EXPECT_FALSE(waitUntil([this] { return presented > 1; }, 100ms));
    EXPECT_EQ(pathOfTarget(), editorField);
}

TEST_F(AppStateTargetTest, openingThePickerReadsThePermissionsAnew)
{
    tree.trusted = false;
    keyEvents.allowed = false;

    openPicker();

    EXPECT_FALSE(state->permissions().accessibilityGranted());
    EXPECT_FALSE(state->permissions().postEventGranted());
}

TEST_F(AppStateTargetTest, aTargetThatIsGoneIsForgottenAtTheNextOpening)
{
    switchTo(editorPid);
    EXPECT_EQ(targetOfPicker(), editorField);
    focus({});
    workspace.running.clear();
    time = time.addSecs(60);

    EXPECT_EQ(targetOfPicker(), QString());
    EXPECT_EQ(state->focusedTarget(), nullptr);
}

// Which target is found

TEST_F(AppStateTargetTest, theFieldFocusedNowComesFirst)
{
    switchTo(editorPid);
    EXPECT_EQ(targetOfPicker(), editorField);
    switchTo(browserPid);
    EXPECT_EQ(targetOfPicker(), browserField);
}

TEST_F(AppStateTargetTest, aFieldOfThisApplicationGivesWayToThatOfTheLastApplication)
{
    switchTo(editorPid);
    switchTo(ownPid);

    EXPECT_EQ(targetOfPicker(), editorField);
}

TEST_F(AppStateTargetTest, aFieldOfAnotherProcessOfThisApplicationIsNotUsable)
{
    workspace.addApplication(77, QStringLiteral("Brevix helper"), bundleIdentifier);
    tree.fields[QStringLiteral("/helper")].pid = 77;
    switchTo(editorPid);
    workspace.frontmost = 77;
    focus(QStringLiteral("/helper"));

    EXPECT_EQ(targetOfPicker(), editorField);
}

TEST_F(AppStateTargetTest, anApplicationWithoutABundleIdentifierIsAnother)
{
    switchTo(browserPid);
    switchTo(ownPid);

    EXPECT_EQ(targetOfPicker(), browserField);
}

TEST_F(AppStateTargetTest, anApplicationInFrontWithoutAReadableFieldStandsForItself)
{
    focus({});
    tree.focusedPathByApplication.clear();
    workspace.frontmost = editorPid;

    openPicker();

    ASSERT_TRUE(state->focusedTarget());
    EXPECT_EQ(state->focusedTarget()->role, AX::application);
    EXPECT_EQ(state->focusedTarget()->pid, editorPid);
}

TEST_F(AppStateTargetTest, theLastApplicationIsNotAskedOnceItHasTerminated)
{
    switchTo(editorPid);
    switchTo(ownPid);
    workspace.running.remove(editorPid);

    EXPECT_EQ(targetOfPicker(), QString());
}

TEST_F(AppStateTargetTest, withoutCachedTargetsOnlyTheFieldFocusedNowCounts)
{
    switchTo(editorPid);
    EXPECT_EQ(targetOfPicker(false), editorField);
    switchTo(ownPid);
    EXPECT_EQ(targetOfPicker(false), QString());
}

TEST_F(AppStateTargetTest, withoutCachedTargetsTheApplicationInFrontIsNotNoted)
{
    focus({});
    workspace.frontmost = editorPid;
    openPicker(false);
    workspace.frontmost = ownPid;

    EXPECT_EQ(targetOfPicker(true), QString());
}

TEST_F(AppStateTargetTest, withoutTrustNothingIsAskedOfOtherApplications)
{
    tree.trusted = false;
    switchTo(editorPid);
    int requests = 0;
    tree.onRequest = [&requests](const QString &) { ++requests; };

    EXPECT_EQ(targetOfPicker(), QString());
    EXPECT_EQ(requests, 0);
}

TEST_F(AppStateTargetTest, anInsertionWithoutATargetLooksForOneAndKeepsIt)
{
    switchTo(editorPid);

    EXPECT_TRUE(resultOf([this] { state->insertRaw(prompt(u"p"_qs, u"text"_qs)); }).succeeded);

    EXPECT_EQ(pathOfTarget(), editorField);
}

TEST_F(AppStateTargetTest, anInsertionGoesToTheTargetOfThePickerWhereverTheFocusIsNow)
{
    switchTo(editorPid);
    openPicker();
    switchTo(browserPid);

    EXPECT_TRUE(resultOf([this] { state->insertRaw(prompt(u"p"_qs, u"text"_qs)); }).succeeded);

    EXPECT_EQ(field(editorField).value, QStringLiteral("text"));
    EXPECT_EQ(field(browserField).value, QString());
}

// The freshness of a remembered field

TEST_F(AppStateTargetTest, aRememberedFieldIsUsedForThirtySeconds)
{
    rememberEditorField();
    const QDateTime capturedAt = time;
    const std::pair<std::chrono::milliseconds, bool> ages[] = {
        {0s, true},   {29s, true}, {30s, true},  {30s + 1ms, false},
        {31s, false}, {1h, false}, {-10s, true}, {-1h, true},
    };
    for (const auto &[age, isFresh] : ages) {
        time = capturedAt.addMSecs(age.count());
        EXPECT_EQ(targetOfPicker(), isFresh ? editorField : QString()) << age.count() << " ms";
    }
}

TEST_F(AppStateTargetTest, aRememberedFieldOfATerminatedApplicationIsNotUsed)
{
    rememberEditorField();
    workspace.running.remove(editorPid);

    EXPECT_EQ(targetOfPicker(), QString());
}

TEST_F(AppStateTargetTest, aRememberedFieldOfAnUnknownApplicationIsUsed)
{
    focus(editorField);
    field(editorField).pid.reset();
    workspace.frontmost.reset();
    click();
    focus({});
    tree.trusted = false;

    openPicker();

    EXPECT_EQ(pathOfTarget(), editorField);
    EXPECT_EQ(state->focusedTarget()->application, std::nullopt);
}

// Focus tracking

TEST_F(AppStateTargetTest, aClickedFieldIsInsertedIntoWhenItsApplicationIsNoLongerInFront)
{
    switchTo(editorPid);
    click();
    switchTo(ownPid);
    time = time.addSecs(25);
    openPicker();

    EXPECT_TRUE(resultOf([this] { state->insertRaw(prompt(u"p"_qs, u"text"_qs)); }).succeeded);

    EXPECT_EQ(field(editorField).value, QStringLiteral("text"));
}

TEST_F(AppStateTargetTest, clicksInOwnWindowsNeverReplaceTheRememberedField)
{
    switchTo(editorPid);
    click();
    switchTo(ownPid);
    click();
    focus({});
    tree.trusted = false;

    EXPECT_EQ(targetOfPicker(), editorField);
}

TEST_F(AppStateTargetTest, onlyPointerAndKeyReleasesAreWatched)
{
    ASSERT_EQ(eventMonitor.entries.size(), 1);
    EXPECT_EQ(eventMonitor.entries.first().types,
              MonitoredEvent::pointerRelease | MonitoredEvent::keyRelease);
}

TEST_F(AppStateTargetTest, theFieldIsCapturedShortlyAfterAReleaseAndSomewhatLaterAfterAnActivation)
{
    switchTo(editorPid);
    ASSERT_GT(delayUntilCapture([] {}), 0ns) << "the capture of the activation just made";

    const auto after = [this](MonitoredEvent::Type type) {
        return delayUntilCapture([this, type] { eventMonitor.post({.type = type, .position = {}}); });
    };
    for (const auto type : {MonitoredEvent::pointerRelease, MonitoredEvent::keyRelease}) {
        // A busy machine may be late now and then, but never early.
        const auto delays = {after(type), after(type), after(type)};
        EXPECT_GE(std::min(delays), 80ms);
        EXPECT_LT(std::min(delays), 140ms);
    }
    const auto afterActivation = delayUntilCapture([this] { switchTo(browserPid); });
    EXPECT_GE(afterActivation, 140ms);
    EXPECT_LT(afterActivation, 140ms + 250ms);
}

TEST_F(AppStateTargetTest, theDelayLetsTheClickedFieldGetTheFocusFirst)
{
    switchTo(editorPid);
    focus({});
    eventMonitor.post({.type = MonitoredEvent::pointerRelease, .position = {}});
    focus(editorField);
    ASSERT_GT(delayUntilCapture([] {}), 0ns);
    ASSERT_FALSE(waitUntil([] { return false; }, 5ms));
    focus({});
    tree.trusted = false;

    EXPECT_EQ(targetOfPicker(), editorField);
}

TEST_F(AppStateTargetTest, anActivationNotesTheApplicationAtOnce)
{
    workspace.bringToFront(editorPid);
    workspace.frontmost = ownPid;
    focus(ownField);

    EXPECT_EQ(targetOfPicker(), editorField);
}

TEST_F(AppStateTargetTest, withoutTrustTheApplicationInFrontIsStillNoted)
{
    tree.trusted = false;
    state->permissions().refresh();
    switchTo(editorPid);
    switchTo(ownPid);
    tree.trusted = true;

    EXPECT_EQ(targetOfPicker(), editorField) << "the application is used once trust is there";
}

TEST_F(AppStateTargetTest, aReleaseWithoutAReadableFieldNotesTheApplicationInFront)
{
    workspace.frontmost = editorPid;
    focus({});
    click();
    workspace.frontmost = ownPid;
    focus(ownField);

    EXPECT_EQ(targetOfPicker(), editorField);
}

TEST_F(AppStateTargetTest, severalPendingCapturesEachOverwriteTheRememberedField)
{
    switchTo(editorPid);
    eventMonitor.post({.type = MonitoredEvent::pointerRelease, .position = {}});
    eventMonitor.post({.type = MonitoredEvent::keyRelease, .position = {}});
    click();
    switchTo(browserPid);
    click();
    focus({});
    tree.trusted = false;

    EXPECT_EQ(targetOfPicker(), browserField);
}
