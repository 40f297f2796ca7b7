// SPDX-License-Identifier: GPL-3.0-or-later
#include "AppWindows.h"
#include "EmptyState.h"
#include "FloatingPanelController.h"
#include "InPanelMenu.h"
#include "LibraryPage.h"
#include "PickerRowActions.h"
#include "PickerStage.h"
#include "PreviewText.h"
#include "PromptPalettePanel.h"
#include "PromptPaletteView.h"
#include "PromptPreview.h"
#include "ResultLine.h"
#include "ShareConfirmationBannerView.h"
#include "SidebarList.h"
#include "StatusCard.h"
#include "TextLabel.h"
#include "ThemedButton.h"
#include "VariableFillView.h"

#include <QMouseEvent>

#include <gtest/gtest.h>

namespace {

class PaletteTest : public testing::Test
{
protected:
    PickerStage stage;
    std::unique_ptr<AppWindows> windows;

    ~PaletteTest() override { windows.reset(); }

    void install()
    {
        stage.install();
        windows = std::make_unique<AppWindows>(stage.appState(), stage.desk.workspace, *stage.controller);
    }

    /// Opens the palette as the command line does.
    void open()
    {
        install();
        windows->showPalette();
        ASSERT_TRUE(waitUntil([&] { return windows->palette()->isVisible(); }));
        panel().activateWindow();
        ASSERT_TRUE(waitUntil([&] { return panel().focusWidget() == &view().searchField(); }));
    }

    void openSample()
    {
        stage.desk.addSampleLibrary();
        open();
    }

    PromptPalettePanel &panel() { return windows->palette()->panel(); }
    PromptPaletteView &view() { return panel().view(); }

    void key(Qt::Key key, Qt::KeyboardModifiers modifiers = Qt::NoModifier)
    {
        QWidget *focus = panel().focusWidget();
        QTest::keyClick(focus ? focus : &panel(), key, modifiers);
    }

    void type(const QString &text) { QTest::keyClicks(panel().focusWidget(), text); }
    void click(ThemedButton &button) { QTest::mouseClick(&button, Qt::LeftButton); }

    /// Headings in brackets, rows by their titles.
    QStringList lines()
    {
        QStringList shown;
        const PickerListModel &rows = view().list().items();
        for (int row = 0; row < rows.rowCount(); ++row) {
            const QString text = rows.index(row).data().toString();
            shown.append(rows.result(row) ? text : u'[' + text + u']');
        }
        return shown;
    }

    void reload()
    {
        stage.appState().libraryStore().unbind();
        stage.appState().libraryStore().bind(QStringLiteral("user"));
        ASSERT_TRUE(stage.desk.waitForLibrary());
    }

    QString selectedTitle()
    {
        const PickerResult *result = view().list().selectedResult();
        return result ? result->title() : QString();
    }

    void clickSidebar(const QString &id)
    {
        SidebarList &sidebar = view().sidebar();
        const QModelIndex line = sidebar.entries().index(sidebar.entries().rowOf(id));
        ASSERT_TRUE(line.isValid());
        QTest::mouseClick(sidebar.viewport(), Qt::LeftButton, {}, sidebar.visualRect(line).center());
    }
};

// Opening and closing

TEST_F(PaletteTest, openingItCapturesTheTargetFirst)
{
    openSample();
    EXPECT_TRUE(stage.appState().focusedTarget());
    EXPECT_EQ(view().targetLabel().text(), u"Text Editor");
    EXPECT_FALSE(view().hintCard().isVisible());
    EXPECT_FALSE(stage.controller->isPickerVisible());
    EXPECT_FALSE(stage.appState().palettePresented()); // that is the picker's
}

TEST_F(PaletteTest, withoutAFieldItSaysSoAndWhatToDo)
{
    stage.desk.tree.focusedPath.reset();
    stage.desk.workspace.frontmost.reset();
    openSample();
    EXPECT_EQ(view().targetLabel().text(), u"No focused app captured");
    EXPECT_TRUE(view().hintCard().isVisible());
    EXPECT_EQ(view().hintCard().symbol(), u"exclamationmark.triangle");
    EXPECT_EQ(view().hintCard().detail(), u"Select a text field, then insert or copy a prompt.");
    EXPECT_FALSE(view().insertButton().isEnabled());
    EXPECT_EQ(view().copyButton().text(), u"Copy");
    EXPECT_EQ(view().list().actions().copyButton().text(), u"Copy");
    key(Qt::Key_Return);
    EXPECT_EQ(view().resultLine().card().title(), u"No editable field captured");
    EXPECT_FALSE(stage.appState().lastInsertionResult());
}

TEST_F(PaletteTest, isAFramelessWindowInTheMiddleOfTheScreenAboveOthers)
{
    openSample();
    EXPECT_TRUE(panel().windowFlags().testFlag(Qt::FramelessWindowHint));
    EXPECT_TRUE(panel().windowFlags().testFlag(Qt::WindowStaysOnTopHint));
    EXPECT_EQ(panel().windowTitle(), u"Prompt Picker");
    const QRect available = panel().screen()->availableGeometry();
    EXPECT_EQ(panel().size(), QSize(980, 620).boundedTo(available.size() - QSize(16, 16)));
    EXPECT_LE((panel().geometry().center() - available.center()).manhattanLength(), 2);
}

TEST_F(PaletteTest, isOnEveryVirtualDesktop)
{
    open();
    EXPECT_EQ(stage.desk.workspace.onAllDesktops, panel().windowHandle());
}

TEST_F(PaletteTest, cannotComeFromAnArchive)
{
    QDataStream archive;
    EXPECT_DEATH(FloatingPanelController{archive}, "init\\(coder:\\) has not been implemented");
}

TEST_F(PaletteTest, openingItAgainRaisesTheSameWindow)
{
    openSample();
    PromptPalettePanel *first = &panel();
    type(QStringLiteral("notes"));
    windows->showPalette();
    EXPECT_EQ(&panel(), first);
    EXPECT_EQ(view().searchField().text(), u"notes"); // it was open: nothing starts anew
    key(Qt::Key_Escape);
    EXPECT_FALSE(panel().isVisible());
    windows->showPalette();
    ASSERT_TRUE(waitUntil([&] { return panel().isVisible(); }));
    EXPECT_TRUE(view().searchField().text().isEmpty());
}

TEST_F(PaletteTest, escapeCloseAndTheWindowManagerCloseIt)
{
    openSample();
    key(Qt::Key_Escape);
    EXPECT_FALSE(panel().isVisible());
    for (const bool byButton : {true, false}) {
        windows->showPalette();
        ASSERT_TRUE(waitUntil([&] { return panel().isVisible(); }));
        if (byButton)
            click(view().closeButton());
        else
            panel().close();
        EXPECT_FALSE(panel().isVisible());
    }
}

TEST_F(PaletteTest, thePickersMenuOpensItWithTheTargetThatThePickerHas)
{
    stage.desk.addSampleLibrary();
    install();
    stage.desk.press();
    const FocusedTargetPtr target = stage.appState().focusedTarget();
    ASSERT_TRUE(target);
    stage.page().footer().plusButton().click();
    ThemedButton *entry = nullptr;
    for (ThemedButton *button : stage.page().plusMenu().findChildren<ThemedButton *>()) {
        if (button->text() == u"Open Palette")
            entry = button;
    }
    ASSERT_TRUE(entry);
    click(*entry);
    EXPECT_TRUE(windows->palette()->isVisible());
    EXPECT_FALSE(stage.controller->isPickerVisible());
    EXPECT_EQ(stage.appState().focusedTarget(), target);
}

TEST_F(PaletteTest, browseLibraryOpensThePanelOnTheLibrary)
{
    openSample();
    click(view().browseButton());
    ASSERT_TRUE(waitUntil([&] { return stage.controller->isPickerVisible(); }));
    EXPECT_FALSE(panel().isVisible());
    EXPECT_EQ(stage.view().route(), PickerPanelRoute::library);
    EXPECT_TRUE(stage.view().libraryPage().isVisible());
}

TEST_F(PaletteTest, thePickerTakesItsPlace)
{
    openSample();
    stage.desk.press();
    EXPECT_TRUE(stage.controller->isPickerVisible());
    EXPECT_FALSE(panel().isVisible());
}

TEST_F(PaletteTest, draggingTheBackgroundMovesTheWindow)
{
    openSample();
    const QPoint before = panel().pos();
    const QPoint grip(300, 8); // in the head, beside every control
    QTest::mousePress(&panel(), Qt::LeftButton, {}, grip);
    QMouseEvent move(QEvent::MouseMove, grip + QPoint(40, 25), panel().mapToGlobal(grip + QPoint(40, 25)),
                     Qt::NoButton, Qt::LeftButton, Qt::NoModifier);
    QApplication::sendEvent(&panel(), &move);
    QTest::mouseRelease(&panel(), Qt::LeftButton, {}, grip);
    EXPECT_EQ(panel().pos() - before, QPoint(40, 25));
}

// Sections

TEST_F(PaletteTest, withoutRecentPromptsThereIsOneSection)
{
    openSample();
    EXPECT_EQ(lines(),
              QStringList({QStringLiteral("[All Prompts]"), QStringLiteral("Cold outreach follow-up"),
                           QStringLiteral("Follow-up after interview"),
                           QStringLiteral("Meeting notes to actions"), QStringLiteral("Kind decline")}));
}

TEST_F(PaletteTest, recentPromptsComeFirstUntilSomethingIsTyped)
{
    openSample();
    stage.appState().recents().record(stage.appState().libraryPrompts().last(), std::nullopt);
    EXPECT_EQ(lines().mid(0, 3), QStringList({QStringLiteral("[Recent]"), QStringLiteral("Kind decline"),
                                              QStringLiteral("[All Prompts]")}));
    type(QStringLiteral("follow"));
    EXPECT_EQ(lines().first(), u"[Matches]");
    EXPECT_FALSE(lines().contains(QStringLiteral("[Recent]")));
    EXPECT_FALSE(lines().contains(QStringLiteral("[All Prompts]")));
}

TEST_F(PaletteTest, skillsAreNotListed)
{
    openSample();
    type(QStringLiteral("reviewer"));
    EXPECT_TRUE(lines().isEmpty());
    EXPECT_TRUE(view().emptyState().isVisible());
    EXPECT_TRUE(view().preview().emptyState().isVisible());
    EXPECT_EQ(view().preview().emptyState().detail(), u"Choose a prompt to preview it.");
    EXPECT_FALSE(view().insertButton().isEnabled());
    EXPECT_FALSE(view().copyButton().isEnabled());
    EXPECT_FALSE(view().shareButton().isEnabled());
}

// A prompt that was used lately stands in two sections; walking down must not jump back to the first of them.
TEST_F(PaletteTest, aPromptInTwoSectionsIsPassedTwice)
{
    openSample();
    stage.appState().recents().record(stage.appState().libraryPrompts().first(), std::nullopt);
    key(Qt::Key_Home, Qt::ControlModifier);
    QStringList seen{selectedTitle()};
    for (int press = 0; press < 4; ++press) {
        key(Qt::Key_Down);
        seen.append(selectedTitle());
    }
    EXPECT_EQ(seen, QStringList(
                        {QStringLiteral("Cold outreach follow-up"), QStringLiteral("Cold outreach follow-up"),
                         QStringLiteral("Follow-up after interview"),
                         QStringLiteral("Meeting notes to actions"), QStringLiteral("Kind decline")}));
}

TEST_F(PaletteTest, rowsTellCategoryAndVariables)
{
    openSample();
    const PickerListModel &rows = view().list().items();
    EXPECT_EQ(rows.index(1).data(PickerListModel::categoryRole).toString(), u"Outreach");
    EXPECT_TRUE(rows.index(1).data(Qt::AccessibleTextRole).toString().contains(u"Contains variables"));
    EXPECT_FALSE(rows.index(4).data(Qt::AccessibleTextRole).toString().contains(u"Contains variables"));
    EXPECT_EQ(rows.result(1)->id(), u"prompt:cold");
}

// Sidebar

TEST_F(PaletteTest, itsCategoryEndsWithItBecauseThePickerCouldNotShowIt)
{
    openSample();
    stage.appState().setSelectedCategoryID(QStringLiteral("hiring"));
    view().window()->hide();
    EXPECT_FALSE(stage.appState().selectedCategoryID());
}

TEST_F(PaletteTest, theSidebarSelectsTheCategory)
{
    openSample();
    EXPECT_EQ(view().sidebar().entries().index(0).data().toString(), u"All Prompts");
    EXPECT_EQ(view().sidebar().selectedID(), u"all");
    clickSidebar(QStringLiteral("category:hiring"));
    EXPECT_EQ(stage.appState().selectedCategoryID(), QStringLiteral("hiring"));
    EXPECT_EQ(lines(),
              QStringList({QStringLiteral("[All Prompts]"), QStringLiteral("Follow-up after interview")}));
    EXPECT_EQ(selectedTitle(), u"Follow-up after interview");
    EXPECT_EQ(view().sidebar().shareButton().accessibleName(), u"Share Category");
    EXPECT_TRUE(view().sidebar().shareButton().isVisible());
    clickSidebar(QStringLiteral("all"));
    EXPECT_FALSE(stage.appState().selectedCategoryID());
    EXPECT_EQ(lines().size(), 5);
    EXPECT_TRUE(view().searchField().hasFocus());
}

TEST_F(PaletteTest, aCategoryThatWasDeletedElsewhereStaysUntilAnotherOneIsChosen)
{
    openSample();
    clickSidebar(QStringLiteral("category:hiring"));
    stage.desk.server.removeCategory(QStringLiteral("hiring"));
    reload();
    EXPECT_EQ(view().sidebar().selectedID(), u"category:hiring");
    const SidebarModel &entries = view().sidebar().entries();
    EXPECT_EQ(entries.index(entries.rowOf(QStringLiteral("category:hiring"))).data().toString(), u"Category");
    EXPECT_TRUE(view().sidebar().shareButton().isHidden());
    EXPECT_EQ(lines().last(), u"Follow-up after interview");
    clickSidebar(QStringLiteral("all"));
    EXPECT_EQ(entries.rowOf(QStringLiteral("category:hiring")), -1);
}

// Preview

TEST_F(PaletteTest, thePreviewShowsTheSelectedPromptAsItIsWritten)
{
    openSample();
    EXPECT_EQ(view().preview().titleLabel().text(), u"Cold outreach follow-up");
    EXPECT_EQ(view().preview().categoryLabel().text(), u"Outreach");
    EXPECT_EQ(view().preview().text().toPlainText(), stage.appState().libraryPrompts().first().text);
    key(Qt::Key_Down);
    EXPECT_EQ(stage.appState().selectedPromptID(), QStringLiteral("interview"));
    EXPECT_TRUE(view().preview().text().toPlainText().startsWith(u"Thank you for the conversation"));
    EXPECT_TRUE(view().preview().text().textInteractionFlags().testFlag(Qt::TextSelectableByKeyboard));
}

TEST_F(PaletteTest, anEmptyLibraryAsksForNothingToBeChosen)
{
    open();
    EXPECT_TRUE(view().emptyState().isVisible());
    EXPECT_TRUE(view().preview().emptyState().isVisible());
}

// Actions

TEST_F(PaletteTest, returnInsertsAndClosesIt)
{
    openSample();
    key(Qt::Key_Down);
    key(Qt::Key_Return);
    ASSERT_TRUE(waitUntil([&] { return !panel().isVisible(); }));
    EXPECT_TRUE(stage.fieldText().startsWith(u"Thank you for the conversation"));
}

TEST_F(PaletteTest, theFootersButtonsActOnTheSelectedPrompt)
{
    openSample();
    key(Qt::Key_Down);
    EXPECT_EQ(view().insertButton().toolTip(), u"Insert into Text Editor");
    click(view().copyButton());
    EXPECT_TRUE(stage.desk.pasteboard.text().startsWith(u"Thank you for the conversation"));
    EXPECT_TRUE(panel().isVisible());
    EXPECT_EQ(view().resultLine().card().title(), u"Prompt copied to clipboard.");
    click(view().insertButton());
    ASSERT_TRUE(waitUntil([&] { return !panel().isVisible(); }));
    EXPECT_TRUE(stage.fieldText().startsWith(u"Thank you for the conversation"));
}

TEST_F(PaletteTest, theRowOffersTheSameActions)
{
    openSample();
    PickerRowActions &actions = view().list().actions();
    EXPECT_EQ(actions.insertButton().accessibleName(), u"Insert");
    EXPECT_EQ(actions.copyButton().accessibleName(), u"Copy");
    EXPECT_EQ(actions.shareButton().accessibleName(), u"Share");
    key(Qt::Key_Down);
    click(actions.insertButton());
    ASSERT_TRUE(waitUntil([&] { return !panel().isVisible(); }));
    EXPECT_TRUE(stage.fieldText().startsWith(u"Thank you for the conversation"));
}

TEST_F(PaletteTest, sharingShowsProgressThenTheBanner)
{
    openSample();
    stage.desk.server.isHolding = true;
    click(view().shareButton());
    EXPECT_EQ(view().shareButton().text(), u"Sharing...");
    EXPECT_FALSE(view().shareButton().isEnabled());
    EXPECT_EQ(view().list().actions().shareButton().accessibleName(), u"Sharing");
    ASSERT_TRUE(waitUntil([&] { return stage.desk.server.heldWrites() == 1; }));
    stage.desk.server.release();
    ASSERT_TRUE(waitUntil([&] { return view().banner().isVisible(); }));
    EXPECT_EQ(view().shareButton().text(), u"Share");
    EXPECT_EQ(view().banner().title(), u"Cold outreach follow-up");
    click(view().banner().dismissButton());
    EXPECT_FALSE(view().banner().isVisible());
}

TEST_F(PaletteTest, promptsWithVariablesAreFilledInThePalette)
{
    openSample();
    key(Qt::Key_Down);
    key(Qt::Key_Down);
    key(Qt::Key_Return);
    ASSERT_TRUE(view().form().isVisible());
    EXPECT_FALSE(view().list().isVisible());
    type(QStringLiteral("Milk"));
    key(Qt::Key_Escape);
    EXPECT_TRUE(view().list().isVisible());
    EXPECT_TRUE(view().searchField().hasFocus());
    EXPECT_TRUE(panel().isVisible());
    key(Qt::Key_Return);
    type(QStringLiteral("Bread"));
    key(Qt::Key_Return);
    ASSERT_TRUE(waitUntil([&] { return !panel().isVisible(); }));
    EXPECT_TRUE(stage.fieldText().contains(u"Bread"));
    EXPECT_FALSE(stage.appState().activeVariablePrompt());
}

TEST_F(PaletteTest, aFailedInsertionKeepsItOpenAndOffersACopy)
{
    stage.desk.field().isSettable = false;
    openSample();
    stage.desk.workspace.refusesActivation = true;
    stage.desk.workspace.frontmost = 1;
    key(Qt::Key_Down);
    key(Qt::Key_Return);
    ASSERT_TRUE(waitUntil([&] { return stage.appState().insertionRecovery().has_value(); }));
    EXPECT_TRUE(panel().isVisible());
    click(view().resultLine().recoveryButton());
    EXPECT_TRUE(stage.desk.pasteboard.text().startsWith(u"Thank you for the conversation"));
}

// Accessibility

TEST_F(PaletteTest, everyControlHasANameAndATargetLargeEnoughAndTabReachesThemAll)
{
    openSample();
    clickSidebar(QStringLiteral("category:hiring"));
    QSet<const QWidget *> expected;
    for (const QWidget *control : view().findChildren<QWidget *>()) {
        const bool isButton = control->inherits("QAbstractButton");
        const bool isControl =
            isButton || control->inherits("QLineEdit") || control->inherits("QAbstractItemView");
        if (!isControl || !control->isVisible())
            continue;
        EXPECT_FALSE(control->accessibleName().isEmpty()) << control->metaObject()->className();
        EXPECT_GE(control->height(), 28) << qPrintable(control->accessibleName());
        EXPECT_GE(control->width(), 28) << qPrintable(control->accessibleName());
        if (isButton && control->isEnabled())
            expected.insert(control);
    }
    expected.insert(&view().sidebar());
    QSet<const QWidget *> reached;
    for (int press = 0; press < 30; ++press) {
        key(Qt::Key_Tab);
        reached.insert(panel().focusWidget());
    }
    for (const QWidget *control : expected)
        EXPECT_TRUE(reached.contains(control)) << qPrintable(control->accessibleName());
}

} // namespace
