// SPDX-License-Identifier: GPL-3.0-or-later
#include "GalleryStage.h"
#include "LibraryPage.h"
#include "PickerRowActions.h"
#include "SystemAppearance.h"
#include "ThemedButton.h"
#include "VariableFields.h"
#include "VariableFillView.h"

using namespace GalleryStage;

namespace {

void fill(PickerStage &stage, const QString &id, const QStringList &values)
{
    startFilling(stage, id);
    const auto &fields = stage.view().variableFillView().fields().fields();
    for (qsizetype index = 0; index < values.size(); ++index)
        QTest::keyClicks(fields.at(index), values.at(index));
    fields.at(values.size() - 1)->setFocus();
}

void fillThree(PickerStage &stage)
{
    fill(stage, QStringLiteral("cold"), {QStringLiteral("Maria"), QStringLiteral("pricing page")});
}

void share(PickerStage &stage)
{
    stage.list().actions().shareButton().click();
    waitUntil([&] { return stage.appState().shareConfirmation().has_value(); });
    QTest::qWait(2 * Theme::longestMotion);
}

void shareTheLast(PickerStage &stage)
{
    stage.page().focusSearch();
    QTest::keyClicks(&stage.search(), QStringLiteral("Rechtsschutz"));
    settle(stage);
    share(stage);
}

void signIn(PickerStage &stage)
{
    stage.appState().signIn(true);
}

void drawLists(const Camera &camera)
{
    const auto type = [](const QString &text) {
        return [text](PickerStage &stage) {
            stage.page().focusSearch();
            QTest::keyClicks(&stage.search(), text);
        };
    };
    shootPanel(camera, QStringLiteral("picker"), sample, type(QStringLiteral("follow")));
    shootPanel(camera, QStringLiteral("picker-browse"), sample, nothing);
    shootPanel(camera, QStringLiteral("picker-empty"), nothing, nothing);
    shootPanel(camera, QStringLiteral("picker-loading"), loading, nothing);
    shootPanel(camera, QStringLiteral("picker-sync-error"), failing, awaitProblem);
    shootPanel(camera, QStringLiteral("picker-no-result"), sample, type(QStringLiteral("zzzz")));
    shootPanel(camera, QStringLiteral("picker-long-texts"), longTexts, nothing);
    shootPanel(camera, QStringLiteral("picker-right-to-left"), rightToLeft, nothing);
    shootPanel(camera, QStringLiteral("picker-button-focus"), sample, [](PickerStage &stage) {
        stage.page().focusSearch();
        QTest::keyClick(&stage.search(), Qt::Key_Tab);
    });
    shootPanel(camera, QStringLiteral("picker-plus-menu"), sample,
               [](PickerStage &stage) { stage.page().footer().plusButton().click(); });
}

void drawForms(const Camera &camera)
{
    shootPanel(camera, QStringLiteral("fill"), sample, fillThree);
    shootPanel(camera, QStringLiteral("fill-compact"), sample,
               [](PickerStage &stage) { startFilling(stage, QStringLiteral("notes")); });
    shootPanel(camera, QStringLiteral("fill-long-texts"), longTexts, [](PickerStage &stage) {
        fill(stage, QStringLiteral("long"),
             {QStringLiteral("Donaudampfschifffahrtsgesellschaft").repeated(3), QStringLiteral("4711")});
    });
    shootPanel(camera, QStringLiteral("fill-compact-right-to-left"), rightToLeft,
               [](PickerStage &stage) { startFilling(stage, QStringLiteral("meeting")); });
    shootPanel(camera, QStringLiteral("fill-error"), sample, [](PickerStage &stage) {
        stage.desk.field().isSettable = false;
        stage.desk.workspace.refusesActivation = true;
        stage.desk.workspace.frontmost = 1;
        fillThree(stage);
        QTest::keyClick(stage.panel().focusWidget(), Qt::Key_Return);
        waitUntil([&] { return stage.appState().lastInsertionResult().has_value(); });
    });
}

void drawNotices(const Camera &camera)
{
    shootPanel(camera, QStringLiteral("picker-no-target"), withoutTarget,
               [](PickerStage &stage) { QTest::keyClick(&stage.search(), Qt::Key_Return); });
    shootPanel(
        camera, QStringLiteral("picker-password"),
        [](PickerStage &stage) {
            sample(stage);
            stage.desk.field().subrole = QStringLiteral("AXSecureTextField");
        },
        nothing);
    shootPanel(
        camera, QStringLiteral("picker-permissions"),
        [](PickerStage &stage) {
            sample(stage);
            stage.desk.tree.trusted = false;
        },
        nothing);
    shootPanel(
        camera, QStringLiteral("picker-hotkey-refused"),
        [](PickerStage &stage) {
            sample(stage);
            stage.desk.hotKeys.isTaken = true;
        },
        nothing);
    shootPanel(camera, QStringLiteral("picker-failed"), sample, failInsertion);
    shootPanel(camera, QStringLiteral("picker-copied"), sample, [](PickerStage &stage) {
        QTest::keyClick(&stage.search(), Qt::Key_Down);
        QTest::keyClick(&stage.search(), Qt::Key_Return, Qt::ControlModifier);
    });
}

void drawSigningIn(const Camera &camera)
{
    const auto signedOut = [](PickerStage &stage) { stage.desk.isSignedIn = false; };
    const auto withoutBrowser = [](PickerStage &stage) {
        stage.desk.isSignedIn = false;
        stage.desk.webAuthenticationSession.hasNoBrowser = true;
    };
    shootPanel(
        camera, QStringLiteral("picker-signed-out"),
        [](PickerStage &stage) {
            stage.desk.isSignedIn = false;
            stage.desk.isConfigured = false;
        },
        [](PickerStage &stage) { stage.appState().signIn(false); });
    shootPanel(camera, QStringLiteral("picker-signing-in"), signedOut, signIn);
    shootPanel(camera, QStringLiteral("picker-signing-in-without-browser"), withoutBrowser, signIn);
    const TwiceTheFont twice;
    shootPanel(camera, QStringLiteral("picker-signing-in-200"), withoutBrowser, signIn);
}

void drawSharing(const Camera &camera)
{
    shootPanel(camera, QStringLiteral("share-banner"), sample, share);
    shootPanel(camera, QStringLiteral("share-banner-long"), longTexts, shareTheLast);
    shootPanel(camera, QStringLiteral("share-progress"), sample, [](PickerStage &stage) {
        stage.desk.server.isHolding = true;
        stage.list().actions().shareButton().click();
    });
    shootPanel(camera, QStringLiteral("share-failed"), sample, [](PickerStage &stage) {
        stage.desk.server.refusal = QStringLiteral("You may not do that.");
        stage.list().actions().shareButton().click();
        waitUntil([&] { return stage.appState().lastInsertionResult().has_value(); });
    });
    const TwiceTheFont twice;
    shootPanel(camera, QStringLiteral("share-banner-200"), longTexts, shareTheLast);
}

/// What the desktop's settings portal would report.
void askForContrast(uint contrast)
{
    QMetaObject::invokeMethod(Theme::shared().findChild<SystemAppearance *>(), "onSettingChanged",
                              Q_ARG(QString, QStringLiteral("org.freedesktop.appearance")),
                              Q_ARG(QString, QStringLiteral("contrast")),
                              Q_ARG(QDBusVariant, QDBusVariant(QVariant::fromValue(contrast))));
}

} // namespace

void drawPicker(const Camera &camera)
{
    drawLists(camera);
    drawForms(camera);
    drawNotices(camera);
    drawSigningIn(camera);
    drawSharing(camera);
    const TwiceTheFont twice;
    shootPanel(camera, QStringLiteral("picker-long-texts-200"), longTexts, nothing);
    shootPanel(camera, QStringLiteral("picker-empty-200"), nothing, nothing);
    shootPanel(camera, QStringLiteral("fill-200"), sample, fillThree);
    shootPanel(
        camera, QStringLiteral("picker-permissions-200"),
        [](PickerStage &stage) {
            longTexts(stage);
            stage.desk.tree.trusted = false;
            stage.desk.hotKeys.isTaken = true;
        },
        nothing);
}

void drawMoreContrast(const Camera &camera)
{
    const Camera inContrast{
        .wants = [&](const QString &name) { return camera.wants(u"contrast-" + name); },
        .shoot = [&](QWidget &screen, const QString &name,
                     PictureGround ground) { camera.shoot(screen, u"contrast-" + name, ground); }};
    const auto among = [&](const QStringList &names) {
        return Camera{
            .wants = [&,
                      names](const QString &name) { return names.contains(name) && inContrast.wants(name); },
            .shoot = inContrast.shoot};
    };
    askForContrast(1);
    drawPicker(among(
        {QStringLiteral("picker-browse"), QStringLiteral("fill"), QStringLiteral("picker-button-focus")}));
    drawLibrary(among({QStringLiteral("library-category")}));
    drawPalette(among({QStringLiteral("palette")}));
    drawPromptEditors(among({QStringLiteral("editor-filled")}));
    drawSkillEditor(among({QStringLiteral("skill-imported")}));
    drawSettings(among({QStringLiteral("settings"), QStringLiteral("settings-focus")}));
    askForContrast(0);
}
