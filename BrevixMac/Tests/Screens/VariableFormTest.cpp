// SPDX-License-Identifier: GPL-3.0-or-later
#include "CompactVariableForm.h"
#include "PickerStage.h"
#include "PreviewText.h"
#include "PromptTemplateParser.h"
#include "ResultLine.h"
#include "StatusCard.h"
#include "TextField.h"
#include "ThemedButton.h"
#include "VariableFields.h"
#include "VariableFillView.h"

#include <QClipboard>
#include <QGuiApplication>
#include <QScrollBar>

#include <gtest/gtest.h>

namespace {

class VariableFormTest : public testing::Test
{
protected:
    PickerStage stage;

    /// Opens the picker over one prompt with @p text and presses Return (or Control-Return) on it.
    void fill(const QString &text, Qt::KeyboardModifiers modifiers = Qt::NoModifier)
    {
        stage.desk.server.addPrompt(QStringLiteral("p"), QStringLiteral("Title"), text);
        stage.open();
        stage.key(Qt::Key_Return, modifiers);
        ASSERT_TRUE(stage.appState().activeVariablePrompt());
    }

    VariableFillView &full() { return stage.view().variableFillView(); }
    CompactVariableForm &compact() { return stage.page().form(); }
};

TEST_F(VariableFormTest, aPromptWithThreeVariablesOpensTheFullForm)
{
    fill(QStringLiteral("{{b}} {{a}} {{b}} {{c}}"));
    EXPECT_TRUE(full().isVisible());
    const auto &fields = full().fields().fields();
    ASSERT_EQ(fields.size(), 3);
    EXPECT_EQ(fields.at(0)->placeholderText(), u"Value for b");
    EXPECT_EQ(fields.at(1)->placeholderText(), u"Value for a");
    EXPECT_EQ(fields.at(2)->accessibleName(), u"c");
    EXPECT_TRUE(fields.at(0)->hasFocus());
}

TEST_F(VariableFormTest, aPromptWithOneVariableOpensTheShortFormInTheListsPlace)
{
    fill(QStringLiteral("Hello {{name}}"));
    EXPECT_FALSE(full().isVisible());
    EXPECT_TRUE(compact().isVisible());
    EXPECT_FALSE(stage.list().isVisible());
    ASSERT_EQ(compact().fields().fields().size(), 1);
    EXPECT_EQ(compact().fields().fields().first()->placeholderText(), u"Value");
    EXPECT_TRUE(compact().fields().fields().first()->hasFocus());
}

TEST_F(VariableFormTest, returnContinuesWithTheTypedValues)
{
    fill(QStringLiteral("{{a}}-{{b}}-{{c}}"));
    stage.type(QStringLiteral("one"));
    stage.key(Qt::Key_Tab);
    stage.type(QStringLiteral("two"));
    EXPECT_EQ(stage.appState().variableValues().value(QStringLiteral("b")), u"two");
    stage.key(Qt::Key_Return);
    ASSERT_TRUE(waitUntil([&] { return !stage.controller->isPickerVisible(); }));
    EXPECT_EQ(stage.fieldText(), u"one-two-");
    EXPECT_FALSE(stage.appState().activeVariablePrompt());
}

TEST_F(VariableFormTest, returnContinuesInTheShortFormToo)
{
    fill(QStringLiteral("Hello {{name}}"));
    stage.type(QStringLiteral("Ann"));
    stage.key(Qt::Key_Return);
    ASSERT_TRUE(waitUntil([&] { return !stage.controller->isPickerVisible(); }));
    EXPECT_EQ(stage.fieldText(), u"Hello Ann");
}

TEST_F(VariableFormTest, copyingAsksForTheValuesFirst)
{
    fill(QStringLiteral("Hello {{name}}"), Qt::ControlModifier);
    EXPECT_TRUE(stage.desk.pasteboard.text().isEmpty());
    stage.type(QStringLiteral("Ann"));
    compact().continueButton().click();
    ASSERT_TRUE(waitUntil([&] { return !stage.appState().activeVariablePrompt(); }));
    EXPECT_EQ(stage.desk.pasteboard.text(), u"Hello Ann");
    EXPECT_TRUE(stage.list().isVisible());
    EXPECT_TRUE(stage.search().hasFocus());
}

TEST_F(VariableFormTest, thePreviewFollowsEveryKeystroke)
{
    fill(QStringLiteral("{{a}}, {{b}}, {{c}}."));
    EXPECT_EQ(full().preview().toPlainText(), u", , .");
    stage.type(QStringLiteral("x"));
    EXPECT_EQ(full().preview().toPlainText(), u"x, , .");
    stage.type(QStringLiteral("y"));
    EXPECT_EQ(full().preview().toPlainText(), u"xy, , .");
    EXPECT_TRUE(full().preview().textInteractionFlags().testFlag(Qt::TextSelectableByMouse));
}

TEST_F(VariableFormTest, thePreviewOfALongTextFollowsSoonAndWhatIsInsertedDoesNotWaitForIt)
{
    const QString filling = QStringLiteral("Some words of a long prompt.\n").repeated(400);
    fill(filling + u"{{a}}{{b}}{{c}}");
    stage.type(QStringLiteral("xyz"));
    EXPECT_TRUE(waitUntil([&] { return full().preview().toPlainText() == QString(filling + u"xyz"); }));
    stage.type(QStringLiteral("!"));
    stage.key(Qt::Key_Return);
    ASSERT_TRUE(waitUntil([&] { return !stage.controller->isPickerVisible(); }));
    EXPECT_EQ(stage.fieldText(), QString(filling + u"xyz!"));
}

TEST_F(VariableFormTest, aFieldWithSpacesInItsBracesChangesNothing)
{
    fill(QStringLiteral("{{ a }}"));
    ASSERT_EQ(compact().fields().fields().size(), 1);
    stage.type(QStringLiteral("x"));
    EXPECT_EQ(stage.appState().variableValues().value(QStringLiteral("a")), u"x");
    stage.key(Qt::Key_Return);
    ASSERT_TRUE(waitUntil([&] { return !stage.controller->isPickerVisible(); }));
    EXPECT_EQ(stage.fieldText(), u"{{ a }}");
}

TEST_F(VariableFormTest, backReturnsToTheListAndInsertsNothing)
{
    fill(QStringLiteral("{{a}} {{b}} {{c}}"));
    stage.type(QStringLiteral("x"));
    full().backButton().click();
    EXPECT_FALSE(stage.appState().activeVariablePrompt());
    EXPECT_TRUE(stage.appState().variableValues().isEmpty());
    EXPECT_TRUE(stage.list().isVisible());
    EXPECT_TRUE(stage.search().hasFocus());
    EXPECT_TRUE(stage.fieldText().isEmpty());
}

TEST_F(VariableFormTest, escapeGoesBackFirstAndClosesThen)
{
    fill(QStringLiteral("Hello {{name}}"));
    stage.key(Qt::Key_Escape);
    EXPECT_FALSE(stage.appState().activeVariablePrompt());
    EXPECT_TRUE(stage.controller->isPickerVisible());
    stage.key(Qt::Key_Escape);
    EXPECT_FALSE(stage.controller->isPickerVisible());
}

TEST_F(VariableFormTest, tabWalksFromFieldToFieldToTheButtons)
{
    fill(QStringLiteral("{{a}} {{b}} {{c}}"));
    QStringList names;
    for (int press = 0; press < 7; ++press) {
        names.append(stage.panel().focusWidget()->accessibleName());
        stage.key(Qt::Key_Tab);
    }
    EXPECT_EQ(names, QStringList({QStringLiteral("a"), QStringLiteral("b"), QStringLiteral("c"),
                                  QStringLiteral("Preview"), QStringLiteral("Back"),
                                  QStringLiteral("Continue"), QStringLiteral("Back")}));
    EXPECT_TRUE(full().fields().fields().first()->hasFocus());
}

TEST_F(VariableFormTest, returnOnAFocusedBackButtonGoesBack)
{
    fill(QStringLiteral("{{a}}"));
    stage.key(Qt::Key_Tab);
    ASSERT_TRUE(compact().backButton().hasFocus());
    stage.key(Qt::Key_Return);
    EXPECT_FALSE(stage.appState().activeVariablePrompt());
    EXPECT_TRUE(stage.controller->isPickerVisible());
}

TEST_F(VariableFormTest, aFailedInsertionKeepsTheFormWithItsValues)
{
    fill(QStringLiteral("{{a}} {{b}} {{c}}"));
    stage.type(QStringLiteral("kept"));
    stage.desk.field().isSettable = false;
    stage.desk.workspace.refusesActivation = true;
    stage.desk.workspace.frontmost = 1;
    stage.key(Qt::Key_Return);
    ASSERT_TRUE(waitUntil([&] { return stage.appState().insertionRecovery().has_value(); }));
    EXPECT_TRUE(full().isVisible());
    EXPECT_EQ(full().fields().fields().first()->text(), u"kept");
    auto *line = full().findChild<ResultLine *>();
    EXPECT_TRUE(line->isVisible());
    EXPECT_EQ(line->card().tint(), StatusCard::Tint::danger);
    EXPECT_TRUE(full().continueButton().isEnabled());
    line->recoveryButton().click();
    EXPECT_EQ(stage.desk.pasteboard.text(), u"kept  ");
}

TEST_F(VariableFormTest, openingThePickerAnewLeavesTheForm)
{
    fill(QStringLiteral("{{a}} {{b}} {{c}}"));
    stage.controller->closePicker();
    stage.desk.press();
    EXPECT_FALSE(full().isVisible());
    EXPECT_TRUE(stage.list().isVisible());
}

struct SpanCase
{
    const char *name;
    QString text;
    VariableValues values;
    QList<PreviewText::Span> expected;
};

void PrintTo(const SpanCase &spanCase, std::ostream *out)
{
    *out << spanCase.name;
}

class PreviewSpans : public testing::TestWithParam<SpanCase>
{
};

TEST_P(PreviewSpans, markWhereValuesStand)
{
    const SpanCase &given = GetParam();
    const PromptItem prompt{.id = {}, .title = {}, .text = given.text, .categoryID = {}};
    const QString rendered = PromptTemplateParser::render(prompt, given.values).text;
    EXPECT_EQ(PreviewText::valueSpans(given.text, given.values, rendered), given.expected);
}

const SpanCase spanCases[] = {
    {"noVariable", QStringLiteral("plain"), {}, {}},
    {"oneValue", QStringLiteral("Hi {{a}}!"), {{QStringLiteral("a"), QStringLiteral("Ann")}}, {{3, 3}}},
    {"anEmptyValueIsAPlace", QStringLiteral("Hi {{a}}!"), {{QStringLiteral("a"), QString()}}, {{3, 0}}},
    {"everyOccurrence",
     QStringLiteral("{{a}}{{b}}{{a}}"),
     {{QStringLiteral("a"), QStringLiteral("xy")}, {QStringLiteral("b"), QStringLiteral("z")}},
     {{0, 2}, {2, 1}, {3, 2}}},
    {"aValueThatIsAPlaceholderItselfIsNotMarked",
     QStringLiteral("{{a}} {{b}}"),
     {{QStringLiteral("a"), QStringLiteral("{{b}}")}, {QStringLiteral("b"), QStringLiteral("z")}},
     {}},
};

INSTANTIATE_TEST_SUITE_P(Table, PreviewSpans, testing::ValuesIn(spanCases),
                         [](const auto &info) { return std::string(info.param.name); });

TEST(PreviewText, marksValuesBehindLineEndsOfTwoCharacters)
{
    PreviewText preview;
    const PromptItem prompt{
        .id = {}, .title = {}, .text = QStringLiteral("One\r\nTwo\r\n{{a}}"), .categoryID = {}};
    preview.setPrompt(prompt, {{QStringLiteral("a"), QStringLiteral("x\r\ny")}});
    EXPECT_EQ(preview.toPlainText(), u"One\nTwo\nx\ny");
    preview.grab();
    const auto inked = preview.extraSelections();
    ASSERT_EQ(inked.size(), 1);
    EXPECT_EQ(inked.first().cursor.selectionStart(), 8);
    EXPECT_EQ(inked.first().cursor.selectionEnd(), 11);
    EXPECT_EQ(inked.first().format.foreground().color(), Theme::shared().color(Theme::Color::accent));
}

TEST(PreviewText, showsTheWholeTextAfterEveryChange)
{
    PreviewText preview;
    const PromptItem prompt{.id = QStringLiteral("p"),
                            .title = {},
                            .text = QStringLiteral("{{a}}, 👩‍👩‍👧 {{b}} and {{a}}\nend"),
                            .categoryID = {}};
    const QString values[] = {QStringLiteral("x"),
                              QStringLiteral("👩‍👩‍👧x"),
                              QStringLiteral("xx\nyy"),
                              QStringLiteral("\n"),
                              QString(),
                              QStringLiteral("{{b}}"),
                              QStringLiteral("a👩b"),
                              QStringLiteral("a👨b")};
    for (const QString &a : values) {
        for (const QString &b : values) {
            const VariableValues given{{QStringLiteral("a"), a}, {QStringLiteral("b"), b}};
            preview.setPrompt(prompt, given);
            EXPECT_EQ(preview.toPlainText(), PromptTemplateParser::render(prompt, given).text);
        }
    }
}

TEST(PreviewText, showsTheBeginningOfAVeryLongText)
{
    PreviewText preview;
    const PromptItem prompt{.id = {}, .title = {}, .text = QStringLiteral("{{a}}{{b}}"), .categoryID = {}};
    const QString filling(PreviewText::longestShown - 1, u'x');
    preview.setPrompt(prompt, {{QStringLiteral("a"), filling}, {QStringLiteral("b"), QStringLiteral("👩 y")}});
    EXPECT_EQ(preview.toPlainText(), QString(filling + u'\u2026')) << "never half a character";
    preview.setPrompt(prompt, {{QStringLiteral("a"), filling}, {QStringLiteral("b"), QStringLiteral("y")}});
    EXPECT_EQ(preview.toPlainText(), QString(filling + u'y'));
}

TEST(PreviewText, staysWhereItWasScrolledWhileItsValuesChange)
{
    PreviewText preview;
    preview.resize(300, 120);
    preview.show();
    PromptItem prompt{.id = QStringLiteral("p"),
                      .title = {},
                      .text = QStringLiteral("line\n").repeated(100) + u"{{a}}",
                      .categoryID = {}};
    preview.setPrompt(prompt, {{QStringLiteral("a"), QStringLiteral("x")}});
    preview.verticalScrollBar()->setValue(200);
    preview.setPrompt(prompt, {{QStringLiteral("a"), QStringLiteral("xy")}});
    EXPECT_EQ(preview.verticalScrollBar()->value(), 200);
    prompt.id = QStringLiteral("other");
    preview.setPrompt(prompt, {{QStringLiteral("a"), QStringLiteral("xy")}});
    EXPECT_EQ(preview.verticalScrollBar()->value(), 0);
}

// Bounds

TEST(VariableFieldsTest, aLongValueOfSeveralLinesArrivesWhole)
{
    VariableFields fields(VariableFields::Placeholder::value);
    fields.setPrompt({.id = {}, .title = {}, .text = QStringLiteral("{{a}}"), .categoryID = {}}, {});
    QString reported;
    QObject::connect(&fields, &VariableFields::valueEdited, &fields,
                     [&](const QString &, const QString &value) { reported = value; });
    const QString pasted = QStringLiteral("A line of a log.\n").repeated(4'000);
    QGuiApplication::clipboard()->setText(pasted);
    fields.fields().first()->paste();
    EXPECT_EQ(reported, pasted);
    EXPECT_EQ(fields.note(), QString());
    QGuiApplication::clipboard()->clear();
}

TEST(VariableFieldsTest, aValueThatIsTooLongIsRefusedWithANoteAndNeverCut)
{
    VariableFields fields(VariableFields::Placeholder::value);
    fields.setPrompt({.id = {}, .title = {}, .text = QStringLiteral("{{a}}"), .categoryID = {}},
                     {{QStringLiteral("a"), QStringLiteral("before")}});
    TextField &field = *fields.fields().first();
    QString reported = QStringLiteral("before");
    QObject::connect(&fields, &VariableFields::valueEdited, &fields,
                     [&](const QString &, const QString &value) { reported = value; });
    QGuiApplication::clipboard()->setText(QString(VariableFields::longestValue + 1, u'x'));
    field.selectAll();
    field.paste();
    EXPECT_EQ(field.text(), u"before");
    EXPECT_EQ(reported, u"before");
    EXPECT_TRUE(fields.note().startsWith(u"That text is too long for a field.")) << qPrintable(fields.note());
    field.end(false);
    QTest::keyClicks(&field, QStringLiteral("!"));
    EXPECT_EQ(reported, u"before!");
    EXPECT_EQ(fields.note(), QString());
    QGuiApplication::clipboard()->clear();
}

TEST(VariableFieldsTest, ofVeryManyVariablesTheFirstAreAsked)
{
    QString text;
    for (qsizetype i = 0; i <= VariableFields::mostFields; ++i)
        text += QStringLiteral("{{v%1}} ").arg(i);
    VariableFields fields(VariableFields::Placeholder::value);
    fields.setPrompt({.id = {}, .title = {}, .text = text, .categoryID = {}}, {});
    EXPECT_EQ(fields.fields().size(), VariableFields::mostFields);
    EXPECT_TRUE(fields.note().startsWith(u"This prompt has 201 variables.")) << qPrintable(fields.note());
    QTest::keyClicks(fields.fields().first(), QStringLiteral("x"));
    EXPECT_TRUE(fields.note().startsWith(u"This prompt has 201 variables."))
        << "it holds as long as the form";
    fields.setPrompt({.id = {}, .title = {}, .text = QStringLiteral("{{a}}"), .categoryID = {}}, {});
    EXPECT_EQ(fields.fields().size(), 1);
    EXPECT_EQ(fields.note(), QString());
}

} // namespace
