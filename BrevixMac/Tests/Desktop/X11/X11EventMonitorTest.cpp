// SPDX-License-Identifier: GPL-3.0-or-later
#include "Desktop/X11/X11EventMonitor.h"

#include "Programs.h"

#include "Desktop/X11/X11Workspace.h"

#include <QGuiApplication>
#include <QScreen>
#include <QWidget>
#include <QWindow>

#include <gtest/gtest.h>

namespace {

constexpr MonitoredEvent::Types everything =
    MonitoredEvent::pointerPress | MonitoredEvent::pointerRelease | MonitoredEvent::keyRelease;

class Monitor : public testing::Test
{
protected:
    void watch(MonitoredEvent::Types types = everything)
    {
        subscription =
            monitor.addGlobalMonitor(types, [this](const MonitoredEvent &event) { events.append(event); });
    }

    QList<MonitoredEvent::Type> types() const
    {
        QList<MonitoredEvent::Type> types;
        for (const MonitoredEvent &event : events)
            types.append(event.type);
        return types;
    }

    static void clickAt(QPoint place, int button = 1)
    {
        xdotool({QStringLiteral("mousemove"), QString::number(place.x()), QString::number(place.y()),
                 QStringLiteral("click"), QString::number(button)});
    }

    static void moveTo(QPoint place)
    {
        xdotool({QStringLiteral("mousemove"), QString::number(place.x()), QString::number(place.y())});
    }

    static void type(const QString &key) { xdotool({QStringLiteral("key"), key}); }

    X11Connection connection;
    X11EventMonitor monitor{connection};
    QList<MonitoredEvent> events;
    std::unique_ptr<EventMonitor::Subscription> subscription;
};

// One of our windows at a known place, shown and placed by the window manager.
class OwnWindow : public QWidget
{
public:
    OwnWindow()
    {
        setWindowFlags(Qt::FramelessWindowHint);
        setGeometry(500, 400, 200, 150);
        show();
        EXPECT_TRUE(waitUntil([this] { return windowHandle()->isExposed(); }));
        settle();
    }

    QPoint inside() { return geometry().center(); }
};

const QList<MonitoredEvent::Type> click{MonitoredEvent::pointerPress, MonitoredEvent::pointerRelease};
const QPoint elsewhere(100, 100);

} // namespace

TEST_F(Monitor, seesClicksElsewhereAndWhere)
{
    watch();
    clickAt(elsewhere);
    EXPECT_TRUE(waitUntil([&] { return events.size() == 2; }));
    EXPECT_EQ(types(), click);
    EXPECT_EQ(events.first().position, elsewhere);
    clickAt({130, 90}, 3);
    EXPECT_TRUE(waitUntil([&] { return events.size() == 4; }));
    EXPECT_EQ(events.last().position, QPoint(130, 90));
}

TEST_F(Monitor, leavesOtherButtonsOut)
{
    watch();
    for (const int button : {2, 4, 5, 8})
        clickAt(elsewhere, button);
    settle();
    EXPECT_TRUE(events.isEmpty());
}

TEST_F(Monitor, seesKeysTypedIntoAnotherApplication)
{
    const QString xterm = QStringLiteral("xterm");
    SKIP_WITHOUT(xterm);
    X11Workspace workspace(connection);
    const Program program(xterm);
    ASSERT_TRUE(waitUntil(
        [&] {
            const auto front = workspace.frontmostApplication();
            return front && front->processIdentifier == program.pid();
        },
        std::chrono::seconds(15)));
    watch();
    type(QStringLiteral("a"));
    EXPECT_TRUE(waitUntil([&] { return !events.isEmpty(); }));
    EXPECT_EQ(types(), QList{MonitoredEvent::keyRelease});
}

TEST_F(Monitor, tellsOnlyWhatWasAskedFor)
{
    watch(MonitoredEvent::pointerPress);
    clickAt(elsewhere);
    type(QStringLiteral("a"));
    settle();
    EXPECT_EQ(types(), QList{MonitoredEvent::pointerPress});
}

TEST_F(Monitor, leavesOutClicksOnOurOwnWindows)
{
    OwnWindow own;
    watch(MonitoredEvent::pointerPress | MonitoredEvent::pointerRelease);
    clickAt(own.inside());
    settle();
    EXPECT_TRUE(events.isEmpty());
    own.hide();
    settle();
    clickAt(own.inside());
    EXPECT_TRUE(waitUntil([&] { return events.size() == 2; }));
}

// Raw events do not say where they happened, so the monitor asks when it sees them: the pointer moves on only
// after it has seen the press, as with a hand.
TEST_F(Monitor, aDragThatBeginsOnOurWindowIsOursToTheEnd)
{
    OwnWindow own;
    watch(MonitoredEvent::pointerRelease);
    int seen = 0; // by this handler, and so before it by the monitor's
    const auto later = connection.addEventHandler(
        [&](const xcb_generic_event_t &event) { seen += (event.response_type & 0x7f) == XCB_GE_GENERIC; });
    moveTo(own.inside());
    xdotool({QStringLiteral("mousedown"), QStringLiteral("1")});
    ASSERT_TRUE(waitUntil([&] { return seen == 1; }));
    moveTo(elsewhere);
    xdotool({QStringLiteral("mouseup"), QStringLiteral("1")});
    ASSERT_TRUE(waitUntil([&] { return seen == 2; }));
    EXPECT_TRUE(events.isEmpty());
    clickAt(elsewhere);
    EXPECT_TRUE(waitUntil([&] { return events.size() == 1; }));
}

TEST_F(Monitor, aWindowThatCoversOursGetsItsClicks)
{
    const QString xterm = QStringLiteral("xterm");
    SKIP_WITHOUT(xterm);
    OwnWindow own;
    X11Workspace workspace(connection);
    const Program cover(xterm, {QStringLiteral("-geometry"), QStringLiteral("100x40+350+250")});
    ASSERT_TRUE(waitUntil(
        [&] {
            const auto front = workspace.frontmostApplication();
            return front && front->processIdentifier == cover.pid();
        },
        std::chrono::seconds(15)));
    settle();
    watch(MonitoredEvent::pointerPress);
    clickAt(own.inside());
    EXPECT_TRUE(waitUntil([&] { return events.size() == 1; }));
}

TEST_F(Monitor, leavesOutKeysTypedIntoOurOwnWindows)
{
    OwnWindow own;
    own.activateWindow();
    ASSERT_TRUE(waitUntil([&] { return QGuiApplication::focusWindow() == own.windowHandle(); }));
    watch();
    type(QStringLiteral("a"));
    settle();
    EXPECT_TRUE(events.isEmpty());
}

TEST_F(Monitor, listensOnlyAsLongAsSomebodySubscribes)
{
    int received = 0;
    const auto all = connection.addEventHandler([&](const xcb_generic_event_t &event) {
        received += (event.response_type & 0x7f) == XCB_GE_GENERIC;
    });
    clickAt(elsewhere);
    settle();
    EXPECT_EQ(received, 0);
    watch();
    clickAt(elsewhere);
    EXPECT_TRUE(waitUntil([&] { return events.size() == 2; }));
    subscription.reset();
    received = 0;
    clickAt(elsewhere);
    settle();
    EXPECT_EQ(received, 0);
    EXPECT_EQ(events.size(), 2);
}

TEST_F(Monitor, severalSubscribersAreApart)
{
    int others = 0;
    auto other =
        monitor.addGlobalMonitor(MonitoredEvent::pointerRelease, [&](const MonitoredEvent &) { ++others; });
    watch(MonitoredEvent::pointerPress);
    clickAt(elsewhere);
    EXPECT_TRUE(waitUntil([&] { return events.size() == 1 && others == 1; }));
    other.reset();
    clickAt(elsewhere);
    EXPECT_TRUE(waitUntil([&] { return events.size() == 2; }));
    settle();
    EXPECT_EQ(others, 1);
}

TEST_F(Monitor, aHandlerMayEndItsOwnSubscription)
{
    int calls = 0;
    subscription = monitor.addGlobalMonitor(everything, [&](const MonitoredEvent &) {
        ++calls;
        subscription.reset();
    });
    clickAt(elsewhere);
    EXPECT_TRUE(waitUntil([&] { return calls == 1; }));
    settle();
    EXPECT_EQ(calls, 1);
}

TEST_F(Monitor, aSubscriptionMayOutliveTheMonitor)
{
    auto own = std::make_unique<X11EventMonitor>(connection);
    auto outliving = own->addGlobalMonitor(everything, [](const MonitoredEvent &) { FAIL(); });
    own.reset();
    clickAt(elsewhere);
    settle();
    outliving.reset();
}
