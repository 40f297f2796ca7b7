// SPDX-License-Identifier: GPL-3.0-or-later
#include "Desktop/Freedesktop/TrayStatusItem.h"

#include "Desktop/X11/X11SelectionOwner.h"
#include "FakeTrayWatcher.h"
#include "Programs.h"

#include <QCursor>
#include <QDBusArgument>
#include <QDir>
#include <QFile>
#include <QPainter>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace {

QIcon icon(const QColor &color)
{
    QPixmap pixmap(64, 64);
    pixmap.fill(color);
    return pixmap;
}

class Tray : public testing::Test
{
protected:
    Tray()
    {
        item.setImage(icon(Qt::red));
        item.setToolTip(QStringLiteral("Brevix"));
        QObject::connect(&item, &StatusItem::pressed, &item, [this](QPoint near) { presses.append(near); });
        QObject::connect(&item, &StatusItem::isShownChanged, &item, [this] { ++changes; });
    }

    std::unique_ptr<Program> startXEmbedTray()
    {
        QFile file(folder.filePath(QStringLiteral("tint2rc")));
        if (file.open(QIODevice::WriteOnly))
            file.write("panel_items = S\npanel_position = top right horizontal\npanel_size = 240 28\n"
                       "systray_padding = 4 2 4\nsystray_icon_size = 22\npanel_layer = top\n");
        file.close();
        return std::make_unique<Program>(QStringLiteral("tint2"),
                                         QStringList{QStringLiteral("-c"), file.fileName()});
    }

    bool waitUntilShown(bool shown = true)
    {
        return waitUntil([&] { return item.isShown() == shown; }, std::chrono::seconds(15));
    }

    bool waitForGeometry()
    {
        return waitUntil([&] { return item.geometry().has_value() && item.geometry()->x() > 1000; },
                         std::chrono::seconds(15));
    }

    QTemporaryDir folder;
    X11Connection connection;
    X11SelectionOwner host{connection, "_NET_SYSTEM_TRAY_S"};
    TrayStatusItem item{&host};
    QList<QPoint> presses;
    int changes = 0;
};

const QString itemInterface = QStringLiteral("org.kde.StatusNotifierItem");

} // namespace

TEST_F(Tray, withoutAHostNothingIsShownAndNothingBreaks)
{
    item.install();
    settle();
    EXPECT_FALSE(item.isShown());
    EXPECT_FALSE(item.geometry());
    EXPECT_EQ(changes, 0);
}

TEST_F(Tray, showsNothingBeforeItIsInstalled)
{
    FakeTrayWatcher watcher;
    settle();
    EXPECT_TRUE(watcher.items.isEmpty());
    EXPECT_FALSE(item.isShown());
}

TEST_F(Tray, appearsInAHostThatIsThere)
{
    FakeTrayWatcher watcher;
    item.install();
    EXPECT_TRUE(waitUntilShown());
    item.install();
    settle();
    EXPECT_EQ(watcher.items.size(), 1);
    EXPECT_EQ(changes, 1);
    EXPECT_FALSE(item.geometry());
}

TEST_F(Tray, appearsInAHostThatComesLater)
{
    item.install();
    settle();
    FakeTrayWatcher watcher;
    EXPECT_TRUE(waitUntilShown());
    EXPECT_EQ(watcher.items.size(), 1);
}

TEST_F(Tray, appearsAgainWhenThePanelIsRestarted)
{
    item.install();
    for (int round = 0; round < 3; ++round) {
        FakeTrayWatcher watcher;
        EXPECT_TRUE(waitUntil([&] { return watcher.items.size() == 1 && item.isShown(); }));
    }
    EXPECT_TRUE(waitUntilShown(false));
}

TEST_F(Tray, waitsForAHostWhenThereIsOnlyAWatcher)
{
    FakeTrayWatcher watcher(false);
    item.install();
    settle();
    EXPECT_FALSE(item.isShown());
    watcher.addHost();
    EXPECT_TRUE(waitUntilShown());
    watcher.removeHost();
    EXPECT_TRUE(waitUntilShown(false));
    watcher.addHost();
    EXPECT_TRUE(waitUntilShown());
}

TEST_F(Tray, describesItselfToTheHost)
{
    FakeTrayWatcher watcher;
    item.install();
    ASSERT_TRUE(waitUntilShown());
    EXPECT_EQ(watcher.property(QStringLiteral("Category")).toString(), u"ApplicationStatus");
    EXPECT_EQ(watcher.property(QStringLiteral("Status")).toString(), u"Active");
    EXPECT_EQ(watcher.property(QStringLiteral("Id")).toString(), u"brevix-test");
    EXPECT_EQ(watcher.property(QStringLiteral("ItemIsMenu")).toBool(), false);

    const auto pixmaps = qdbus_cast<StatusNotifierPixmaps>(watcher.property(QStringLiteral("IconPixmap")));
    ASSERT_EQ(pixmaps.size(), 6);
    EXPECT_EQ(pixmaps.first().width, 16);
    EXPECT_EQ(pixmaps.last().width, 64);
    for (const StatusNotifierPixmap &pixmap : pixmaps) {
        EXPECT_EQ(pixmap.bytes.size(), pixmap.width * pixmap.height * 4);
        EXPECT_EQ(pixmap.bytes.first(4), QByteArray("\xff\xff\x00\x00", 4)); // opaque, red, no green, no blue
    }
    const auto toolTip = qdbus_cast<StatusNotifierToolTip>(watcher.property(QStringLiteral("ToolTip")));
    EXPECT_EQ(toolTip.title, u"Brevix");
}

TEST_F(Tray, tellsTheHostOfANewImageAndToolTip)
{
    FakeTrayWatcher watcher;
    item.install();
    ASSERT_TRUE(waitUntilShown());
    item.setImage(icon(Qt::blue));
    item.setToolTip(QStringLiteral("Other"));
    const auto pixmaps = qdbus_cast<StatusNotifierPixmaps>(watcher.property(QStringLiteral("IconPixmap")));
    ASSERT_FALSE(pixmaps.isEmpty());
    EXPECT_EQ(pixmaps.first().bytes.first(4), QByteArray("\xff\x00\x00\xff", 4));
    EXPECT_EQ(qdbus_cast<StatusNotifierToolTip>(watcher.property(QStringLiteral("ToolTip"))).title, u"Other");
}

TEST_F(Tray, everyButtonIsAPress)
{
    FakeTrayWatcher watcher;
    item.install();
    ASSERT_TRUE(waitUntilShown());
    for (const char *method : {"Activate", "SecondaryActivate", "ContextMenu"})
        watcher.ask(itemInterface, QString::fromLatin1(method), {11, 22});
    EXPECT_TRUE(waitUntil([&] { return presses.size() == 3; }));
    EXPECT_EQ(presses, QList<QPoint>(3, QPoint(11, 22)));
    const auto answer = watcher.ask(itemInterface, QStringLiteral("Scroll"), {1, QStringLiteral("vertical")});
    EXPECT_EQ(answer.type(), QDBusMessage::ReplyMessage);
    settle();
    EXPECT_EQ(presses.size(), 3);
}

TEST_F(Tray, aPressWithoutAPlaceIsAtThePointer)
{
    FakeTrayWatcher watcher;
    item.install();
    ASSERT_TRUE(waitUntilShown());
    xdotool({QStringLiteral("mousemove"), QStringLiteral("321"), QStringLiteral("123")});
    watcher.ask(itemInterface, QStringLiteral("Activate"), {0, 0});
    EXPECT_TRUE(waitUntil([&] { return presses.size() == 1; }));
    EXPECT_EQ(presses.value(0), QPoint(321, 123));
}

TEST_F(Tray, leavesTheBusWhenItEnds)
{
    FakeTrayWatcher watcher;
    {
        TrayStatusItem own(nullptr);
        own.setImage(icon(Qt::green));
        own.install();
        ASSERT_TRUE(waitUntil([&] { return own.isShown(); }));
    }
    const auto answer = watcher.ask(itemInterface, QStringLiteral("Activate"), {1, 1});
    EXPECT_EQ(answer.type(), QDBusMessage::ErrorMessage);
}

TEST_F(Tray, isEmbeddedInAnOlderTrayThatIsThere)
{
    SKIP_WITHOUT(QStringLiteral("tint2"));
    const auto tray = startXEmbedTray();
    ASSERT_TRUE(waitUntil([&] { return host.window() != XCB_WINDOW_NONE; }, std::chrono::seconds(15)));
    item.install();
    EXPECT_TRUE(waitUntilShown());
    ASSERT_TRUE(waitForGeometry());
    for (const QString &button : {QStringLiteral("1"), QStringLiteral("3")}) {
        const QPoint center = item.geometry()->center();
        xdotool({QStringLiteral("mousemove"), QString::number(center.x()), QString::number(center.y()),
                 QStringLiteral("click"), button});
        EXPECT_TRUE(waitUntil([&] { return !presses.isEmpty(); }));
        EXPECT_EQ(presses, QList{center});
        presses.clear();
    }
}

TEST_F(Tray, isEmbeddedInAnOlderTrayThatComesLaterAndAgain)
{
    SKIP_WITHOUT(QStringLiteral("tint2"));
    item.install();
    settle();
    for (int round = 0; round < 2; ++round) {
        const auto tray = startXEmbedTray();
        EXPECT_TRUE(waitUntilShown());
        EXPECT_TRUE(waitForGeometry());
        tray->end();
        EXPECT_TRUE(waitUntilShown(false));
    }
}

TEST_F(Tray, hasOneIconWhenBothKindsOfTrayAreThere)
{
    SKIP_WITHOUT(QStringLiteral("tint2"));
    const auto tray = startXEmbedTray();
    ASSERT_TRUE(waitUntil([&] { return host.window() != XCB_WINDOW_NONE; }, std::chrono::seconds(15)));
    item.install();
    ASSERT_TRUE(waitForGeometry());
    {
        FakeTrayWatcher watcher;
        EXPECT_TRUE(waitUntil([&] { return !watcher.items.isEmpty() && !item.geometry(); }));
        EXPECT_TRUE(waitUntilShown());
        settle();
        EXPECT_EQ(watcher.items.size(), 1);
        EXPECT_FALSE(item.geometry());
    }
    EXPECT_TRUE(waitForGeometry());
}

TEST_F(Tray, appearsInARealPanelOfTheNewerKind)
{
    const QString panel = QStringLiteral("xfce4-panel");
    SKIP_WITHOUT(panel);
    const QString config = QDir::homePath() + QStringLiteral("/.config/xfce4/xfconf/xfce-perchannel-xml");
    QDir().mkpath(config);
    QFile file(config + QStringLiteral("/xfce4-panel.xml"));
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write(R"(<?xml version="1.0" encoding="UTF-8"?>
<channel name="xfce4-panel" version="1.0">
  <property name="configver" type="int" value="2"/>
  <property name="panels" type="array"><value type="int" value="1"/>
    <property name="panel-1" type="empty">
      <property name="position" type="string" value="p=8;x=640;y=880"/>
      <property name="position-locked" type="bool" value="true"/>
      <property name="size" type="uint" value="30"/>
      <property name="length" type="uint" value="100"/>
      <property name="plugin-ids" type="array"><value type="int" value="1"/></property>
    </property>
  </property>
  <property name="plugins" type="empty"><property name="plugin-1" type="string" value="systray"/></property>
</channel>
)");
    file.close();
    item.install();
    const Program program(panel, {QStringLiteral("--disable-wm-check")});
    EXPECT_TRUE(waitUntil([&] { return item.isShown(); }, std::chrono::seconds(30)));
    EXPECT_FALSE(item.geometry());
    // The only icon of the panel is somewhere in its one row: the panel is asked by clicks from left to
    // right.
    settle(std::chrono::seconds(1));
    for (int x = 8; x < 120 && presses.isEmpty(); x += 14) {
        xdotool({QStringLiteral("mousemove"), QString::number(x), QStringLiteral("880"),
                 QStringLiteral("click"), QStringLiteral("1")});
        settle(std::chrono::milliseconds(200));
    }
    EXPECT_FALSE(presses.isEmpty());
}

TEST(TrayWithoutABus, isEmbeddedOrNowhere)
{
    X11Connection connection;
    X11SelectionOwner host(connection, "_NET_SYSTEM_TRAY_S");
    TrayStatusItem item(&host, QDBusConnection(QStringLiteral("no such bus")));
    item.setImage(icon(Qt::red));
    item.install();
    EXPECT_EQ(item.isShown(), host.window() != XCB_WINDOW_NONE);
}
