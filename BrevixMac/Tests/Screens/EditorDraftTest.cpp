// SPDX-License-Identifier: GPL-3.0-or-later
#include "DraftNoteBar.h"
#include "EditorStage.h"

#include "Support/TestMain.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <QTemporaryDir>

namespace {

using Note = EditorModel::DraftNote;
using Place = DraftStore::Place;

class PromptDrafts : public testing::TestWithParam<EditorKind>
{
protected:
    void open() { stage.open(GetParam()); }
    void restart() { stage.restart(GetParam()); }
    Note note() { return stage.model().draftNote(); }

    PromptStage stage;
};

INSTANTIATE_TEST_SUITE_P(Both, PromptDrafts, testing::Values(EditorKind::panel, EditorKind::window),
                         [](const auto &info) {
                             return info.param == EditorKind::panel ? "panel" : "window";
                         });

TEST_P(PromptDrafts, aClosedEditorStillHasItsText)
{
    open();
    stage.fill(QStringLiteral("T"), QStringLiteral("Body"));
    stage.reopen();
    EXPECT_EQ(stage.form().body().content(), u"Body");
    EXPECT_EQ(note(), Note::none);
}

TEST_P(PromptDrafts, comeBackAfterARestartWithAQuietNote)
{
    open();
    stage.fill(QStringLiteral("Title"), QStringLiteral("Body {{x}}"));
    stage.model().selectCategory(QStringLiteral("writing"));
    stage.form().variableField().setFocus();
    stage.type(QStringLiteral("half a na"));
    stage.form().newCategoryToggle().click();
    stage.type(QStringLiteral("New one"));
    restart();
    EXPECT_EQ(stage.form().titleField().text(), u"Title");
    EXPECT_EQ(stage.form().body().content(), u"Body {{x}}");
    EXPECT_EQ(stage.form().preview().content(), u"Body {{x}}");
    EXPECT_EQ(stage.form().variableField().text(), u"half a na");
    EXPECT_EQ(stage.model().newCategoryName(), u"New one");
    EXPECT_TRUE(stage.model().isCreatingCategory());
    EXPECT_EQ(stage.model().selectedCategoryID(), u"writing");
    EXPECT_EQ(note(), Note::restored);
    EXPECT_EQ(stage.frame().draftNote().text(), u"Draft restored");
    EXPECT_TRUE(stage.frame().draftNote().isVisible());
    EXPECT_TRUE(stage.frame().saveButton().isEnabled());
}

TEST_P(PromptDrafts, areOnDiskSoonAfterTyping)
{
    open();
    stage.fill(QStringLiteral("Title"), QStringLiteral("Body"));
    const auto files = [this] {
        return QDir(stage.desk.draftFolder()).entryInfoList({QStringLiteral("*.json")}, QDir::Files);
    };
    ASSERT_TRUE(waitUntil([&] { return files().size() == 1; }, std::chrono::seconds(2)));
    EXPECT_EQ(files().first().permissions() & (QFile::ReadGroup | QFile::ReadOther | QFile::WriteGroup),
              QFile::Permissions());
    EXPECT_TRUE(files().first().permissions().testFlag(QFile::ReadOwner));
    EXPECT_FALSE(files().first().fileName().contains(u"user")) << "no account's name in a file name";
}

TEST_P(PromptDrafts, keepTheTextBeforeAnOptimization)
{
    open();
    stage.fill(QStringLiteral("Title"), QStringLiteral("mine"));
    stage.optimize();
    restart();
    EXPECT_EQ(stage.form().body().content(), stage.desk.server.optimizedText);
    ASSERT_TRUE(stage.form().undoOptimizeButton().isVisible());
    stage.form().undoOptimizeButton().click();
    EXPECT_EQ(stage.form().body().content(), u"mine");
}

TEST_P(PromptDrafts, endWithSaving)
{
    open();
    stage.fill(QStringLiteral("Title"), QStringLiteral("Body"));
    stage.frame().saveButton().click();
    ASSERT_TRUE(waitUntil([&] { return !stage.model().isSaving(); }));
    restart();
    EXPECT_TRUE(stage.form().body().content().isEmpty());
    EXPECT_EQ(note(), Note::none);
}

TEST_P(PromptDrafts, stayWhenSavingFails)
{
    open();
    stage.desk.server.refusal = QStringLiteral("No.");
    stage.fill(QStringLiteral("Title"), QStringLiteral("Body"));
    stage.frame().saveButton().click();
    ASSERT_TRUE(waitUntil([&] { return !stage.model().isSaving(); }));
    restart();
    EXPECT_EQ(stage.form().body().content(), u"Body");
}

TEST_P(PromptDrafts, aCancelledTextCanBeHadBack)
{
    open();
    stage.fill(QStringLiteral("Title"), QStringLiteral("Body"));
    stage.key(Qt::Key_Escape);
    EXPECT_TRUE(stage.form().body().content().isEmpty());
    restart();
    EXPECT_TRUE(stage.form().body().content().isEmpty());
    EXPECT_EQ(note(), Note::cancelled);
    EXPECT_EQ(stage.frame().draftNote().text(), u"Your last draft was cancelled.");
    // What was begun meanwhile is not lost by restoring: the two change places.
    stage.fill(QStringLiteral("Other"), QStringLiteral("begun"));
    stage.frame().draftNote().button().click();
    EXPECT_EQ(stage.form().body().content(), u"Body");
    EXPECT_EQ(stage.form().titleField().text(), u"Title");
    EXPECT_EQ(note(), Note::restored);
    stage.model().restoreCancelled();
    EXPECT_EQ(stage.form().body().content(), u"begun");
}

TEST_P(PromptDrafts, cancellingAnEmptyFormForgetsNothingAndOffersNothing)
{
    open();
    stage.key(Qt::Key_Escape);
    stage.reopen();
    EXPECT_EQ(note(), Note::none);
}

TEST_P(PromptDrafts, aRestoredDraftCanBeDiscardedAndThatUndone)
{
    open();
    stage.fill(QStringLiteral("Title"), QStringLiteral("Body"));
    restart();
    EXPECT_EQ(stage.frame().draftNote().button().text(), u"Discard");
    stage.frame().draftNote().button().click();
    EXPECT_TRUE(stage.form().body().content().isEmpty());
    EXPECT_EQ(note(), Note::discarded);
    EXPECT_EQ(stage.frame().draftNote().text(), u"Draft discarded");
    EXPECT_EQ(stage.frame().draftNote().button().text(), u"Undo");
    stage.frame().draftNote().button().click();
    EXPECT_EQ(stage.form().body().content(), u"Body");
}

TEST_P(PromptDrafts, belongToOneAccount)
{
    open();
    stage.fill(QStringLiteral("Title"), QStringLiteral("of the first user"));
    stage.desk.signInAs(QStringLiteral("other"));
    ASSERT_TRUE(waitUntil([&] { return stage.form().body().content().isEmpty(); }));
    EXPECT_TRUE(stage.form().titleField().text().isEmpty());
    stage.fill(QStringLiteral("Title"), QStringLiteral("of the other"));
    stage.desk.userID = QStringLiteral("other");
    restart();
    EXPECT_EQ(stage.form().body().content(), u"of the other");
    stage.desk.userID = QStringLiteral("user");
    restart();
    EXPECT_EQ(stage.form().body().content(), u"of the first user");
}

TEST_P(PromptDrafts, areNotShownWhileNobodyIsSignedIn)
{
    open();
    stage.fill(QStringLiteral("Title"), QStringLiteral("of the user"));
    stage.desk.userID.reset();
    restart();
    EXPECT_TRUE(stage.form().body().content().isEmpty());
}

TEST_P(PromptDrafts, typedWhileSignedOutGoToWhoeverSignsIn)
{
    stage.desk.userID.reset();
    open();
    stage.fill(QStringLiteral("Title"), QStringLiteral("typed before signing in"));
    stage.desk.signInAs(QStringLiteral("user"));
    EXPECT_EQ(stage.form().body().content(), u"typed before signing in");
    stage.desk.userID = QStringLiteral("user");
    restart();
    EXPECT_EQ(stage.form().body().content(), u"typed before signing in");
    stage.desk.userID = QStringLiteral("other");
    restart();
    EXPECT_TRUE(stage.form().body().content().isEmpty());
}

TEST_P(PromptDrafts, aDamagedFileIsSetAsideAndStopsNothing)
{
    open();
    stage.fill(QStringLiteral("Title"), QStringLiteral("Body"));
    const auto form =
        GetParam() == EditorKind::panel ? DraftStore::Form::menuBarPrompt : DraftStore::Form::promptWindow;
    const QString path =
        stage.desk.appState->draftStore().filePath({form, Place::current, QStringLiteral("user")});
    stage.panel.reset();
    stage.window.reset();
    stage.desk.appState.reset();
    ASSERT_TRUE(QFile::exists(path));
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write("{\"title\": \"half a fi");
    file.close();
    expectWarning(QStringLiteral("cannot be read and is kept as"));
    restart();
    EXPECT_TRUE(stage.form().body().content().isEmpty());
    EXPECT_TRUE(QFile::exists(path + QStringLiteral(".damaged")));
    stage.fill(QStringLiteral("Title"), QStringLiteral("new"));
    restart();
    EXPECT_EQ(stage.form().body().content(), u"new");
}

TEST(DraftsOfSeveralForms, areKeptApart)
{
    PromptStage stage;
    stage.open(EditorKind::panel);
    stage.fill(QStringLiteral("In the panel"), QStringLiteral("panel"));
    stage.restart(EditorKind::window);
    EXPECT_TRUE(stage.form().body().content().isEmpty());
    stage.fill(QStringLiteral("In the window"), QStringLiteral("window"));
    stage.restart(EditorKind::panel);
    EXPECT_EQ(stage.form().body().content(), u"panel");
}

// The store alone

class DraftStoreTest : public testing::Test
{
protected:
    QTemporaryDir folder;
    const DraftStore::Key key{DraftStore::Form::skill, Place::current, QStringLiteral("user")};

    QString path() const { return folder.filePath(QStringLiteral("deep/drafts")); }

    static EditorDraft draft(const QString &text)
    {
        EditorDraft draft;
        draft.title = QStringLiteral("T");
        draft.text = text;
        return draft;
    }
};

TEST_F(DraftStoreTest, givesBackEveryFieldAfterARestart)
{
    const EditorDraft full{.title = QStringLiteral("<b>T</b> \u202e"),
                           .text = QStringLiteral("a\n\u00a0\U0001f680 \"quoted\" \\ \u0001"),
                           .categoryID = QStringLiteral("c"),
                           .variableName = QStringLiteral("v"),
                           .newCategoryName = QStringLiteral("n"),
                           .newCategoryColor = QStringLiteral("#10b981"),
                           .previousText = QStringLiteral("before"),
                           .sourceFilename = QStringLiteral("a.md")};
    {
        DraftStore store(path());
        EXPECT_TRUE(store.store(key, full));
    }
    DraftStore store(path());
    EXPECT_EQ(store.draft(key), std::optional(full));
    store.remove(key);
    store.waitForWrites();
    EXPECT_FALSE(QFile::exists(store.filePath(key)));
}

TEST_F(DraftStoreTest, keepsNoBlankDraftAndNoneThatIsTooLong)
{
    DraftStore store(path());
    EXPECT_TRUE(store.store(key, draft(QStringLiteral("x"))));
    EXPECT_FALSE(store.store(key, draft(QString(DraftStore::maximumLength, u'x'))));
    EXPECT_EQ(store.draft(key)->text, u"x") << "the older one stays";
    EditorDraft blank;
    blank.text = QStringLiteral(" \n");
    EXPECT_TRUE(store.store(key, blank));
    EXPECT_EQ(store.draft(key), std::nullopt);
    store.waitForWrites();
    EXPECT_FALSE(QFile::exists(store.filePath(key)));
}

TEST_F(DraftStoreTest, writesTheLastOfManyChanges)
{
    DraftStore store(path());
    for (int number = 0; number < 500; ++number)
        store.store(key, draft(QString::number(number)));
    store.waitForWrites();
    DraftStore other(path());
    EXPECT_EQ(other.draft(key)->text, u"499");
}

TEST_F(DraftStoreTest, aFolderThatCannotBeMadeIsLoggedAndKeptInMemory)
{
    QFile blocker(folder.filePath(QStringLiteral("deep")));
    ASSERT_TRUE(blocker.open(QIODevice::WriteOnly));
    expectWarning(QStringLiteral("cannot be written"));
    DraftStore store(path());
    EXPECT_TRUE(store.store(key, draft(QStringLiteral("x"))));
    store.waitForWrites();
    EXPECT_EQ(store.draft(key)->text, u"x");
}

TEST_F(DraftStoreTest, aFolderInPlaceOfADraftIsNoDraft)
{
    DraftStore store(path());
    ASSERT_TRUE(QDir().mkpath(store.filePath(key)));
    EXPECT_EQ(store.draft(key), std::nullopt);
}

// A process that keeps storing is killed at random moments.

TEST_F(DraftStoreTest, isReadableWheneverTheProgramIsKilled)
{
    for (int round = 0; round < 12; ++round) {
        QProcess writer;
        writer.start(QStringLiteral(DRAFT_WRITER), {path()});
        ASSERT_TRUE(writer.waitForReadyRead(20'000));
        // Killed after a growing number of reported drafts, each at another moment of the writing.
        int reported = 0;
        while (reported <= round * 7) {
            ASSERT_TRUE(writer.canReadLine() || writer.waitForReadyRead(20'000));
            while (writer.canReadLine())
                reported = writer.readLine().trimmed().toInt();
        }
        writer.kill();
        ASSERT_TRUE(writer.waitForFinished());
        ASSERT_EQ(writer.exitStatus(), QProcess::CrashExit);
        DraftStore store(path());
        const auto found = store.draft({DraftStore::Form::skill, Place::current, QStringLiteral("user")});
        ASSERT_TRUE(found) << "round " << round;
        const int number = found->title.toInt();
        EXPECT_GE(number, reported) << "what was reported as written is there";
        EXPECT_EQ(found->text, QString(found->title + u' ').repeated(20'000)) << "whole";
    }
}

} // namespace
