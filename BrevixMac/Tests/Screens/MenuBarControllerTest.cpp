// SPDX-License-Identifier: GPL-3.0-or-later
#include "PickerStage.h"

#include <QFontDatabase>
#include <QIcon>
#include <QPainter>
#include <QSignalSpy>

#include <gtest/gtest.h>

namespace {

using namespace std::chrono_literals;

constexpr QRect screen(0, 0, 1600, 1000);
constexpr QSize panelSize(520, 640);

struct PositionCase
{
    const char *name;
    QRect button;
    QRect visibleFrame;
    QSize size;
    QPoint expected;
};

void PrintTo(const PositionCase &positionCase, std::ostream *out)
{
    *out << positionCase.name;
}

class PanelPosition : public testing::TestWithParam<PositionCase>
{
};

TEST_P(PanelPosition, staysNearTheButtonAndInsideTheScreen)
{
    const PositionCase &given = GetParam();
    EXPECT_EQ(MenuBarController::panelPosition(given.button, given.size, given.visibleFrame), given.expected);
}

const PositionCase positionCases[] = {
    {"belowAnItemAtTheTop", {800, 0, 24, 24}, screen, panelSize, {552, 32}},
    {"aboveAnItemAtTheBottom", {800, 976, 24, 24}, screen, panelSize, {552, 328}},
    {"keptInsideTheRightEdge", {1570, 0, 24, 24}, screen, panelSize, {1072, 32}},
    {"keptInsideTheLeftEdge", {4, 0, 24, 24}, screen, panelSize, {8, 32}},
    {"justFitsBelow", {800, 320, 24, 24}, screen, panelSize, {552, 352}},
    {"onePixelTooLowGoesAboveAndIsPushedDown", {800, 321, 24, 24}, screen, panelSize, {552, 8}},
    {"aPanelBelowTheDesktopBar", {800, 0, 24, 30}, {0, 30, 1600, 970}, panelSize, {552, 38}},
    {"aSecondScreenToTheLeft", {-820, 0, 24, 24}, {-1600, 0, 1600, 1000}, panelSize, {-1068, 32}},
    {"aScreenTooLowKeepsTheTopInside", {300, 0, 24, 24}, {0, 0, 1600, 400}, panelSize, {52, 8}},
    {"aScreenTooNarrowKeepsTheRightInside", {100, 0, 24, 24}, {0, 0, 400, 1000}, panelSize, {-128, 32}},
    {"anEmptyFrameAtTheOrigin", {100, 0, 24, 24}, {0, 0, 0, 0}, panelSize, {-528, 8}},
};

INSTANTIATE_TEST_SUITE_P(Table, PanelPosition, testing::ValuesIn(positionCases),
                         [](const auto &info) { return std::string(info.param.name); });

class MenuBarControllerTest : public testing::Test
{
protected:
    PickerStage stage;
};

TEST_F(MenuBarControllerTest, installShowsTheStatusItemOnly)
{
    stage.install();
    EXPECT_TRUE(stage.desk.statusItem.installed);
    EXPECT_EQ(stage.desk.statusItem.toolTip, u"Brevix");
    EXPECT_FALSE(stage.desk.statusItem.image.isNull());
    EXPECT_FALSE(stage.controller->isPickerVisible());
    EXPECT_FALSE(stage.appState().palettePresented());
    EXPECT_TRUE(stage.desk.eventMonitor.entries.size() <= 1); // the coordinator's own, none of the panel
}

TEST_F(MenuBarControllerTest, theToolTipTellsThatTheHotkeyWasRefused)
{
    stage.desk.hotKeys.isTaken = true;
    stage.install();
    EXPECT_TRUE(stage.desk.statusItem.toolTip.startsWith(u"Brevix"));
    EXPECT_TRUE(stage.desk.statusItem.toolTip.contains(stage.appState().hotkeyLabel()));
    EXPECT_TRUE(stage.desk.statusItem.toolTip.contains(u"held by another application"));
}

TEST_F(MenuBarControllerTest, theToolTipFollowsTheHotkeyThatIsLostAndRegained)
{
    stage.install();
    Q_EMIT stage.desk.hotKeys.lost();
    EXPECT_TRUE(stage.desk.statusItem.toolTip.contains(u"held by another application"));
    Q_EMIT stage.desk.hotKeys.regained();
    EXPECT_EQ(stage.desk.statusItem.toolTip, u"Brevix");
}

TEST_F(MenuBarControllerTest, theToolTipBlamesNobodyWhereThereAreNoHotkeys)
{
    stage.desk.hotKeys.available = false;
    stage.install();
    EXPECT_EQ(stage.desk.statusItem.toolTip, u"Brevix: This session has no global shortcuts");
}

TEST_F(MenuBarControllerTest, theHotkeyOpensWithTheSearchFieldFocused)
{
    stage.open();
    EXPECT_TRUE(stage.appState().palettePresented());
    EXPECT_TRUE(stage.search().hasFocus());
}

TEST_F(MenuBarControllerTest, theStatusItemOpensWithoutTakingTheFocusAndClosesAgain)
{
    stage.install();
    Q_EMIT stage.desk.statusItem.pressed(QPoint(1012, 12));
    ASSERT_TRUE(waitUntil([&] { return stage.controller->isPickerVisible(); }));
    EXPECT_FALSE(stage.appState().pickerAutoFocusSearch());
    EXPECT_TRUE(stage.panel().testAttribute(Qt::WA_ShowWithoutActivating));
    EXPECT_TRUE(stage.appState().palettePresented());
    Q_EMIT stage.desk.statusItem.pressed(QPoint(1012, 12));
    EXPECT_FALSE(stage.controller->isPickerVisible());
    EXPECT_FALSE(stage.appState().palettePresented());
}

TEST_F(MenuBarControllerTest, aPressOutsideClosesAndOneInsideDoesNot)
{
    stage.open();
    const QRect frame = stage.panel().frameGeometry();
    stage.desk.eventMonitor.post({MonitoredEvent::pointerPress, frame.center()});
    stage.desk.eventMonitor.post({MonitoredEvent::pointerPress, frame.topLeft()});
    EXPECT_FALSE(waitUntil([&] { return !stage.controller->isPickerVisible(); }, 50ms));
    stage.desk.eventMonitor.post({MonitoredEvent::pointerPress, frame.bottomRight() + QPoint(1, 1)});
    ASSERT_TRUE(waitUntil([&] { return !stage.controller->isPickerVisible(); }));
    EXPECT_FALSE(stage.appState().palettePresented());
}

TEST_F(MenuBarControllerTest, theOutsidePressIsWatchedOnlyWhileThePanelIsShown)
{
    stage.install();
    const auto before = stage.desk.eventMonitor.entries.size();
    stage.desk.press();
    EXPECT_EQ(stage.desk.eventMonitor.entries.size(), before + 1);
    stage.controller->showPicker();
    EXPECT_EQ(stage.desk.eventMonitor.entries.size(), before + 1);
    stage.controller->closePicker();
    EXPECT_EQ(stage.desk.eventMonitor.entries.size(), before);
}

// A press on the status item is also a press outside the panel: it closed the panel and its own signal opened
// it again.
TEST_F(MenuBarControllerTest, aPressOnTheStatusItemDoesNotReopenWhatItHasJustClosed)
{
    stage.open();
    const QPoint item(1012, 12);
    stage.desk.eventMonitor.post({MonitoredEvent::pointerPress, item});
    ASSERT_TRUE(waitUntil([&] { return !stage.controller->isPickerVisible(); }));
    Q_EMIT stage.desk.statusItem.pressed(item);
    EXPECT_FALSE(waitUntil([&] { return stage.controller->isPickerVisible(); }, 50ms));
    Q_EMIT stage.desk.statusItem.pressed(item);
    EXPECT_TRUE(waitUntil([&] { return stage.controller->isPickerVisible(); }));
}

TEST_F(MenuBarControllerTest, closingByTheWindowManagerOnlyHides)
{
    stage.open();
    MenuBarPickerPanel *panel = &stage.panel();
    panel->close();
    EXPECT_FALSE(stage.controller->isPickerVisible());
    EXPECT_FALSE(stage.appState().palettePresented());
    stage.desk.press();
    EXPECT_TRUE(stage.controller->isPickerVisible());
    EXPECT_EQ(&stage.panel(), panel);
}

TEST_F(MenuBarControllerTest, escapeClosesAndTogglingOpensAgain)
{
    stage.open();
    stage.key(Qt::Key_Escape);
    EXPECT_FALSE(stage.controller->isPickerVisible());
    stage.controller->togglePickerWithFocus();
    EXPECT_TRUE(waitUntil([&] { return stage.controller->isPickerVisible(); }));
    stage.controller->togglePickerWithFocus();
    EXPECT_FALSE(stage.controller->isPickerVisible());
}

TEST_F(MenuBarControllerTest, theCornersAreMaskedOnlyWithoutACompositor)
{
    stage.open();
    EXPECT_TRUE(stage.panel().mask().isEmpty());
    stage.controller->closePicker();
    stage.desk.workspace.compositing = false;
    stage.desk.press();
    const QRegion mask = stage.panel().mask();
    EXPECT_FALSE(mask.contains(QPoint(2, 2)));
    EXPECT_FALSE(mask.contains(QPoint(517, 637)));
    EXPECT_TRUE(mask.contains(QPoint(260, 2)));
    EXPECT_TRUE(mask.contains(QPoint(2, 320)));
}

TEST_F(MenuBarControllerTest, opensAtTheTopOfTheScreenWhenTheHostTellsNoPlace)
{
    stage.desk.statusItem.place.reset();
    stage.open();
    const QRect visible = stage.panel().screen()->availableGeometry();
    EXPECT_TRUE(visible.contains(stage.panel().geometry()) || visible.height() < 656);
    EXPECT_EQ(stage.panel().y(), visible.top() + 8);
}

TEST_F(MenuBarControllerTest, survivesTheEndOfTheCoordinator)
{
    stage.install();
    stage.controller->closePicker();
    stage.controller.reset();
    EXPECT_FALSE(stage.appState().presentPaletteAction);
    EXPECT_FALSE(stage.appState().dismissPaletteAction);
}

TEST_F(MenuBarControllerTest, theGlyphIsDrawnSharpAtEveryRatio)
{
    const QIcon glyph = MenuBarController::brevixTemplateGlyph(18);
    EXPECT_TRUE(glyph.isMask());
    for (const qreal ratio : {1.0, 2.0}) {
        const QImage image = glyph.pixmap(QSize(18, 18), ratio).toImage();
        EXPECT_EQ(image.width(), static_cast<int>(18 * ratio));
        EXPECT_EQ(image.pixelColor(0, 0).alpha(), 0);
        bool hasInk = false;
        for (int x = 0; x < image.width(); ++x)
            hasInk = hasInk || image.pixelColor(x, image.height() / 2).alpha() > 200;
        EXPECT_TRUE(hasInk);
    }
}

/// The rows from the first to the last that have ink.
std::pair<int, int> inkedRows(const QImage &image)
{
    std::pair<int, int> rows{image.height(), -1};
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x) {
            if (image.pixelColor(x, y).alpha() > 128) {
                rows.first = std::min(rows.first, y);
                rows.second = y;
            }
        }
    }
    return rows;
}

TEST_F(MenuBarControllerTest, theGlyphStandsSixHundredthsOfItsHeightBelowTheMiddle)
{
    for (const int size : {50, 100, 200}) {
        QFont font = QFontDatabase::systemFont(QFontDatabase::GeneralFont);
        font.setPixelSize(static_cast<int>(size * 0.82));
        font.setBold(true);
        QImage middle(size, size, QImage::Format_ARGB32_Premultiplied);
        middle.fill(Qt::transparent);
        QPainter painter(&middle);
        painter.setFont(font);
        painter.drawText(middle.rect(), Qt::AlignCenter, QStringLiteral("B"));
        painter.end();
        const auto [top, bottom] = inkedRows(middle);
        const auto [glyphTop, glyphBottom] =
            inkedRows(MenuBarController::brevixTemplateGlyph(size).pixmap(QSize(size, size), 1).toImage());
        EXPECT_EQ(glyphTop - top, size * 6 / 100) << size;
        EXPECT_EQ(glyphBottom - bottom, size * 6 / 100) << size;
        EXPECT_LT(glyphBottom, size - 1) << "nothing is cut off";
    }
}

} // namespace
