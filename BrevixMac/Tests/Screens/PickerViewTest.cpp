// SPDX-License-Identifier: GPL-3.0-or-later
#include "EmptyState.h"
#include "HintBubble.h"
#include "InPanelMenu.h"
#include "PermissionList.h"
#include "PickerFooter.h"
#include "PickerHeader.h"
#include "PickerNotices.h"
#include "PickerRowActions.h"
#include "PickerStage.h"
#include "ResultLine.h"
#include "StatusCard.h"
#include "TextLabel.h"
#include "ThemedButton.h"

#include <QHelpEvent>
#include <QSignalSpy>

#include <gtest/gtest.h>

namespace {

class PickerViewTest : public testing::Test
{
protected:
    PickerStage stage;

    void openSample()
    {
        stage.desk.addSampleLibrary();
        stage.open();
    }

    StatusCard &target() { return stage.page().notices().targetCard(); }
    PickerRowActions &actions() { return stage.list().actions(); }
};

// Account

TEST_F(PickerViewTest, showsTheMailAddressOfTheUser)
{
    stage.open();
    EXPECT_EQ(stage.page().header().statusText(), u"ann@example.com");
    EXPECT_TRUE(stage.page().header().signInButton().isHidden());
    EXPECT_TRUE(stage.page().footer().signOutButton().isEnabled());
}

TEST_F(PickerViewTest, showsTheNameOfAUserWithoutMailAddress)
{
    stage.desk.email.reset();
    stage.desk.displayName = QStringLiteral("Ann");
    stage.open();
    EXPECT_EQ(stage.page().header().statusText(), u"Ann");
}

TEST_F(PickerViewTest, saysSignedInForAUserWithoutMailAddressAndName)
{
    stage.desk.email.reset();
    stage.open();
    EXPECT_EQ(stage.page().header().statusText(), u"Signed in");
}

TEST_F(PickerViewTest, offersToSignInAndShowsWhyItFailed)
{
    stage.desk.isSignedIn = false;
    stage.desk.isConfigured = false;
    stage.open();
    EXPECT_EQ(stage.page().header().statusText(), u"Sign in to sync your library");
    EXPECT_FALSE(stage.page().header().signInButton().isHidden());
    EXPECT_FALSE(stage.page().footer().signOutButton().isEnabled());
    stage.page().header().signInButton().click();
    ASSERT_TRUE(waitUntil([&] { return stage.appState().authService().authErrorMessage().has_value(); }));
    const StatusCard &card = stage.page().notices().authErrorCard();
    EXPECT_FALSE(card.isHidden());
    EXPECT_EQ(card.detail(), *stage.appState().authService().authErrorMessage());
    EXPECT_EQ(card.tint(), StatusCard::Tint::danger);
}

TEST_F(PickerViewTest, signsOut)
{
    stage.open();
    stage.page().footer().signOutButton().click();
    EXPECT_FALSE(stage.appState().authService().currentUser());
    EXPECT_EQ(stage.page().header().statusText(), u"Sign in to sync your library");
}

// Target row

TEST_F(PickerViewTest, saysWhereTextWouldGo)
{
    stage.open();
    EXPECT_EQ(target().symbol(), u"checkmark.circle.fill");
    EXPECT_EQ(target().title(), u"Ready to insert into Text Editor");
    EXPECT_EQ(target().detail(), u"Brevix will preserve your clipboard when paste fallback is needed.");
    EXPECT_EQ(target().tint(), StatusCard::Tint::success);
}

TEST_F(PickerViewTest, saysThatNoFieldWasCaptured)
{
    stage.desk.tree.focusedPath.reset();
    stage.desk.workspace.frontmost.reset();
    stage.open();
    EXPECT_EQ(target().title(), u"No editable field captured");
    EXPECT_EQ(target().detail(), u"Click a text field, then press " + stage.appState().hotkeyLabel() + u".");
    EXPECT_EQ(target().symbol(), u"exclamationmark.circle");
    EXPECT_EQ(target().tint(), StatusCard::Tint::warning);
}

TEST_F(PickerViewTest, refusesPasswordFieldsInRed)
{
    stage.desk.field().subrole = QStringLiteral("AXSecureTextField");
    openSample();
    EXPECT_EQ(target().title(), u"Password fields are not supported");
    EXPECT_EQ(target().symbol(), u"lock.circle");
    EXPECT_EQ(target().tint(), StatusCard::Tint::danger);
    EXPECT_FALSE(actions().insertButton().isEnabled());
    EXPECT_EQ(actions().copyButton().text(), u"Copy Instead");
}

TEST_F(PickerViewTest, asksForMissingPermissionsWhateverTheField)
{
    stage.desk.tree.trusted = false;
    stage.desk.keyEvents.allowed = false;
    stage.open();
    EXPECT_EQ(target().title(), u"Permissions needed");
    EXPECT_EQ(target().symbol(), u"hand.raised");
    PermissionList &permissions = stage.page().notices().permissionList();
    EXPECT_FALSE(permissions.isHidden());
    permissions.accessibilityButton().click();
    EXPECT_EQ(stage.desk.tree.trustRequests, 1);
    permissions.postEventButton().click();
    EXPECT_EQ(stage.desk.keyEvents.requests, 1);
}

TEST_F(PickerViewTest, eachPermissionHasItsNameAndAMarkOfItsOwn)
{
    const QString granted = QStringLiteral("checkmark.circle.fill");
    const QString missing = QStringLiteral("circle");
    const struct
    {
        bool isTrusted;
        bool mayPost;
    } table[] = {{false, false}, {true, false}, {false, true}};
    stage.open();
    const PermissionList &permissions = stage.page().notices().permissionList();
    EXPECT_EQ(permissions.accessibility().label->text(), u"Accessibility");
    EXPECT_EQ(permissions.postEvent().label->text(), u"Keyboard Event Posting");
    for (const auto &row : table) {
        stage.desk.tree.trusted = row.isTrusted;
        stage.desk.keyEvents.allowed = row.mayPost;
        stage.appState().permissions().refresh();
        EXPECT_TRUE(permissions.isVisible());
        EXPECT_EQ(permissions.accessibility().symbol(), row.isTrusted ? granted : missing);
        EXPECT_EQ(permissions.postEvent().symbol(), row.mayPost ? granted : missing);
        EXPECT_EQ(permissions.accessibilityButton().isHidden(), row.isTrusted);
        EXPECT_EQ(permissions.postEventButton().isHidden(), row.mayPost);
    }
}

TEST_F(PickerViewTest, thePermissionListGoesWhenBothAreGranted)
{
    stage.desk.tree.trusted = false;
    stage.open();
    PermissionList &permissions = stage.page().notices().permissionList();
    EXPECT_FALSE(permissions.isHidden());
    EXPECT_TRUE(permissions.postEventButton().isHidden()); // granted: nothing to ask for
    stage.desk.tree.trusted = true;
    stage.appState().permissions().refresh();
    EXPECT_TRUE(permissions.isHidden());
}

TEST_F(PickerViewTest, anIncompleteConfigurationIsSaid)
{
    stage.desk.isConfigured = false;
    stage.open();
    const StatusCard &card = stage.page().notices().configurationCard();
    EXPECT_TRUE(card.isVisible());
    EXPECT_EQ(card.detail(), *stage.appState().configurationIssue());
    EXPECT_EQ(card.tint(), StatusCard::Tint::warning);
}

TEST_F(PickerViewTest, aCompleteConfigurationNeedsNoWords)
{
    stage.open();
    EXPECT_FALSE(stage.appState().configurationIssue());
    EXPECT_TRUE(stage.page().notices().configurationCard().isHidden());
}

// Hotkey tip and warning

TEST_F(PickerViewTest, theTipNamesTheHotkeyUntilItIsHiddenForGood)
{
    stage.open();
    StatusCard &tip = stage.page().notices().tipCard();
    EXPECT_FALSE(tip.isHidden());
    EXPECT_EQ(tip.symbol(), u"keyboard");
    EXPECT_EQ(tip.detail(), u"Best experience: click into any text field, then press " +
                                stage.appState().hotkeyLabel() + u" to insert.");
    EXPECT_EQ(stage.page().notices().hideTipButton().accessibleName(), u"Hide tip");
    stage.page().notices().hideTipButton().click();
    EXPECT_TRUE(tip.isHidden());
    EXPECT_TRUE(stage.appState().preferences().hotkeyTipDismissed());
    for (int opening = 0; opening < 3; ++opening) {
        stage.controller->closePicker();
        stage.desk.press();
        EXPECT_TRUE(tip.isHidden());
    }
}

TEST_F(PickerViewTest, theTipStaysHiddenInTheNextRunOfTheProgram)
{
    stage.open();
    stage.page().notices().hideTipButton().click();
    ASSERT_TRUE(waitUntil([&] {
        UserDefaults onDisk(stage.desk.defaults.filePath());
        return PreferenceStore(onDisk).hotkeyTipDismissed();
    }));
    stage.controller.reset();
    stage.open();
    EXPECT_TRUE(stage.page().notices().tipCard().isHidden());
}

TEST_F(PickerViewTest, aSessionWithoutHotkeysBlamesNobodyElse)
{
    stage.desk.hotKeys.available = false;
    stage.open();
    const StatusCard &warning = stage.page().notices().hotkeyWarning();
    EXPECT_FALSE(warning.isHidden());
    EXPECT_EQ(warning.title(), u"This session has no global shortcuts");
    EXPECT_TRUE(warning.detail().contains(u"brevix toggle"));
    EXPECT_TRUE(stage.page().notices().tipCard().isHidden());
}

TEST_F(PickerViewTest, aHotkeyThatIsLostIsSaidUntilItIsBack)
{
    stage.open();
    const StatusCard &warning = stage.page().notices().hotkeyWarning();
    Q_EMIT stage.desk.hotKeys.lost();
    EXPECT_TRUE(warning.isVisible());
    EXPECT_EQ(warning.title(), stage.appState().hotkeyLabel() + u" is held by another application");
    Q_EMIT stage.desk.hotKeys.regained();
    EXPECT_TRUE(warning.isHidden());
}

TEST_F(PickerViewTest, aRefusedHotkeyIsSaidAloudWithTheWayRoundIt)
{
    stage.desk.hotKeys.isTaken = true;
    stage.open();
    const StatusCard &warning = stage.page().notices().hotkeyWarning();
    EXPECT_FALSE(warning.isHidden());
    EXPECT_EQ(warning.tint(), StatusCard::Tint::warning);
    EXPECT_TRUE(warning.title().contains(u"held by another application"));
    EXPECT_TRUE(warning.detail().contains(u"brevix toggle"));
    EXPECT_TRUE(stage.page().notices().tipCard().isHidden());
}

TEST_F(PickerViewTest, noWarningWhileTheHotkeyIsOurs)
{
    stage.open();
    EXPECT_TRUE(stage.page().notices().hotkeyWarning().isHidden());
}

// Search and list

TEST_F(PickerViewTest, typingFiltersAndSelectsTheBestMatch)
{
    openSample();
    EXPECT_EQ(stage.search().placeholderText(), u"Search prompts or skills...");
    stage.type(QStringLiteral("decline"));
    EXPECT_EQ(stage.appState().query(), u"decline");
    EXPECT_EQ(stage.selectedID(), u"prompt:decline");
    EXPECT_EQ(stage.appState().selectedPromptID(), QStringLiteral("decline"));
}

TEST_F(PickerViewTest, everyOpeningStartsWithAnEmptySearch)
{
    openSample();
    stage.type(QStringLiteral("decline"));
    stage.controller->closePicker();
    stage.desk.press();
    EXPECT_TRUE(stage.search().text().isEmpty());
    EXPECT_GT(stage.list().items().rowCount(), 3);
}

TEST_F(PickerViewTest, arrowsWalkOverSectionBordersAndStopAtTheEnds)
{
    openSample();
    QStringList seen{stage.selectedID()};
    for (int press = 0; press < 6; ++press) {
        stage.key(Qt::Key_Down);
        seen.append(stage.selectedID());
    }
    EXPECT_EQ(seen, QStringList({QStringLiteral("prompt:cold"), QStringLiteral("prompt:interview"),
                                 QStringLiteral("prompt:notes"), QStringLiteral("prompt:decline"),
                                 QStringLiteral("skill:reviewer"), QStringLiteral("skill:reviewer"),
                                 QStringLiteral("skill:reviewer")}));
    EXPECT_EQ(stage.appState().selectedSkillID(), QStringLiteral("reviewer"));
    EXPECT_FALSE(stage.appState().selectedPromptID());
    stage.key(Qt::Key_Up);
    EXPECT_EQ(stage.selectedID(), u"prompt:decline");
    EXPECT_FALSE(stage.appState().selectedSkillID());
    EXPECT_TRUE(stage.search().hasFocus());
}

TEST_F(PickerViewTest, pagesAndEndsAreReachedByKey)
{
    openSample();
    stage.key(Qt::Key_End, Qt::ControlModifier);
    EXPECT_EQ(stage.selectedID(), u"skill:reviewer");
    stage.key(Qt::Key_Home, Qt::ControlModifier);
    EXPECT_EQ(stage.selectedID(), u"prompt:cold");
    stage.key(Qt::Key_PageDown);
    EXPECT_NE(stage.selectedID(), u"prompt:cold");
    stage.key(Qt::Key_PageUp);
    EXPECT_EQ(stage.selectedID(), u"prompt:cold");
}

TEST_F(PickerViewTest, theSelectionFollowsTheCoordinator)
{
    openSample();
    stage.appState().setSelectedPromptID(QStringLiteral("notes"));
    EXPECT_EQ(stage.selectedID(), u"prompt:notes");
    stage.appState().setSelectedSkillID(QStringLiteral("reviewer"));
    EXPECT_EQ(stage.selectedID(), u"skill:reviewer");
}

TEST_F(PickerViewTest, aClickSelectsAndLeavesTheFocusInTheSearchField)
{
    openSample();
    const QModelIndex row =
        stage.list().items().index(stage.list().items().rowOf(QStringLiteral("prompt:decline")), 0);
    stage.list().scrollTo(row);
    QTest::mouseClick(stage.list().viewport(), Qt::LeftButton, {},
                      stage.list().visualRect(row).center() - QPoint(120, 0));
    EXPECT_EQ(stage.selectedID(), u"prompt:decline");
    EXPECT_TRUE(stage.search().hasFocus());
}

TEST_F(PickerViewTest, titlesWithMarkupAreShownAsTheyStand)
{
    stage.desk.server.addPrompt(QStringLiteral("p"), QStringLiteral("<b>bold</b> & {{x}}\nsecond"),
                                QStringLiteral("<i>text</i>\n\n  more"));
    stage.open();
    const QModelIndex row = stage.list().items().index(1, 0);
    EXPECT_EQ(row.data().toString(), u"<b>bold</b> & {{x}} second");
    EXPECT_EQ(row.data(PickerListModel::previewRole).toString(), u"<i>text</i> more");
}

// Row actions

TEST_F(PickerViewTest, aPromptRowOffersInsertCopyAndShare)
{
    openSample();
    EXPECT_EQ(actions().insertButton().accessibleName(), u"Insert Prompt");
    EXPECT_EQ(actions().insertButton().toolTip(), u"Insert into Text Editor");
    EXPECT_TRUE(actions().insertButton().isEnabled());
    EXPECT_EQ(actions().copyButton().accessibleName(), u"Copy");
    EXPECT_TRUE(actions().shareButton().toolTip().startsWith(u"Share Prompt"));
}

TEST_F(PickerViewTest, aSkillRowOffersInsertCopyAndShare)
{
    openSample();
    stage.key(Qt::Key_End, Qt::ControlModifier);
    EXPECT_EQ(actions().insertButton().accessibleName(), u"Insert Skill");
    EXPECT_EQ(actions().copyButton().accessibleName(), u"Copy Skill");
    EXPECT_TRUE(actions().shareButton().toolTip().startsWith(u"Share Skill"));
    EXPECT_EQ(stage.list().currentIndex().data(PickerListModel::chipRole).toString(), u"Skill Instruction");
}

TEST_F(PickerViewTest, returnInsertsThePromptAndClosesThePanel)
{
    openSample();
    stage.key(Qt::Key_Down);
    stage.key(Qt::Key_Return);
    ASSERT_TRUE(waitUntil([&] { return !stage.controller->isPickerVisible(); }));
    EXPECT_TRUE(stage.fieldText().startsWith(u"Thank you for the conversation"));
}

TEST_F(PickerViewTest, theInsertButtonDoesTheSame)
{
    openSample();
    stage.key(Qt::Key_Down);
    QTest::mouseClick(&actions().insertButton(), Qt::LeftButton);
    ASSERT_TRUE(waitUntil([&] { return !stage.controller->isPickerVisible(); }));
    EXPECT_TRUE(stage.fieldText().startsWith(u"Thank you for the conversation"));
}

TEST_F(PickerViewTest, returnInsertsASkillAsItStands)
{
    openSample();
    stage.key(Qt::Key_End, Qt::ControlModifier);
    stage.key(Qt::Key_Return);
    ASSERT_TRUE(waitUntil([&] { return !stage.controller->isPickerVisible(); }));
    EXPECT_TRUE(stage.fieldText().startsWith(u"You review changes"));
}

TEST_F(PickerViewTest, controlReturnCopiesAndThePanelStaysOpen)
{
    openSample();
    stage.key(Qt::Key_Down);
    stage.key(Qt::Key_Return, Qt::ControlModifier);
    ASSERT_TRUE(waitUntil([&] { return stage.appState().lastInsertionResult().has_value(); }));
    EXPECT_TRUE(stage.desk.pasteboard.text().startsWith(u"Thank you for the conversation"));
    EXPECT_TRUE(stage.controller->isPickerVisible());
    StatusCard &card = stage.page().resultLine().card();
    EXPECT_FALSE(stage.page().resultLine().isHidden());
    EXPECT_EQ(card.title(), u"Prompt copied to clipboard.");
    EXPECT_EQ(card.tint(), StatusCard::Tint::success);
}

TEST_F(PickerViewTest, theCopyButtonCopiesASkill)
{
    openSample();
    stage.key(Qt::Key_End, Qt::ControlModifier);
    QTest::mouseClick(&actions().copyButton(), Qt::LeftButton);
    EXPECT_TRUE(stage.desk.pasteboard.text().startsWith(u"You review changes"));
    EXPECT_TRUE(stage.controller->isPickerVisible());
}

TEST_F(PickerViewTest, returnWithoutATargetSaysWhyAndHowToCopy)
{
    stage.desk.tree.focusedPath.reset();
    stage.desk.workspace.frontmost.reset();
    openSample();
    stage.key(Qt::Key_Return);
    EXPECT_FALSE(stage.page().resultLine().isHidden());
    EXPECT_EQ(stage.page().resultLine().card().title(), u"No editable field captured");
    EXPECT_TRUE(stage.page().resultLine().card().detail().contains(u"Ctrl+Return"));
    EXPECT_FALSE(stage.appState().lastInsertionResult());
    stage.key(Qt::Key_Down);
    EXPECT_TRUE(stage.page().resultLine().isHidden());
}

TEST_F(PickerViewTest, aFailedInsertionOffersToCopyInstead)
{
    stage.desk.field().isSettable = false;
    openSample();
    stage.desk.workspace.refusesActivation = true;
    stage.desk.workspace.frontmost = 1;
    stage.key(Qt::Key_Down);
    stage.key(Qt::Key_Return);
    ASSERT_TRUE(waitUntil([&] { return stage.appState().insertionRecovery().has_value(); }));
    ResultLine &line = stage.page().resultLine();
    EXPECT_EQ(line.card().title(), stage.appState().lastInsertionResult()->message);
    EXPECT_EQ(line.card().tint(), StatusCard::Tint::danger);
    EXPECT_EQ(line.recoveryButton().text(), u"Copy Prompt Instead");
    line.recoveryButton().click();
    EXPECT_TRUE(stage.desk.pasteboard.text().startsWith(u"Thank you for the conversation"));
    EXPECT_TRUE(line.recoveryButton().isHidden());
}

TEST_F(PickerViewTest, aFailedPasteThatHasGivenTheFocusAwayTakesItBack)
{
    stage.desk.field().isSettable = false;
    stage.desk.pasteboard.refusesText = true;
    openSample();
    InMemoryWorkspace &workspace = stage.desk.workspace;
    int failures = 0;
    QObject::connect(&stage.appState(), &AppState::insertionFailed, &stage.appState(), [&] { ++failures; });
    stage.key(Qt::Key_Down);

    int before = workspace.ownActivations;
    stage.key(Qt::Key_Return);
    ASSERT_TRUE(waitUntil([&] { return failures == 1; }));
    EXPECT_EQ(workspace.ownActivations, before + 1);

    workspace.frontmost = 1;
    before = workspace.ownActivations;
    stage.key(Qt::Key_Return);
    ASSERT_TRUE(waitUntil([&] { return failures == 2; }));
    EXPECT_EQ(workspace.ownActivations, before) << "the user is not in the target any more";
}

// Empty states

TEST_F(PickerViewTest, aSearchWithoutResultSaysSo)
{
    openSample();
    stage.type(QStringLiteral("zzzz"));
    const EmptyState &empty = stage.page().emptyState();
    EXPECT_TRUE(empty.isVisible());
    EXPECT_EQ(empty.title(), u"No prompts or skills found");
    EXPECT_EQ(empty.detail(), u"Try another search, or create a new prompt or skill.");
    EXPECT_EQ(empty.newPromptButton().text(), u"New Prompt");
    EXPECT_EQ(empty.newSkillButton().text(), u"New Skill");
}

TEST_F(PickerViewTest, anEmptyLibraryTellsWhatWillAppear)
{
    stage.open();
    const EmptyState &empty = stage.page().emptyState();
    EXPECT_TRUE(empty.isVisible());
    EXPECT_EQ(
        empty.detail(),
        u"Your synced library will appear here. When you're ready, click into any text field and press " +
            stage.appState().hotkeyLabel() + u".");
}

// Keyboard focus

TEST_F(PickerViewTest, tabReachesEveryEnabledControlAndComesBack)
{
    stage.desk.tree.trusted = false;
    openSample();
    QStringList names;
    for (int press = 0; press < 40; ++press) {
        stage.key(Qt::Key_Tab);
        if (stage.search().hasFocus())
            break;
        names.append(stage.panel().focusWidget()->accessibleName());
    }
    EXPECT_TRUE(stage.search().hasFocus());
    EXPECT_EQ(names,
              QStringList({QStringLiteral("Copy Instead"), QStringLiteral("Share"), QStringLiteral("New"),
                           QStringLiteral("View Library"), QStringLiteral("Settings..."),
                           QStringLiteral("Sign Out"), QStringLiteral("Quit"), QStringLiteral("Settings"),
                           QStringLiteral("Grant Accessibility"), QStringLiteral("Hide tip")}));
}

TEST_F(PickerViewTest, everyControlHasAnAccessibleName)
{
    openSample();
    for (const QWidget *control : stage.view().findChildren<QWidget *>()) {
        const bool isControl = control->inherits("QAbstractButton") || control->inherits("QLineEdit") ||
                               control->inherits("QAbstractItemView");
        if (isControl && control->isVisibleTo(&stage.view())) {
            EXPECT_FALSE(control->accessibleName().isEmpty()) << control->metaObject()->className();
        }
    }
}

TEST_F(PickerViewTest, thePlusMenuOpensInsideThePanelAndEscapeClosesOnlyIt)
{
    openSample();
    stage.page().footer().plusButton().click();
    InPanelMenu &menu = stage.page().plusMenu();
    EXPECT_TRUE(menu.isVisible());
    EXPECT_FALSE(menu.isWindow());
    EXPECT_TRUE(stage.page().rect().contains(menu.geometry()));
    stage.key(Qt::Key_Escape);
    EXPECT_FALSE(menu.isVisible());
    EXPECT_TRUE(stage.controller->isPickerVisible());
    stage.page().footer().plusButton().click();
    QTest::mouseClick(&stage.search(), Qt::LeftButton);
    EXPECT_FALSE(menu.isVisible());
}

TEST_F(PickerViewTest, quitIsHandedToTheApplication)
{
    stage.open();
    const QSignalSpy quits(stage.controller.get(), &MenuBarController::quitRequested);
    stage.page().footer().quitButton().click();
    EXPECT_EQ(quits.count(), 1);
}

TEST_F(PickerViewTest, toolTipsAreDrawnInsideThePanel)
{
    openSample();
    QWidget &button = stage.page().footer().libraryButton();
    const QPoint place = button.mapTo(&stage.view(), button.rect().center());
    QHelpEvent help(QEvent::ToolTip, place, stage.view().mapToGlobal(place));
    QApplication::sendEvent(&stage.view(), &help);
    const auto *bubble = stage.view().findChild<HintBubble *>();
    ASSERT_TRUE(bubble);
    EXPECT_TRUE(bubble->isVisible());
    EXPECT_EQ(bubble->text(), button.toolTip());
    EXPECT_TRUE(stage.view().rect().contains(bubble->geometry()));
}

TEST_F(PickerViewTest, whatIsCutShortIsToldInFullUnderThePointer)
{
    stage.desk.email = QStringLiteral("somebody.with.a.very.long.address@%1.example.com")
                           .arg(QStringLiteral("company").repeated(8));
    openSample();
    TextLabel *status = nullptr;
    for (TextLabel *label : stage.page().findChildren<TextLabel *>()) {
        if (label->text() == stage.desk.email)
            status = label;
    }
    ASSERT_TRUE(status);
    ASSERT_TRUE(status->isElided());
    const QPoint place = status->mapTo(&stage.view(), status->rect().center());
    QHelpEvent help(QEvent::ToolTip, place, stage.view().mapToGlobal(place));
    QApplication::sendEvent(&stage.view(), &help);
    const auto *bubble = stage.view().findChild<HintBubble *>();
    EXPECT_TRUE(bubble->isVisible());
    EXPECT_EQ(bubble->text(), stage.desk.email);
}

} // namespace
