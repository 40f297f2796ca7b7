// SPDX-License-Identifier: GPL-3.0-or-later
#include "Desktop/X11/X11Workspace.h"

#include "Programs.h"

#include <QCoreApplication>
#include <QGuiApplication>
#include <QWidget>
#include <QWindow>

#include <gtest/gtest.h>

namespace {

class BareDisplay : public testing::Test
{
protected:
    BareDisplay()
    {
        QObject::connect(&workspace, &Workspace::didActivateApplication, &workspace,
                         [this] { ++activations; });
    }

    qint64 front() const
    {
        const auto application = workspace.frontmostApplication();
        return application ? application->processIdentifier : 0;
    }

    bool waitForWindow(const Program &program)
    {
        return waitUntil(
            [&] {
                const auto application = workspace.application(program.pid());
                return application && application->window != 0;
            },
            std::chrono::seconds(15));
    }

    X11Connection connection;
    X11Workspace workspace{connection};
    int activations = 0;
};

const QString xterm = QStringLiteral("xterm");

} // namespace

TEST_F(BareDisplay, theInputFocusDecidesWithoutAWindowManager)
{
    SKIP_WITHOUT(xterm);
    const Program first(xterm, {QStringLiteral("-geometry"), QStringLiteral("20x5+10+10")});
    const Program second(xterm, {QStringLiteral("-geometry"), QStringLiteral("20x5+400+400")});
    ASSERT_TRUE(waitForWindow(first));
    ASSERT_TRUE(waitForWindow(second));
    const auto one = workspace.application(first.pid());
    const auto two = workspace.application(second.pid());
    EXPECT_TRUE(await(workspace.activate(*one)));
    EXPECT_EQ(front(), first.pid());
    EXPECT_TRUE(waitUntil([&] { return activations >= 1; }));
    const int before = activations;
    EXPECT_TRUE(await(workspace.activate(*two)));
    EXPECT_EQ(front(), second.pid());
    EXPECT_TRUE(waitUntil([&] { return activations > before; }));
    EXPECT_EQ(workspace.frontmostApplication()->pasteConvention, PasteConvention::primarySelection);
}

TEST_F(BareDisplay, otherwiseTheWindowUnderThePointerIsInFront)
{
    SKIP_WITHOUT(xterm);
    const Program program(xterm, {QStringLiteral("-geometry"), QStringLiteral("20x5+10+10")});
    ASSERT_TRUE(waitForWindow(program));
    xcb_set_input_focus(connection.connection(), XCB_INPUT_FOCUS_POINTER_ROOT, XCB_INPUT_FOCUS_POINTER_ROOT,
                        XCB_CURRENT_TIME);
    xdotool({QStringLiteral("mousemove"), QStringLiteral("30"), QStringLiteral("30")});
    EXPECT_EQ(front(), program.pid());
    xdotool({QStringLiteral("mousemove"), QStringLiteral("900"), QStringLiteral("700")});
    EXPECT_EQ(front(), 0);
}

TEST_F(BareDisplay, ownWindowsGetTheFocusWithoutAWindowManager)
{
    QWidget own;
    own.setAttribute(Qt::WA_ShowWithoutActivating);
    own.show();
    EXPECT_TRUE(waitUntil([&] { return own.windowHandle()->isExposed(); }));
    workspace.activateOwnWindow(own.windowHandle());
    EXPECT_TRUE(waitUntil([&] { return front() == QCoreApplication::applicationPid(); }));
}

TEST_F(BareDisplay, aWindowManagerMayComeAndGo)
{
    SKIP_WITHOUT(xterm);
    SKIP_WITHOUT(QStringLiteral("openbox"));
    const Program program(xterm);
    ASSERT_TRUE(waitForWindow(program));
    const auto application = workspace.application(program.pid());
    {
        const Program manager(QStringLiteral("openbox"));
        EXPECT_TRUE(
            waitUntil(
                [&] { return workspace.application(program.pid())->window != 0 && front() == program.pid(); },
                std::chrono::seconds(15)) ||
            await(workspace.activate(*application)));
        const Program second(xterm);
        EXPECT_TRUE(waitUntil([&] { return front() == second.pid(); }, std::chrono::seconds(15)));
        EXPECT_TRUE(await(workspace.activate(*application)));
        EXPECT_EQ(front(), program.pid());
    }
    EXPECT_TRUE(
        waitUntil([&] { return await(workspace.activate(*application)) && front() == program.pid(); }));
}
