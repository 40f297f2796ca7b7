// SPDX-License-Identifier: GPL-3.0-or-later
#include "ContentScrollArea.h"
#include "DiagnosticsRows.h"
#include "DoctorRows.h"
#include "GalleryStage.h"
#include "SettingsPage.h"
#include "SettingsRow.h"
#include "SettingsView.h"
#include "SettingsWindowController.h"
#include "ShortcutRecorderView.h"
#include "ThemedButton.h"
#include "ThemedSwitch.h"

#include <QScrollBar>

using namespace GalleryStage;

namespace {

SettingsView &settings(PickerStage &stage)
{
    return stage.view().settingsPage().view();
}

void scroll(SettingsView &view, double share)
{
    QScrollBar *bar = view.findChild<ContentScrollArea *>()->verticalScrollBar();
    bar->setValue(static_cast<int>(bar->maximum() * share));
}

void someone(PickerStage &stage)
{
    stage.desk.displayName = QStringLiteral("Ann Example");
    sample(stage);
}

void shoot(const Camera &camera, const QString &name, const Arrange &before, const Arrange &after,
           double scrolled = 0)
{
    shootPanel(camera, name, before, [&](PickerStage &stage) {
        stage.view().setRoute(PickerPanelRoute::settings);
        settle(stage);
        after(stage);
        settle(stage);
        scroll(settings(stage), scrolled);
    });
}

void wrongInManyWays(PickerStage &stage)
{
    someone(stage);
    SessionFacts &facts = stage.desk.sessionProbe.facts;
    facts.mutePrograms = {QStringLiteral("Kate"), QStringLiteral("Chromium"),
                          QStringLiteral("A program with quite a long name"), QStringLiteral("Clock"),
                          QStringLiteral("Another one")};
    facts.accessiblePrograms = 0;
    facts.tray = SessionFacts::Tray::none;
    facts.scheme.isRefusedByOpener = true;
    stage.desk.hotKeys.isTaken = true;
}

/// The settings scrolled to the rows about the session.
void shootDoctor(const Camera &camera, const QString &name, const Arrange &before)
{
    shootPanel(camera, name, before, [](PickerStage &stage) {
        stage.view().setRoute(PickerPanelRoute::settings);
        settle(stage);
        SettingsView &view = settings(stage);
        const auto *area = view.findChild<ContentScrollArea *>();
        area->verticalScrollBar()->setValue(view.doctor().headRow().mapTo(area->widget(), QPoint()).y());
    });
}

void shootWindow(const Camera &camera, const QString &name, const Arrange &before)
{
    if (!camera.wants(name))
        return;
    PickerStage stage;
    before(stage);
    stage.desk.start();
    SettingsWindowController controller(stage.appState());
    controller.show();
    QTest::qWait(50);
    camera.shoot(controller.window(), name, PictureGround::none);
}

void everyProblem(PickerStage &stage)
{
    stage.desk.isSignedIn = false;
    stage.desk.tree.trusted = false;
    stage.desk.hotKeys.takenByOthers = {{0, KeyboardShortcut::option}};
    stage.desk.loginItem.problem =
        QStringLiteral("The login item ~/.config/autostart/app.brevix.Brevix.desktop could not be written: "
                       "Read-only file system.");
}

void meetTheProblems(PickerStage &stage)
{
    settings(stage).loginSwitch().click();
    stage.appState().updateShortcut({.keyCode = 0, .modifiers = KeyboardShortcut::option});
}

void showDiagnostics(PickerStage &stage)
{
    settings(stage).diagnostics().showButton().click();
}

void drawStates(const Camera &camera)
{
    shoot(camera, QStringLiteral("settings"), someone, [](PickerStage &stage) {
        stage.appState().setLaunchAtLogin(true);
        stage.appState().preferences().setShowMenuBarIcon(false);
    });
    shoot(camera, QStringLiteral("settings-middle"), someone, nothing, 0.5);
    shoot(camera, QStringLiteral("settings-end"), someone, nothing, 1);
    shoot(camera, QStringLiteral("settings-diagnostics"), someone, showDiagnostics, 1);
    shoot(camera, QStringLiteral("settings-long-texts"), longTexts, nothing);
    shoot(camera, QStringLiteral("settings-right-to-left"), rightToLeft, nothing);
    shoot(camera, QStringLiteral("settings-signed-out"), everyProblem, meetTheProblems);
    shoot(
        camera, QStringLiteral("settings-sync-error"), failing,
        [](PickerStage &stage) {
            awaitProblem(stage);
            showDiagnostics(stage);
        },
        1);
    shoot(
        camera, QStringLiteral("settings-signing-in"),
        [](PickerStage &stage) {
            stage.desk.isSignedIn = false;
            stage.desk.webAuthenticationSession.hasNoBrowser = true;
        },
        [](PickerStage &stage) { stage.appState().signIn(true); });
    shoot(camera, QStringLiteral("settings-recording"), someone,
          [](PickerStage &stage) { settings(stage).recorder().recordButton().click(); });
    shoot(camera, QStringLiteral("settings-focus"), someone,
          [](PickerStage &stage) { settings(stage).loginSwitch().setFocus(Qt::TabFocusReason); });
}

} // namespace

void drawSettings(const Camera &camera)
{
    drawStates(camera);
    shootDoctor(camera, QStringLiteral("settings-doctor"), wrongInManyWays);
    shootDoctor(camera, QStringLiteral("settings-doctor-well"), someone);
    shootWindow(camera, QStringLiteral("settings-window"), someone);
    shootWindow(camera, QStringLiteral("settings-window-signed-out"), everyProblem);
    const TwiceTheFont twice;
    shootDoctor(camera, QStringLiteral("settings-doctor-200"), wrongInManyWays);
    for (const double scrolled : {0.0, 0.25, 0.5, 0.75, 1.0})
        shoot(camera, QStringLiteral("settings-200-%1").arg(qRound(scrolled * 100)), longTexts, nothing,
              scrolled);
    shoot(camera, QStringLiteral("settings-problems-200"), everyProblem, meetTheProblems);
    shootWindow(camera, QStringLiteral("settings-window-200"), longTexts);
}
