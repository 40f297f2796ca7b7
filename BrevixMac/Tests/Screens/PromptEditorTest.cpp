// SPDX-License-Identifier: GPL-3.0-or-later
#include "CategoryField.h"
#include "CategoryMenu.h"
#include "ColorSwatches.h"
#include "EditorFrame.h"
#include "EditorStage.h"
#include "EditorStatusLine.h"
#include "NewCategoryForm.h"
#include "PromptEditorController.h"

#include <QAbstractButton>
#include <QListWidget>
#include <QSignalSpy>

namespace {

/// What both prompt editors do in the same way.
class PromptEditors : public testing::TestWithParam<EditorKind>
{
protected:
    void open() { stage.open(GetParam()); }

    PromptStage stage;
};

INSTANTIATE_TEST_SUITE_P(Both, PromptEditors, testing::Values(EditorKind::panel, EditorKind::window),
                         [](const auto &info) {
                             return info.param == EditorKind::panel ? "panel" : "window";
                         });

TEST_P(PromptEditors, openWithTheTitleFocusedAndNothingToSave)
{
    open();
    EXPECT_TRUE(stage.form().titleField().hasFocus());
    EXPECT_EQ(stage.form().titleField().placeholderText(), u"e.g. Cold outreach follow-up");
    EXPECT_FALSE(stage.frame().saveButton().isEnabled());
    EXPECT_EQ(stage.form().preview().placeholderText(), u"Your prompt preview will appear here.");
    EXPECT_EQ(stage.form().variableField().placeholderText(), u"Variable name");
}

TEST_P(PromptEditors, saveWhatWasTypedByTheKeyboardAlone)
{
    open();
    stage.type(QStringLiteral("Follow-up"));
    stage.key(Qt::Key_Return);
    stage.type(QStringLiteral("Hi {{name}}"));
    ASSERT_TRUE(stage.frame().saveButton().isEnabled());
    QSignalSpy saved(&stage.model(), &EditorModel::saved);
    stage.key(Qt::Key_S, Qt::ControlModifier);
    ASSERT_TRUE(waitUntil([&] { return saved.count() == 1; }));
    const auto prompts = stage.desk.server.created("prompts");
    ASSERT_EQ(prompts.size(), 1);
    EXPECT_EQ(LibraryServer::text(prompts.first(), QStringLiteral("title")), u"Follow-up");
    EXPECT_EQ(LibraryServer::text(prompts.first(), QStringLiteral("text")), u"Hi {{name}}");
    EXPECT_EQ(LibraryServer::text(prompts.first(), QStringLiteral("categoryId")), u"outreach");
    EXPECT_TRUE(stage.form().titleField().text().isEmpty());
    EXPECT_TRUE(stage.form().body().content().isEmpty());
}

TEST_P(PromptEditors, saveOnControlReturnToo)
{
    open();
    stage.fill(QStringLiteral("T"), QStringLiteral("Body"));
    stage.key(Qt::Key_Return, Qt::ControlModifier);
    EXPECT_TRUE(stage.model().isSaving());
    ASSERT_TRUE(waitUntil([&] { return stage.desk.server.writes == 1 && !stage.model().isSaving(); }));
}

TEST_P(PromptEditors, lockTheFormAndSayThatTheySaveWhileTheyDo)
{
    stage.desk.server.isHolding = true;
    open();
    stage.fill(QStringLiteral("T"), QStringLiteral("Body"));
    stage.frame().saveButton().click();
    EXPECT_EQ(stage.frame().saveButton().text(), u"Saving...");
    EXPECT_FALSE(stage.frame().saveButton().isEnabled());
    EXPECT_TRUE(stage.form().body().isReadOnly());
    stage.key(Qt::Key_S, Qt::ControlModifier);
    stage.desk.server.release();
    ASSERT_TRUE(waitUntil([&] { return !stage.model().isSaving(); }));
    EXPECT_EQ(stage.desk.server.writes, 1);
    EXPECT_FALSE(stage.form().body().isReadOnly());
}

TEST_P(PromptEditors, keepTheTextAndSayWhyWhenTheServerRefuses)
{
    stage.desk.server.refusal = QStringLiteral("The quota is used up.");
    open();
    stage.fill(QStringLiteral("T"), QStringLiteral("Body"));
    stage.frame().saveButton().click();
    ASSERT_TRUE(waitUntil([&] { return stage.model().statusMessage().has_value(); }));
    EXPECT_TRUE(stage.model().statusMessage()->isError);
    EXPECT_TRUE(stage.model().statusMessage()->text.contains(u"The quota is used up."));
    EXPECT_EQ(stage.form().body().content(), u"Body");
    EXPECT_TRUE(stage.frame().saveButton().isEnabled());
    EXPECT_TRUE(stage.frame().statusLine().isVisible());
}

TEST_P(PromptEditors, keepTheTextWhenTheServerCannotBeReached)
{
    open();
    stage.fill(QStringLiteral("T"), QStringLiteral("Body"));
    stage.desk.server.goAway();
    stage.frame().saveButton().click();
    ASSERT_TRUE(waitUntil([&] { return stage.model().statusMessage().has_value(); }));
    EXPECT_TRUE(stage.model().statusMessage()->isError);
    EXPECT_EQ(stage.form().body().content(), u"Body");
}

TEST_P(PromptEditors, keepTheTextWhileSignedOut)
{
    open();
    stage.fill(QStringLiteral("T"), QStringLiteral("Body"));
    stage.desk.appState->signOut();
    EXPECT_EQ(stage.form().body().content(), u"Body");
    EXPECT_EQ(stage.model().selectedCategoryID(), u"outreach");
    stage.model().save();
    ASSERT_TRUE(waitUntil([&] { return stage.model().statusMessage().has_value(); }));
    EXPECT_EQ(stage.model().statusMessage()->text,
              u"Sign in before creating or sharing prompts, skills, or categories.");
    EXPECT_EQ(stage.form().body().content(), u"Body");
}

TEST_P(PromptEditors, refuseATextThatTheLibraryCannotHoldWithoutSendingIt)
{
    open();
    stage.fill(QStringLiteral("T"), QString(QStringLiteral("line\n").repeated(250'000)));
    stage.frame().saveButton().click();
    ASSERT_TRUE(stage.model().statusMessage().has_value());
    EXPECT_TRUE(stage.model().statusMessage()->text.startsWith(u"This text is too large to be saved"));
    EXPECT_EQ(stage.desk.server.writes, 0);
    EXPECT_EQ(stage.form().body().content().size(), 1'250'000);
}

// Blank texts and missing parts

struct CanSaveCase
{
    const char *title;
    const char *text;
    bool canSave;
};

TEST_P(PromptEditors, canSaveOnlyWithATitleATextAndACategory)
{
    open();
    const CanSaveCase cases[] = {{"", "", false},    {"T", "", false},      {"", "x", false},
                                 {" ", "x", false},  {"T", " \n\t", false}, {"T", "x", true},
                                 {" T ", " x", true}};
    for (const CanSaveCase &given : cases) {
        stage.fill(QString::fromLatin1(given.title), QString::fromLatin1(given.text));
        EXPECT_EQ(stage.frame().saveButton().isEnabled(), given.canSave) << given.title << '|' << given.text;
    }
    stage.model().selectCategory({});
    EXPECT_FALSE(stage.frame().saveButton().isEnabled());
}

TEST_P(PromptEditors, askForACategoryFirstWhenThereIsNone)
{
    stage.desk.server.removeCategory(QStringLiteral("outreach"));
    stage.desk.server.removeCategory(QStringLiteral("writing"));
    open();
    EXPECT_TRUE(stage.form().newCategoryForm().isVisible());
    EXPECT_FALSE(stage.form().categoryField().isEnabled());
    stage.fill(QStringLiteral("T"), QStringLiteral("Body"));
    EXPECT_FALSE(stage.frame().saveButton().isEnabled());
    stage.key(Qt::Key_S, Qt::ControlModifier);
    ASSERT_TRUE(stage.model().statusMessage());
    EXPECT_EQ(stage.model().statusMessage()->text,
              GetParam() == EditorKind::panel ? u"Create a category before saving."
                                              : u"Create a category before saving your first prompt.");
    EXPECT_TRUE(stage.model().statusMessage()->isError);
}

TEST_P(PromptEditors, sayThatTheChosenCategoryWasDeletedElsewhere)
{
    open();
    stage.fill(QStringLiteral("T"), QStringLiteral("Body"));
    stage.desk.server.removeCategory(QStringLiteral("outreach"));
    // Creating anything makes the store read the library again.
    stage.model().setNewCategoryName(QStringLiteral("Other"));
    await(stage.desk.appState->createCategory(QStringLiteral("Other"), QStringLiteral("#10b981")));
    ASSERT_TRUE(waitUntil([&] { return stage.model().selectedCategoryID().isEmpty(); }));
    EXPECT_EQ(stage.model().statusMessage()->text,
              u"The category \"Outreach\" no longer exists. Choose another one.");
    EXPECT_FALSE(stage.frame().saveButton().isEnabled());
    EXPECT_EQ(stage.form().body().content(), u"Body");
    stage.model().selectCategory(QStringLiteral("writing"));
    EXPECT_TRUE(stage.frame().saveButton().isEnabled());
}

// Categories

TEST_P(PromptEditors, chooseACategoryFromTheMenuByKeyboard)
{
    open();
    stage.form().categoryField().setFocus();
    stage.key(Qt::Key_Down);
    CategoryMenu *menu = stage.form().categoryField().menu();
    ASSERT_NE(menu, nullptr);
    EXPECT_TRUE(menu->list().hasFocus());
    stage.key(Qt::Key_Down);
    stage.key(Qt::Key_Return);
    EXPECT_EQ(stage.model().selectedCategoryID(), u"writing");
    EXPECT_EQ(stage.form().categoryField().accessibleName(), u"Category: Writing");
    EXPECT_TRUE(stage.form().categoryField().hasFocus());
}

TEST_P(PromptEditors, escapeClosesTheMenuFirst)
{
    open();
    stage.fill(QStringLiteral("T"), QStringLiteral("Body"));
    stage.form().categoryField().openMenu();
    stage.key(Qt::Key_Escape);
    EXPECT_TRUE(stage.form().isVisible());
    EXPECT_EQ(stage.form().titleField().text(), u"T");
}

TEST_P(PromptEditors, createACategoryAndChooseIt)
{
    open();
    stage.form().newCategoryToggle().click();
    NewCategoryForm &form = stage.form().newCategoryForm();
    ASSERT_TRUE(form.isVisible());
    EXPECT_EQ(stage.form().newCategoryToggle().text(),
              GetParam() == EditorKind::panel ? u"Hide" : u"Hide New Category");
    EXPECT_TRUE(form.nameField().hasFocus());
    EXPECT_FALSE(form.createButton().isEnabled());
    stage.type(QStringLiteral("  Hiring "));
    form.swatches().swatches().at(2)->click();
    stage.key(Qt::Key_Return);
    ASSERT_TRUE(waitUntil([&] { return stage.model().statusMessage().has_value(); }));
    EXPECT_EQ(stage.model().statusMessage(),
              std::optional(EditorStatusMessage{QStringLiteral("Created category \"Hiring\"."), false}));
    EXPECT_FALSE(form.isVisible());
    EXPECT_EQ(stage.form().newCategoryToggle().text(), u"New Category");
    const auto categories = stage.desk.server.created("categories");
    ASSERT_EQ(categories.size(), 1);
    EXPECT_EQ(LibraryServer::text(categories.first(), QStringLiteral("name")), u"Hiring");
    EXPECT_EQ(LibraryServer::text(categories.first(), QStringLiteral("color")), u"#10b981");
    EXPECT_EQ(stage.form().categoryField().accessibleName(), u"Category: Hiring");
    EXPECT_TRUE(stage.model().newCategoryName().isEmpty());
}

TEST_P(PromptEditors, createNoCategoryWithoutAName)
{
    open();
    stage.model().setNewCategoryName(QStringLiteral(" \t "));
    stage.model().createCategory();
    EXPECT_FALSE(stage.model().isWritingCategory());
    EXPECT_EQ(stage.desk.server.writes, 0);
}

TEST_P(PromptEditors, keepTheNameOfACategoryThatCouldNotBeCreated)
{
    stage.desk.server.refusal = QStringLiteral("No.");
    open();
    stage.form().newCategoryToggle().click();
    stage.type(QStringLiteral("Hiring"));
    stage.key(Qt::Key_Return);
    ASSERT_TRUE(waitUntil([&] { return stage.model().statusMessage().has_value(); }));
    EXPECT_TRUE(stage.model().statusMessage()->isError);
    EXPECT_EQ(stage.form().newCategoryForm().nameField().text(), u"Hiring");
    EXPECT_TRUE(stage.form().newCategoryForm().isVisible());
}

TEST(CategoryColorTest, offersSixColoursPurpleFirst)
{
    const QList<CategoryColor> &colors = CategoryColor::all();
    const QList<QPair<QString, QString>> expected{{QStringLiteral("Purple"), QStringLiteral("#8b5cf6")},
                                                  {QStringLiteral("Blue"), QStringLiteral("#3b82f6")},
                                                  {QStringLiteral("Green"), QStringLiteral("#10b981")},
                                                  {QStringLiteral("Pink"), QStringLiteral("#ec4899")},
                                                  {QStringLiteral("Orange"), QStringLiteral("#f97316")},
                                                  {QStringLiteral("Red"), QStringLiteral("#ef4444")}};
    ASSERT_EQ(colors.size(), expected.size());
    for (qsizetype index = 0; index < colors.size(); ++index) {
        EXPECT_EQ(colors.at(index).name, expected.at(index).first);
        EXPECT_EQ(colors.at(index).value, expected.at(index).second);
    }
}

TEST_P(PromptEditors, offerTheColoursByNameWithPurpleChosen)
{
    open();
    stage.form().newCategoryToggle().click();
    const auto &swatches = stage.form().newCategoryForm().swatches().swatches();
    ASSERT_EQ(swatches.size(), 6);
    EXPECT_TRUE(swatches.first()->isChecked());
    for (qsizetype index = 0; index < 6; ++index) {
        EXPECT_EQ(swatches.at(index)->toolTip(), CategoryColor::all().at(index).name);
        EXPECT_EQ(swatches.at(index)->accessibleName(), CategoryColor::all().at(index).name);
        EXPECT_GE(swatches.at(index)->width(), 28);
        EXPECT_GE(swatches.at(index)->height(), 28);
    }
    swatches.first()->setFocus();
    stage.key(Qt::Key_Right);
    EXPECT_EQ(stage.model().selectedCategoryColor(), u"#3b82f6");
}

// Variables

struct NameCase
{
    const char *typed;
    const char *inserted;
};

TEST(VariableNames, areInsertedTrimmedWithBlanksAsUnderscores)
{
    const NameCase cases[] = {{"  client   name ", "client_name"},
                              {"name", "name"},
                              {"a\tb\nc", "a_b_c"},
                              {"   ", ""},
                              {"", ""},
                              {"a \t b", "a_b"}};
    for (const NameCase &given : cases)
        EXPECT_EQ(PromptEditorModel::insertableName(QString::fromLatin1(given.typed)),
                  QString::fromLatin1(given.inserted))
            << given.typed;
}

TEST_P(PromptEditors, insertAVariableAtTheCaretAsOneStepThatCanBeUndone)
{
    open();
    stage.fill(QStringLiteral("T"), QStringLiteral("Hi , thanks"));
    QTextCursor cursor = stage.form().body().textCursor();
    cursor.setPosition(3);
    stage.form().body().setTextCursor(cursor);
    stage.form().variableField().setFocus();
    stage.type(QStringLiteral("  client   name "));
    stage.key(Qt::Key_Return);
    EXPECT_EQ(stage.form().body().content(), u"Hi {{client_name}}, thanks");
    EXPECT_EQ(stage.form().body().selectionRange(), (PromptBodyTextView::Range{18, 0}));
    EXPECT_TRUE(stage.form().variableField().text().isEmpty());
    EXPECT_TRUE(stage.form().body().hasFocus());
    EXPECT_EQ(stage.form().chips().chips(), QStringList{QStringLiteral("client_name")});
    stage.key(Qt::Key_Z, Qt::ControlModifier);
    EXPECT_EQ(stage.form().body().content(), u"Hi , thanks");
    EXPECT_TRUE(stage.form().chips().chips().isEmpty());
}

TEST_P(PromptEditors, insertTheSameVariableTwiceAndInPlaceOfASelection)
{
    open();
    stage.fill(QStringLiteral("T"), QStringLiteral("ABC"));
    stage.form().body().selectAll();
    for (int time = 0; time < 2; ++time) {
        stage.form().variableField().setFocus();
        stage.type(QStringLiteral("x"));
        stage.form().insertButton().click();
    }
    EXPECT_EQ(stage.form().body().content(), u"{{x}}{{x}}");
}

TEST_P(PromptEditors, insertNothingForABlankName)
{
    open();
    stage.form().variableField().setFocus();
    stage.type(QStringLiteral("   "));
    EXPECT_FALSE(stage.form().insertButton().isEnabled());
    stage.key(Qt::Key_Return);
    EXPECT_TRUE(stage.form().body().content().isEmpty());
    EXPECT_EQ(stage.form().variableField().text(), u"   ");
}

TEST_P(PromptEditors, showChipsAndPreviewWhileTyping)
{
    open();
    stage.fill(QStringLiteral("T"), {});
    stage.form().body().setFocus();
    stage.type(QStringLiteral("{{a}} and {{b}} and {{a}}"));
    EXPECT_EQ(stage.form().chips().chips(), QStringList({QStringLiteral("a"), QStringLiteral("b")}));
    EXPECT_EQ(stage.form().preview().content(), u"{{a}} and {{b}} and {{a}}");
    EXPECT_TRUE(stage.form().preview().isReadOnly());
    stage.key(Qt::Key_Backspace);
    EXPECT_EQ(stage.form().preview().content(), u"{{a}} and {{b}} and {{a}");
}

// Optimisation

TEST_P(PromptEditors, optimizeAndUndoBringsBackExactlyTheEarlierText)
{
    open();
    stage.fill(QStringLiteral("T"), QStringLiteral("  write it\nnicely  "));
    EXPECT_FALSE(stage.form().undoOptimizeButton().isVisible());
    stage.desk.server.isHolding = true;
    const QString label = stage.form().optimizeButton().text();
    EXPECT_EQ(label, GetParam() == EditorKind::panel ? u"Optimize" : u"Optimize with AI");
    stage.form().optimizeButton().click();
    EXPECT_EQ(stage.form().optimizeButton().text(), u"Optimizing...");
    EXPECT_FALSE(stage.form().optimizeButton().isEnabled());
    ASSERT_TRUE(waitUntil([&] { return stage.desk.server.optimizeRequests.size() == 1; }));
    stage.desk.server.release();
    ASSERT_TRUE(waitUntil([&] { return !stage.model().isOptimizing(); }));
    EXPECT_EQ(stage.form().body().content(), stage.desk.server.optimizedText);
    EXPECT_EQ(stage.model().statusMessage()->text, u"Prompt optimized. You can undo before saving.");
    EXPECT_FALSE(stage.model().statusMessage()->isError);
    EXPECT_EQ(stage.form().optimizeButton().text(), label);
    ASSERT_TRUE(stage.form().undoOptimizeButton().isVisible());
    stage.form().undoOptimizeButton().click();
    EXPECT_EQ(stage.form().body().content(), u"  write it\nnicely  ");
    EXPECT_FALSE(stage.form().undoOptimizeButton().isVisible());
}

TEST_P(PromptEditors, aSecondOptimizationKeepsOnlyTheTextJustBeforeIt)
{
    open();
    stage.fill(QStringLiteral("T"), QStringLiteral("first"));
    stage.optimize();
    stage.desk.server.optimizedText = QStringLiteral("better still");
    const QString second = stage.form().body().content();
    stage.optimize();
    EXPECT_EQ(stage.form().body().content(), u"better still");
    stage.form().undoOptimizeButton().click();
    EXPECT_EQ(stage.form().body().content(), second);
}

TEST_P(PromptEditors, anOptimizationCanBeUndoneByTheKeysOfUndoToo)
{
    open();
    stage.fill(QStringLiteral("T"), QStringLiteral("first"));
    stage.optimize();
    stage.form().body().setFocus();
    stage.key(Qt::Key_Z, Qt::ControlModifier);
    EXPECT_EQ(stage.form().body().content(), u"first");
}

TEST_P(PromptEditors, optimizingNothingAsksForATextFirst)
{
    open();
    stage.fill(QStringLiteral("T"), QStringLiteral(" \n "));
    stage.form().optimizeButton().click();
    ASSERT_TRUE(waitUntil([&] { return !stage.model().isOptimizing(); }));
    EXPECT_EQ(stage.model().statusMessage()->text, u"Write prompt text before optimizing.");
    EXPECT_TRUE(stage.model().statusMessage()->isError);
    EXPECT_TRUE(stage.desk.server.optimizeRequests.isEmpty());
    EXPECT_EQ(stage.form().body().content(), u" \n ");
}

TEST_P(PromptEditors, aFailedOptimizationLeavesTheText)
{
    stage.desk.server.refusal = QStringLiteral("Try later.");
    open();
    stage.fill(QStringLiteral("T"), QStringLiteral("first"));
    stage.form().optimizeButton().click();
    ASSERT_TRUE(waitUntil([&] { return !stage.model().isOptimizing(); }));
    EXPECT_EQ(stage.model().statusMessage()->text, u"Try later.");
    EXPECT_EQ(stage.form().body().content(), u"first");
    EXPECT_FALSE(stage.model().previousText());
}

TEST_P(PromptEditors, whatIsTypedDuringAnOptimizationCanBeHadBack)
{
    open();
    stage.fill(QStringLiteral("T"), QStringLiteral("first"));
    stage.desk.server.isHolding = true;
    stage.form().optimizeButton().click();
    stage.form().body().setFocus();
    stage.key(Qt::Key_End);
    stage.type(QStringLiteral(" more"));
    ASSERT_TRUE(waitUntil([&] { return stage.desk.server.optimizeRequests.size() == 1; }));
    stage.desk.server.release();
    ASSERT_TRUE(waitUntil([&] { return !stage.model().isOptimizing(); }));
    stage.form().undoOptimizeButton().click();
    EXPECT_EQ(stage.form().body().content(), u"first more");
}

TEST_P(PromptEditors, anOptimizationThatComesAfterCancellingTouchesNothing)
{
    open();
    stage.fill(QStringLiteral("T"), QStringLiteral("first"));
    stage.desk.server.isHolding = true;
    stage.form().optimizeButton().click();
    ASSERT_TRUE(waitUntil([&] { return stage.desk.server.optimizeRequests.size() == 1; }));
    stage.frame().cancelButton().click();
    EXPECT_FALSE(stage.model().isOptimizing());
    stage.desk.server.release();
    stage.reopen();
    stage.fill(QStringLiteral("New"), QStringLiteral("second"));
    stage.settle();
    EXPECT_EQ(stage.form().body().content(), u"second");
}

TEST_P(PromptEditors, anOptimizationThatComesWhileSavingWaitsForTheOutcome)
{
    open();
    stage.fill(QStringLiteral("T"), QStringLiteral("first"));
    stage.desk.server.isHolding = true;
    stage.form().optimizeButton().click();
    ASSERT_TRUE(waitUntil([&] { return stage.desk.server.optimizeRequests.size() == 1; }));
    stage.model().save();
    ASSERT_TRUE(waitUntil([&] { return stage.desk.server.heldWrites() == 2; }));
    stage.desk.server.releaseOldest();
    stage.settle();
    EXPECT_EQ(stage.form().body().content(), u"first") << "it is being saved";
    stage.desk.server.refusal = QStringLiteral("No room.");
    stage.desk.server.release();
    ASSERT_TRUE(waitUntil([&] { return !stage.model().isSaving(); }));
    EXPECT_EQ(stage.form().body().content(), stage.desk.server.optimizedText);
    EXPECT_EQ(stage.model().previousText(), std::optional(QStringLiteral("first")));
    EXPECT_TRUE(stage.model().statusMessage()->isError) << "why it was not saved is what counts";
}

TEST_P(PromptEditors, theFocusStaysOnAButtonThatIsBusy)
{
    open();
    stage.fill(QStringLiteral("T"), QStringLiteral("first"));
    stage.desk.server.isHolding = true;
    stage.form().optimizeButton().setFocus();
    stage.key(Qt::Key_Space);
    ASSERT_TRUE(stage.model().isOptimizing());
    EXPECT_EQ(stage.top().focusWidget(), &stage.form().optimizeButton());
    stage.type(QStringLiteral("typed blindly"));
    EXPECT_EQ(stage.form().variableField().text(), QString());
    EXPECT_EQ(stage.form().body().content(), u"first");
    stage.key(Qt::Key_Tab);
    EXPECT_NE(stage.top().focusWidget(), &stage.form().optimizeButton()) << "it must not hold the focus";
    stage.desk.server.release();
    ASSERT_TRUE(waitUntil([&] { return !stage.model().isOptimizing(); }));
}

// What is only in one of them

TEST(PromptEditorWindow, comesBackWhenItWasClosedAndSavingFails)
{
    PromptStage stage;
    stage.open(EditorKind::window);
    stage.fill(QStringLiteral("T"), QStringLiteral("Body"));
    stage.desk.server.isHolding = true;
    stage.model().save();
    stage.key(Qt::Key_Escape);
    EXPECT_TRUE(stage.window->isVisible()) << "escape throws nothing away that is being saved";
    stage.window->close();
    ASSERT_TRUE(waitUntil([&] { return stage.desk.server.heldWrites() == 1; }));
    stage.desk.server.refusal = QStringLiteral("No room.");
    stage.desk.server.release();
    ASSERT_TRUE(waitUntil([&] { return stage.window->isVisible(); }));
    EXPECT_TRUE(stage.model().statusMessage()->isError);
    EXPECT_EQ(stage.form().body().content(), u"Body");
}

TEST(PromptEditorWindow, showsTheNewPromptInTheListAndCloses)
{
    PromptStage stage;
    stage.open(EditorKind::window);
    stage.desk.appState->setSelectedCategoryID(QStringLiteral("writing"));
    stage.fill(QStringLiteral("Follow-up"), QStringLiteral("Body"));
    EXPECT_EQ(stage.frame().saveButton().text(), u"Create Prompt");
    stage.frame().saveButton().click();
    ASSERT_TRUE(waitUntil([&] { return !stage.window->isVisible(); }));
    EXPECT_EQ(stage.desk.appState->query(), u"Follow-up");
    const QList<PromptItem> shown = stage.desk.appState->visiblePrompts();
    ASSERT_FALSE(shown.isEmpty());
    EXPECT_EQ(shown.first().title, u"Follow-up");
    EXPECT_EQ(stage.desk.appState->selectedPromptID(), std::optional(shown.first().id));
}

TEST(PromptEditorPanel, tellsItsHostAboutSavingAndGoingBack)
{
    PromptStage stage;
    stage.open(EditorKind::panel);
    EXPECT_EQ(stage.frame().saveButton().text(), u"Save Prompt");
    QSignalSpy saved(stage.panel.get(), &MenuBarPromptEditorView::saved);
    QSignalSpy cancelled(stage.panel.get(), &MenuBarPromptEditorView::cancelled);
    stage.key(Qt::Key_Escape);
    EXPECT_EQ(cancelled.count(), 1);
    stage.fill(QStringLiteral("T"), QStringLiteral("Body"));
    stage.frame().saveButton().click();
    ASSERT_TRUE(waitUntil([&] { return saved.count() == 1; }));
    EXPECT_EQ(stage.desk.appState->query(), u"");
}

TEST(PromptEditorControllerTest, showsOneWindowAndCannotComeFromAnArchive)
{
    EditorDesk desk;
    desk.start();
    PromptEditorController controller(*desk.appState);
    EXPECT_EQ(controller.view(), nullptr);
    controller.show();
    PromptEditorView *first = controller.view();
    EXPECT_TRUE(first->isVisible());
    EXPECT_EQ(first->windowTitle(), u"New Prompt");
    controller.show();
    EXPECT_EQ(controller.view(), first);
    QDataStream archive;
    EXPECT_DEATH(PromptEditorController{archive}, "init\\(coder:\\) has not been implemented");
}

} // namespace
