// SPDX-License-Identifier: GPL-3.0-or-later
#include "Desktop/Freedesktop/BrowserOpener.h"

#include "FakeOpener.h"
#include "SignalsHeldBack.h"

#include "Desktop/DisplayServer.h"
#include "Support/Waiting.h"

#include <gtest/gtest.h>

#include <csignal>
#include <memory>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

const QUrl page(u"https://accounts.example/auth?scope=openid%20email&x=a%26b"_s);
const QByteArray pageLine = "https://accounts.example/auth?scope=openid%20email&x=a%26b\n";

class BrowserOpenerTest : public testing::Test
{
protected:
    void open(const QList<QStringList> &commands)
    {
        opener = std::make_unique<BrowserOpener>(commands);
        QObject::connect(opener.get(), &BrowserOpener::failed, opener.get(), [this] { ++failures; });
        opener->open(page);
        EXPECT_EQ(failures, 0) << "a failure is never told from inside open()";
    }

    bool wasCalled(const QString &name) { return !openers.calls(name).isEmpty(); }

    FakeOpeners openers;
    std::unique_ptr<BrowserOpener> opener;
    int failures = 0;
};

} // namespace

TEST_F(BrowserOpenerTest, theFirstThatSucceedsGetsTheAddress)
{
    open({openers.add(u"one"_s, "exit 0"), openers.add(u"two"_s, "exit 0")});
    ASSERT_TRUE(waitUntil([&] { return openers.calls(u"one"_s) == pageLine; }));
    EXPECT_FALSE(waitUntil([&] { return failures > 0 || wasCalled(u"two"_s); }, 100ms));
}

TEST_F(BrowserOpenerTest, oneThatFailsIsFollowedByTheNext)
{
    QStringList two = openers.add(u"two"_s, "exit 0");
    two.append(u"open"_s);
    open({openers.add(u"one"_s, "exit 3"), {u"brevix-test-no-such-program"_s}, two});
    ASSERT_TRUE(waitUntil([&] { return openers.calls(u"two"_s) == "open " + pageLine; }));
    EXPECT_EQ(openers.calls(u"one"_s), pageLine);
    EXPECT_FALSE(waitUntil([&] { return failures > 0; }, 100ms));
}

TEST_F(BrowserOpenerTest, thatNoneWorksIsToldOnce)
{
    open({openers.add(u"one"_s, "exit 3"), openers.add(u"two"_s, "kill -9 $$")});
    ASSERT_TRUE(waitUntil([&] { return failures > 0; }));
    EXPECT_TRUE(wasCalled(u"two"_s));
    EXPECT_FALSE(waitUntil([&] { return failures > 1; }, 50ms));
}

TEST_F(BrowserOpenerTest, thatNoneIsInstalledIsTold)
{
    open({{u"brevix-test-no-such-program"_s}});
    EXPECT_TRUE(waitUntil([&] { return failures == 1; }));
}

TEST_F(BrowserOpenerTest, oneThatCannotBeStartedIsPassedOver)
{
    const QStringList broken = openers.add(u"broken"_s, "exit 0");
    QFile file(broken.first());
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write("#!/nonexistent/interpreter\n");
    file.close();
    open({broken, openers.add(u"two"_s, "exit 0")});
    EXPECT_TRUE(waitUntil([&] { return wasCalled(u"two"_s); }));
}

TEST_F(BrowserOpenerTest, aNewPageReplacesAnAttemptThatStillRuns)
{
    const QStringList slow = openers.add(u"slow"_s, "while [ ! -e \"$0.go\" ]; do read -t 1 x; done; exit 3");
    open({slow});
    ASSERT_TRUE(waitUntil([&] { return wasCalled(u"slow"_s); }));
    opener->open(page);
    ASSERT_TRUE(waitUntil([&] { return openers.calls(u"slow"_s) == pageLine + pageLine; }));
    QFile go(openers.path(u"slow.go"_s));
    ASSERT_TRUE(go.open(QIODevice::WriteOnly));
    go.close();
    ASSERT_TRUE(waitUntil([&] { return failures > 0; }));
    EXPECT_FALSE(waitUntil([&] { return failures > 1; }, 50ms)) << "the first attempt is not followed";
}

TEST_F(BrowserOpenerTest, theBrowserOutlivesTheOpenerInASessionOfItsOwn)
{
    open({openers.add(u"browser"_s, "ps -o sid= -p $$ >\"$0.sid\"; echo $$ >\"$0.pid\"; exec sleep 60")});
    ASSERT_TRUE(waitUntil([&] { return openers.read(u"browser.pid"_s).endsWith('\n'); }));
    const auto pid = static_cast<pid_t>(openers.read(u"browser.pid"_s).trimmed().toLongLong());
    ASSERT_GT(pid, 0);
    EXPECT_EQ(openers.read(u"browser.sid"_s).trimmed(), QByteArray::number(pid));
    opener.reset();
    EXPECT_FALSE(waitUntil([&] { return ::kill(pid, 0) != 0; }, 100ms));
    ::kill(pid, SIGKILL);
}

// This program holds back the signals that end it, and whoever it starts would inherit that.
TEST_F(BrowserOpenerTest, theBrowserCanBeEndedBySignals)
{
    const SignalsHeldBack held;
    open({openers.add(u"browser"_s, "grep SigBlk /proc/self/status >\"$0.out\"")});
    EXPECT_TRUE(waitUntil([&] { return openers.read(u"browser.out"_s) == "SigBlk:\t0000000000000000\n"; }));
}

TEST_F(BrowserOpenerTest, theBrowserDoesNotInheritWhatIsSetForThisProgramAlone)
{
    const QByteArray former = qgetenv("QT_XCB_GL_INTEGRATION");
    qunsetenv("QT_XCB_GL_INTEGRATION");
    DisplayServer::choosePlatform();
    EXPECT_EQ(qgetenv("QT_XCB_GL_INTEGRATION"), "none");
    open({openers.add(u"browser"_s, "echo \"${QT_XCB_GL_INTEGRATION-unset}\" >\"$0.out\"")});
    EXPECT_TRUE(waitUntil([&] { return openers.read(u"browser.out"_s) == "unset\n"; }));
    if (former.isNull())
        qunsetenv("QT_XCB_GL_INTEGRATION");
    else
        qputenv("QT_XCB_GL_INTEGRATION", former);
}
