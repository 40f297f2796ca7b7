// SPDX-License-Identifier: GPL-3.0-or-later
#include "Desktop/X11/X11Workspace.h"

#include "Programs.h"
#include "TestWindow.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QGuiApplication>
#include <QWidget>
#include <QWindow>

#include <gtest/gtest.h>

#include <algorithm>
#include <array>

namespace {

constexpr int promptly = 100; // milliseconds: no waiting for anybody

RunningApplication ownApplication(const TestWindow &window)
{
    RunningApplication application;
    application.processIdentifier = QCoreApplication::applicationPid();
    application.window = window.id();
    return application;
}

class X11Desktop : public testing::Test
{
protected:
    X11Desktop()
    {
        QObject::connect(&workspace, &Workspace::didActivateApplication, &workspace,
                         [this] { ++activations; });
        // The names come from files that are read in the background.
        settle(std::chrono::milliseconds(50));
    }

    qint64 front() const
    {
        const auto application = workspace.frontmostApplication();
        return application ? application->processIdentifier : 0;
    }

    RunningApplication waitForFront(const Program &program)
    {
        EXPECT_TRUE(waitUntil([&] { return front() == program.pid(); }, std::chrono::seconds(15)));
        return workspace.frontmostApplication().value_or(RunningApplication());
    }

    RunningApplication waitForFront(const TestWindow &window)
    {
        EXPECT_TRUE(waitUntil([&] {
            const auto application = workspace.frontmostApplication();
            return application && application->window == window.id();
        }));
        return workspace.frontmostApplication().value_or(RunningApplication());
    }

    X11Connection connection;
    X11Workspace workspace{connection};
    int activations = 0;
};

const QString xterm = QStringLiteral("xterm");
const QString mousepad = QStringLiteral("mousepad");
const QString featherpad = QStringLiteral("featherpad");

} // namespace

TEST_F(X11Desktop, theApplicationWithTheActiveWindowIsInFront)
{
    SKIP_WITHOUT(mousepad);
    const Program program(mousepad);
    const RunningApplication application = waitForFront(program);
    EXPECT_EQ(application.bundleIdentifier, u"org.xfce.mousepad");
    EXPECT_EQ(application.localizedName, u"Mousepad");
    EXPECT_EQ(application.pasteConvention, PasteConvention::standard);
    EXPECT_NE(application.window, 0U);
    EXPECT_NE(application.processStartTime, 0U);
    EXPECT_FALSE(workspace.isTerminated(application));
    EXPECT_EQ(workspace.application(program.pid()), application);
}

TEST_F(X11Desktop, terminalsHaveTheirPasteConvention)
{
    SKIP_WITHOUT(xterm);
    const Program program(xterm);
    const RunningApplication application = waitForFront(program);
    EXPECT_EQ(application.pasteConvention, PasteConvention::primarySelection);
    EXPECT_EQ(application.bundleIdentifier, u"debian-xterm");
    EXPECT_EQ(application.localizedName, u"XTerm");

    SKIP_WITHOUT(QStringLiteral("xfce4-terminal"));
    const Program other(QStringLiteral("xfce4-terminal"), {QStringLiteral("--disable-server")});
    EXPECT_EQ(waitForFront(other).pasteConvention, PasteConvention::terminal);
}

TEST_F(X11Desktop, windowClassesDecideWithoutADesktopEntry)
{
    const std::pair<QByteArray, PasteConvention> table[]{
        {QByteArray("st-256color\0st-256color", 23), PasteConvention::primarySelection},
        {QByteArray("urxvt\0URxvt", 11), PasteConvention::primarySelection},
        {QByteArray("kitty\0kitty", 11), PasteConvention::terminal},
        {QByteArray("nobody\0Nobody", 13), PasteConvention::standard},
    };
    for (const auto &[windowClass, convention] : table) {
        {
            TestWindow window(TestWindow::Input::accepted, windowClass);
            EXPECT_EQ(waitForFront(window).pasteConvention, convention) << windowClass.constData();
        }
        EXPECT_TRUE(waitUntil([&] { return front() == 0; })); // the next one may get the same number
    }
}

TEST_F(X11Desktop, withoutADesktopEntryTheWindowClassIsTheName)
{
    TestWindow window(TestWindow::Input::accepted, QByteArray("my-tool\0my-tool", 15));
    const RunningApplication application = waitForFront(window);
    EXPECT_EQ(application.bundleIdentifier, u"my-tool");
    EXPECT_EQ(application.localizedName, u"My-tool");
}

TEST_F(X11Desktop, aWindowsOwnClaimOfItsProcessIsChecked)
{
    const Program other(QStringLiteral("sleep"), {QStringLiteral("60")});
    TestWindow window;
    window.setNumber("_NET_WM_PID", XCB_ATOM_CARDINAL, quint32(other.pid()));
    EXPECT_EQ(waitForFront(window).processIdentifier, QCoreApplication::applicationPid());
}

TEST_F(X11Desktop, tellsWhenAnApplicationComesToTheFront)
{
    SKIP_WITHOUT(xterm);
    const Program first(xterm);
    const RunningApplication firstApplication = waitForFront(first);
    const Program second(xterm);
    waitForFront(second);
    const int before = activations;
    EXPECT_TRUE(await(workspace.activate(firstApplication)));
    EXPECT_EQ(front(), first.pid());
    EXPECT_EQ(activations, before + 1);
}

TEST_F(X11Desktop, activatesAtOnceWhatIsInFrontAlready)
{
    SKIP_WITHOUT(xterm);
    const Program program(xterm);
    const RunningApplication application = waitForFront(program);
    QElapsedTimer timer;
    timer.start();
    auto task = workspace.activate(application);
    EXPECT_TRUE(task.isReady());
    EXPECT_TRUE(await(std::move(task)));
    EXPECT_LT(timer.elapsed(), promptly);
}

TEST_F(X11Desktop, activatesWithinMilliseconds)
{
    SKIP_WITHOUT(mousepad);
    SKIP_WITHOUT(featherpad);
    const Program first(mousepad);
    const RunningApplication one = waitForFront(first);
    const Program second(featherpad);
    const RunningApplication two = waitForFront(second);
    settle(std::chrono::milliseconds(500));
    std::vector<qint64> times;
    for (int round = 0; round < 20; ++round) {
        QElapsedTimer timer;
        timer.start();
        EXPECT_TRUE(await(workspace.activate(round % 2 ? two : one)));
        times.push_back(timer.nsecsElapsed() / 1000);
    }
    std::ranges::sort(times);
    RecordProperty("activateMedianMicroseconds", int(times[times.size() / 2]));
    std::printf("activate: median %.1f ms, longest %.1f ms\n", double(times[times.size() / 2]) / 1000,
                double(times.back()) / 1000);
    EXPECT_LT(times[times.size() / 2], 200'000);
}

TEST_F(X11Desktop, bringsAMinimizedWindowBack)
{
    SKIP_WITHOUT(xterm);
    const Program first(xterm);
    const RunningApplication application = waitForFront(first);
    xdotool({QStringLiteral("windowminimize"), QString::number(application.window)});
    EXPECT_TRUE(waitUntil([&] { return front() != first.pid(); }));
    EXPECT_TRUE(await(workspace.activate(application)));
    EXPECT_EQ(front(), first.pid());
}

TEST_F(X11Desktop, aKilledApplicationIsTerminatedAndNotActivated)
{
    SKIP_WITHOUT(xterm);
    Program program(xterm);
    const RunningApplication application = waitForFront(program);
    program.end();
    EXPECT_TRUE(workspace.isTerminated(application));
    EXPECT_TRUE(waitUntil([&] { return front() != application.processIdentifier; }));
    QElapsedTimer timer;
    timer.start();
    EXPECT_FALSE(await(workspace.activate(application)));
    EXPECT_LT(timer.elapsed(), promptly);
    EXPECT_FALSE(workspace.application(application.processIdentifier));
}

TEST_F(X11Desktop, anotherProcessWithTheSameIdentifierIsNotTheApplication)
{
    SKIP_WITHOUT(xterm);
    const Program program(xterm);
    RunningApplication application = waitForFront(program);
    application.processStartTime += 1;
    EXPECT_TRUE(workspace.isTerminated(application));
}

TEST_F(X11Desktop, aStoppedApplicationHoldsNobodyUp)
{
    SKIP_WITHOUT(mousepad);
    SKIP_WITHOUT(xterm);
    Program stopped(mousepad);
    const RunningApplication application = waitForFront(stopped);
    const Program other(xterm);
    waitForFront(other);
    stopped.stop();
    QElapsedTimer timer;
    timer.start();
    const bool activated = await(workspace.activate(application));
    std::printf("activate of a stopped program: %d after %lld ms\n", activated, timer.elapsed());
    EXPECT_LT(timer.elapsed(), 700);
    timer.start();
    EXPECT_FALSE(workspace.isTerminated(application));
    EXPECT_TRUE(workspace.application(stopped.pid()));
    EXPECT_LT(timer.elapsed(), promptly);
    stopped.resume();
}

TEST_F(X11Desktop, givesUpOnAWindowThatTakesNoFocus)
{
    TestWindow refusing(TestWindow::Input::refused);
    TestWindow accepting;
    waitForFront(accepting);
    const RunningApplication application = ownApplication(refusing);
    QElapsedTimer timer;
    timer.start();
    EXPECT_FALSE(await(workspace.activate(application)));
    EXPECT_GE(timer.elapsed(), 450);
    EXPECT_LT(timer.elapsed(), 1500);
}

TEST_F(X11Desktop, anActivationEndsWithTheWorkspace)
{
    TestWindow refusing(TestWindow::Input::refused);
    TestWindow accepting;
    waitForFront(accepting);
    auto own = std::make_unique<X11Workspace>(connection);
    auto task = own->activate(ownApplication(refusing));
    EXPECT_FALSE(task.isReady());
    own.reset();
    EXPECT_FALSE(await(std::move(task)));
}

TEST_F(X11Desktop, aClosedWindowIsReplacedByAnotherOfTheSameProcess)
{
    TestWindow captured;
    TestWindow left;
    waitForFront(left);
    const RunningApplication application = ownApplication(captured);
    EXPECT_TRUE(await(workspace.activate(application)));
    captured.destroy();
    SKIP_WITHOUT(xterm);
    const Program other(xterm);
    waitForFront(other);
    EXPECT_TRUE(await(workspace.activate(application)));
    EXPECT_EQ(workspace.frontmostApplication()->window, left.id());
}

TEST_F(X11Desktop, onlyTheVeryWindowOfTheVeryProcessIsInFront)
{
    TestWindow captured;
    waitForFront(captured);
    const RunningApplication application = *workspace.frontmostApplication();
    EXPECT_TRUE(workspace.isInFront(application));

    RunningApplication wholeProcess = application;
    wholeProcess.window = 0;
    RunningApplication otherProcess = application;
    otherProcess.processIdentifier = 1;
    RunningApplication reused = application;
    reused.processStartTime += 1;
    EXPECT_TRUE(workspace.isInFront(wholeProcess));
    EXPECT_FALSE(workspace.isInFront(otherProcess));
    EXPECT_FALSE(workspace.isInFront(reused));

    TestWindow second;
    waitForFront(second);
    EXPECT_FALSE(workspace.isInFront(application));
    EXPECT_TRUE(workspace.isInFront(wholeProcess));
    second.destroy();
    captured.destroy();
    EXPECT_TRUE(waitUntil([&] { return !workspace.isInFront(wholeProcess); }));
    EXPECT_FALSE(workspace.isInFront(application));
}

TEST_F(X11Desktop, aWindowNumberThatAnotherProcessHasNowIsNotActivated)
{
    SKIP_WITHOUT(xterm);
    const Program first(xterm);
    const RunningApplication application = waitForFront(first);
    const Program second(xterm);
    waitForFront(second);
    RunningApplication reused = application;
    reused.processIdentifier = 1 << 30;
    EXPECT_FALSE(await(workspace.activate(reused)));
    EXPECT_EQ(front(), second.pid());
}

TEST_F(X11Desktop, aDialogInFrontStandsForItsWindow)
{
    TestWindow parent;
    waitForFront(parent);
    const RunningApplication application = *workspace.frontmostApplication();
    TestWindow dialog;
    dialog.setNumber("WM_TRANSIENT_FOR", XCB_ATOM_WINDOW, parent.id());
    waitForFront(dialog);
    EXPECT_TRUE(await(workspace.activate(application)));
    EXPECT_EQ(workspace.frontmostApplication()->window, dialog.id());
}

TEST_F(X11Desktop, knowsApplicationsWithoutAWindow)
{
    const Program program(QStringLiteral("sleep"), {QStringLiteral("60")});
    const auto application = workspace.application(program.pid());
    ASSERT_TRUE(application);
    EXPECT_EQ(application->window, 0U);
    EXPECT_EQ(application->localizedName, u"Sleep");
    EXPECT_FALSE(workspace.isTerminated(*application));
    EXPECT_FALSE(await(workspace.activate(*application)));
    EXPECT_FALSE(workspace.application(0));
    EXPECT_FALSE(workspace.application(-5));
}

TEST_F(X11Desktop, ownWindowsGetTheFocus)
{
    SKIP_WITHOUT(xterm);
    const Program other(xterm);
    const RunningApplication application = waitForFront(other);
    workspace.noteUserAction(connection.serverTime());
    QWidget own;
    own.setAttribute(Qt::WA_ShowWithoutActivating);
    own.show();
    workspace.activateOwnWindow(own.windowHandle());
    EXPECT_TRUE(waitUntil([&] { return front() == QCoreApplication::applicationPid(); }));
    EXPECT_TRUE(waitUntil([&] { return QGuiApplication::focusWindow() == own.windowHandle(); }));
    EXPECT_TRUE(await(workspace.activate(application)));
    EXPECT_TRUE(waitUntil([&] { return QGuiApplication::focusWindow() == nullptr; }));
    workspace.activateOwnWindow(nullptr);
}

TEST_F(X11Desktop, aWindowThatJoinedAllDesktopsIsSeenAfterASwitchUntilItIsHidden)
{
    const auto showDesktop = [&](int number) {
        xdotool({QStringLiteral("set_desktop"), QString::number(number)});
        return waitUntil([&] {
            QProcess asked;
            asked.start(QStringLiteral("xdotool"), {QStringLiteral("get_desktop")});
            return asked.waitForFinished() && asked.readAllStandardOutput().trimmed().toInt() == number;
        });
    };
    xdotool({QStringLiteral("set_num_desktops"), QStringLiteral("2")});
    ASSERT_TRUE(showDesktop(0));
    QWidget joined;
    QWidget other;
    for (QWidget *window : {&joined, &other})
        window->setAttribute(Qt::WA_ShowWithoutActivating);
    const auto isSeen = [](const QWidget &window) { return window.windowHandle()->isExposed(); };
    for (int visit = 0; visit < 2; ++visit) {
        joined.show();
        workspace.joinAllDesktops(joined.windowHandle());
        other.show();
        ASSERT_TRUE(waitUntil([&] { return isSeen(joined) && isSeen(other); }));
        ASSERT_TRUE(showDesktop(1));
        EXPECT_TRUE(waitUntil([&] { return !isSeen(other); }));
        EXPECT_TRUE(isSeen(joined));
        ASSERT_TRUE(showDesktop(0));
        joined.hide();
        other.hide();
    }
    workspace.joinAllDesktops(nullptr);
}

TEST_F(X11Desktop, knowsWhetherACompositorRuns)
{
    EXPECT_FALSE(workspace.isCompositing());
    SKIP_WITHOUT(QStringLiteral("picom"));
    Program compositor(QStringLiteral("picom"), {QStringLiteral("--backend"), QStringLiteral("xrender")});
    EXPECT_TRUE(waitUntil([&] { return workspace.isCompositing(); }, std::chrono::seconds(15)));
    EXPECT_TRUE(X11Workspace(connection).isCompositing());
    compositor.end();
    EXPECT_TRUE(waitUntil([&] { return !workspace.isCompositing(); }));
}

TEST_F(X11Desktop, withNothingActiveNobodyIsInFront)
{
    auto window = std::make_unique<TestWindow>();
    waitForFront(*window);
    window.reset();
    EXPECT_TRUE(waitUntil([&] { return front() == 0; }));
}

TEST(LostDisplay, hasNobodyInFront)
{
    X11Connection connection("unix:/nonexistent:0");
    X11Workspace workspace(connection);
    EXPECT_FALSE(connection.isValid());
    EXPECT_FALSE(workspace.frontmostApplication());
    EXPECT_FALSE(workspace.isCompositing());
    EXPECT_FALSE(await(workspace.activate(RunningApplication())));
    EXPECT_TRUE(workspace.application(QCoreApplication::applicationPid()));
}
