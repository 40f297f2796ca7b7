// SPDX-License-Identifier: GPL-3.0-or-later
#include "LibraryPage.h"
#include "MenuBarPromptEditorView.h"
#include "PickerFooter.h"
#include "PickerStage.h"
#include "PromptBodyTextView.h"
#include "PromptEditorForm.h"
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
