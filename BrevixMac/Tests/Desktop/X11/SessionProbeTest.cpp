// SPDX-License-Identifier: GPL-3.0-or-later
#include "Desktop/SessionProbe.h"
#include "Desktop/DesktopSession.h"
#include "Desktop/Pasteboard.h"

#include "FakeTrayWatcher.h"
#include "Programs.h"

#include <QElapsedTimer>
#include <QTemporaryFile>

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace {

const QString scheme = u"app.brevix.test"_s;

class SessionProbeTest : public testing::Test
{
protected:
    SessionFacts look() { return await(session.probe().examine(scheme)); }

    /// Looks until @p condition holds: programs take a while to appear.
    bool lookUntil(const std::function<bool(const SessionFacts &)> &condition)
    {
        QElapsedTimer clock;
        clock.start();
        while (!condition(look())) {
            if (clock.hasExpired(15000))
                return false;
        }
        return true;
    }

    DesktopSession session;
};

void setAccessibility(bool isEnabled)
{
    auto message = QDBusMessage::createMethodCall(u"org.a11y.Bus"_s, u"/org/a11y/bus"_s,
                                                  u"org.freedesktop.DBus.Properties"_s, u"Set"_s);
    message.setArguments(
        {u"org.a11y.Status"_s, u"IsEnabled"_s, QVariant::fromValue(QDBusVariant(isEnabled))});
    EXPECT_EQ(QDBusConnection::sessionBus().call(message).type(), QDBusMessage::ReplyMessage);
}

} // namespace

TEST_F(SessionProbeTest, findsWhatADesktopOffers)
{
    const SessionFacts facts = look();
    EXPECT_EQ(facts.display, SessionFacts::Display::x11);
    EXPECT_EQ(facts.desktopName, u"openbox"_s);
    EXPECT_TRUE(facts.hasSessionBus);
    EXPECT_TRUE(facts.hasWindowManager);
    EXPECT_TRUE(facts.hasKeySynthesis);
    EXPECT_TRUE(facts.hasPasteKeys);
    EXPECT_EQ(facts.accessibility, SessionFacts::Accessibility::on);
    EXPECT_TRUE(facts.scheme.isPrivate);
}

TEST_F(SessionProbeTest, tellsWaylandByItsMarks)
{
    qputenv("WAYLAND_DISPLAY", "wayland-0");
    EXPECT_EQ(look().display, SessionFacts::Display::xwayland);
    qunsetenv("WAYLAND_DISPLAY");
}

TEST_F(SessionProbeTest, seesAccessibilitySwitchedOff)
{
    setAccessibility(false);
    EXPECT_EQ(look().accessibility, SessionFacts::Accessibility::switchedOff);
    setAccessibility(true);
    EXPECT_EQ(look().accessibility, SessionFacts::Accessibility::on);
}

TEST_F(SessionProbeTest, countsTheProgramsThatTellAboutTheirFieldsAndNamesTheMute)
{
    SKIP_WITHOUT(u"mousepad"_s);
    SKIP_WITHOUT(u"xev"_s);
    SKIP_WITHOUT(u"xterm"_s);
    EXPECT_TRUE(lookUntil([](const SessionFacts &facts) { return facts.mutePrograms.isEmpty(); }));
    const int before = look().accessiblePrograms;
    const Program terminal(u"xterm"_s);
    const Program mute(u"xev"_s);
    const Program editor(u"mousepad"_s, {u"--disable-server"_s});
    EXPECT_TRUE(lookUntil([&](const SessionFacts &facts) {
        return facts.accessiblePrograms == before + 1 && facts.mutePrograms == QStringList{u"Xev"_s};
    })) << look().accessiblePrograms
        << qPrintable(look().mutePrograms.join(u' '));
}

TEST_F(SessionProbeTest, asksTheClipboardsOwnerAndLeavesTheContentAlone)
{
    SKIP_WITHOUT(u"xclip"_s);
    EXPECT_EQ(look().clipboard, SessionFacts::Clipboard::empty);
    QTemporaryFile file;
    ASSERT_TRUE(file.open());
    file.write("content");
    file.flush();
    Program owner(u"xclip"_s, {u"-quiet"_s, u"-selection"_s, u"clipboard"_s, u"-i"_s, file.fileName()});
    EXPECT_TRUE(lookUntil(
        [](const SessionFacts &facts) { return facts.clipboard == SessionFacts::Clipboard::answering; }));
    EXPECT_EQ(look().clipboardOwner, u"Xclip"_s);
    const auto items = await(session.pasteboard().items());
    ASSERT_TRUE(items && items->size() == 1);
    EXPECT_EQ(items->first().types.first().second, "content");

    owner.stop();
    QElapsedTimer clock;
    clock.start();
    EXPECT_EQ(look().clipboard, SessionFacts::Clipboard::silent);
    EXPECT_LT(clock.elapsed(), 3000);
    owner.resume();
    EXPECT_EQ(look().clipboard, SessionFacts::Clipboard::answering);

    ASSERT_TRUE(session.pasteboard().setString(u"ours"_s));
    EXPECT_EQ(look().clipboard, SessionFacts::Clipboard::answering);
}

TEST_F(SessionProbeTest, findsTheTrayByItsProtocol)
{
    EXPECT_EQ(look().tray, SessionFacts::Tray::embedding);
    {
        FakeTrayWatcher watcher;
        EXPECT_EQ(look().tray, SessionFacts::Tray::notifier);
    }
    FakeTrayWatcher hostless(false);
    EXPECT_EQ(look().tray, SessionFacts::Tray::embedding);
}

TEST_F(SessionProbeTest, mayEndWhileItLooks)
{
    auto shortLived = std::make_unique<DesktopSession>();
    auto looking = shortLived->probe().examine(scheme);
    shortLived.reset();
    await(std::move(looking));
}
