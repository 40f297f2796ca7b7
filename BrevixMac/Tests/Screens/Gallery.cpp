// SPDX-License-Identifier: GPL-3.0-or-later
// Draws every state of the picker into PNG files, light and dark, at one and two times the size:
//   QT_QPA_PLATFORM=offscreen gallery FOLDER [WORD]
// With a word, only the states whose names contain it.
#include "AppWindows.h"
#include "EditorGallery.h"
#include "FloatingPanelController.h"
#include "GalleryPicture.h"
#include "LibraryPage.h"
#include "MenuBarController.h"
#include "MenuBarPickerPanel.h"
#include "MenuBarPickerView.h"
#include "PickerDesk.h"
#include "PickerFooter.h"
#include "PickerList.h"
#include "PickerSearchPage.h"
#include "PromptPalettePanel.h"
#include "PromptPaletteView.h"
#include "SettingsGallery.h"
#include "ShareConfirmationBannerView.h"
#include "SidebarList.h"
#include "SystemAppearance.h"
#include "TextField.h"
#include "Theme.h"
#include "ThemedButton.h"
#include "VariableFields.h"
#include "VariableFillView.h"

#include "Support/Waiting.h"

#include <QApplication>
#include <QDir>
#include <QTest>

#include <cstdio>

namespace {

QDir outputFolder;
QString wantedWord;

/// A picker on screen over a desk of its own.
struct Stage
{
    PickerDesk desk;
    std::unique_ptr<MenuBarController> controller;

    MenuBarPickerPanel &panel() { return *controller->panel(); }
    PickerSearchPage &page() { return panel().view().searchPage(); }

    void open()
    {
        desk.start();
        controller = std::make_unique<MenuBarController>(desk.statusItem, desk.workspace, desk.eventMonitor);
        controller->install(*desk.appState);
        desk.press();
        panel().activateWindow();
        settle();
    }

    void type(const QString &text)
    {
        page().focusSearch();
        QTest::keyClicks(&page().searchField(), text);
        settle();
    }

    void settle()
    {
        page().searchField().setCursorPosition(static_cast<int>(page().searchField().text().size()));
        QTest::qWait(30);
    }

    void save(const QString &name) { savePicture(panel(), outputFolder, name); }
};

using Arrange = std::function<void(Stage &)>;

void picture(const QString &name, const Arrange &before, const Arrange &after)
{
    if (!name.contains(wantedWord))
        return;
    Stage stage;
    before(stage);
    stage.open();
    after(stage);
    stage.settle();
    stage.save(name);
}

void sample(Stage &stage)
{
    stage.desk.addSampleLibrary();
}

void nothing(Stage &)
{
}

void startFilling(Stage &stage, const QString &id)
{
    for (const PromptItem &prompt : stage.desk.appState->libraryStore().prompts()) {
        if (prompt.id == id)
            stage.desk.appState->beginAction(prompt, PendingVariableAction::insert);
    }
    stage.settle();
}

void fillThree(Stage &stage)
{
    startFilling(stage, QStringLiteral("cold"));
    const auto &fields = stage.panel().view().variableFillView().fields().fields();
    QTest::keyClicks(fields.at(0), QStringLiteral("Maria"));
    QTest::keyClicks(fields.at(1), QStringLiteral("pricing page"));
    fields.at(1)->setFocus();
}

void failInsertion(Stage &stage)
{
    stage.desk.field().isSettable = false;
    stage.desk.workspace.refusesActivation = true;
    stage.desk.workspace.frontmost = 1;
    stage.page().focusSearch();
    QTest::keyClick(&stage.page().searchField(), Qt::Key_Down);
    QTest::keyClick(&stage.page().searchField(), Qt::Key_Return);
    waitUntil([&] { return stage.desk.appState->lastInsertionResult().has_value(); });
}

void longLibrary(Stage &stage)
{
    PickerDesk &desk = stage.desk;
    desk.email = QStringLiteral(
        "maximiliane.von-und-zu-hohenstein-weber@donaudampfschifffahrtsgesellschaft.example.com");
    desk.addSampleLibrary();
    desk.server.addPrompt(
        QStringLiteral("long"),
        QStringLiteral("Rechtsschutzversicherungsgesellschaftskorrespondenz mit <b>Auszeichnung</b> &amp; "
                       "{{Platzhalter}}"),
        QStringLiteral("Sehr geehrte Damen und Herren der Kraftfahrzeughaftpflichtversicherung {{name}}"));
    desk.server.addPrompt(QStringLiteral("rtl"), QStringLiteral("متابعة بعد الاجتماع"),
                          QStringLiteral("شكرا على وقتك اليوم، إليك الخطوات التالية"));
    desk.server.addSkill(QStringLiteral("longskill"),
                         QStringLiteral("Barrierefreiheitsüberprüfungsanweisung für Webanwendungen"),
                         QStringLiteral("Prüfe jede Seite auf ausreichende Kontrastverhältnisse."));
}

LibraryPage &openLibrary(Stage &stage)
{
    stage.panel().view().setRoute(PickerPanelRoute::library);
    stage.settle();
    return stage.panel().view().libraryPage();
}

void fillInLibrary(Stage &stage)
{
    LibraryPage &library = openLibrary(stage);
    QTest::keyClick(&library.searchField(), Qt::Key_Return, Qt::ControlModifier);
    const auto &fields = library.form().fields().fields();
    QTest::keyClicks(fields.at(0), QStringLiteral("Maria"));
    QTest::keyClick(fields.at(0), Qt::Key_Tab);
    QTest::keyClicks(fields.at(1), QStringLiteral("pricing page"));
}

void drawLibrary()
{
    const auto open = [](Stage &stage) { openLibrary(stage); };
    picture(QStringLiteral("library"), sample, open);
    picture(QStringLiteral("library-category"), sample, [](Stage &stage) {
        openLibrary(stage).setFilter(LibraryFilter::category(QStringLiteral("engineering")));
    });
    picture(QStringLiteral("library-sidebar-focus"), sample, [](Stage &stage) {
        LibraryPage &library = openLibrary(stage);
        library.setFilter(LibraryFilter::category(QStringLiteral("hiring")));
        library.sidebar().setFocus();
    });
    picture(QStringLiteral("library-search"), sample, [](Stage &stage) {
        QTest::keyClicks(&openLibrary(stage).searchField(), QStringLiteral("follow"));
        QTest::keyClick(&stage.panel().view().libraryPage().searchField(), Qt::Key_Down);
    });
    picture(QStringLiteral("library-nothing-found"), sample, [](Stage &stage) {
        QTest::keyClicks(&openLibrary(stage).searchField(), QStringLiteral("zzzz"));
    });
    picture(QStringLiteral("library-empty"), nothing, open);
    picture(QStringLiteral("library-fill"), sample, fillInLibrary);
    picture(
        QStringLiteral("library-no-target"),
        [](Stage &stage) {
            sample(stage);
            stage.desk.tree.focusedPath.reset();
            stage.desk.workspace.frontmost.reset();
        },
        [](Stage &stage) { QTest::keyClick(&openLibrary(stage).searchField(), Qt::Key_Return); });
    picture(QStringLiteral("library-copied"), sample, [](Stage &stage) {
        LibraryPage &library = openLibrary(stage);
        QTest::keyClick(&library.searchField(), Qt::Key_End, Qt::ControlModifier);
        QTest::keyClick(&library.searchField(), Qt::Key_Return, Qt::ControlModifier);
    });
    picture(QStringLiteral("library-long-texts"), longLibrary, open);
    Theme::shared().forceFontScale(2);
    picture(QStringLiteral("library-200"), longLibrary, open);
    picture(QStringLiteral("library-fill-200"), sample, fillInLibrary);
    Theme::shared().forceFontScale(std::nullopt);
}

/// The palette over the same desk as the picker.
void palettePicture(const QString &name, const Arrange &before,
                    const std::function<void(PromptPaletteView &)> &after)
{
    if (!name.contains(wantedWord))
        return;
    Stage stage;
    before(stage);
    stage.open();
    AppWindows windows(*stage.desk.appState, stage.desk.workspace, *stage.controller);
    windows.showPalette();
    PromptPalettePanel &panel = windows.palette()->panel();
    panel.setFixedSize(980, 620);
    panel.activateWindow();
    stage.settle();
    after(panel.view());
    stage.settle();
    savePicture(panel, outputFolder, name);
}

void share(Stage &stage, ThemedButton &button)
{
    button.click();
    waitUntil([&] { return stage.desk.appState->shareConfirmation().has_value(); });
    QTest::qWait(2 * Theme::longestMotion);
}

void drawSharing()
{
    picture(QStringLiteral("share-banner"), sample,
            [](Stage &stage) { share(stage, stage.page().list().actions().shareButton()); });
    picture(QStringLiteral("share-progress"), sample, [](Stage &stage) {
        stage.desk.server.isHolding = true;
        stage.page().list().actions().shareButton().click();
    });
    picture(QStringLiteral("library-share-banner"), sample,
            [](Stage &stage) { share(stage, openLibrary(stage).list().actions().shareButton()); });
    picture(QStringLiteral("share-failed"), sample, [](Stage &stage) {
        stage.desk.server.refusal = QStringLiteral("You may not do that.");
        stage.page().list().actions().shareButton().click();
        waitUntil([&] { return stage.desk.appState->lastInsertionResult().has_value(); });
    });
}

void drawPalette()
{
    const auto asItIs = [](PromptPaletteView &) {};
    palettePicture(QStringLiteral("palette"), sample, asItIs);
    palettePicture(QStringLiteral("palette-search"), sample, [](PromptPaletteView &view) {
        QTest::keyClicks(&view.searchField(), QStringLiteral("follow"));
        QTest::keyClick(&view.searchField(), Qt::Key_Down);
    });
    palettePicture(QStringLiteral("palette-nothing-found"), sample, [](PromptPaletteView &view) {
        QTest::keyClicks(&view.searchField(), QStringLiteral("zzzz"));
    });
    palettePicture(
        QStringLiteral("palette-no-target"),
        [](Stage &stage) {
            sample(stage);
            stage.desk.tree.focusedPath.reset();
            stage.desk.workspace.frontmost.reset();
        },
        [](PromptPaletteView &view) { QTest::keyClick(&view.searchField(), Qt::Key_Return); });
    palettePicture(QStringLiteral("palette-fill"), sample, [](PromptPaletteView &view) {
        QTest::keyClick(&view.searchField(), Qt::Key_Return);
        QTest::keyClicks(view.form().fields().fields().first(), QStringLiteral("Maria"));
    });
    palettePicture(QStringLiteral("palette-banner"), sample, [](PromptPaletteView &view) {
        view.shareButton().click();
        waitUntil([&] { return view.banner().isVisible(); });
        QTest::qWait(2 * Theme::longestMotion);
    });
    palettePicture(QStringLiteral("palette-long-texts"), longLibrary, [](PromptPaletteView &view) {
        QTest::keyClick(&view.searchField(), Qt::Key_End, Qt::ControlModifier);
        QTest::keyClick(&view.searchField(), Qt::Key_Up);
    });
    palettePicture(QStringLiteral("palette-empty"), nothing, asItIs);
}

/// What the desktop's settings portal would report.
void askForContrast(uint contrast)
{
    QMetaObject::invokeMethod(Theme::shared().findChild<SystemAppearance *>(), "onSettingChanged",
                              Q_ARG(QString, QStringLiteral("org.freedesktop.appearance")),
                              Q_ARG(QString, QStringLiteral("contrast")),
                              Q_ARG(QDBusVariant, QDBusVariant(QVariant::fromValue(contrast))));
}

void drawMoreContrast()
{
    askForContrast(1);
    picture(QStringLiteral("contrast-picker"), sample, nothing);
    picture(QStringLiteral("contrast-library"), sample, [](Stage &stage) {
        openLibrary(stage).setFilter(LibraryFilter::category(QStringLiteral("hiring")));
    });
    palettePicture(QStringLiteral("contrast-palette"), sample, [](PromptPaletteView &) {});
    askForContrast(0);
}

void drawAll()
{
    picture(QStringLiteral("picker"), sample, [](Stage &stage) { stage.type(QStringLiteral("follow")); });
    picture(QStringLiteral("browse"), sample, nothing);
    picture(QStringLiteral("fill"), sample, fillThree);
    picture(QStringLiteral("fill-compact"), sample,
            [](Stage &stage) { startFilling(stage, QStringLiteral("notes")); });
    picture(QStringLiteral("no-result"), sample, [](Stage &stage) { stage.type(QStringLiteral("zzzz")); });
    picture(QStringLiteral("empty-library"), nothing, nothing);
    picture(
        QStringLiteral("no-target"),
        [](Stage &stage) {
            sample(stage);
            stage.desk.tree.focusedPath.reset();
            stage.desk.workspace.frontmost.reset();
        },
        [](Stage &stage) { QTest::keyClick(&stage.page().searchField(), Qt::Key_Return); });
    picture(
        QStringLiteral("password"),
        [](Stage &stage) {
            sample(stage);
            stage.desk.field().subrole = QStringLiteral("AXSecureTextField");
        },
        nothing);
    picture(
        QStringLiteral("permissions"),
        [](Stage &stage) {
            sample(stage);
            stage.desk.tree.trusted = false;
        },
        nothing);
    picture(
        QStringLiteral("hotkey-refused"),
        [](Stage &stage) {
            sample(stage);
            stage.desk.hotKeys.isTaken = true;
        },
        nothing);
    picture(
        QStringLiteral("signed-out"),
        [](Stage &stage) {
            stage.desk.isSignedIn = false;
            stage.desk.isConfigured = false;
        },
        [](Stage &stage) { stage.desk.appState->signIn(false); });
    picture(
        QStringLiteral("signing-in"), [](Stage &stage) { stage.desk.isSignedIn = false; },
        [](Stage &stage) { stage.desk.appState->signIn(true); });
    picture(
        QStringLiteral("signing-in-without-browser"),
        [](Stage &stage) {
            stage.desk.isSignedIn = false;
            stage.desk.webAuthenticationSession.hasNoBrowser = true;
        },
        [](Stage &stage) { stage.desk.appState->signIn(true); });
    picture(QStringLiteral("failed"), sample, failInsertion);
    picture(QStringLiteral("copied"), sample, [](Stage &stage) {
        QTest::keyClick(&stage.page().searchField(), Qt::Key_Down);
        QTest::keyClick(&stage.page().searchField(), Qt::Key_Return, Qt::ControlModifier);
    });
    picture(QStringLiteral("plus-menu"), sample,
            [](Stage &stage) { stage.page().footer().plusButton().click(); });
    picture(QStringLiteral("button-focus"), sample, [](Stage &stage) {
        stage.page().focusSearch();
        QTest::keyClick(&stage.page().searchField(), Qt::Key_Tab);
    });
    picture(QStringLiteral("long-texts"), longLibrary, nothing);
    drawLibrary();
    drawSharing();
    drawPalette();
    drawMoreContrast();
    Theme::shared().forceFontScale(2);
    picture(QStringLiteral("long-texts-200"), longLibrary, nothing);
    picture(QStringLiteral("fill-200"), sample, fillThree);
    picture(
        QStringLiteral("permissions-200"),
        [](Stage &stage) {
            longLibrary(stage);
            stage.desk.tree.trusted = false;
            stage.desk.hotKeys.isTaken = true;
        },
        nothing);
    Theme::shared().forceFontScale(std::nullopt);
}

} // namespace

int main(int argc, char **argv)
{
    QApplication application(argc, argv);
    if (argc < 2 || argc > 3 || !QDir().mkpath(QString::fromLocal8Bit(argv[1]))) {
        std::fprintf(stderr, "usage: gallery FOLDER [WORD]\n");
        return 64;
    }
    outputFolder.setPath(QString::fromLocal8Bit(argv[1]));
    wantedWord = QString::fromLocal8Bit(argc > 2 ? argv[2] : "");
    for (const Theme::Scheme scheme : {Theme::Scheme::light, Theme::Scheme::dark}) {
        Theme::shared().forceScheme(scheme);
        drawAll();
        drawEditors(outputFolder, wantedWord);
        drawSettings(outputFolder);
    }
    return 0;
}
