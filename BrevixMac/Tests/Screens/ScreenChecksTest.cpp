// SPDX-License-Identifier: GPL-3.0-or-later
#include "ScreenChecks.h"
#include "HintBubble.h"
#include "TabWalk.h"
#include "TextField.h"
#include "TextLabel.h"
#include "ThemedButton.h"

#include <QHBoxLayout>
#include <QListWidget>
#include <QTest>

#include <gtest/gtest.h>

namespace {

const QString longText = QStringLiteral("Kraftfahrzeughaftpflichtversicherung");

/// A window with one control, in which one thing after the other is made wrong.
class ScreenChecksTest : public testing::Test
{
protected:
    ScreenChecksTest()
    {
        window.resize(400, 300);
        button.move(20, 20);
        window.show();
        window.activateWindow();
    }

    void give(QWidget &widget, const QRect &place)
    {
        widget.setParent(&window);
        widget.setGeometry(place);
        widget.show();
    }

    QWidget window;
    HintBubble bubble{&window};
    ThemedButton button{ThemedButton::Kind::quiet, QStringLiteral("Save"), &window};
};

TEST_F(ScreenChecksTest, findNothingWhereAllIsWell)
{
    EXPECT_EQ(ScreenChecks::all(window), QStringList());
    EXPECT_EQ(ScreenChecks::controls(window), QList<QWidget *>{&button});
}

TEST_F(ScreenChecksTest, findAControlWithoutNameOrRole)
{
    button.setLabel({});
    EXPECT_EQ(ScreenChecks::unnamedControls(window).size(), 1);
    button.setLabel(QStringLiteral("Save"));
    QWidget mute;
    mute.setAccessibleName(QStringLiteral("Mute"));
    mute.setFocusPolicy(Qt::StrongFocus);
    give(mute, {20, 100, 40, 40});
    EXPECT_EQ(ScreenChecks::unnamedControls(window).size(), 1);
}

TEST_F(ScreenChecksTest, findASmallTargetAndALowRow)
{
    button.resize(40, 27);
    EXPECT_EQ(ScreenChecks::smallTargets(window).size(), 1);
    button.resize(28, 28);
    EXPECT_TRUE(ScreenChecks::smallTargets(window).isEmpty());
    QListWidget list;
    list.addItem(QStringLiteral("row"));
    list.item(0)->setSizeHint({100, 20});
    give(list, {20, 100, 100, 100});
    EXPECT_EQ(ScreenChecks::smallTargets(window).size(), 1);
}

TEST_F(ScreenChecksTest, findAButtonThatDoesNotShowItsText)
{
    button.setLabel(longText);
    EXPECT_EQ(ScreenChecks::cutTexts(window).size(), 1);
    button.setFace(ThemedButton::Face::symbolOnly);
    EXPECT_EQ(ScreenChecks::cutTexts(window).size(), 1);
    button.setToolTip(longText);
    EXPECT_TRUE(ScreenChecks::cutTexts(window).isEmpty());
}

TEST_F(ScreenChecksTest, findALabelThatIsCutOff)
{
    QLabel plain(longText);
    give(plain, {20, 100, 60, 30});
    EXPECT_EQ(ScreenChecks::cutTexts(window).size(), 1);
    plain.setWordWrap(true);
    EXPECT_EQ(ScreenChecks::cutTexts(window).size(), 1) << "one word";
    plain.setText(QStringLiteral("many short words that do not fit"));
    EXPECT_EQ(ScreenChecks::cutTexts(window).size(), 1) << "many lines";
    plain.resize(200, 200);
    EXPECT_TRUE(ScreenChecks::cutTexts(window).isEmpty());
}

TEST_F(ScreenChecksTest, takeAnEllipsisForATextThatIsToldInFullElsewhere)
{
    TextLabel label(Theme::Type::body, Theme::Color::text, TextLabel::Overflow::elide);
    label.setText(longText);
    give(label, {20, 100, 100, 30});
    EXPECT_TRUE(ScreenChecks::cutTexts(window).isEmpty());
    label.resize(12, 30);
    EXPECT_EQ(ScreenChecks::cutTexts(window).size(), 1) << "nothing left of it";
}

TEST_F(ScreenChecksTest, findAPlaceholderThatIsCutOff)
{
    TextField field;
    field.setAccessibleName(QStringLiteral("Field"));
    field.setPlaceholderText(longText);
    give(field, {20, 100, 100, field.sizeHint().height()});
    EXPECT_TRUE(ScreenChecks::cutTexts(window).isEmpty()) << "the bubble tells it";
    bubble.setParent(nullptr);
    EXPECT_EQ(ScreenChecks::cutTexts(window).size(), 1);
    field.setText(longText);
    EXPECT_TRUE(ScreenChecks::cutTexts(window).isEmpty()) << "one can scroll in it";
}

TEST_F(ScreenChecksTest, findWhatSticksOutOrLiesOverSomethingOrIsPressedTogether)
{
    button.move(380, 20);
    EXPECT_EQ(ScreenChecks::squeezedWidgets(window).size(), 1);
    button.move(20, 20);
    auto *host = new QWidget;
    auto *row = new QHBoxLayout(host);
    auto *one = new ThemedButton(ThemedButton::Kind::quiet, QStringLiteral("One"));
    auto *two = new ThemedButton(ThemedButton::Kind::quiet, QStringLiteral("Two"));
    row->addWidget(one);
    row->addWidget(two);
    give(*host, {20, 100, 300, 80});
    EXPECT_TRUE(ScreenChecks::squeezedWidgets(window).isEmpty());
    two->setGeometry(one->geometry().translated(5, 0));
    EXPECT_EQ(ScreenChecks::squeezedWidgets(window).size(), 2);
    two->setGeometry(QRect(one->geometry().topRight() + QPoint(10, 0), QSize(8, 8)));
    EXPECT_EQ(ScreenChecks::squeezedWidgets(window).size(), 1);
}

// Tab

/// Three buttons in a row, and whatever is done to them.
class TabWalkTest : public testing::Test
{
protected:
    TabWalkTest()
    {
        window.resize(400, 100);
        for (int index = 0; index < 3; ++index) {
            buttons.append(
                new ThemedButton(ThemedButton::Kind::quiet, QStringLiteral("Button %1").arg(index), &window));
            buttons.last()->setGeometry(10 + 130 * index, 20, 120, 40);
        }
        window.show();
        window.activateWindow();
        EXPECT_TRUE(QTest::qWaitForWindowActive(&window));
    }

    QWidget window;
    QList<ThemedButton *> buttons;
};

TEST_F(TabWalkTest, findsNothingWhereAllIsWell)
{
    EXPECT_EQ(TabWalk::faults(window), QStringList());
}

TEST_F(TabWalkTest, findsAnOrderThatJumps)
{
    ThemedButton last(ThemedButton::Kind::quiet, QStringLiteral("Last"), &window);
    last.setGeometry(10, 60, 120, 40);
    last.show();
    EXPECT_EQ(TabWalk::faults(window), QStringList());
    QWidget::setTabOrder(buttons.at(0), buttons.at(2));
    QWidget::setTabOrder(buttons.at(2), buttons.at(1));
    EXPECT_EQ(TabWalk::faults(window).size(), 1);
}

TEST_F(TabWalkTest, findsAFocusThatCannotBeSeen)
{
    struct Blind final : QWidget
    {
        using QWidget::QWidget;
    } blind(&window);
    blind.setFocusPolicy(Qt::TabFocus);
    blind.setGeometry(10, 60, 120, 40);
    blind.show();
    EXPECT_EQ(TabWalk::faults(window).size(), 1);
}

TEST_F(TabWalkTest, findsAControlThatTabPassesBy)
{
    buttons.at(1)->setFocusProxy(buttons.at(2));
    EXPECT_EQ(TabWalk::faults(window).size(), 1);
}

TEST_F(TabWalkTest, findsATrap)
{
    struct Trap final : QWidget
    {
        using QWidget::QWidget;
        bool focusNextPrevChild(bool) override { return true; }
    } trap(&window);
    trap.setFocusPolicy(Qt::StrongFocus);
    trap.setGeometry(10, 60, 120, 40);
    trap.show();
    EXPECT_FALSE(TabWalk::faults(window).isEmpty());
}

TEST(ReadingOrder, goesBlockByBlock)
{
    const QRect top(0, 0, 300, 40);
    const QRect left(0, 50, 90, 200);
    const QRect rightOne(100, 60, 200, 40);
    const QRect rightTwo(100, 120, 200, 40);
    const QRect bottom(0, 260, 300, 40);
    EXPECT_TRUE(TabWalk::isReadingOrder({top, left, rightOne, rightTwo, bottom}));
    EXPECT_TRUE(TabWalk::isReadingOrder({rightOne, rightTwo, bottom, top, left})) << "begun in the middle";
    EXPECT_FALSE(TabWalk::isReadingOrder({top, rightOne, left, rightTwo, bottom}));
    EXPECT_FALSE(TabWalk::isReadingOrder({top, bottom, left, rightOne, rightTwo}));
    EXPECT_TRUE(TabWalk::isReadingOrder({left, QRect(60, 60, 20, 20), rightOne})) << "a button on a list";
}

} // namespace
