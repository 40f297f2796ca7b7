// SPDX-License-Identifier: GPL-3.0-or-later
#include "LibraryPage.h"
#include "EmptyState.h"
#include "PageHeader.h"
#include "PickerRowActions.h"
#include "PickerStage.h"
#include "PreviewText.h"
#include "ResultLine.h"
#include "SidebarList.h"
#include "StatusCard.h"
#include "ThemedButton.h"
#include "VariableFillView.h"

#include <gtest/gtest.h>

namespace {

class LibraryPageTest : public testing::Test
{
protected:
    PickerStage stage;

    void openSample()
    {
        stage.desk.addSampleLibrary();
        openLibrary();
    }

    void openLibrary()
    {
        stage.open();
        stage.view().setRoute(PickerPanelRoute::library);
        ASSERT_TRUE(library().isVisible());
        ASSERT_TRUE(library().searchField().hasFocus());
    }

    LibraryPage &library() { return stage.view().libraryPage(); }
    PickerListModel &rows() { return library().list().items(); }
    PickerRowActions &actions() { return library().list().actions(); }

    QStringList titles()
    {
        QStringList shown;
        for (int row = 0; row < rows().rowCount(); ++row)
            shown.append(rows().index(row).data().toString());
        return shown;
    }

    QString selectedID()
    {
        const PickerResult *result = library().list().selectedResult();
        return result ? result->id() : QString();
    }

    QStringList sidebarLines()
    {
        const SidebarModel &lines = library().sidebar().entries();
        QStringList shown;
        for (int row = 0; row < lines.rowCount(); ++row)
            shown.append(lines.index(row).data(Qt::AccessibleTextRole).toString());
        return shown;
    }

    void clickSidebar(const QString &id)
    {
        SidebarList &sidebar = library().sidebar();
        const QModelIndex line = sidebar.entries().index(sidebar.entries().rowOf(id));
        ASSERT_TRUE(line.isValid());
        QTest::mouseClick(sidebar.viewport(), Qt::LeftButton, {}, sidebar.visualRect(line).center());
    }

    void reload()
    {
        stage.appState().libraryStore().unbind();
        stage.appState().libraryStore().bind(QStringLiteral("user"));
        ASSERT_TRUE(waitUntil(
            [&] { return stage.appState().libraryStore().syncState().kind == SyncState::Kind::synced; }));
    }
};

// Routes

TEST_F(LibraryPageTest, viewLibraryOpensItAndBackReturns)
{
    stage.desk.addSampleLibrary();
    stage.open();
    QTest::mouseClick(&stage.page().footer().libraryButton(), Qt::LeftButton);
    EXPECT_EQ(stage.view().route(), PickerPanelRoute::library);
    EXPECT_EQ(library().header().title(), u"Library");
    EXPECT_TRUE(library().searchField().hasFocus());
    EXPECT_EQ(library().header().backButton().accessibleName(), u"Back");
    QTest::mouseClick(&library().header().backButton(), Qt::LeftButton);
    EXPECT_EQ(stage.view().route(), PickerPanelRoute::picker);
    EXPECT_TRUE(stage.search().hasFocus());
}

TEST_F(LibraryPageTest, escapeReturnsToTheQuickPickerAndClosesOnlyThen)
{
    openSample();
    stage.key(Qt::Key_Escape);
    EXPECT_EQ(stage.view().route(), PickerPanelRoute::picker);
    EXPECT_TRUE(stage.controller->isPickerVisible());
    stage.key(Qt::Key_Escape);
    EXPECT_FALSE(stage.controller->isPickerVisible());
}

TEST_F(LibraryPageTest, aReopenedPanelIsOnTheRouteItWasLeftOn)
{
    openSample();
    stage.type(QStringLiteral("notes"));
    stage.controller->closePicker();
    stage.desk.press();
    EXPECT_EQ(stage.view().route(), PickerPanelRoute::library);
    EXPECT_EQ(library().searchField().text(), u"notes");
    EXPECT_TRUE(waitUntil([&] { return stage.panel().focusWidget() == &library().searchField(); }));
}

TEST_F(LibraryPageTest, theTwoSearchesAreApart)
{
    openSample();
    stage.type(QStringLiteral("decline"));
    EXPECT_TRUE(stage.appState().query().isEmpty());
    stage.key(Qt::Key_Escape);
    EXPECT_TRUE(stage.search().text().isEmpty());
}

// Sidebar

TEST_F(LibraryPageTest, theSidebarListsTheFiltersWithTheirCounts)
{
    openSample();
    EXPECT_EQ(sidebarLines(),
              QStringList({QStringLiteral("All Library Items, 5 items"), QStringLiteral("Prompts, 4 items"),
                           QStringLiteral("Skills, 1 item"), QStringLiteral("Categories"),
                           QStringLiteral("Outreach, 1 item"), QStringLiteral("Hiring, 1 item"),
                           QStringLiteral("Engineering, 1 item")}));
    const SidebarModel &lines = library().sidebar().entries();
    EXPECT_EQ(lines.entry(0)->symbol, u"square.grid.2x2");
    EXPECT_EQ(lines.entry(1)->symbol, u"text.quote");
    EXPECT_EQ(lines.entry(2)->symbol, u"wand.and.stars");
    EXPECT_EQ(lines.entry(4)->symbol, u"folder");
    EXPECT_EQ(lines.entry(4)->tint, QColor(0x8b, 0x5c, 0xf6));
}

TEST_F(LibraryPageTest, withoutCategoriesThereIsNoHeadingForThem)
{
    openLibrary();
    EXPECT_EQ(library().sidebar().entries().rowCount(), 3);
}

TEST_F(LibraryPageTest, aFilterNarrowsTheListAndTitlesIt)
{
    openSample();
    EXPECT_EQ(titles().size(), 5);
    EXPECT_EQ(library().title(), u"All Library Items");
    EXPECT_EQ(library().caption(), u"Full library \u00b7 5 items");
    clickSidebar(QStringLiteral("skills"));
    EXPECT_EQ(titles(), QStringList{QStringLiteral("Senior code reviewer")});
    EXPECT_EQ(library().title(), u"Skills");
    EXPECT_EQ(library().caption(), u"Filtered \u00b7 1 item");
    clickSidebar(QStringLiteral("category:hiring"));
    EXPECT_EQ(titles(), QStringList{QStringLiteral("Follow-up after interview")});
    EXPECT_EQ(library().title(), u"Hiring");
    clickSidebar(QStringLiteral("prompts"));
    EXPECT_EQ(library().caption(), u"Filtered \u00b7 4 items");
    clickSidebar(QStringLiteral("all"));
    EXPECT_EQ(library().caption(), u"Full library \u00b7 5 items");
}

TEST_F(LibraryPageTest, aClickInTheSidebarLeavesTheFocusInTheSearchField)
{
    openSample();
    clickSidebar(QStringLiteral("prompts"));
    EXPECT_TRUE(library().searchField().hasFocus());
    stage.type(QStringLiteral("decline"));
    EXPECT_EQ(titles(), QStringList{QStringLiteral("Kind decline")});
}

TEST_F(LibraryPageTest, arrowsInTheSidebarWalkOverTheHeading)
{
    openSample();
    library().sidebar().setFocus();
    QStringList chosen;
    for (int press = 0; press < 4; ++press) {
        stage.key(Qt::Key_Down);
        chosen.append(library().title());
    }
    EXPECT_EQ(chosen, QStringList({QStringLiteral("Prompts"), QStringLiteral("Skills"),
                                   QStringLiteral("Outreach"), QStringLiteral("Hiring")}));
    stage.key(Qt::Key_Up);
    stage.key(Qt::Key_Up);
    EXPECT_EQ(library().title(), u"Skills");
}

TEST_F(LibraryPageTest, aDeletedCategoryKeepsItsPromptsUnderAPlainTitle)
{
    openSample();
    clickSidebar(QStringLiteral("category:engineering"));
    stage.desk.server.clear();
    stage.desk.server.addPrompt(QStringLiteral("notes"), QStringLiteral("Meeting notes"), QStringLiteral("x"),
                                QStringLiteral("engineering"));
    reload();
    EXPECT_EQ(library().title(), u"Category");
    EXPECT_EQ(library().caption(), u"Filtered \u00b7 1 item");
    EXPECT_EQ(library().sidebar().selectedID(), u"category:engineering");
    EXPECT_TRUE(library().sidebar().shareButton().isHidden()); // there is nothing to share any more
    clickSidebar(QStringLiteral("all"));
    EXPECT_EQ(library().sidebar().entries().rowOf(QStringLiteral("category:engineering")), -1);
}

TEST_F(LibraryPageTest, onlyASelectedCategoryOffersToBeShared)
{
    openSample();
    const ThemedButton &share = library().sidebar().shareButton();
    EXPECT_TRUE(share.isHidden());
    clickSidebar(QStringLiteral("category:outreach"));
    EXPECT_TRUE(share.isVisible());
    EXPECT_EQ(share.accessibleName(), u"Share Category");
    EXPECT_GE(share.width(), 28);
    EXPECT_GE(share.height(), 28);
    clickSidebar(QStringLiteral("prompts"));
    EXPECT_TRUE(share.isHidden());
}

// Results

TEST_F(LibraryPageTest, theSearchRanksWithinTheFilter)
{
    openSample();
    stage.type(QStringLiteral("follow"));
    EXPECT_EQ(library().caption(), u"Filtered \u00b7 4 items");
    EXPECT_EQ(titles().first(), u"Follow-up after interview");
    clickSidebar(QStringLiteral("skills"));
    EXPECT_EQ(titles(), QStringList{QStringLiteral("Senior code reviewer")});
}

// A query of blanks is not empty: it shows the recency order, and counts as a narrowed list.
TEST_F(LibraryPageTest, aQueryOfBlanksShowsTheRecencyOrder)
{
    openSample();
    stage.key(Qt::Key_End, Qt::ControlModifier);
    stage.key(Qt::Key_Up);
    stage.key(Qt::Key_Return, Qt::ControlModifier); // uses "Kind decline"
    EXPECT_EQ(titles().first(), u"Cold outreach follow-up");
    stage.type(QStringLiteral("  "));
    EXPECT_EQ(titles().first(), u"Kind decline");
    EXPECT_EQ(library().caption(), u"Filtered \u00b7 5 items");
}

TEST_F(LibraryPageTest, nothingFoundSaysSoAndWhatToTry)
{
    openSample();
    stage.type(QStringLiteral("zzzz"));
    EXPECT_TRUE(library().emptyState().isVisible());
    EXPECT_EQ(library().emptyState().title(), u"No library items found");
    EXPECT_EQ(library().emptyState().detail(), u"Try another search or filter.");
    EXPECT_EQ(library().caption(), u"Filtered \u00b7 0 items");
}

TEST_F(LibraryPageTest, anEmptyLibraryTellsWhatWillAppear)
{
    openLibrary();
    EXPECT_EQ(library().emptyState().title(), u"No library items found");
    EXPECT_EQ(library().emptyState().detail(), u"Your prompts and skills will appear here once they sync.");
    EXPECT_FALSE(library().emptyState().newPromptButton().isVisible()); // the header has them
    clickSidebar(QStringLiteral("skills"));
    EXPECT_EQ(library().emptyState().detail(), u"Try another search or filter.");
}

TEST_F(LibraryPageTest, keysWalkTheResultsWhileTheFocusStaysInTheSearchField)
{
    openSample();
    EXPECT_EQ(selectedID(), u"prompt:cold");
    stage.key(Qt::Key_Down);
    EXPECT_EQ(selectedID(), u"prompt:interview");
    stage.key(Qt::Key_End, Qt::ControlModifier);
    EXPECT_EQ(selectedID(), u"skill:reviewer");
    stage.key(Qt::Key_Home, Qt::ControlModifier);
    EXPECT_EQ(selectedID(), u"prompt:cold");
    stage.key(Qt::Key_Up);
    EXPECT_EQ(selectedID(), u"prompt:cold");
    EXPECT_TRUE(library().searchField().hasFocus());
}

TEST_F(LibraryPageTest, theSelectionSurvivesARefreshOfTheLibrary)
{
    openSample();
    stage.type(QStringLiteral(" ")); // the recency order
    stage.key(Qt::Key_Down);
    stage.key(Qt::Key_Down);
    EXPECT_EQ(selectedID(), u"prompt:notes");
    const auto &prompts = stage.appState().libraryPrompts();
    stage.appState().recents().record(prompts.last(), std::nullopt);
    EXPECT_EQ(titles().first(), u"Kind decline");
    EXPECT_EQ(selectedID(), u"prompt:notes");
}

TEST_F(LibraryPageTest, marksPromptsWithVariablesAndSkills)
{
    openSample();
    EXPECT_TRUE(rows().index(0).data(PickerListModel::hasVariablesRole).toBool());
    EXPECT_TRUE(rows().index(0).data(Qt::AccessibleTextRole).toString().contains(u"Contains variables"));
    EXPECT_FALSE(rows().index(1).data(PickerListModel::hasVariablesRole).toBool());
    EXPECT_EQ(rows().index(4).data(PickerListModel::chipRole).toString(), u"Skill");
}

// Row actions

TEST_F(LibraryPageTest, everyRowOffersInsertCopyAndShare)
{
    openSample();
    EXPECT_EQ(actions().insertButton().accessibleName(), u"Insert");
    EXPECT_EQ(actions().insertButton().toolTip(), u"Insert into Text Editor");
    EXPECT_EQ(actions().copyButton().accessibleName(), u"Copy");
    EXPECT_TRUE(actions().shareButton().toolTip().startsWith(u"Share Prompt"));
    stage.key(Qt::Key_End, Qt::ControlModifier);
    EXPECT_EQ(actions().insertButton().accessibleName(), u"Insert");
    EXPECT_EQ(actions().copyButton().accessibleName(), u"Copy");
    EXPECT_TRUE(actions().shareButton().toolTip().startsWith(u"Share Skill"));
}

TEST_F(LibraryPageTest, withoutATargetOnlyCopyingInsteadIsOffered)
{
    stage.desk.tree.focusedPath.reset();
    stage.desk.workspace.frontmost.reset();
    openSample();
    EXPECT_FALSE(actions().insertButton().isEnabled());
    EXPECT_EQ(actions().copyButton().accessibleName(), u"Copy Instead");
    stage.key(Qt::Key_Return);
    EXPECT_TRUE(library().resultLine().isVisible());
    EXPECT_EQ(library().resultLine().card().title(), u"No editable field captured");
    EXPECT_FALSE(stage.appState().lastInsertionResult());
    stage.key(Qt::Key_Down);
    EXPECT_FALSE(library().resultLine().isVisible());
}

TEST_F(LibraryPageTest, returnInsertsAndClosesThePanel)
{
    openSample();
    stage.key(Qt::Key_Down);
    stage.key(Qt::Key_Return);
    ASSERT_TRUE(waitUntil([&] { return !stage.controller->isPickerVisible(); }));
    EXPECT_TRUE(stage.fieldText().startsWith(u"Thank you for the conversation"));
}

TEST_F(LibraryPageTest, theInsertButtonInsertsASkill)
{
    openSample();
    stage.key(Qt::Key_End, Qt::ControlModifier);
    QTest::mouseClick(&actions().insertButton(), Qt::LeftButton);
    ASSERT_TRUE(waitUntil([&] { return !stage.controller->isPickerVisible(); }));
    EXPECT_TRUE(stage.fieldText().startsWith(u"You review changes"));
}

TEST_F(LibraryPageTest, insertingAPromptWithVariablesAsksForThemAndBackReturnsToTheLibrary)
{
    openSample();
    stage.key(Qt::Key_Down);
    stage.key(Qt::Key_Down); // one variable
    stage.key(Qt::Key_Return);
    VariableFillView &form = stage.view().variableFillView();
    EXPECT_TRUE(form.isVisible());
    EXPECT_TRUE(form.fields().fields().first()->hasFocus());
    stage.key(Qt::Key_Escape);
    EXPECT_TRUE(library().isVisible());
    EXPECT_TRUE(library().searchField().hasFocus());
    EXPECT_EQ(stage.view().route(), PickerPanelRoute::library);
    EXPECT_FALSE(stage.appState().activeVariablePrompt());
}

TEST_F(LibraryPageTest, aFailedInsertionIsSaidInTheLibraryAndOffersACopy)
{
    stage.desk.field().isSettable = false;
    openSample();
    stage.desk.workspace.refusesActivation = true;
    stage.desk.workspace.frontmost = 1;
    stage.key(Qt::Key_Down);
    stage.key(Qt::Key_Return);
    ASSERT_TRUE(waitUntil([&] { return stage.appState().insertionRecovery().has_value(); }));
    EXPECT_TRUE(library().resultLine().isVisible());
    EXPECT_EQ(library().resultLine().recoveryButton().text(), u"Copy Prompt Instead");
    library().resultLine().recoveryButton().click();
    EXPECT_TRUE(stage.desk.pasteboard.text().startsWith(u"Thank you for the conversation"));
}

TEST_F(LibraryPageTest, controlReturnCopiesAPromptWithoutVariablesAtOnce)
{
    openSample();
    stage.key(Qt::Key_Down);
    stage.key(Qt::Key_Return, Qt::ControlModifier);
    EXPECT_TRUE(stage.desk.pasteboard.text().startsWith(u"Thank you for the conversation"));
    EXPECT_FALSE(library().isFormShown());
    EXPECT_EQ(library().resultLine().card().title(), u"Prompt copied to clipboard.");
    EXPECT_TRUE(stage.controller->isPickerVisible());
    EXPECT_EQ(selectedID(), u"prompt:interview"); // its use has changed nothing here
}

TEST_F(LibraryPageTest, theCopyButtonCopiesASkill)
{
    openSample();
    stage.key(Qt::Key_End, Qt::ControlModifier);
    QTest::mouseClick(&actions().copyButton(), Qt::LeftButton);
    EXPECT_TRUE(stage.desk.pasteboard.text().startsWith(u"You review changes"));
}

// Fill & Copy

TEST_F(LibraryPageTest, copyingAPromptWithVariablesOpensTheForm)
{
    openSample();
    stage.key(Qt::Key_Return, Qt::ControlModifier);
    ASSERT_TRUE(library().isFormShown());
    const VariableForm &form = library().form();
    EXPECT_EQ(form.header().title(), u"Fill & Copy");
    EXPECT_EQ(form.header().subtitle(), u"Cold outreach follow-up");
    ASSERT_EQ(form.fields().fields().size(), 3);
    for (const TextField *field : form.fields().fields())
        EXPECT_EQ(field->placeholderText(), u"Value");
    EXPECT_EQ(form.cancelButton().text(), u"Cancel");
    EXPECT_EQ(form.confirmButton().text(), u"Copy");
    EXPECT_TRUE(form.fields().fields().first()->hasFocus());
    EXPECT_TRUE(stage.desk.pasteboard.text().isEmpty());
    EXPECT_FALSE(stage.appState().activeVariablePrompt());
}

TEST_F(LibraryPageTest, returnInTheFormCopiesTheRenderedTextAndGoesBackToTheList)
{
    stage.desk.server.addPrompt(QStringLiteral("p"), QStringLiteral("Greeting"),
                                QStringLiteral("Hi {{name}}, {{name}} and {{other}}."));
    openLibrary();
    stage.key(Qt::Key_Return, Qt::ControlModifier);
    stage.type(QStringLiteral("Ann"));
    EXPECT_EQ(library().form().preview().toPlainText(), u"Hi Ann, Ann and .");
    stage.key(Qt::Key_Return);
    EXPECT_EQ(stage.desk.pasteboard.text(), u"Hi Ann, Ann and .");
    EXPECT_FALSE(library().isFormShown());
    EXPECT_TRUE(library().searchField().hasFocus());
    EXPECT_EQ(library().resultLine().card().title(), u"Prompt copied to clipboard.");
    EXPECT_EQ(stage.appState().recents().recentIDs(), QStringList{QStringLiteral("p")});
    stage.key(Qt::Key_Return, Qt::ControlModifier);
    EXPECT_TRUE(library().form().fields().fields().first()->text().isEmpty()); // the values are gone
}

TEST_F(LibraryPageTest, escapeAndCancelCloseTheFormAndCopyNothing)
{
    openSample();
    stage.key(Qt::Key_Return, Qt::ControlModifier);
    stage.type(QStringLiteral("Ann"));
    stage.key(Qt::Key_Escape);
    EXPECT_FALSE(library().isFormShown());
    EXPECT_EQ(stage.view().route(), PickerPanelRoute::library);
    QTest::mouseClick(&actions().copyButton(), Qt::LeftButton);
    ASSERT_TRUE(library().isFormShown());
    QTest::mouseClick(&library().form().cancelButton(), Qt::LeftButton);
    EXPECT_FALSE(library().isFormShown());
    EXPECT_TRUE(stage.desk.pasteboard.text().isEmpty());
    EXPECT_FALSE(stage.appState().lastInsertionResult());
}

// Keyboard focus

TEST_F(LibraryPageTest, tabReachesEveryControlInReadingOrderAndComesBack)
{
    openSample();
    clickSidebar(QStringLiteral("category:outreach"));
    QStringList names;
    for (int press = 0; press < 20; ++press) {
        stage.key(Qt::Key_Tab);
        if (library().searchField().hasFocus())
            break;
        names.append(stage.panel().focusWidget()->accessibleName());
    }
    EXPECT_TRUE(library().searchField().hasFocus());
    names.removeAll(QStringLiteral("New Prompt"));
    names.removeAll(QStringLiteral("New Skill"));
    names.removeAll(QStringLiteral("Share"));
    names.removeAll(QStringLiteral("Share Category"));
    EXPECT_EQ(names, QStringList({QStringLiteral("Insert"), QStringLiteral("Copy"), QStringLiteral("Back"),
                                  QStringLiteral("Filters")}));
}

TEST_F(LibraryPageTest, everyControlHasAnAccessibleNameAndATargetLargeEnough)
{
    openSample();
    clickSidebar(QStringLiteral("category:outreach"));
    for (const QWidget *control : library().findChildren<QWidget *>()) {
        const bool isControl = control->inherits("QAbstractButton") || control->inherits("QLineEdit") ||
                               control->inherits("QAbstractItemView");
        if (!isControl || !control->isVisible())
            continue;
        EXPECT_FALSE(control->accessibleName().isEmpty()) << control->metaObject()->className();
        EXPECT_GE(control->height(), 28) << qPrintable(control->accessibleName());
        EXPECT_GE(control->width(), 28) << qPrintable(control->accessibleName());
    }
}

} // namespace
