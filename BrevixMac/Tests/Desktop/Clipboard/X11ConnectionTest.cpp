// SPDX-License-Identifier: GPL-3.0-or-later
#include "Desktop/X11/X11Connection.h"

#include "Desktop/X11/X11KeyEvents.h"
#include "Desktop/X11/X11Pasteboard.h"
#include "Program.h"
#include "Support/Waiting.h"

#include <QSignalSpy>

#include <gtest/gtest.h>

namespace {

/// A second X server that a test may kill.
class PrivateServer
{
public:
    PrivateServer()
        : m_program(QStringLiteral("Xvfb"),
                    {QStringLiteral("-displayfd"), QStringLiteral("1"), QStringLiteral("-nolisten"),
                     QStringLiteral("tcp"), QStringLiteral("-noreset")})
    {
        EXPECT_TRUE(waitUntil([this] { return !m_program.lines().isEmpty(); }, std::chrono::seconds(20)));
    }

    QByteArray display() { return ":" + m_program.lines().value(0).toLatin1(); }
    void die() { m_program.kill(); }

private:
    Program m_program;
};

TEST(X11ConnectionTest, atomsHaveNamesInBothDirections)
{
    X11Connection connection;
    const xcb_atom_t atom = connection.atom("_BREVIX_SOME_NAME");
    EXPECT_NE(atom, XCB_ATOM_NONE);
    EXPECT_EQ(connection.atomName(atom), "_BREVIX_SOME_NAME");
    EXPECT_EQ(connection.atom("PRIMARY"), XCB_ATOM_PRIMARY);
    EXPECT_EQ(connection.atomName(0x1fffffff), QByteArray());
}

TEST(X11ConnectionTest, ownResourcesAreTold)
{
    X11Connection connection;
    X11Connection other;
    EXPECT_TRUE(connection.isOwnResource(connection.helperWindow()));
    EXPECT_FALSE(connection.isOwnResource(other.helperWindow()));
    EXPECT_FALSE(connection.isOwnResource(connection.root()));
}

TEST(X11ConnectionTest, serverTimeGrows)
{
    X11Connection connection;
    const auto first = connection.serverTime();
    EXPECT_NE(first, xcb_timestamp_t(XCB_CURRENT_TIME));
    EXPECT_TRUE(waitUntil([&] { return connection.serverTime() > first; }));
}

TEST(X11ConnectionTest, eventsReadWhileAReplyIsAwaitedAreDelivered)
{
    X11Connection connection;
    int count = 0;
    const auto subscription = connection.addEventHandler([&](const xcb_generic_event_t &event) {
        const auto &notify = reinterpret_cast<const xcb_property_notify_event_t &>(event);
        if ((event.response_type & 0x7f) == XCB_PROPERTY_NOTIFY && notify.atom == XCB_ATOM_WM_NAME)
            ++count;
    });
    xcb_change_property(connection.connection(), XCB_PROP_MODE_REPLACE, connection.helperWindow(),
                        XCB_ATOM_WM_NAME, XCB_ATOM_STRING, 8, 1, "x");
    connection.sync();       // leaves the event in xcb's queue
    connection.serverTime(); // moves it to ours
    EXPECT_TRUE(waitUntil([&] { return count == 1; }));
}

TEST(X11ConnectionTest, aSubscriptionMayEndWhileEventsAreDelivered)
{
    X11Connection connection;
    int first = 0;
    int second = 0;
    std::unique_ptr<X11Connection::Subscription> secondSubscription;
    const auto firstSubscription = connection.addEventHandler([&](const xcb_generic_event_t &) {
        ++first;
        secondSubscription.reset();
    });
    secondSubscription = connection.addEventHandler([&](const xcb_generic_event_t &) { ++second; });
    xcb_change_property(connection.connection(), XCB_PROP_MODE_REPLACE, connection.helperWindow(),
                        XCB_ATOM_WM_NAME, XCB_ATOM_STRING, 8, 1, "x");
    connection.flush();
    EXPECT_TRUE(waitUntil([&] { return first > 0; }));
    EXPECT_EQ(second, 0);
}

TEST(X11ConnectionTest, withoutAServerEverythingIsRefusedQuietly)
{
    X11Connection connection(":987");
    EXPECT_FALSE(connection.isValid());
    EXPECT_EQ(connection.atom("ANY"), XCB_ATOM_NONE);
    EXPECT_EQ(connection.serverTime(), xcb_timestamp_t(XCB_CURRENT_TIME));

    X11KeyEvents keyEvents(connection);
    EXPECT_FALSE(keyEvents.isPostingAllowed());
    EXPECT_FALSE(await(keyEvents.postPasteChord(PasteConvention::standard)));

    X11Pasteboard pasteboard(connection, &keyEvents);
    EXPECT_EQ(await(pasteboard.items()), std::nullopt);
    EXPECT_FALSE(pasteboard.setString(QStringLiteral("text")));
    EXPECT_FALSE(pasteboard.setTransientString(QStringLiteral("text"), PasteConvention::standard));
    pasteboard.clearContents();
}

TEST(X11ConnectionTest, aServerThatDiesIsToldOnceAndHurtsNobody)
{
    auto server = std::make_unique<PrivateServer>();
    X11Connection connection(server->display());
    ASSERT_TRUE(connection.isValid());
    X11KeyEvents keyEvents(connection);
    EXPECT_TRUE(keyEvents.isPostingAllowed());
    X11Pasteboard pasteboard(connection, &keyEvents);
    ASSERT_TRUE(pasteboard.setTransientString(QStringLiteral("text"), PasteConvention::standard));
    QSignalSpy closed(&connection, &X11Connection::closed);
    QSignalSpy allowedChanged(&keyEvents, &KeyEvents::postingAllowedChanged);

    server->die();

    EXPECT_TRUE(waitUntil([&] { return !connection.isValid() && !closed.isEmpty(); }));
    EXPECT_TRUE(waitUntil([&] { return !allowedChanged.isEmpty(); }));
    EXPECT_FALSE(keyEvents.isPostingAllowed());
    EXPECT_EQ(await(pasteboard.items()), std::nullopt);
    EXPECT_FALSE(pasteboard.setString(QStringLiteral("text")));
    EXPECT_EQ(closed.size(), 1);
}

} // namespace
