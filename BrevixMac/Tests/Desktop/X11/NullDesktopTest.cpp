// SPDX-License-Identifier: GPL-3.0-or-later
#include "Desktop/NullDesktop.h"

#include "Desktop/DesktopSession.h"
#include "Support/Waiting.h"

#include <QIcon>
#include <QWindow>

#include <gtest/gtest.h>

namespace {

const AccessibilityElement anyElement{
    .kind = AccessibilityElement::Kind::node, .owner = QStringLiteral(":1.1"), .path = QStringLiteral("/a")};

}

TEST(SessionWithoutADesktop, hasNobodyInFrontAndNothingToActivate)
{
    DesktopSession session;
    EXPECT_FALSE(session.workspace().frontmostApplication());
    EXPECT_FALSE(session.workspace().application(1));
    EXPECT_TRUE(session.workspace().isTerminated(RunningApplication()));
    EXPECT_FALSE(session.workspace().isCompositing());
    EXPECT_FALSE(await(session.workspace().activate(RunningApplication())));
    QWindow window;
    session.workspace().activateOwnWindow(&window);
    session.workspace().activateOwnWindow(nullptr);
}

TEST(SessionWithoutADesktop, isTrustedWithNothing)
{
    DesktopSession session;
    session.accessibilityTree().requestTrust();
    session.keyEvents().requestPosting();
    EXPECT_FALSE(session.accessibilityTree().isProcessTrusted());
    EXPECT_FALSE(session.keyEvents().isPostingAllowed());
    EXPECT_FALSE(await(session.keyEvents().postPasteChord(PasteConvention::standard)));
}

TEST(SessionWithoutADesktop, hasAnEmptyTree)
{
    DesktopSession session;
    AccessibilityTree &tree = session.accessibilityTree();
    EXPECT_FALSE(await(tree.attribute(tree.systemWideElement(), AX::focusedUIElement)));
    EXPECT_EQ(await(tree.setAttribute(anyElement, AX::value, QStringLiteral("text"))), WriteOutcome::refused);
    EXPECT_FALSE(await(tree.isAttributeSettable(anyElement, AX::value)));
    EXPECT_FALSE(await(tree.processIdentifier(anyElement)));
}

TEST(SessionWithoutADesktop, refusesTheHotkey)
{
    DesktopSession session;
    EXPECT_FALSE(session.hotKeys().registerHotKey(35, 0x120000));
    session.hotKeys().unregisterHotKey();
}

TEST(SessionWithoutADesktop, refusesToCopy)
{
    DesktopSession session;
    EXPECT_FALSE(session.pasteboard().setString(QStringLiteral("text")));
    EXPECT_FALSE(session.pasteboard().setTransientString(QStringLiteral("text"), PasteConvention::standard));
    EXPECT_FALSE(session.pasteboard().restore({}));
    const auto items = await(session.pasteboard().items());
    ASSERT_TRUE(items);
    EXPECT_TRUE(items->isEmpty());
}

TEST(SessionWithoutADesktop, opensNoPageAndSaysSo)
{
    DesktopSession session;
    int failures = 0;
    QObject::connect(&session.webBrowser(), &WebBrowser::failed, &session.webBrowser(), [&] { ++failures; });
    session.webBrowser().open(QUrl(QStringLiteral("https://example.org/")));
    EXPECT_EQ(failures, 0) << "never from inside open()";
    EXPECT_TRUE(waitUntil([&] { return failures == 1; }));
}

TEST(SessionWithoutADesktop, showsNoStatusItem)
{
    DesktopSession session;
    session.statusItem().setImage(QIcon());
    session.statusItem().setToolTip(QStringLiteral("tip"));
    session.statusItem().install();
    EXPECT_FALSE(session.statusItem().isShown());
    EXPECT_FALSE(session.statusItem().geometry());
}

TEST(SessionWithoutADesktop, monitorsNothingAndTakesSubscriptions)
{
    std::unique_ptr<EventMonitor::Subscription> subscription;
    {
        DesktopSession session;
        subscription = session.eventMonitor().addGlobalMonitor(MonitoredEvent::pointerPress,
                                                               [](const MonitoredEvent &) { FAIL(); });
        EXPECT_TRUE(subscription);
    }
}
