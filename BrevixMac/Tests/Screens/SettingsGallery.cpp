// SPDX-License-Identifier: GPL-3.0-or-later
#include "SettingsGallery.h"

#include "ContentScrollArea.h"
#include "DiagnosticsRows.h"
#include "DoctorRows.h"
#include "GalleryPicture.h"
#include "MenuBarPickerPanel.h"
#include "MenuBarPickerView.h"
#include "PickerStage.h"
#include "SettingsPage.h"
#include "SettingsRow.h"
#include "SettingsView.h"
#include "SettingsWindowController.h"
#include "ShortcutRecorderView.h"
#include "Theme.h"
#include "ThemedButton.h"
#include "ThemedSwitch.h"

#include <QScrollBar>

namespace {

using Arrange = std::function<void(PickerStage &)>;

SettingsView &settings(PickerStage &stage)
{
    return stage.view().settingsPage().view();
}

void scroll(SettingsView &view, double share)
{
    QScrollBar *bar = view.findChild<ContentScrollArea *>()->verticalScrollBar();
    bar->setValue(static_cast<int>(bar->maximum() * share));
}

void picture(const QDir &folder, const QString &name, const Arrange &before, const Arrange &after,
             double scrolled = 0)
{
    PickerStage stage;
    stage.desk.displayName = QStringLiteral("Ann Example");
    stage.desk.addSampleLibrary();
    before(stage);
    stage.install();
    stage.desk.press();
    stage.panel().activateWindow();
    stage.view().setRoute(PickerPanelRoute::settings);
    QTest::qWait(30);
    after(stage);
    QTest::qWait(30);
    scroll(settings(stage), scrolled);
    QTest::qWait(30);
    savePicture(stage.panel(), folder, name);
}

void nothing(PickerStage &)
{
}

void wrongInManyWays(PickerStage &stage)
{
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
void doctorPicture(const QDir &folder, const QString &name, const Arrange &before)
{
    PickerStage stage;
    stage.desk.displayName = QStringLiteral("Ann Example");
    before(stage);
    stage.install();
    stage.desk.press();
    stage.panel().activateWindow();
    stage.view().setRoute(PickerPanelRoute::settings);
    QTest::qWait(30);
    SettingsView &view = settings(stage);
    QScrollBar *bar = view.findChild<ContentScrollArea *>()->verticalScrollBar();
    QWidget *content = view.findChild<ContentScrollArea *>()->widget();
    bar->setValue(view.doctor().headRow().mapTo(content, QPoint()).y());
    QTest::qWait(30);
    savePicture(stage.panel(), folder, name);
}

void windowPicture(const QDir &folder, const QString &name)
{
    PickerDesk desk;
    desk.displayName = QStringLiteral("Ann Example");
    desk.addSampleLibrary();
    desk.start();
    SettingsWindowController controller(*desk.appState);
    controller.show();
    QTest::qWait(50);
    QWidget &window = controller.window();
    savePicture(window, folder, name);
}

} // namespace

void drawSettings(const QDir &folder)
{
    picture(folder, QStringLiteral("settings"), nothing, [](PickerStage &stage) {
        stage.desk.appState->setLaunchAtLogin(true);
        stage.desk.appState->preferences().setShowMenuBarIcon(false);
    });
    picture(folder, QStringLiteral("settings-middle"), nothing, nothing, 0.5);
    picture(folder, QStringLiteral("settings-end"), nothing, nothing, 1);
    picture(
        folder, QStringLiteral("settings-diagnostics"), nothing,
        [](PickerStage &stage) { settings(stage).diagnostics().showButton().click(); }, 1);
    picture(
        folder, QStringLiteral("settings-signed-out"),
        [](PickerStage &stage) {
            stage.desk.isSignedIn = false;
            stage.desk.tree.trusted = false;
            stage.desk.hotKeys.takenByOthers = {{0, KeyboardShortcut::option}};
            stage.desk.loginItem.problem = QStringLiteral(
                "The login item ~/.config/autostart/app.brevix.Brevix.desktop could not be written: "
                "Read-only file system.");
        },
        [](PickerStage &stage) {
            settings(stage).loginSwitch().click();
            stage.desk.appState->updateShortcut({.keyCode = 0, .modifiers = KeyboardShortcut::option});
        });
    picture(
        folder, QStringLiteral("settings-signing-in"),
        [](PickerStage &stage) {
            stage.desk.isSignedIn = false;
            stage.desk.isConfigured = true;
        },
        [](PickerStage &stage) {
            stage.desk.webAuthenticationSession.hasNoBrowser = true;
            stage.desk.appState->signIn(true);
        });
    picture(folder, QStringLiteral("settings-recording"), nothing,
            [](PickerStage &stage) { settings(stage).recorder().recordButton().click(); });
    picture(folder, QStringLiteral("settings-focus"), nothing,
            [](PickerStage &stage) { settings(stage).loginSwitch().setFocus(Qt::TabFocusReason); });
    doctorPicture(folder, QStringLiteral("settings-doctor"), wrongInManyWays);
    doctorPicture(folder, QStringLiteral("settings-doctor-well"), nothing);
    Theme::shared().forceFontScale(2);
    doctorPicture(folder, QStringLiteral("settings-doctor-200"), wrongInManyWays);
    for (const double scrolled : {0.0, 0.25, 0.5, 0.75, 1.0})
        picture(folder, QStringLiteral("settings-200-%1").arg(qRound(scrolled * 100)), nothing, nothing,
                scrolled);
    Theme::shared().forceFontScale(std::nullopt);
    windowPicture(folder, QStringLiteral("settings-window"));
}
