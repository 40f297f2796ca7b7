// SPDX-License-Identifier: GPL-3.0-or-later
#include "GalleryStage.h"
#include "LibraryPage.h"
#include "PickerRowActions.h"
#include "SidebarList.h"
#include "ThemedButton.h"
#include "VariableFields.h"
#include "VariableForm.h"

using namespace GalleryStage;

namespace {

LibraryPage &openLibrary(PickerStage &stage)
{
    stage.view().setRoute(PickerPanelRoute::library);
    settle(stage);
    return stage.view().libraryPage();
}

void show(PickerStage &stage)
{
    openLibrary(stage);
}

void select(PickerStage &stage, const QString &category)
{
    openLibrary(stage).setFilter(LibraryFilter::category(category));
}

void fillInLibrary(PickerStage &stage)
{
    LibraryPage &library = openLibrary(stage);
    QTest::keyClick(&library.searchField(), Qt::Key_Return, Qt::ControlModifier);
    const auto &fields = library.form().fields().fields();
    QTest::keyClicks(fields.at(0), QStringLiteral("Maria"));
    QTest::keyClick(fields.at(0), Qt::Key_Tab);
    QTest::keyClicks(fields.at(1), QStringLiteral("pricing page"));
}

void drawResults(const Camera &camera)
{
    shootPanel(camera, QStringLiteral("library"), sample, show);
    shootPanel(camera, QStringLiteral("library-empty"), nothing, show);
    shootPanel(camera, QStringLiteral("library-loading"), loading, show);
    shootPanel(camera, QStringLiteral("library-sync-error"), failing, [](PickerStage &stage) {
        awaitProblem(stage);
        show(stage);
    });
    shootPanel(camera, QStringLiteral("library-long-texts"), longTexts,
               [](PickerStage &stage) { select(stage, QStringLiteral("long")); });
    shootPanel(camera, QStringLiteral("library-right-to-left"), rightToLeft,
               [](PickerStage &stage) { select(stage, QStringLiteral("mail")); });
    shootPanel(camera, QStringLiteral("library-category"), sample,
               [](PickerStage &stage) { select(stage, QStringLiteral("engineering")); });
    shootPanel(camera, QStringLiteral("library-search"), sample, [](PickerStage &stage) {
        LibraryPage &library = openLibrary(stage);
        QTest::keyClicks(&library.searchField(), QStringLiteral("follow"));
        QTest::keyClick(&library.searchField(), Qt::Key_Down);
    });
    shootPanel(camera, QStringLiteral("library-nothing-found"), sample, [](PickerStage &stage) {
        QTest::keyClicks(&openLibrary(stage).searchField(), QStringLiteral("zzzz"));
    });
    shootPanel(camera, QStringLiteral("library-sidebar-focus"), sample, [](PickerStage &stage) {
        select(stage, QStringLiteral("hiring"));
        stage.view().libraryPage().sidebar().setFocus();
    });
}

void drawActions(const Camera &camera)
{
    shootPanel(camera, QStringLiteral("library-fill"), sample, fillInLibrary);
    shootPanel(camera, QStringLiteral("library-no-target"), withoutTarget, [](PickerStage &stage) {
        QTest::keyClick(&openLibrary(stage).searchField(), Qt::Key_Return);
    });
    shootPanel(camera, QStringLiteral("library-copied"), sample, [](PickerStage &stage) {
        LibraryPage &library = openLibrary(stage);
        QTest::keyClick(&library.searchField(), Qt::Key_End, Qt::ControlModifier);
        QTest::keyClick(&library.searchField(), Qt::Key_Return, Qt::ControlModifier);
    });
    shootPanel(camera, QStringLiteral("library-share-banner"), sample, [](PickerStage &stage) {
        openLibrary(stage).list().actions().shareButton().click();
        waitUntil([&] { return stage.appState().shareConfirmation().has_value(); });
        QTest::qWait(2 * Theme::longestMotion);
    });
}

} // namespace

void drawLibrary(const Camera &camera)
{
    drawResults(camera);
    drawActions(camera);
    const TwiceTheFont twice;
    shootPanel(camera, QStringLiteral("library-200"), longTexts, show);
    shootPanel(camera, QStringLiteral("library-empty-200"), nothing, show);
    shootPanel(camera, QStringLiteral("library-fill-200"), sample, fillInLibrary);
}
