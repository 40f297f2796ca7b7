// SPDX-License-Identifier: GPL-3.0-or-later
#include "CategoryField.h"
#include "EditorStage.h"
#include "EditorTextView.h"
#include "GalleryCamera.h"
#include "NewCategoryForm.h"
#include "SkillEditorModel.h"
#include "SkillEditorView.h"
#include "Stillness.h"

#include <functional>

namespace {

const QString longTitle = QStringLiteral(
    "Rechtsschutzversicherungsgesellschaftskorrespondenz mit <b>Auszeichnung</b> &amp; Sonderzeichen");
const QString sampleText =
    QStringLiteral("Hi {{name}}, following up on my note about the {{topic}}. Would a short call "
                   "this week be of use?");
const QString arabic = QStringLiteral(
    "\u0645\u0631\u062d\u0628\u0627 {{name}}\u060c \u0634\u0643\u0631\u0627 \u0639\u0644\u0649 "
    "\u0648\u0642\u062a\u0643 \u0627\u0644\u064a\u0648\u0645");

using ArrangePrompt = std::function<void(PromptStage &)>;
using ArrangeSkill = std::function<void(EditorDesk &, SkillEditorView &)>;

void drawPrompt(const Camera &camera, const QString &name, const ArrangePrompt &before,
                const ArrangePrompt &after)
{
    for (const EditorKind kind : {EditorKind::panel, EditorKind::window}) {
        const bool isPanel = kind == EditorKind::panel;
        const QString full = (isPanel ? QStringLiteral("editor-") : QStringLiteral("editor-window-")) + name;
        if (!camera.wants(full))
            continue;
        PromptStage stage;
        before(stage);
        stage.open(kind);
        after(stage);
        stage.settle();
        camera.shoot(stage.top(), full, isPanel ? PictureGround::panel : PictureGround::window);
    }
}

void drawSkill(const Camera &camera, const QString &name, const ArrangeSkill &arrange)
{
    const QString full = u"skill-" + name;
    if (!camera.wants(full))
        return;
    EditorDesk desk;
    desk.start();
    SkillEditorView view(*desk.appState);
    view.show();
    view.activateWindow();
    arrange(desk, view);
    waitUntilAtRest(view);
    camera.shoot(view, full, PictureGround::window);
}

void nothing(PromptStage &)
{
}

void fillSample(PromptStage &stage)
{
    stage.fill(QStringLiteral("Cold outreach follow-up"), sampleText);
    stage.form().titleField().setFocus();
}

void fail(PromptStage &stage)
{
    fillSample(stage);
    stage.desk.server.refusal = QStringLiteral(
        "Quota exceeded for quota metric \"Write requests\" and limit \"Write requests per minute\" "
        "of this project. Try again in a minute.");
    stage.model().save();
    waitUntil([&] { return stage.model().statusMessage().has_value(); });
}

void longTexts(PromptStage &stage)
{
    stage.desk.server.addCategory(
        QStringLiteral("aaa"), QStringLiteral("Donaudampfschifffahrtsgesellschaftskapit\u00e4nsm\u00fctzen"),
        {});
}

void fillLong(PromptStage &stage)
{
    QString text;
    for (int number = 0; number < 30; ++number)
        text +=
            QStringLiteral("Sehr geehrte {{anrede_%1}}, Kraftfahrzeughaftpflichtversicherung. ").arg(number);
    stage.fill(longTitle, text);
    stage.model().selectCategory(QStringLiteral("aaa"));
}

void drawPromptStates(const Camera &camera)
{
    drawPrompt(camera, QStringLiteral("empty"), nothing, nothing);
    drawPrompt(camera, QStringLiteral("filled"), nothing, [](PromptStage &stage) {
        fillSample(stage);
        stage.optimize();
        stage.fill(QStringLiteral("Cold outreach follow-up"), sampleText);
        stage.form().titleField().setFocus();
    });
    drawPrompt(camera, QStringLiteral("error"), nothing, fail);
    drawPrompt(camera, QStringLiteral("long"), longTexts, fillLong);
    drawPrompt(camera, QStringLiteral("right-to-left"), nothing, [](PromptStage &stage) {
        stage.fill(QStringLiteral("\u0645\u062a\u0627\u0628\u0639\u0629"), arabic);
    });
    drawPrompt(camera, QStringLiteral("new-category"), nothing, [](PromptStage &stage) {
        fillSample(stage);
        stage.form().newCategoryToggle().click();
        stage.type(QStringLiteral("Hiring"));
    });
    drawPrompt(camera, QStringLiteral("menu"), longTexts, [](PromptStage &stage) {
        fillSample(stage);
        stage.form().categoryField().openMenu();
    });
    drawPrompt(
        camera, QStringLiteral("no-category"),
        [](PromptStage &stage) {
            stage.desk.server.removeCategory(QStringLiteral("outreach"));
            stage.desk.server.removeCategory(QStringLiteral("writing"));
        },
        [](PromptStage &stage) {
            fillSample(stage);
            stage.model().save();
        });
    drawPrompt(camera, QStringLiteral("saving"), nothing, [](PromptStage &stage) {
        fillSample(stage);
        stage.desk.server.isHolding = true;
        stage.model().save();
    });
    drawPrompt(camera, QStringLiteral("restored"), nothing, [](PromptStage &stage) {
        fillSample(stage);
        stage.frame().cancel();
        stage.reopen();
        stage.model().restoreCancelled();
    });
}

void importBytes(EditorDesk &desk, SkillEditorView &view, const QString &name, const QByteArray &bytes)
{
    view.model().importFile(desk.write(name, bytes));
    waitUntil([&] { return !view.model().isImporting(); });
}

void importSample(EditorDesk &desk, SkillEditorView &view)
{
    importBytes(desk, view, QStringLiteral("code-review.md"),
                "# Code Review Rules\n\nYou review changes for correctness first, then for clarity.\n\n"
                "- Name the risk.\n- Show the smallest fix.\n- Keep to the project's style.\n");
}

void drawSkillStates(const Camera &camera)
{
    drawSkill(camera, QStringLiteral("empty"), [](EditorDesk &, SkillEditorView &) {});
    drawSkill(camera, QStringLiteral("imported"), importSample);
    drawSkill(camera, QStringLiteral("saving"), [](EditorDesk &desk, SkillEditorView &view) {
        importSample(desk, view);
        desk.server.isHolding = true;
        view.model().save();
    });
    drawSkill(camera, QStringLiteral("long"), [](EditorDesk &desk, SkillEditorView &view) {
        importBytes(
            desk, view,
            QStringLiteral("Barrierefreiheits\u00fcberpr\u00fcfungsanweisung-f\u00fcr-Webanwendungen.md"),
            (u"# " + longTitle +
             u"\n\nPr\u00fcfe Kontrastverh\u00e4ltnisse und Tastaturbedienbarkeit. "_qs.repeated(60))
                .toUtf8());
    });
    drawSkill(camera, QStringLiteral("right-to-left"), [](EditorDesk &desk, SkillEditorView &view) {
        importBytes(desk, view, QStringLiteral("\u0645\u062d\u0631\u0631.md"),
                    (u"# \u0645\u062d\u0631\u0631 \u0644\u063a\u0648\u064a\n\n" + arabic).toUtf8());
    });
    drawSkill(camera, QStringLiteral("error"), [](EditorDesk &desk, SkillEditorView &view) {
        importBytes(desk, view, QStringLiteral("latin1.txt"), "caf\xe9");
    });
    drawSkill(camera, QStringLiteral("huge"), [](EditorDesk &desk, SkillEditorView &view) {
        importBytes(desk, view, QStringLiteral("huge-log-of-a-very-long-name-that-does-not-fit.txt"),
                    QByteArray("one two three four five six seven eight nine\n").repeated(60'000));
        view.model().save();
    });
}

} // namespace

void drawPromptEditors(const Camera &camera)
{
    drawPromptStates(camera);
    const TwiceTheFont twice;
    drawPrompt(camera, QStringLiteral("filled-200"), nothing, fillSample);
    drawPrompt(camera, QStringLiteral("long-200"), longTexts, [](PromptStage &stage) {
        fillLong(stage);
        fail(stage);
    });
}

void drawSkillEditor(const Camera &camera)
{
    drawSkillStates(camera);
    const TwiceTheFont twice;
    drawSkill(camera, QStringLiteral("empty-200"), [](EditorDesk &, SkillEditorView &) {});
    drawSkill(camera, QStringLiteral("imported-200"), importSample);
}
