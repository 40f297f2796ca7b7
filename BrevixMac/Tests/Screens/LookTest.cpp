// SPDX-License-Identifier: GPL-3.0-or-later
#include "ColorContrast.h"
#include "PageFade.h"
#include "PickerNotices.h"
#include "PickerRowActions.h"
#include "PickerStage.h"
#include "StatusCard.h"
#include "Symbols.h"
#include "SystemAppearance.h"
#include "Theme.h"
#include "ThemedButton.h"

#include <QPalette>
#include <QSignalSpy>

#include <gtest/gtest.h>

#include <array>

namespace {

using ColorContrast::contrast;
using Color = Theme::Color;
using Scheme = Theme::Scheme;

QColor over(const QColor &top, const QColor &bottom)
{
    const auto mix = [&](float a, float b) { return a * top.alphaF() + b * (1 - top.alphaF()); };
    return QColor::fromRgbF(mix(top.redF(), bottom.redF()), mix(top.greenF(), bottom.greenF()),
                            mix(top.blueF(), bottom.blueF()));
}

class ThemeTest : public testing::Test
{
protected:
    ~ThemeTest() override
    {
        Theme::shared().forceScheme(std::nullopt);
        Theme::shared().forceFontScale(std::nullopt);
    }
};

/// What the desktop's settings portal would report.
void report(const QString &key, uint value)
{
    auto *appearance = Theme::shared().findChild<SystemAppearance *>();
    ASSERT_TRUE(QMetaObject::invokeMethod(
        appearance, "onSettingChanged", Q_ARG(QString, QStringLiteral("org.freedesktop.appearance")),
        Q_ARG(QString, key), Q_ARG(QDBusVariant, QDBusVariant(QVariant::fromValue(value)))));
}

void expectReadableInks()
{
    for (const Scheme scheme : {Scheme::light, Scheme::dark}) {
        const auto color = [scheme](Color token) { return Theme::color(token, scheme); };
        const QColor surface = color(Color::surface);
        const QColor selected = over(color(Color::accentSoft), surface);
        EXPECT_GE(contrast(color(Color::accentInk), over(color(Color::accentSoft), color(Color::sidebar))),
                  4.5)
            << int(scheme);
        for (const Color ink : {Color::text, Color::secondary, Color::tertiary}) {
            for (const QColor &background :
                 {surface, color(Color::raised), color(Color::sunken), color(Color::sidebar)})
                EXPECT_GE(contrast(color(ink), background), 4.5) << int(scheme) << ' ' << int(ink);
        }
        for (const Color ink : {Color::text, Color::secondary})
            EXPECT_GE(contrast(color(ink), selected), 4.5) << int(scheme) << ' ' << int(ink);
        EXPECT_GE(contrast(color(Color::onAccent), color(Color::accent)), 4.5) << int(scheme);
        for (const auto &[soft, ink] : {std::pair(Color::successSoft, Color::secondary),
                                        std::pair(Color::warningSoft, Color::secondary),
                                        std::pair(Color::dangerSoft, Color::secondary)})
            EXPECT_GE(contrast(color(ink), over(color(soft), surface)), 4.5)
                << int(scheme) << ' ' << int(soft);
    }
}

TEST_F(ThemeTest, everyInkCanBeReadOnEveryBackgroundItStandsOn)
{
    expectReadableInks();
}

TEST_F(ThemeTest, aDesktopThatAsksForMoreContrastGetsIt)
{
    const QColor before = Theme::shared().color(Color::line);
    const QSignalSpy changes(&Theme::shared(), &Theme::changed);
    report(QStringLiteral("contrast"), 1);
    EXPECT_EQ(changes.count(), 1);
    expectReadableInks();
    for (const Scheme scheme : {Scheme::light, Scheme::dark}) {
        const QColor surface = Theme::color(Color::surface, scheme);
        EXPECT_GE(contrast(Theme::color(Color::secondary, scheme), surface), 7) << int(scheme);
        EXPECT_GE(contrast(over(Theme::color(Color::line, scheme), surface), surface), 3) << int(scheme);
        EXPECT_GE(contrast(over(Theme::color(Color::edge, scheme), surface), surface), 3) << int(scheme);
    }
    report(QStringLiteral("contrast"), 0);
    EXPECT_EQ(Theme::shared().color(Color::line), before);
    EXPECT_EQ(Theme::shared().color(Color::edge).alpha(), 0);
}

TEST_F(ThemeTest, screensFadeBrieflyAndNotAtAllWhereLessMotionIsAskedFor)
{
    PickerStage stage;
    stage.desk.addSampleLibrary();
    stage.open();
    auto *fade = stage.view().findChild<PageFade *>();
    ASSERT_TRUE(fade);
    EXPECT_LE(fade->duration(), 150);
    stage.view().setRoute(PickerPanelRoute::library);
    EXPECT_TRUE(fade->isVisible());
    EXPECT_TRUE(waitUntil([&] { return !fade->isVisible(); }));
    report(QStringLiteral("reduced-motion"), 1);
    EXPECT_TRUE(Theme::shared().reducedMotion());
    stage.view().setRoute(PickerPanelRoute::picker);
    EXPECT_FALSE(fade->isVisible());
    report(QStringLiteral("reduced-motion"), 0);
}

TEST_F(ThemeTest, followsTheSystemPaletteWhileRunning)
{
    const QPalette before = QApplication::palette();
    const QSignalSpy changes(&Theme::shared(), &Theme::changed);
    QPalette dark = before;
    dark.setColor(QPalette::Window, Qt::black);
    dark.setColor(QPalette::WindowText, Qt::white);
    QApplication::setPalette(dark);
    EXPECT_TRUE(waitUntil([] { return Theme::shared().scheme() == Scheme::dark; }));
    EXPECT_GE(changes.count(), 1);
    QApplication::setPalette(before);
    EXPECT_TRUE(waitUntil([] { return Theme::shared().scheme() == Scheme::light; }));
}

TEST_F(ThemeTest, sizesGrowWithTheFontAndNeverShrinkBelowTheDesign)
{
    Theme::shared().forceFontScale(2);
    EXPECT_EQ(Theme::shared().scaled(52), 104);
    EXPECT_GT(QFontMetrics(Theme::shared().font(Theme::Type::body)).height(), 28);
    Theme::shared().forceFontScale(std::nullopt);
    EXPECT_GE(Theme::shared().scaled(52), 52);
}

TEST_F(ThemeTest, aForcedSchemeWinsOverTheSystem)
{
    Theme::shared().forceScheme(Scheme::dark);
    EXPECT_EQ(Theme::shared().color(Color::surface), Theme::color(Color::surface, Scheme::dark));
}

TEST(SymbolsTest, everySymbolThatScreensNameIsDrawn)
{
    const QStringList names{QStringLiteral("gearshape"),
                            QStringLiteral("checkmark.circle.fill"),
                            QStringLiteral("circle"),
                            QStringLiteral("keyboard"),
                            QStringLiteral("xmark"),
                            QStringLiteral("magnifyingglass"),
                            QStringLiteral("slider.horizontal.3"),
                            QStringLiteral("return"),
                            QStringLiteral("doc.on.doc"),
                            QStringLiteral("square.and.arrow.up"),
                            QStringLiteral("plus"),
                            QStringLiteral("chevron.left"),
                            QStringLiteral("hand.raised"),
                            QStringLiteral("exclamationmark.circle"),
                            QStringLiteral("lock.circle"),
                            QStringLiteral("exclamationmark.triangle"),
                            QStringLiteral("square.grid.2x2"),
                            QStringLiteral("text.quote"),
                            QStringLiteral("wand.and.stars"),
                            QStringLiteral("folder")};
    for (const QString &name : names) {
        ASSERT_TRUE(Symbols::exists(name)) << qPrintable(name);
        const QImage image = Symbols::pixmap(name, Qt::red, 17, 2).toImage();
        EXPECT_EQ(image.size(), QSize(34, 34));
        int inked = 0;
        for (int y = 0; y < image.height(); ++y) {
            for (int x = 0; x < image.width(); ++x) {
                const QColor color = image.pixelColor(x, y);
                if (color.alpha() > 128) {
                    ++inked;
                    EXPECT_GT(color.red(), 200);
                    EXPECT_LT(color.green(), 60);
                }
            }
        }
        EXPECT_GT(inked, 20) << qPrintable(name);
        for (int x = 0; x < image.width(); ++x)
            EXPECT_EQ(image.pixelColor(x, 0).alpha(), 0) << qPrintable(name) << " touches its edge";
    }
}

TEST(SymbolsTest, anUnknownNameGivesNothing)
{
    EXPECT_FALSE(Symbols::exists(QStringLiteral("no.such.symbol")));
    EXPECT_TRUE(Symbols::pixmap(QStringLiteral("no.such.symbol"), Qt::black, 17, 1).isNull());
}

/// Controls that are shown beside each other must never lie over each other, whatever the font size.
class LayoutAtFontScale : public testing::TestWithParam<double>
{
protected:
    ~LayoutAtFontScale() override { Theme::shared().forceFontScale(std::nullopt); }

    PickerStage stage;
};

TEST_P(LayoutAtFontScale, keepsThePartsApartAndInsideThePanel)
{
    Theme::shared().forceFontScale(GetParam());
    stage.desk.email = QStringLiteral("maximiliane.von-und-zu-hohenstein@donaudampfschifffahrt.example.com");
    stage.desk.hotKeys.isTaken = true;
    stage.desk.tree.trusted = false;
    stage.desk.addSampleLibrary();
    stage.desk.server.addPrompt(QStringLiteral("long"),
                                QStringLiteral("Rechtsschutzversicherungsgesellschaftskorrespondenz"),
                                QStringLiteral("Kraftfahrzeughaftpflichtversicherung {{name}}"));
    stage.open();
    PickerSearchPage &page = stage.page();
    const QRect panel = page.rect();
    const auto frame = [&page](const QWidget &widget) {
        return QRect(widget.mapTo(&page, QPoint()), widget.size());
    };
    int bottom = 0;
    for (const QWidget *part :
         {static_cast<QWidget *>(&stage.search()), static_cast<QWidget *>(&stage.list())}) {
        EXPECT_GE(frame(*part).top(), bottom);
        EXPECT_TRUE(panel.contains(frame(*part)));
        bottom = frame(*part).bottom();
    }
    // The row's buttons leave its title some room and stay inside the row.
    const QRect row = stage.list().visualRect(stage.list().currentIndex());
    const QWidget &actions = stage.list().actions();
    const int left = stage.list().viewport()->mapFromGlobal(actions.mapToGlobal(QPoint())).x();
    EXPECT_GE(left, row.width() / 5);
    EXPECT_LE(left + actions.width() - 1, row.right());
    EXPECT_GE(stage.list().height(), row.height());
}

INSTANTIATE_TEST_SUITE_P(Scales, LayoutAtFontScale, testing::Values(1.0, 1.25, 1.5, 2.0),
                         [](const auto &info) { return "percent" + std::to_string(int(info.param * 100)); });

TEST(PickerListModelTest, aThousandRowsAreReadOnlyWhenSeen)
{
    PickerResultSection section{
        .id = QStringLiteral("prompts"), .title = QStringLiteral("Prompts"), .subtitle = {}, .results = {}};
    for (int number = 0; number < 1000; ++number)
        section.results.append(PickerResult{PromptItem{.id = QString::number(number),
                                                       .title = QStringLiteral("Prompt %1").arg(number),
                                                       .text = QStringLiteral("{{x}} ").repeated(100),
                                                       .categoryID = {}}});
    PickerListModel model;
    EXPECT_TRUE(model.setSections({section}, {}));
    EXPECT_FALSE(model.setSections({section}, {}));
    EXPECT_EQ(model.rowCount(), 1001);
    EXPECT_EQ(model.result(0), nullptr);
    EXPECT_EQ(model.rowOf(QStringLiteral("prompt:999")), 1000);
    EXPECT_EQ(model.nextItemRow(-1, 1), 1);
    EXPECT_EQ(model.nextItemRow(1, -1), -1);
    EXPECT_TRUE(model.index(1000).data(PickerListModel::hasVariablesRole).toBool());
    EXPECT_LE(model.index(1000).data(PickerListModel::previewRole).toString().size(), 201)
        << "200 and an ellipsis";
}

/// Counts the frames that a turning ring asks for.
class FrameCounter final : public QObject
{
public:
    bool eventFilter(QObject *, QEvent *event) override
    {
        frames += event->type() == QEvent::Timer;
        return false;
    }
    int frames = 0;
};

TEST(StatusCardTest, itsRingTurnsOnlyWhileItIsSeen)
{
    StatusCard card;
    FrameCounter counter;
    card.installEventFilter(&counter);
    card.setBusy(true);
    EXPECT_FALSE(waitUntil([&] { return counter.frames > 0; }, std::chrono::milliseconds(150)));
    card.show();
    EXPECT_TRUE(waitUntil([&] { return counter.frames > 1; }));
    card.hide();
    counter.frames = 0;
    EXPECT_FALSE(waitUntil([&] { return counter.frames > 0; }, std::chrono::milliseconds(150)));
}

} // namespace
