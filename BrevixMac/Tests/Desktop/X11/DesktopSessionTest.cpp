// SPDX-License-Identifier: GPL-3.0-or-later
#include "Desktop/DesktopSession.h"

#include "Desktop/AccessibilityTree.h"
#include "Desktop/EventMonitor.h"
#include "Desktop/HotKeys.h"
#include "Desktop/KeyEvents.h"
#include "Desktop/Pasteboard.h"
#include "Desktop/StatusItem.h"
#include "Desktop/Workspace.h"

#include "Programs.h"

#include <QPixmap>

#include <gtest/gtest.h>

TEST(X11Session, hasEveryMechanism)
{
    DesktopSession session;
    QPixmap image(22, 22);
    image.fill(Qt::red);
    session.statusItem().setImage(image);
    session.statusItem().install();
    EXPECT_TRUE(waitUntil([&] { return session.statusItem().isShown(); }));
    EXPECT_TRUE(waitUntil([&] { return session.accessibilityTree().isProcessTrusted(); }));
    EXPECT_TRUE(session.keyEvents().isPostingAllowed());
    EXPECT_TRUE(session.hotKeys().registerHotKey(35, 0x120000));
    EXPECT_TRUE(session.pasteboard().setString(QStringLiteral("text")));
}

TEST(X11Session, aHotkeyOpensTheWayForOurWindow)
{
    const QString xterm = QStringLiteral("xterm");
    SKIP_WITHOUT(xterm);
    DesktopSession session;
    const Program program(xterm);
    ASSERT_TRUE(waitUntil(
        [&] {
            const auto front = session.workspace().frontmostApplication();
            return front && front->processIdentifier == program.pid();
        },
        std::chrono::seconds(15)));
    int presses = 0;
    QObject::connect(&session.hotKeys(), &HotKeys::pressed, &session.hotKeys(), [&] { ++presses; });
    ASSERT_TRUE(session.hotKeys().registerHotKey(35, 0x120000));
    xdotool({QStringLiteral("key"), QStringLiteral("super+shift+p")});
    EXPECT_TRUE(waitUntil([&] { return presses == 1; }));
}
