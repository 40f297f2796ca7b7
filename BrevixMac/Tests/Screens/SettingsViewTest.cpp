// SPDX-License-Identifier: GPL-3.0-or-later
#include "SettingsView.h"
#include "ChoiceRow.h"
#include "Diagnostics.h"
#include "DiagnosticsRows.h"
#include "PageHeader.h"
#include "PickerHeader.h"
#include "PickerStage.h"
#include "SettingsCard.h"
#include "SettingsPage.h"
#include "SettingsRow.h"
#include "SettingsWindowController.h"
#include "ShortcutRecorderView.h"
#include "StatusChip.h"
#include "Theme.h"
#include "ThemedButton.h"
#include "ThemedSwitch.h"
#include "UpdateRow.h"

#include <QAccessible>
#include <QTest>

namespace {

class SettingsTest : public testing::Test
{
protected:
    ~SettingsTest() override { Theme::shared().forceFontScale(std::nullopt); }

    /// Opens the settings in the panel.
    SettingsView &open()
    {
        stage.open();
        stage.view().setRoute(PickerPanelRoute::settings);
        return view();
    }

    SettingsView &view() { return stage.view().settingsPage().view(); }
    AppState &state() { return stage.appState(); }
    QString clipboard() const { return stage.desk.pasteboard.text(); }

    PickerStage stage;
};

QStringList titles(const SettingsView &view)
{
    QStringList titles;
    for (const SettingsCard *card : view.cards())
        titles.append(card->title());
    return titles;
}

} // namespace

TEST_F(SettingsTest, sevenSectionsStandInTheirOrder)
{
    EXPECT_EQ(titles(open()),
              QStringList({QStringLiteral("Account"), QStringLiteral("General"), QStringLiteral("Shortcut"),
                           QStringLiteral("Insertion"), QStringLiteral("System Access"),
                           QStringLiteral("Updates"), QStringLiteral("Advanced")}));
}

TEST_F(SettingsTest, theGearOpensThemAndEscapeAndBackLeaveThem)
{
    stage.open();
    QTest::mouseClick(&stage.page().header().settingsButton(), Qt::LeftButton);
    EXPECT_EQ(stage.view().route(), PickerPanelRoute::settings);
    EXPECT_EQ(stage.view().settingsPage().header().subtitle(),
              QStringLiteral("Return to the prompt picker when you're done."));
    stage.key(Qt::Key_Escape);
    EXPECT_EQ(stage.view().route(), PickerPanelRoute::picker);
    EXPECT_TRUE(stage.panel().isVisible());

    stage.view().setRoute(PickerPanelRoute::settings);
    QTest::mouseClick(&stage.view().settingsPage().header().backButton(), Qt::LeftButton);
    EXPECT_EQ(stage.view().route(), PickerPanelRoute::picker);
}

// Account

TEST_F(SettingsTest, theAccountNamesWhoIsSignedInAndSignsOut)
{
    stage.desk.displayName = QStringLiteral("Ann Example");
    open();
    EXPECT_EQ(view().accountRow().title(), QStringLiteral("Signed in"));
    EXPECT_EQ(view().accountRow().subtitle(), QStringLiteral("Ann Example · ann@example.com"));
    EXPECT_FALSE(view().signInButton().isVisible());

    QTest::mouseClick(&view().signOutButton(), Qt::LeftButton);

    EXPECT_EQ(view().accountRow().title(), QStringLiteral("Not signed in"));
    EXPECT_EQ(view().accountRow().subtitle(),
              QStringLiteral("Sign in with Google to sync your Brevix library."));
    EXPECT_FALSE(view().signOutButton().isVisible());
    EXPECT_EQ(view().signInButton().text(), QStringLiteral("Sign In"));
}

TEST_F(SettingsTest, aSignInThatRunsIsSaidAndCanBeCancelledOrContinuedElsewhere)
{
    stage.desk.isSignedIn = false;
    stage.desk.isConfigured = true;
    stage.desk.webAuthenticationSession.hasNoBrowser = true;
    open();
    EXPECT_FALSE(view().cancelSignInButton().isVisible());

    QTest::mouseClick(&view().signInButton(), Qt::LeftButton);

    EXPECT_TRUE(waitUntil([this] { return view().copyLinkButton().isVisible(); }));
    EXPECT_EQ(view().signInButton().text(), QStringLiteral("Signing In..."));
    EXPECT_FALSE(view().signInButton().isEnabled());
    EXPECT_TRUE(waitUntil([this] { return view().accountRow().note().contains(u"No browser"); }));
    QTest::mouseClick(&view().copyLinkButton(), Qt::LeftButton);
    EXPECT_TRUE(QUrl(clipboard()).isValid() && clipboard().startsWith(u"http")) << qPrintable(clipboard());

    QTest::mouseClick(&view().cancelSignInButton(), Qt::LeftButton);

    EXPECT_TRUE(waitUntil([this] { return view().signInButton().isEnabled(); }));
    EXPECT_EQ(view().signInButton().text(), QStringLiteral("Sign In"));
    EXPECT_EQ(view().accountRow().note(), state().authService().authErrorMessage().value_or(QString()));
}

TEST_F(SettingsTest, theFocusStaysWithTheAccountWhenItsButtonsChange)
{
    stage.desk.isConfigured = true;
    stage.desk.webAuthenticationSession.hasNoBrowser = true;
    open();
    view().signOutButton().setFocus();
    stage.key(Qt::Key_Space);
    EXPECT_EQ(stage.panel().focusWidget(), &view().signInButton());
    stage.key(Qt::Key_Space);
    ASSERT_TRUE(waitUntil([this] { return view().copyLinkButton().isVisible(); }));
    EXPECT_EQ(stage.panel().focusWidget(), &view().signInButton());
    view().cancelSignInButton().setFocus();
    stage.key(Qt::Key_Space);
    ASSERT_TRUE(waitUntil([this] { return !view().cancelSignInButton().isVisible(); }));
    EXPECT_EQ(stage.panel().focusWidget(), &view().signInButton());
    EXPECT_FALSE(stage.desk.loginItem.enabled);
}

// General

TEST_F(SettingsTest, openingAtLoginIsRegisteredAndStored)
{
    open();
    QTest::mouseClick(&view().loginSwitch(), Qt::LeftButton);
    EXPECT_TRUE(stage.desk.loginItem.enabled);
    EXPECT_TRUE(PreferenceStore(stage.desk.defaults).launchAtLoginEnabled());
    view().loginSwitch().setFocus();
    QTest::keyClick(&view().loginSwitch(), Qt::Key_Space);
    EXPECT_FALSE(stage.desk.loginItem.enabled);
    EXPECT_FALSE(view().loginSwitch().isChecked());
}

TEST_F(SettingsTest, aFailedLoginItemFlipsTheSwitchBackAndSaysWhy)
{
    stage.desk.loginItem.problem = QStringLiteral("The disk is full.");
    open();
    QTest::mouseClick(&view().loginSwitch(), Qt::LeftButton);
    EXPECT_FALSE(view().loginSwitch().isChecked());
    EXPECT_FALSE(state().preferences().launchAtLoginEnabled());
    EXPECT_EQ(view().loginRow().note(), QStringLiteral("The disk is full."));
    EXPECT_TRUE(Diagnostics::text(state()).endsWith(u"\nLast Insertion: The disk is full."));

    stage.desk.loginItem.problem.reset();
    QTest::mouseClick(&view().loginSwitch(), Qt::LeftButton);
    EXPECT_TRUE(view().loginSwitch().isChecked());
    EXPECT_EQ(view().loginRow().note(), QString());
}

TEST_F(SettingsTest, aLoginItemChangedElsewhereIsSeenWhenTheSettingsAreOpened)
{
    stage.open();
    stage.desk.loginItem.enabled = true;
    stage.view().setRoute(PickerPanelRoute::settings);
    EXPECT_TRUE(view().loginSwitch().isChecked());
}

TEST_F(SettingsTest, aProblemOfAnEarlierVisitIsNotShownAgain)
{
    stage.desk.loginItem.problem = QStringLiteral("The disk is full.");
    stage.desk.hotKeys.takenByOthers = {{49, KeyboardShortcut::control}};
    open();
    view().loginSwitch().click();
    view().recorder().recordButton().click();
    stage.desk.keyCapture.press({.keyCode = 49, .modifiers = KeyboardShortcut::control});
    ASSERT_FALSE(view().loginRow().note().isEmpty());
    ASSERT_TRUE(view().shortcutRow().note().startsWith(u"⌃Space is held"));
    stage.view().setRoute(PickerPanelRoute::picker);
    stage.view().setRoute(PickerPanelRoute::settings);
    EXPECT_EQ(view().loginRow().note(), QString());
    EXPECT_FALSE(view().shortcutRow().note().contains(u"held"));
}

TEST_F(SettingsTest, theIconSwitchOnlyStoresThePreference)
{
    open();
    EXPECT_TRUE(view().iconSwitch().isChecked());
    QTest::mouseClick(&view().iconSwitch(), Qt::LeftButton);
    EXPECT_FALSE(PreferenceStore(stage.desk.defaults).showMenuBarIcon());
    EXPECT_TRUE(stage.desk.statusItem.isShown());
}

// Shortcut

TEST_F(SettingsTest, aRecordedShortcutIsRegisteredStoredAndShown)
{
    open();
    EXPECT_EQ(view().shortcutRow().subtitle(), QStringLiteral("Default is ⇧⌘P"));
    QTest::mouseClick(&view().recorder().recordButton(), Qt::LeftButton);
    stage.desk.keyCapture.press({.keyCode = 49, .modifiers = KeyboardShortcut::control});
    EXPECT_EQ(stage.desk.hotKeys.registered, std::pair(quint32(49), KeyboardShortcut::control));
    EXPECT_EQ(view().recorder().shortcut().displayLabel(), QStringLiteral("⌃Space"));

    QTest::mouseClick(&view().recorder().resetButton(), Qt::LeftButton);
    EXPECT_EQ(state().preferences().preferredShortcut(), KeyboardShortcut());
}

TEST_F(SettingsTest, aShortcutThatIsHeldElsewhereIsNotTakenAndSaysSo)
{
    stage.desk.hotKeys.takenByOthers = {{49, KeyboardShortcut::control}};
    open();
    view().recorder().recordButton().click();
    stage.desk.keyCapture.press({.keyCode = 49, .modifiers = KeyboardShortcut::control});
    EXPECT_EQ(view().recorder().shortcut(), KeyboardShortcut());
    EXPECT_TRUE(view().shortcutRow().note().startsWith(u"⌃Space is held by another application"));
}

TEST_F(SettingsTest, aHotkeyThatDoesNotWorkIsToldOfWithTheReason)
{
    open();
    Q_EMIT stage.desk.hotKeys.lost();
    EXPECT_TRUE(view().shortcutRow().note().startsWith(state().hotkeyLabel() +
                                                       u" is held by another application. Bind the command"));
    stage.desk.hotKeys.available = false;
    Q_EMIT stage.desk.hotKeys.lost();
    EXPECT_TRUE(
        view().shortcutRow().note().startsWith(u"This session has no global shortcuts. Bind the command"));
}

TEST_F(SettingsTest, theRowNamesTheKeysOfTheGlyphs)
{
    open();
    EXPECT_TRUE(view().shortcutRow().note().contains(u"Super"));
    EXPECT_TRUE(view().shortcutRow().note().contains(u"Alt"));
}

// Insertion

TEST_F(SettingsTest, choosingAMethodStoresItByClickAndByArrowKeys)
{
    open();
    EXPECT_TRUE(view().methodRow(InsertionMethod::hybrid).isChecked());
    QTest::mouseClick(&view().methodRow(InsertionMethod::copiedOnly), Qt::LeftButton);
    EXPECT_EQ(PreferenceStore(stage.desk.defaults).preferredInsertionMethod(), InsertionMethod::copiedOnly);

    view().methodRow(InsertionMethod::copiedOnly).setFocus();
    stage.key(Qt::Key_Up);
    EXPECT_EQ(state().preferences().preferredInsertionMethod(), InsertionMethod::clipboardPaste);
    for (const InsertionMethod method : allInsertionMethods) {
        EXPECT_EQ(view().methodRow(method).title(), title(method));
        EXPECT_EQ(view().methodRow(method).description(), description(method));
    }
}

TEST_F(SettingsTest, copyOnlyMakesTheNextInsertCopy)
{
    stage.desk.addSampleLibrary();
    open();
    QTest::mouseClick(&view().methodRow(InsertionMethod::copiedOnly), Qt::LeftButton);
    const SkillItem skill = state().librarySkills().first();
    const QString before = stage.fieldText();
    state().use(skill);
    EXPECT_TRUE(waitUntil([this] { return state().lastInsertionResult().has_value(); }));
    EXPECT_EQ(state().lastInsertionResult()->method, InsertionMethod::copiedOnly);
    EXPECT_EQ(clipboard(), skill.text);
    EXPECT_EQ(stage.fieldText(), before);
    EXPECT_TRUE(stage.desk.keyEvents.postedChords.isEmpty());
}

// System access

TEST_F(SettingsTest, permissionsAreShownAndAsked)
{
    stage.desk.tree.trusted = false;
    open();
    EXPECT_EQ(view().accessibilityChip().text(), QStringLiteral("Needed"));
    EXPECT_EQ(view().accessibilityButton().text(), QStringLiteral("Request"));
    EXPECT_EQ(view().postEventChip().text(), QStringLiteral("Granted"));
    EXPECT_EQ(view().postEventButton().text(), QStringLiteral("Open Settings"));

    view().accessibilityButton().click();
    view().postEventButton().click();
    EXPECT_EQ(stage.desk.tree.trustRequests, 1);
    EXPECT_EQ(stage.desk.keyEvents.requests, 1);
    EXPECT_TRUE(view().accessibilityRow().note().startsWith(u"The desktop was asked"));
    EXPECT_TRUE(view().postEventRow().note().startsWith(u"Nothing is missing."));
}

TEST_F(SettingsTest, recheckingReadsBothGrantsAtOnce)
{
    stage.desk.tree.trusted = false;
    open();
    stage.desk.tree.trusted = true;
    stage.desk.keyEvents.allowed = false;
    view().recheckButton().click();
    EXPECT_EQ(view().accessibilityChip().text(), QStringLiteral("Granted"));
    EXPECT_EQ(view().accessibilityButton().text(), QStringLiteral("Open Settings"));
    EXPECT_EQ(view().postEventChip().text(), QStringLiteral("Needed"));
    EXPECT_EQ(stage.desk.tree.trustRequests, 0);
}

// Updates

TEST_F(SettingsTest, aBuildWithoutAFeedSaysSo)
{
    open();
    EXPECT_EQ(view().updates().row().title(), QStringLiteral("Automatic updates"));
    EXPECT_EQ(view().updates().row().subtitle(),
              QStringLiteral("Brevix checks for updates in the background."));
    EXPECT_EQ(view().updates().row().note(), state().updateService().status().description());
    EXPECT_EQ(view().updates().checkButton().text(), QStringLiteral("Check Now"));
    EXPECT_FALSE(view().updates().checkButton().isEnabled());
    EXPECT_FALSE(view().updates().releaseButton().isVisible());
}

// Advanced

TEST_F(SettingsTest, diagnosticsHaveSixLinesWithoutAnIssueAndAnInsertion)
{
    stage.desk.tree.focusedPath.reset();
    stage.desk.workspace.frontmost.reset();
    open();
    const QStringList lines = Diagnostics::text(state()).split(u'\n');
    ASSERT_EQ(lines.size(), state().configurationIssue() ? 7 : 6);
    EXPECT_EQ(lines[0], u"Bundle ID: " + state().configuration().firebase.bundleID);
    EXPECT_EQ(lines[1], u"Firebase Project: " + state().configuration().firebase.projectID);
    EXPECT_EQ(lines[2], u"Logical Library App ID: " + state().configuration().logicalLibraryAppID);
    EXPECT_EQ(lines[3], u"Sync: " + state().libraryStore().syncState().title());
    EXPECT_EQ(lines[4], QStringLiteral("Focused App: None"));
    EXPECT_EQ(lines[5], QStringLiteral("Focused Role: Unknown"));
}

TEST_F(SettingsTest, diagnosticsNameTheTargetAndTheLastInsertion)
{
    open();
    state().setLastInsertionResult(
        InsertionResult::success(InsertionMethod::hybrid, QStringLiteral("A message.")));
    const QString text = Diagnostics::text(state());
    EXPECT_TRUE(text.contains(u"\nFocused Role: AXTextArea")) << qPrintable(text);
    EXPECT_FALSE(text.contains(u"Focused App: None"));
    EXPECT_TRUE(text.endsWith(u"\nLast Insertion: A message."));
    EXPECT_EQ(view().diagnostics().value(QStringLiteral("Focused Role")), QStringLiteral("AXTextArea"));
}

TEST_F(SettingsTest, diagnosticsHoldNothingSecret)
{
    open();
    const auto session =
        StoredAuthSession::fromJson(stage.desk.defaults.data(AuthService::storageKey).value_or(QByteArray()));
    ASSERT_TRUE(session && !session->firebaseIDToken.isEmpty() && !session->refreshToken.isEmpty());
    const QString text = Diagnostics::text(state());
    for (const QString &secret :
         {session->firebaseIDToken, session->refreshToken, session->uid,
          session->email.value_or(QStringLiteral("ann@")), state().configuration().firebase.apiKey})
        EXPECT_FALSE(text.contains(secret)) << qPrintable(secret);
}

TEST_F(SettingsTest, diagnosticsAreCopiedAndDisclosed)
{
    open();
    EXPECT_EQ(view().diagnostics().showButton().text(), QStringLiteral("Show"));
    EXPECT_EQ(view().diagnostics().shownText(), QString());

    view().diagnostics().showButton().click();
    EXPECT_EQ(view().diagnostics().showButton().text(), QStringLiteral("Hide"));
    EXPECT_EQ(view().diagnostics().shownText(), Diagnostics::text(state()));

    view().diagnostics().copyButton().click();
    EXPECT_EQ(clipboard(), Diagnostics::text(state()));
    EXPECT_FALSE(state().lastInsertionResult()) << "copying diagnostics is no insertion";
    EXPECT_EQ(view().diagnostics().copyButton().text(), QStringLiteral("Copied"));
    EXPECT_TRUE(waitUntil(
        [&] { return view().diagnostics().copyButton().text() == QStringLiteral("Copy Diagnostics"); }));

    stage.desk.pasteboard.refusesText = true;
    view().diagnostics().copyButton().click();
    EXPECT_EQ(view().diagnostics().copyButton().text(), QStringLiteral("Not Copied"));
}

TEST_F(SettingsTest, theDisclosureIsClosedAtEveryVisit)
{
    open();
    view().diagnostics().showButton().click();
    stage.view().setRoute(PickerPanelRoute::picker);
    stage.view().setRoute(PickerPanelRoute::settings);
    EXPECT_EQ(view().diagnostics().showButton().text(), QStringLiteral("Show"));
    EXPECT_EQ(view().diagnostics().shownText(), QString());
}

// Window

TEST_F(SettingsTest, theWindowHoldsItsContentWhileItIsOpen)
{
    stage.open();
    SettingsWindowController controller(state());
    EXPECT_FALSE(controller.view());
    controller.show();
    ASSERT_TRUE(controller.view());
    EXPECT_GE(controller.window().minimumWidth(), 720);
    EXPECT_GE(controller.window().minimumHeight(), 540);
    controller.view()->diagnostics().showButton().click();
    const QPointer<SettingsView> content = controller.view();
    controller.show();
    EXPECT_EQ(controller.view(), content) << "a second show must not make a second content";

    QTest::keyClick(&controller.window(), Qt::Key_Escape);
    EXPECT_FALSE(controller.window().isVisible());
    EXPECT_FALSE(controller.view());
    EXPECT_TRUE(waitUntil([&] { return content.isNull(); }));

    controller.show();
    EXPECT_EQ(controller.view()->diagnostics().showButton().text(), QStringLiteral("Show"))
        << "the disclosure starts closed";
}

TEST_F(SettingsTest, theWindowCannotComeFromAnArchive)
{
    QDataStream archive;
    EXPECT_DEATH(SettingsWindowController{archive}, "init\\(coder:\\) has not been implemented");
}

TEST_F(SettingsTest, closingTheWindowWhileRecordingGivesTheKeyboardBack)
{
    stage.open();
    SettingsWindowController controller(state());
    controller.show();
    controller.view()->recorder().recordButton().click();
    EXPECT_TRUE(stage.desk.keyCapture.isActive);
    controller.window().close();
    EXPECT_FALSE(stage.desk.keyCapture.isActive);
}

// Keyboard and accessibility

TEST_F(SettingsTest, everyControlIsReachedByTabAndHasANameAndIsLargeEnough)
{
    open();
    stage.view().settingsPage().focusFirst();
    QSet<QWidget *> reached;
    for (int i = 0; i < 60; ++i) {
        reached.insert(stage.panel().focusWidget());
        stage.key(Qt::Key_Tab);
    }
    for (QAbstractButton *button : view().findChildren<QAbstractButton *>()) {
        if (!button->isVisible() || !button->isEnabled())
            continue;
        QAccessibleInterface *accessible = QAccessible::queryAccessibleInterface(button);
        ASSERT_TRUE(accessible);
        const QString name = accessible->text(QAccessible::Name);
        EXPECT_FALSE(name.isEmpty());
        EXPECT_GE(button->height(), 28) << qPrintable(name);
        EXPECT_GE(button->width(), 28) << qPrintable(name);
        const bool isOtherChoice = qobject_cast<ChoiceRow *>(button) && !button->isChecked();
        EXPECT_TRUE(reached.contains(button) || isOtherChoice) << qPrintable(name);
    }
    EXPECT_EQ(QAccessible::queryAccessibleInterface(&view().loginSwitch())->role(), QAccessible::CheckBox);
    EXPECT_EQ(QAccessible::queryAccessibleInterface(&view().methodRow(InsertionMethod::hybrid))->role(),
              QAccessible::RadioButton);
    EXPECT_TRUE(
        QAccessible::queryAccessibleInterface(&view().methodRow(InsertionMethod::hybrid))->state().checked);
}

TEST_F(SettingsTest, nothingIsCutOffAtTwiceTheFontSize)
{
    Theme::shared().forceFontScale(2);
    open();
    const auto isCutOff = [&](const QAbstractButton *button) {
        const QRect inView(button->mapTo(&view(), QPoint()), button->size());
        const bool isTooNarrow =
            !qobject_cast<const ChoiceRow *>(button) && button->width() < button->sizeHint().width();
        return inView.left() < 0 || inView.right() > view().width() || isTooNarrow;
    };
    QStringList cutOff;
    EXPECT_TRUE(waitUntil([&] {
        cutOff.clear();
        for (const QAbstractButton *button : view().findChildren<QAbstractButton *>()) {
            if (button->isVisible() && isCutOff(button))
                cutOff.append(button->accessibleName());
        }
        return cutOff.isEmpty();
    })) << qPrintable(cutOff.join(u", "));
}
