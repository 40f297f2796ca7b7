// SPDX-License-Identifier: GPL-3.0-or-later
#include "AppWindows.h"
#include "FloatingPanelController.h"
#include "GalleryStage.h"
#include "PromptPalettePanel.h"
#include "PromptPaletteView.h"
#include "ShareConfirmationBannerView.h"
#include "ThemedButton.h"
#include "VariableFields.h"
#include "VariableFillView.h"

using namespace GalleryStage;

namespace {

constexpr QSize designedSize(980, 620);

using ArrangeView = std::function<void(PickerStage &, PromptPaletteView &)>;

enum class Screen { large, small };

/// The palette over the same desk as the picker. With a large font or on a small screen it takes what there
/// is.
void shoot(const Camera &camera, const QString &name, const Arrange &before, const ArrangeView &after,
           Screen screen = Screen::large)
{
    if (!camera.wants(name))
        return;
    PickerStage stage;
    before(stage);
    GalleryStage::open(stage);
    AppWindows windows(stage.appState(), stage.desk.workspace, *stage.controller);
    windows.showPalette();
    PromptPalettePanel &panel = windows.palette()->panel();
    if (screen == Screen::large && Theme::shared().fontScale() <= 1)
        panel.setFixedSize(designedSize);
    panel.activateWindow();
    settle(stage);
    after(stage, panel.view());
    settle(stage);
    camera.shoot(panel, name, PictureGround::none);
}

void asItIs(PickerStage &, PromptPaletteView &)
{
}

void type(PromptPaletteView &view, const QString &text)
{
    QTest::keyClicks(&view.searchField(), text);
}

void beginFilling(PromptPaletteView &view)
{
    QTest::keyClick(&view.searchField(), Qt::Key_Return);
    QTest::keyClicks(view.form().fields().fields().first(), QStringLiteral("Maria"));
}

void fail(PickerStage &stage, PromptPaletteView &view)
{
    stage.desk.field().isSettable = false;
    stage.desk.workspace.refusesActivation = true;
    stage.desk.workspace.frontmost = 1;
    QTest::keyClick(&view.searchField(), Qt::Key_Down);
    QTest::keyClick(&view.searchField(), Qt::Key_Return);
    waitUntil([&] { return stage.appState().insertionRecovery().has_value(); });
}

} // namespace

void drawPalette(const Camera &camera)
{
    shoot(camera, QStringLiteral("palette"), sample, asItIs);
    shoot(camera, QStringLiteral("palette-empty"), nothing, asItIs);
    shoot(camera, QStringLiteral("palette-loading"), loading, asItIs);
    shoot(camera, QStringLiteral("palette-sync-error"), failing,
          [](PickerStage &stage, PromptPaletteView &) { awaitProblem(stage); });
    shoot(camera, QStringLiteral("palette-right-to-left"), rightToLeft, asItIs);
    const auto selectLast = [](PickerStage &stage, PromptPaletteView &view) {
        stage.appState().setSelectedCategoryID(QStringLiteral("long"));
        QTest::keyClick(&view.searchField(), Qt::Key_End, Qt::ControlModifier);
    };
    shoot(camera, QStringLiteral("palette-long-texts"), longTexts, selectLast);
    shoot(camera, QStringLiteral("palette-search"), sample, [](PickerStage &, PromptPaletteView &view) {
        type(view, QStringLiteral("follow"));
        QTest::keyClick(&view.searchField(), Qt::Key_Down);
    });
    shoot(camera, QStringLiteral("palette-nothing-found"), sample,
          [](PickerStage &, PromptPaletteView &view) { type(view, QStringLiteral("zzzz")); });
    shoot(
        camera, QStringLiteral("palette-no-target"), withoutTarget,
        [](PickerStage &, PromptPaletteView &view) { QTest::keyClick(&view.searchField(), Qt::Key_Return); });
    shoot(camera, QStringLiteral("palette-fill"), sample,
          [](PickerStage &, PromptPaletteView &view) { beginFilling(view); });
    shoot(camera, QStringLiteral("palette-banner"), sample, [](PickerStage &, PromptPaletteView &view) {
        view.shareButton().click();
        waitUntil([&] { return view.banner().isVisible(); });
        QTest::qWait(2 * Theme::longestMotion);
    });
    shoot(camera, QStringLiteral("palette-failed"), sample, fail);
    shoot(camera, QStringLiteral("palette-small-screen"), longTexts, selectLast, Screen::small);
    shoot(camera, QStringLiteral("palette-small-screen-failed"), sample, fail, Screen::small);
    const TwiceTheFont twice;
    shoot(camera, QStringLiteral("palette-failed-200"), sample, fail);
    shoot(camera, QStringLiteral("palette-200"), longTexts, selectLast);
    shoot(camera, QStringLiteral("palette-fill-200"), sample,
          [](PickerStage &, PromptPaletteView &view) { beginFilling(view); });
}
