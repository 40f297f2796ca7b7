// SPDX-License-Identifier: GPL-3.0-or-later
#include "Desktop/X11/X11HotKeys.h"

#include "Desktop/X11/X11Modifiers.h"

#include "Programs.h"
#include "TestKeyboard.h"

#include <QElapsedTimer>

#include <gtest/gtest.h>

#define explicit explicit_ // a field name of xcb's that is a word of the language
#include <xcb/xkb.h>
#undef explicit

namespace {

constexpr quint32 keyP = 35;
constexpr quint64 shift = 0x20000;
constexpr quint64 control = 0x40000;
constexpr quint64 option = 0x80000;
constexpr quint64 command = 0x100000;

class HotKey : public testing::Test
{
protected:
    HotKey()
    {
        QObject::connect(&hotKeys, &HotKeys::pressed, &hotKeys, [this] { ++presses; });
    }

    void pressDefault() { keyboard.chord({TestKeyboard::super, TestKeyboard::shift, TestKeyboard::p}); }

    void expectPresses(int count)
    {
        EXPECT_TRUE(waitUntil([&] { return presses >= count; }, std::chrono::seconds(3)));
        settle();
        EXPECT_EQ(presses, count);
    }

    // Somebody else who holds a combination.
    static bool grab(X11Connection &other, quint16 modifiers)
    {
        auto *xcb = other.connection();
        const auto cookie = xcb_grab_key_checked(xcb, false, other.root(), modifiers, TestKeyboard::p,
                                                 XCB_GRAB_MODE_ASYNC, XCB_GRAB_MODE_ASYNC);
        return !XcbPointer<xcb_generic_error_t>(xcb_request_check(xcb, cookie));
    }

    TestKeyboard keyboard;
    X11Connection connection;
    X11HotKeys hotKeys{connection};
    int presses = 0;
};

/// Holds a lock key's state for a test.
class Lock
{
public:
    Lock(TestKeyboard &keyboard, quint8 key)
        : m_keyboard(keyboard)
        , m_key(key)
    {
        m_keyboard.tap(m_key);
    }
    ~Lock() { m_keyboard.tap(m_key); }
    Lock(const Lock &) = delete;
    Lock &operator=(const Lock &) = delete;

private:
    TestKeyboard &m_keyboard;
    quint8 m_key;
};

quint8 lockedModifiers(X11Connection &connection)
{
    auto *xcb = connection.connection();
    const XcbPointer<xcb_xkb_get_state_reply_t> state(
        xcb_xkb_get_state_reply(xcb, xcb_xkb_get_state(xcb, XCB_XKB_ID_USE_CORE_KBD), nullptr));
    return state ? state->lockedMods : 0;
}

} // namespace

TEST_F(HotKey, firesWhenItsCombinationIsPressed)
{
    ASSERT_TRUE(hotKeys.registerHotKey(keyP, command | shift));
    pressDefault();
    expectPresses(1);
    pressDefault();
    expectPresses(2);
}

TEST_F(HotKey, doesNotFireForOtherCombinations)
{
    ASSERT_TRUE(hotKeys.registerHotKey(keyP, command | shift));
    keyboard.chord({TestKeyboard::super, TestKeyboard::p});
    keyboard.chord({TestKeyboard::shift, TestKeyboard::p});
    keyboard.chord({TestKeyboard::super, TestKeyboard::control, TestKeyboard::shift, TestKeyboard::p});
    keyboard.tap(TestKeyboard::p);
    expectPresses(0);
}

TEST_F(HotKey, takesEveryModifier)
{
    ASSERT_TRUE(hotKeys.registerHotKey(keyP, command | shift | option | control));
    keyboard.chord({TestKeyboard::control, TestKeyboard::alt, TestKeyboard::super, TestKeyboard::shift,
                    TestKeyboard::p});
    expectPresses(1);
}

TEST_F(HotKey, firesWhateverTheLockKeysAre)
{
    ASSERT_TRUE(hotKeys.registerHotKey(keyP, command | shift));
    const X11Modifiers modifiers = X11Modifiers::read(connection);
    {
        const Lock caps(keyboard, TestKeyboard::capsLock);
        EXPECT_TRUE(lockedModifiers(connection) & modifiers.capsLock);
        pressDefault();
        expectPresses(1);
        const Lock num(keyboard, TestKeyboard::numLock);
        EXPECT_TRUE(lockedModifiers(connection) & modifiers.numLock);
        pressDefault();
        expectPresses(2);
    }
    const Lock num(keyboard, TestKeyboard::numLock);
    pressDefault();
    expectPresses(3);
}

TEST_F(HotKey, firesInEveryLayout)
{
    ASSERT_TRUE(hotKeys.registerHotKey(keyP, command | shift));
    run(QStringLiteral("setxkbmap"), {QStringLiteral("ru")});
    settle();
    pressDefault();
    expectPresses(1);

    run(QStringLiteral("setxkbmap"), {QStringLiteral("us,ru")});
    settle();
    auto *xcb = keyboard.connection().connection();
    const auto use = xcb_xkb_use_extension(xcb, 1, 0);
    XcbPointer<xcb_xkb_use_extension_reply_t>(xcb_xkb_use_extension_reply(xcb, use, nullptr));
    xcb_xkb_latch_lock_state(xcb, XCB_XKB_ID_USE_CORE_KBD, 0, 0, true, 1, 0, 0, 0);
    keyboard.connection().sync();
    pressDefault();
    expectPresses(2);
    run(QStringLiteral("setxkbmap"), {QStringLiteral("us")});
}

TEST_F(HotKey, movesWithTheModifiersOfTheLayout)
{
    ASSERT_TRUE(hotKeys.registerHotKey(keyP, command | shift));
    run(QStringLiteral("xmodmap"), {QStringLiteral("-e"), QStringLiteral("remove mod2 = Num_Lock"),
                                    QStringLiteral("-e"), QStringLiteral("add mod3 = Num_Lock")});
    settle();
    {
        const Lock num(keyboard, TestKeyboard::numLock);
        EXPECT_EQ(lockedModifiers(connection), XCB_MOD_MASK_3);
        pressDefault();
        expectPresses(1);
    }
    run(QStringLiteral("setxkbmap"), {QStringLiteral("us")});
    settle();
    const Lock num(keyboard, TestKeyboard::numLock);
    pressDefault();
    expectPresses(2);
}

TEST_F(HotKey, isLostToAnotherProgramWithTheLayoutAndRegainedWithTheNext)
{
    int losses = 0;
    int gains = 0;
    QObject::connect(&hotKeys, &HotKeys::lost, &hotKeys, [&] { ++losses; });
    QObject::connect(&hotKeys, &HotKeys::regained, &hotKeys, [&] { ++gains; });
    const QStringList superElsewhere{QStringLiteral("-e"), QStringLiteral("clear mod4"), QStringLiteral("-e"),
                                     QStringLiteral("add mod3 = Super_L Super_R")};
    run(QStringLiteral("xmodmap"), superElsewhere);
    ASSERT_TRUE(hotKeys.registerHotKey(keyP, command | shift));
    QProcess holder;
    holder.start(QStringLiteral(HOTKEY_HOLDER), QStringList());
    ASSERT_TRUE(holder.waitForReadyRead());
    ASSERT_EQ(holder.readLine(), "holding\n");
    EXPECT_EQ(losses, 0);

    run(QStringLiteral("setxkbmap"), {QStringLiteral("us")});
    EXPECT_TRUE(waitUntil([&] { return losses == 1; }));
    pressDefault();
    expectPresses(0);

    holder.kill();
    ASSERT_TRUE(holder.waitForFinished());
    run(QStringLiteral("xmodmap"), superElsewhere);
    run(QStringLiteral("setxkbmap"), {QStringLiteral("us")});
    EXPECT_TRUE(waitUntil([&] { return gains == 1; }));
    settle();
    pressDefault();
    expectPresses(1);
    EXPECT_EQ(losses, 1);
    EXPECT_EQ(gains, 1);
}

TEST_F(HotKey, firesOnceHoweverLongItIsHeld)
{
    ASSERT_TRUE(hotKeys.registerHotKey(keyP, command | shift));
    int rawPresses = 0;
    const auto events = connection.addEventHandler([&](const xcb_generic_event_t &event) {
        rawPresses += (event.response_type & 0x7f) == XCB_KEY_PRESS;
    });
    keyboard.press(TestKeyboard::super);
    keyboard.press(TestKeyboard::shift);
    keyboard.press(TestKeyboard::p);
    EXPECT_TRUE(waitUntil([&] { return rawPresses >= 4; })) << "the server does not repeat keys";
    EXPECT_EQ(presses, 1);
    keyboard.release(TestKeyboard::p);
    settle();
    keyboard.tap(TestKeyboard::p);
    expectPresses(2);
}

TEST_F(HotKey, isRefusedWhenSomebodyElseHoldsIt)
{
    X11Connection other;
    ASSERT_TRUE(grab(other, XCB_MOD_MASK_4 | XCB_MOD_MASK_SHIFT));
    EXPECT_FALSE(hotKeys.registerHotKey(keyP, command | shift));
    pressDefault();
    expectPresses(0);
    EXPECT_TRUE(hotKeys.registerHotKey(keyP, command | option));
}

TEST_F(HotKey, leavesNothingGrabbedWhenItIsRefused)
{
    X11Connection other;
    ASSERT_TRUE(grab(other, XCB_MOD_MASK_4 | XCB_MOD_MASK_SHIFT | XCB_MOD_MASK_2 | XCB_MOD_MASK_LOCK));
    EXPECT_FALSE(hotKeys.registerHotKey(keyP, command | shift));
    connection.sync();
    for (const int locks : {0, XCB_MOD_MASK_LOCK + 0, XCB_MOD_MASK_2 + 0})
        EXPECT_TRUE(grab(other, quint16(XCB_MOD_MASK_4 | XCB_MOD_MASK_SHIFT | locks)));
}

TEST_F(HotKey, isRefusedWhenTheWindowManagerUsesIt)
{
    constexpr quint32 keyD = 2; // openbox shows the desktop with Super-D
    EXPECT_FALSE(hotKeys.registerHotKey(keyD, command));
}

TEST_F(HotKey, isRefusedForKeysThatDoNotExist)
{
    EXPECT_FALSE(hotKeys.registerHotKey(52, command));
    EXPECT_FALSE(hotKeys.registerHotKey(4000, command));
}

TEST_F(HotKey, replacesTheEarlierOne)
{
    ASSERT_TRUE(hotKeys.registerHotKey(keyP, command | shift));
    ASSERT_TRUE(hotKeys.registerHotKey(keyP, command | shift));
    pressDefault();
    expectPresses(1);
    ASSERT_TRUE(hotKeys.registerHotKey(keyP, command | option));
    pressDefault();
    expectPresses(1);
    keyboard.chord({TestKeyboard::super, TestKeyboard::alt, TestKeyboard::p});
    expectPresses(2);
}

TEST_F(HotKey, endsWithItsRegistration)
{
    ASSERT_TRUE(hotKeys.registerHotKey(keyP, command | shift));
    hotKeys.unregisterHotKey();
    pressDefault();
    expectPresses(0);
    X11Connection other;
    EXPECT_TRUE(grab(other, XCB_MOD_MASK_4 | XCB_MOD_MASK_SHIFT));
}

TEST_F(HotKey, endsWithItsOwner)
{
    {
        X11HotKeys own(connection);
        ASSERT_TRUE(own.registerHotKey(keyP, command | shift));
    }
    X11Connection other;
    EXPECT_TRUE(grab(other, XCB_MOD_MASK_4 | XCB_MOD_MASK_SHIFT));
}

TEST_F(HotKey, tellsTheTimeOfThePressFirst)
{
    ASSERT_TRUE(hotKeys.registerHotKey(keyP, command | shift));
    quint32 pressedAt = 0;
    QObject::connect(&hotKeys, &X11HotKeys::pressedAt, &hotKeys, [&](quint32 time) {
        EXPECT_EQ(presses, 0);
        pressedAt = time;
    });
    const xcb_timestamp_t before = connection.serverTime();
    pressDefault();
    expectPresses(1);
    EXPECT_GE(pressedAt, before);
    EXPECT_LE(pressedAt, connection.serverTime());
}

TEST_F(HotKey, arrivesWithinMilliseconds)
{
    ASSERT_TRUE(hotKeys.registerHotKey(keyP, command | shift));
    std::vector<qint64> times;
    keyboard.press(TestKeyboard::super);
    keyboard.press(TestKeyboard::shift);
    for (int round = 1; round <= 30; ++round) {
        QElapsedTimer timer;
        const auto measure = QObject::connect(&hotKeys, &HotKeys::pressed, &hotKeys,
                                              [&] { times.push_back(timer.nsecsElapsed() / 1000); });
        timer.start();
        keyboard.press(TestKeyboard::p);
        EXPECT_TRUE(waitUntil([&] { return presses == round; }));
        QObject::disconnect(measure);
        keyboard.release(TestKeyboard::p);
        settle(std::chrono::milliseconds(20));
    }
    ASSERT_EQ(times.size(), 30U);
    std::ranges::sort(times);
    std::printf("injection to pressed(): median %.2f ms, longest %.2f ms\n", double(times[15]) / 1000,
                double(times.back()) / 1000);
    EXPECT_LT(times[15], 50'000);
}

TEST(HotKeyWithoutADisplay, isRefused)
{
    X11Connection connection("unix:/nonexistent:0");
    X11HotKeys hotKeys(connection);
    EXPECT_FALSE(hotKeys.registerHotKey(keyP, command | shift));
    hotKeys.unregisterHotKey();
}
