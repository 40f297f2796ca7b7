// SPDX-License-Identifier: GPL-3.0-or-later
#include "AppWindows.h"
#include "EditorFrame.h"
#include "LibraryPage.h"
#include "MenuBarPromptEditorView.h"
#include "PickerFooter.h"
#include "PickerStage.h"
#include "PromptBodyTextView.h"
#include "PromptEditorController.h"
#include "PromptEditorForm.h"
#include "PromptEditorModel.h"
#include "PromptEditorView.h"
#include "ThemedButton.h"

#include <QSignalSpy>

namespace {

class EditorHostingTest : public testing::Test
{
protected:
    PickerStage stage;

    MenuBarPromptEditorView &editor() { return stage.view().promptEditor(); }

    void openEditor()
    {
        stage.desk.addSampleLibrary();
        stage.open();
        stage.page().footer().plusButton().click();
        clickNamed(QStringLiteral("New Prompt"));
        ASSERT_EQ(stage.view().route(), PickerPanelRoute::newPrompt);
    }

    /// Fills the form and saves; the server keeps the answer back.
    void fillAndSave()
    {
        stage.desk.server.isHolding = true;
        editor().form().titleField().setFocus();
        stage.type(QStringLiteral("Weekly summary"));
        editor().form().body().setFocus();
        stage.type(QStringLiteral("Text"));
        editor().model().save();
        ASSERT_TRUE(editor().model().isSaving());
        ASSERT_TRUE(waitUntil([&] { return stage.desk.server.heldWrites() == 1; }));
    }

    /// Clicks the first visible button with this text.
    void clickNamed(const QString &text)
    {
        const auto buttons = stage.panel().findChildren<ThemedButton *>();
        for (ThemedButton *button : buttons) {
            if (button->isVisible() && button->text() == text) {
                ASSERT_TRUE(button->isEnabled()) << qPrintable(text);
                QTest::mouseClick(button, Qt::LeftButton);
                return;
            }
        }
        FAIL() << "no button " << qPrintable(text);
    }
};

TEST_F(EditorHostingTest, thePlusMenuOpensTheEditorAndEscapeGoesBack)
{
    openEditor();
    EXPECT_TRUE(editor().isVisible());
    EXPECT_TRUE(editor().form().titleField().hasFocus());
    stage.key(Qt::Key_Escape);
    EXPECT_EQ(stage.view().route(), PickerPanelRoute::picker);
    EXPECT_TRUE(stage.controller->isPickerVisible());
    EXPECT_TRUE(stage.search().hasFocus());
}

TEST_F(EditorHostingTest, theEditorReturnsToTheLibraryItWasOpenedFrom)
{
    stage.desk.addSampleLibrary();
    stage.open();
    stage.view().setRoute(PickerPanelRoute::library);
    clickNamed(QStringLiteral("New Prompt"));
    ASSERT_EQ(stage.view().route(), PickerPanelRoute::newPrompt);
    clickNamed(QStringLiteral("Cancel"));
    EXPECT_EQ(stage.view().route(), PickerPanelRoute::library);
}

TEST_F(EditorHostingTest, closingThePanelKeepsTheText)
{
    openEditor();
    stage.type(QStringLiteral("half a title"));
    stage.controller->closePicker();
    stage.desk.press();
    ASSERT_TRUE(waitUntil([&] { return stage.controller->isPickerVisible(); }));
    EXPECT_EQ(stage.view().route(), PickerPanelRoute::newPrompt);
    EXPECT_EQ(editor().form().titleField().text(), u"half a title");
}

TEST_F(EditorHostingTest, writingGoesOnWhereItWasWhenThePanelIsOpenedAgain)
{
    openEditor();
    stage.type(QStringLiteral("Title"));
    editor().form().body().setFocus();
    stage.type(QStringLiteral("Dear "));
    stage.controller->closePicker();
    stage.desk.press();
    ASSERT_TRUE(waitUntil([&] { return editor().isVisible(); }));
    EXPECT_EQ(stage.panel().focusWidget(), &editor().form().body());
    stage.type(QStringLiteral("all"));
    EXPECT_EQ(editor().form().body().content(), u"Dear all");
    EXPECT_EQ(editor().form().titleField().text(), u"Title");
}

TEST_F(EditorHostingTest, staysOpenWhileItSavesAndShowsAFailure)
{
    openEditor();
    fillAndSave();
    stage.key(Qt::Key_Escape);
    EXPECT_FALSE(editor().frame().cancelButton().isEnabled());
    EXPECT_EQ(stage.view().route(), PickerPanelRoute::newPrompt);
    stage.controller->closePicker();
    stage.desk.server.refusal = QStringLiteral("No room.");
    stage.desk.server.release();
    ASSERT_TRUE(waitUntil([&] { return !editor().model().isSaving(); }));
    stage.desk.press();
    ASSERT_TRUE(waitUntil([&] { return editor().isVisible(); }));
    EXPECT_TRUE(editor().model().statusMessage()->isError);
    EXPECT_EQ(editor().form().body().content(), u"Text");
    EXPECT_TRUE(editor().frame().cancelButton().isEnabled());
}

TEST_F(EditorHostingTest, aSaveThatEndsLaterTakesNobodyFromAnotherPage)
{
    openEditor();
    fillAndSave();
    stage.view().setRoute(PickerPanelRoute::settings);
    stage.desk.server.release();
    ASSERT_TRUE(waitUntil([&] { return !editor().model().isSaving(); }));
    EXPECT_FALSE(editor().model().statusMessage()) << "it was saved";
    EXPECT_EQ(stage.view().route(), PickerPanelRoute::settings);
}

// In a window

class PromptWindowTest : public EditorHostingTest
{
protected:
    std::unique_ptr<AppWindows> windows;

    ~PromptWindowTest() override { windows.reset(); }

    void open()
    {
        openEditor();
        windows = std::make_unique<AppWindows>(stage.appState(), stage.desk.workspace, *stage.controller);
    }

    PromptEditorView &window() { return *windows->promptEditor().view(); }
};

TEST_F(PromptWindowTest, takesOverWhatThePanelsEditorHolds)
{
    open();
    stage.type(QStringLiteral("Weekly summary"));
    editor().form().body().setFocus();
    stage.type(QStringLiteral("Summarise {{week}}"));
    clickNamed(QStringLiteral("Open in Window"));
    EXPECT_FALSE(stage.controller->isPickerVisible());
    ASSERT_TRUE(window().isVisible());
    EXPECT_EQ(window().form().titleField().text(), u"Weekly summary");
    EXPECT_EQ(window().form().body().content(), u"Summarise {{week}}");
    EXPECT_EQ(window().model().selectedCategoryID(), editor().model().selectedCategoryID());
    EXPECT_TRUE(window().model().canSave());
    EXPECT_EQ(stage.view().route(), PickerPanelRoute::picker);
    EXPECT_TRUE(editor().form().titleField().text().isEmpty());
    EXPECT_TRUE(editor().form().body().content().isEmpty());
}

TEST_F(PromptWindowTest, opensEmptyFromAnEmptyEditor)
{
    open();
    clickNamed(QStringLiteral("Open in Window"));
    ASSERT_TRUE(window().isVisible());
    EXPECT_TRUE(window().form().titleField().text().isEmpty());
    EXPECT_TRUE(waitUntil([&] { return window().form().titleField().hasFocus(); }));
}

TEST_F(PromptWindowTest, keepsATextOfItsOwnAndLeavesThePanelsText)
{
    open();
    windows->showPromptEditor();
    window().form().titleField().setFocus();
    QTest::keyClicks(&window().form().titleField(), QStringLiteral("Of the window"));
    stage.desk.press();
    ASSERT_TRUE(waitUntil([&] { return stage.controller->isPickerVisible(); }));
    stage.view().setRoute(PickerPanelRoute::newPrompt);
    editor().form().titleField().setFocus();
    stage.type(QStringLiteral("Of the panel"));
    clickNamed(QStringLiteral("Open in Window"));
    EXPECT_EQ(window().form().titleField().text(), u"Of the window");
    EXPECT_EQ(editor().form().titleField().text(), u"Of the panel");
}

TEST_F(PromptWindowTest, cannotBeAskedForWhileThePanelsEditorSaves)
{
    open();
    fillAndSave();
    EXPECT_FALSE(editor().windowButton().isEnabled());
    stage.desk.server.release();
    ASSERT_TRUE(waitUntil([&] { return !editor().model().isSaving(); }));
    EXPECT_TRUE(editor().windowButton().isEnabled());
}

TEST_F(EditorHostingTest, newSkillAsksForItsWindow)
{
    stage.desk.addSampleLibrary();
    stage.open();
    QSignalSpy asked(&stage.view(), &MenuBarPickerView::newSkillRequested);
    stage.page().footer().plusButton().click();
    clickNamed(QStringLiteral("New Skill"));
    EXPECT_EQ(asked.count(), 1);
}

} // namespace
