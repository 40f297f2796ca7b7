// SPDX-License-Identifier: GPL-3.0-or-later
#include "EditorDesk.h"
#include "EditorFrame.h"
#include "EditorTextView.h"
#include "SkillEditorController.h"
#include "SkillEditorModel.h"
#include "SkillEditorView.h"
#include "SkillImport.h"
#include "TextField.h"
#include "TextLabel.h"
#include "ThemedButton.h"

#include "Support/Waiting.h"

#include <QClipboard>
#include <QDragEnterEvent>
#include <QFileDialog>
#include <QMimeData>
#include <QMimeDatabase>
#include <QSignalSpy>
#include <QTest>

#include <gtest/gtest.h>

namespace {

class SkillEditorTest : public testing::Test
{
protected:
    EditorDesk desk;
    std::unique_ptr<SkillEditorView> view;

    void open()
    {
        desk.start();
        view = std::make_unique<SkillEditorView>(*desk.appState);
        view->show();
        view->activateWindow();
        ASSERT_TRUE(QTest::qWaitForWindowActive(view.get()));
    }

    SkillEditorModel &model() { return view->model(); }

    void import(const QString &path)
    {
        model().importFile(path);
        ASSERT_TRUE(waitUntil([this] { return !model().isImporting(); }));
    }

    void import(const QString &name, const QByteArray &bytes) { import(desk.write(name, bytes)); }

    QString status() { return model().statusMessage() ? model().statusMessage()->text : QString(); }
    bool isError() { return model().statusMessage() && model().statusMessage()->isError; }

    void type(QWidget &field, const QString &text)
    {
        field.setFocus();
        QTest::keyClicks(&field, text);
    }
};

TEST_F(SkillEditorTest, opensEmptyWithItsTexts)
{
    open();
    EXPECT_EQ(view->windowTitle(), u"New Skill");
    EXPECT_EQ(view->titleField().placeholderText(), u"Example: Senior Swift Code Reviewer");
    EXPECT_TRUE(view->titleField().hasFocus());
    EXPECT_EQ(view->statisticsLine().text(), u"0 words \u2022 0 lines");
    EXPECT_EQ(view->previewTitle().text(), u"Untitled");
    EXPECT_EQ(view->preview().placeholderText(), u"Skill instructions will appear here.");
    EXPECT_EQ(view->importButton().text(), u"Import .txt/.md");
    EXPECT_EQ(view->frame().saveButton().text(), u"Create Skill");
    EXPECT_FALSE(view->frame().saveButton().isEnabled());
    EXPECT_FALSE(view->sourceLine().isVisible());
}

TEST_F(SkillEditorTest, savesATypedSkillSelectsItAndCloses)
{
    open();
    type(view->titleField(), QStringLiteral(" Reviewer "));
    type(view->body(), QStringLiteral("Review it. {{not_a_variable}} "));
    EXPECT_EQ(view->statisticsLine().text(), u"3 words \u2022 1 lines");
    EXPECT_EQ(view->preview().content(), u"Review it. {{not_a_variable}} ");
    QTest::keyClick(&view->body(), Qt::Key_Return, Qt::ControlModifier);
    ASSERT_TRUE(waitUntil([this] { return !view->isVisible(); }));
    const auto skills = desk.server.created("skills");
    ASSERT_EQ(skills.size(), 1);
    EXPECT_EQ(LibraryServer::text(skills.first(), QStringLiteral("title")), u"Reviewer");
    EXPECT_EQ(LibraryServer::text(skills.first(), QStringLiteral("text")), u"Review it. {{not_a_variable}} ");
    EXPECT_FALSE(skills.first().contains(u"sourceFilename"));
    EXPECT_EQ(desk.appState->query(), u"Reviewer");
    ASSERT_FALSE(desk.appState->visibleSkills().isEmpty());
    EXPECT_EQ(desk.appState->selectedSkillID(), std::optional(desk.appState->visibleSkills().first().id));
}

TEST_F(SkillEditorTest, theNewSkillIsSelectedInAListThatIsInView)
{
    open();
    // As every list does for a new query.
    QObject::connect(desk.appState.get(), &AppState::queryChanged, view.get(),
                     [this] { desk.appState->setSelectedSkillID(std::nullopt); });
    type(view->titleField(), QStringLiteral("Reviewer"));
    type(view->body(), QStringLiteral("Body"));
    view->frame().saveButton().click();
    ASSERT_TRUE(waitUntil([this] { return !view->isVisible(); }));
    ASSERT_FALSE(desk.appState->visibleSkills().isEmpty());
    EXPECT_EQ(desk.appState->selectedSkillID(), std::optional(desk.appState->visibleSkills().first().id));
}

TEST_F(SkillEditorTest, keepsTheTextWhenSavingFails)
{
    desk.server.refusal = QStringLiteral("No room.");
    open();
    type(view->titleField(), QStringLiteral("T"));
    type(view->body(), QStringLiteral("Body"));
    view->frame().saveButton().click();
    EXPECT_EQ(view->frame().saveButton().text(), u"Saving...");
    ASSERT_TRUE(waitUntil([this] { return model().statusMessage().has_value(); }));
    EXPECT_TRUE(isError());
    EXPECT_EQ(view->body().content(), u"Body");
    EXPECT_TRUE(view->isVisible());
}

TEST_F(SkillEditorTest, keepsTheTextWhenTheServerCannotBeReached)
{
    open();
    type(view->titleField(), QStringLiteral("T"));
    type(view->body(), QStringLiteral("Body"));
    desk.server.goAway();
    view->frame().saveButton().click();
    ASSERT_TRUE(waitUntil([this] { return model().statusMessage().has_value(); }));
    EXPECT_TRUE(isError());
    EXPECT_EQ(view->titleField().text(), u"T");
    EXPECT_EQ(view->body().content(), u"Body");
    EXPECT_TRUE(view->frame().saveButton().isEnabled());
}

TEST_F(SkillEditorTest, keepsTheTextWhileSignedOut)
{
    open();
    type(view->titleField(), QStringLiteral("T"));
    type(view->body(), QStringLiteral("Body"));
    desk.appState->signOut();
    view->frame().saveButton().click();
    ASSERT_TRUE(waitUntil([this] { return model().statusMessage().has_value(); }));
    EXPECT_TRUE(isError());
    EXPECT_EQ(status(), u"Sign in before creating or sharing prompts, skills, or categories.");
    EXPECT_EQ(view->titleField().text(), u"T");
    EXPECT_EQ(view->body().content(), u"Body");
    EXPECT_EQ(desk.server.writes, 0);
}

TEST_F(SkillEditorTest, blankFieldsCannotBeSaved)
{
    open();
    type(view->titleField(), QStringLiteral("  "));
    type(view->body(), QStringLiteral("Body"));
    EXPECT_FALSE(view->frame().saveButton().isEnabled());
    type(view->titleField(), QStringLiteral("T"));
    EXPECT_TRUE(view->frame().saveButton().isEnabled());
    view->body().selectAll();
    type(view->body(), QStringLiteral("   "));
    EXPECT_FALSE(view->frame().saveButton().isEnabled());
}

// Import

TEST_F(SkillEditorTest, importsAFileAndNamesTheSkillAfterItsHeading)
{
    open();
    import(QStringLiteral("notes.md"), "\n## Style guide\n\nBe brief.\n");
    EXPECT_EQ(view->titleField().text(), u"Style guide");
    EXPECT_EQ(view->body().content(), u"\n## Style guide\n\nBe brief.\n");
    EXPECT_EQ(view->sourceLine().text(), u"Imported from notes.md");
    EXPECT_TRUE(view->sourceLine().isVisible());
    EXPECT_EQ(status(), u"Imported notes.md");
    EXPECT_FALSE(isError());
    EXPECT_EQ(view->statisticsLine().text(), u"4 words \u2022 3 lines");
    view->frame().saveButton().click();
    ASSERT_TRUE(waitUntil([this] { return !view->isVisible(); }));
    EXPECT_EQ(LibraryServer::text(desk.server.created("skills").first(), QStringLiteral("sourceFilename")),
              u"notes.md");
}

TEST_F(SkillEditorTest, namesTheSkillAfterAFileWithoutHeading)
{
    open();
    import(QStringLiteral("my.rules.txt"), "Be brief.");
    EXPECT_EQ(view->titleField().text(), u"my.rules");
}

TEST_F(SkillEditorTest, keepsATypedNameAndReplacesTheTextSoThatItCanBeUndone)
{
    open();
    type(view->titleField(), QStringLiteral("Mine"));
    type(view->body(), QStringLiteral("typed before"));
    import(QStringLiteral("notes.md"), "# Theirs\nBe brief.");
    EXPECT_EQ(view->titleField().text(), u"Mine");
    EXPECT_EQ(view->body().content(), u"# Theirs\nBe brief.");
    QTest::keyClick(&view->body(), Qt::Key_Z, Qt::ControlModifier);
    EXPECT_EQ(view->body().content(), u"typed before");
}

TEST_F(SkillEditorTest, aProblemLeavesTheFormAsItWas)
{
    open();
    type(view->titleField(), QStringLiteral("Mine"));
    type(view->body(), QStringLiteral("typed before"));
    import(QStringLiteral("latin1.txt"), "caf\xe9");
    EXPECT_TRUE(isError());
    EXPECT_EQ(status(), u"Couldn't import that file: It is not encoded in UTF-8.");
    EXPECT_EQ(view->titleField().text(), u"Mine");
    EXPECT_EQ(view->body().content(), u"typed before");
    EXPECT_FALSE(view->sourceLine().isVisible());
    EXPECT_FALSE(model().sourceFilename());
}

TEST_F(SkillEditorTest, importsByTheFileChooser)
{
    open();
    const QString path = desk.write(QStringLiteral("chosen.md"), "# Chosen");
    view->importButton().click();
    ASSERT_NE(view->fileChooser(), nullptr);
    EXPECT_EQ(view->fileChooser()->fileMode(), QFileDialog::ExistingFile);
    view->chooseFile();
    EXPECT_EQ(view->findChildren<QFileDialog *>().size(), 1) << "one chooser at a time";
    Q_EMIT view->fileChooser()->fileSelected(path);
    view->fileChooser()->close();
    ASSERT_TRUE(waitUntil([this] { return view->body().content() == u"# Chosen"; }));
}

TEST_F(SkillEditorTest, importsAFileDroppedAnywhereOnTheEditor)
{
    open();
    QMimeData data;
    data.setUrls({QUrl::fromLocalFile(desk.write(QStringLiteral("dropped.md"), "# Dropped"))});
    QDragEnterEvent enter(QPoint(5, 5), Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
    QCoreApplication::sendEvent(view.get(), &enter);
    EXPECT_TRUE(enter.isAccepted());
    QDropEvent drop(QPointF(5, 5), Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
    QCoreApplication::sendEvent(view.get(), &drop);
    ASSERT_TRUE(waitUntil([this] { return view->titleField().text() == u"Dropped"; }));
}

TEST_F(SkillEditorTest, refusesADropThatIsNoFileOfThisMachine)
{
    open();
    QMimeData data;
    data.setUrls({QUrl(QStringLiteral("https://example.com/a.md"))});
    QDragEnterEvent enter(QPoint(5, 5), Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
    enter.ignore();
    QCoreApplication::sendEvent(view.get(), &enter);
    EXPECT_FALSE(enter.isAccepted());
}

TEST_F(SkillEditorTest, importsAPastedFileAndInsertsAPastedText)
{
    open();
    auto *file = new QMimeData;
    file->setUrls({QUrl::fromLocalFile(desk.write(QStringLiteral("pasted.md"), "# Pasted"))});
    QGuiApplication::clipboard()->setMimeData(file);
    view->body().setFocus();
    QTest::keyClick(&view->body(), Qt::Key_V, Qt::ControlModifier);
    ASSERT_TRUE(waitUntil([this] { return view->body().content() == u"# Pasted"; }));
    QGuiApplication::clipboard()->setText(QStringLiteral("plain\r\ntext\u00a0here"));
    view->body().selectAll();
    QTest::keyClick(&view->body(), Qt::Key_V, Qt::ControlModifier);
    EXPECT_EQ(view->body().content(), u"plain\ntext\u00a0here") << "no-break spaces survive";
}

TEST_F(SkillEditorTest, refusesToPasteATextThatIsTooLongAndKeepsWhatIsThere)
{
    open();
    type(view->body(), QStringLiteral("before"));
    QGuiApplication::clipboard()->setText(QString(2 * 1024 * 1024, u'x'));
    QTest::keyClick(&view->body(), Qt::Key_V, Qt::ControlModifier);
    EXPECT_EQ(view->body().content(), u"before");
    EXPECT_TRUE(isError());
    EXPECT_TRUE(status().startsWith(u"That text is too large"));
    QGuiApplication::clipboard()->clear();
}

TEST_F(SkillEditorTest, showsAHugeFileInPartKeepsItWholeAndSaysOnSavingThatItDoesNotFit)
{
    open();
    type(view->titleField(), QStringLiteral("Huge"));
    type(view->body(), QStringLiteral("typed before"));
    import(QStringLiteral("huge.txt"),
           QByteArray("one two three four five six seven eight nine\n").repeated(200'000));
    EXPECT_EQ(model().text().size(), 200'000 * 45);
    EXPECT_TRUE(view->body().isReadOnly());
    EXPECT_LT(view->body().content().size(), 64 * 1024);
    EXPECT_EQ(view->statisticsLine().text(), u"1800000 words \u2022 200000 lines");
    EXPECT_TRUE(view->removeButton().isVisible());
    view->frame().saveButton().click();
    EXPECT_TRUE(isError());
    EXPECT_TRUE(status().startsWith(u"This text is too large to be saved: it has 8.58 MB"))
        << qPrintable(status());
    EXPECT_EQ(desk.server.writes, 0);
    EXPECT_EQ(model().text().size(), 200'000 * 45);
    view->removeButton().click();
    EXPECT_EQ(view->body().content(), u"typed before");
    EXPECT_FALSE(view->body().isReadOnly());
    EXPECT_FALSE(view->sourceLine().isVisible());
}

TEST_F(SkillEditorTest, aLongLineIsShownInPartAndSavedWhole)
{
    open();
    import(QStringLiteral("line.txt"), QByteArray(300'000, 'x'));
    EXPECT_TRUE(view->body().isReadOnly());
    view->frame().saveButton().click();
    ASSERT_TRUE(waitUntil([this] { return !view->isVisible(); }));
    EXPECT_EQ(LibraryServer::text(desk.server.created("skills").first(), QStringLiteral("text")).size(),
              300'000);
}

TEST_F(SkillEditorTest, escapeClosesAndTheTextCanBeHadBack)
{
    open();
    type(view->titleField(), QStringLiteral("Mine"));
    QTest::keyClick(&view->titleField(), Qt::Key_Escape);
    EXPECT_FALSE(view->isVisible());
    view->present();
    EXPECT_TRUE(view->titleField().text().isEmpty());
    EXPECT_EQ(model().draftNote(), EditorModel::DraftNote::cancelled);
    model().restoreCancelled();
    EXPECT_EQ(view->titleField().text(), u"Mine");
}

TEST(SkillEditorControllerTest, showsOneWindowAndCannotComeFromAnArchive)
{
    EditorDesk desk;
    desk.start();
    SkillEditorController controller(*desk.appState);
    controller.show();
    SkillEditorView *first = controller.view();
    EXPECT_TRUE(first->isVisible());
    controller.show();
    EXPECT_EQ(controller.view(), first);
    QDataStream archive;
    EXPECT_DEATH(SkillEditorController{archive}, "init\\(coder:\\) has not been implemented");
}

// Rules

struct TitleCase
{
    QString text;
    QString expected;
};

TEST(SkillImportTest, suggestsTheFirstHeadingAsTitle)
{
    const QString fallback = QStringLiteral("file");
    const TitleCase cases[] = {
        {QStringLiteral("# Code Review Rules"), QStringLiteral("Code Review Rules")},
        {QStringLiteral("\n\n  ## Style guide ##  \n# Later"), QStringLiteral("Style guide")},
        {QStringLiteral("text first\n# Then a heading"), QStringLiteral("Then a heading")},
        {QStringLiteral("#NoBlank"), QStringLiteral("NoBlank")},
        {QStringLiteral("no heading # here"), fallback},
        {QStringLiteral("###\ntext"), fallback},
        {QString(), fallback},
        {QStringLiteral("# \u4ee3\u7801\u5ba1\u67e5"), QStringLiteral("\u4ee3\u7801\u5ba1\u67e5")},
    };
    for (const TitleCase &given : cases)
        EXPECT_EQ(SkillImport::suggestedTitle(given.text, fallback), given.expected)
            << qPrintable(given.text);
}

TEST(SkillImportTest, takesTheFirstFileOfThisMachineThatHasAPath)
{
    const struct
    {
        QByteArray dragged;
        std::optional<QString> path;
    } cases[] = {
        {"file:///home/me/a%20b.md\r\n", QStringLiteral("/home/me/a b.md")},
        {"https://example.org/x.md\r\nfile:///y.md\r\n", QStringLiteral("/y.md")},
        {"file:\r\nfile:#fragment\r\nfile:///y.md\r\n", QStringLiteral("/y.md")},
        {"file:#fragment\r\n", std::nullopt},
        {"\r\n", std::nullopt},
    };
    for (const auto &given : cases) {
        QMimeData data;
        data.setData(QStringLiteral("text/uri-list"), given.dragged);
        EXPECT_EQ(SkillImport::localFile(data), given.path) << given.dragged.constData();
    }
}

TEST(SkillImportTest, acceptsPlainTextTextAndMarkdown)
{
    const QStringList types = SkillImport::skillImportTypes();
    ASSERT_GE(types.size(), 2);
    EXPECT_EQ(types.at(0), u"text/plain");
    EXPECT_EQ(types.at(1), u"text/*");
    const bool knowsMarkdown = !QMimeDatabase().mimeTypesForFileName(QStringLiteral("x.md")).isEmpty();
    EXPECT_EQ(types.size(), knowsMarkdown ? 3 : 2);
    EXPECT_TRUE(SkillImport::nameFilters().first().contains(u"*.md"));
    EXPECT_TRUE(SkillImport::nameFilters().first().contains(u"*.txt"));
    EXPECT_EQ(SkillImport::nameFilters().last(), u"All files (*)");
}

} // namespace
