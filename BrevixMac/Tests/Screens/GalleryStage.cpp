// SPDX-License-Identifier: GPL-3.0-or-later
#include "GalleryStage.h"

void GalleryStage::open(PickerStage &stage)
{
    stage.install();
    stage.desk.press();
    stage.panel().activateWindow();
    settle(stage);
}

void GalleryStage::settle(PickerStage &stage)
{
    stage.search().setCursorPosition(static_cast<int>(stage.search().text().size()));
    QTest::qWait(30);
}

void GalleryStage::shootPanel(const Camera &camera, const QString &name, const Arrange &before,
                              const Arrange &after)
{
    if (!camera.wants(name))
        return;
    PickerStage stage;
    before(stage);
    open(stage);
    after(stage);
    settle(stage);
    camera.shoot(stage.panel(), name, PictureGround::none);
}

// Desks

void GalleryStage::nothing(PickerStage &)
{
}

void GalleryStage::sample(PickerStage &stage)
{
    stage.desk.addSampleLibrary();
}

void GalleryStage::longTexts(PickerStage &stage)
{
    PickerDesk &desk = stage.desk;
    desk.email = QStringLiteral(
        "maximiliane.von-und-zu-hohenstein-weber@donaudampfschifffahrtsgesellschaft.example.com");
    desk.displayName = QStringLiteral("Maximiliane Freifrau von und zu Hohenstein-Weber");
    desk.addSampleLibrary();
    desk.server.addCategory(QStringLiteral("long"),
                            QStringLiteral("Donaudampfschifffahrtsgesellschaftskapit\u00e4nsm\u00fctzen"),
                            QStringLiteral("#ec4899"));
    desk.server.addPrompt(
        QStringLiteral("long"),
        QStringLiteral("Rechtsschutzversicherungsgesellschaftskorrespondenz mit <b>Auszeichnung</b> &amp; "
                       "{{Platzhalter}}"),
        QStringLiteral("Sehr geehrte Damen und Herren der Kraftfahrzeughaftpflichtversicherung "
                       "{{name}}, Ihre Versicherungsscheinnummer {{versicherungsscheinnummer}} und die "
                       "{{rechtsschutzversicherungsgesellschaftskorrespondenznummer}} liegen uns vor."),
        QStringLiteral("long"));
    desk.server.addSkill(QStringLiteral("longskill"),
                         QStringLiteral("Barrierefreiheits\u00fcberpr\u00fcfungsanweisung f\u00fcr "
                                        "Webanwendungen"),
                         QStringLiteral("Pr\u00fcfe jede Seite auf ausreichende Kontrastverh\u00e4ltnisse."));
}

void GalleryStage::rightToLeft(PickerStage &stage)
{
    PickerDesk &desk = stage.desk;
    desk.displayName = QStringLiteral("ليلى حداد");
    desk.server.addCategory(QStringLiteral("mail"), QStringLiteral("رسائل"), QStringLiteral("#8b5cf6"));
    desk.server.addCategory(QStringLiteral("hebrew"), QStringLiteral("עברית"), QStringLiteral("#10b981"));
    desk.server.addPrompt(
        QStringLiteral("meeting"), QStringLiteral("متابعة بعد الاجتماع"),
        QStringLiteral("مرحبا {{name}}، شكرا على وقتك اليوم، إليك الخطوات التالية بشأن {{topic}}."),
        QStringLiteral("mail"));
    desk.server.addPrompt(QStringLiteral("thanks"), QStringLiteral("תודה על הפגישה (Meeting 42)"),
                          QStringLiteral("שלום, תודה רבה על הזמן שהקדשתם לנו היום."),
                          QStringLiteral("hebrew"));
    desk.server.addSkill(QStringLiteral("arabicskill"), QStringLiteral("محرر لغوي"),
                         QStringLiteral("اختصر الجمل الطويلة واحذف الحشو."));
}

void GalleryStage::loading(PickerStage &stage)
{
    stage.desk.server.reply("prompts", {.fault = FaultyServer::Reply::Fault::stall});
    stage.desk.waitsForLibrary = false;
}

void GalleryStage::failing(PickerStage &stage)
{
    stage.desk.server.reply(
        "prompts",
        {.status = 403, .body = R"({"error":{"message":"This account may not read the library."}})"});
    stage.desk.waitsForLibrary = false;
}

void GalleryStage::withoutTarget(PickerStage &stage)
{
    sample(stage);
    stage.desk.tree.focusedPath.reset();
    stage.desk.workspace.frontmost.reset();
}

// What is done on screen

void GalleryStage::awaitProblem(PickerStage &stage)
{
    waitUntil([&] { return stage.appState().libraryStore().syncState().kind == SyncState::Kind::error; });
}

void GalleryStage::startFilling(PickerStage &stage, const QString &id)
{
    for (const PromptItem &prompt : stage.appState().libraryStore().prompts()) {
        if (prompt.id == id)
            stage.appState().beginAction(prompt, PendingVariableAction::insert);
    }
    settle(stage);
}

void GalleryStage::failInsertion(PickerStage &stage)
{
    stage.desk.field().isSettable = false;
    stage.desk.workspace.refusesActivation = true;
    stage.desk.workspace.frontmost = 1;
    stage.page().focusSearch();
    QTest::keyClick(&stage.search(), Qt::Key_Down);
    QTest::keyClick(&stage.search(), Qt::Key_Return);
    waitUntil([&] { return stage.appState().lastInsertionResult().has_value(); });
}
