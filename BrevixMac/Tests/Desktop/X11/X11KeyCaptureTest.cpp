// SPDX-License-Identifier: GPL-3.0-or-later
#include "Desktop/X11/X11KeyCapture.h"

#include "Desktop/X11/X11HotKeys.h"

#include "Programs.h"
#include "TestKeyboard.h"

#include <QCloseEvent>
#include <QWidget>
#include <QWindow>

#include <gtest/gtest.h>

namespace {

constexpr quint32 keyA = 0;
constexpr quint32 keyP = 35;
constexpr quint64 shift = 0x20000;
constexpr quint64 control = 0x40000;
constexpr quint64 option = 0x80000;
constexpr quint64 command = 0x100000;

constexpr quint8 codeA = 38;
constexpr quint8 codeF4 = 70;
constexpr quint8 codePlayMedia = 172; // a media key, which the key table lacks

/// A window that counts what reaches it.
class Window final : public QWidget
{
public:
    int presses = 0;
    int deactivations = 0;
    bool isClosed = false;

protected:
    bool event(QEvent *event) override
    {
        presses += event->type() == QEvent::KeyPress;
        deactivations += event->type() == QEvent::WindowDeactivate;
        return QWidget::event(event);
    }
    void closeEvent(QCloseEvent *event) override
    {
        isClosed = true;
        event->ignore();
    }
};

class KeyCaptureOnX11 : public testing::Test
{
protected:
    KeyCaptureOnX11()
    {
        window.resize(200, 100);
        window.show();
        window.activateWindow();
        EXPECT_TRUE(waitUntil([this] { return window.isActiveWindow(); }));
    }

    void begin()
    {
        session = capture.begin(*window.windowHandle(), [this](const CapturedKey &key) { keys.append(key); });
    }

    bool wait(int count)
    {
        return waitUntil([&] { return keys.size() >= count; }, std::chrono::seconds(3));
    }

    // Whether somebody else could take the keyboard now.
    bool isKeyboardFree()
    {
        auto *xcb = other.connection();
        const XcbPointer<xcb_grab_keyboard_reply_t> reply(
            xcb_grab_keyboard_reply(xcb,
                                    xcb_grab_keyboard(xcb, false, other.root(), XCB_CURRENT_TIME,
                                                      XCB_GRAB_MODE_ASYNC, XCB_GRAB_MODE_ASYNC),
                                    nullptr));
        const bool isFree = reply && reply->status == XCB_GRAB_STATUS_SUCCESS;
        xcb_ungrab_keyboard(xcb, XCB_CURRENT_TIME);
        other.sync();
        return isFree;
    }

    TestKeyboard keyboard;
    X11Connection connection;
    X11Connection other;
    X11KeyCapture capture{connection};
    Window window;
    QList<CapturedKey> keys;
    std::unique_ptr<KeyCapture::Session> session;
};

} // namespace

TEST_F(KeyCaptureOnX11, tellsKeysAndModifiersAndNobodyElseIsTold)
{
    begin();
    ASSERT_TRUE(session);
    keyboard.chord(
        {TestKeyboard::control, TestKeyboard::alt, TestKeyboard::super, TestKeyboard::shift, codeA});
    ASSERT_TRUE(wait(5));
    for (int index = 0; index < 4; ++index)
        EXPECT_TRUE(keys[index].isModifier);
    EXPECT_FALSE(keys[4].isModifier);
    EXPECT_EQ(keys[4].keyCode, keyA);
    EXPECT_EQ(keys[4].modifiers, shift | control | option | command);
    settle();
    EXPECT_EQ(window.presses, 0);
}

TEST_F(KeyCaptureOnX11, leavesTheWindowActive)
{
    begin();
    ASSERT_TRUE(session);
    settle();
    session.reset();
    settle();
    EXPECT_EQ(window.deactivations, 0);
    EXPECT_TRUE(window.isActiveWindow());
}

TEST_F(KeyCaptureOnX11, getsACombinationThatTheWindowManagerHolds)
{
    keyboard.chord({TestKeyboard::alt, codeF4});
    ASSERT_TRUE(waitUntil([this] { return window.isClosed; })) << "the window manager does not hold Alt-F4";
    window.isClosed = false;

    begin();
    ASSERT_TRUE(session);
    keyboard.chord({TestKeyboard::alt, codeF4});
    ASSERT_TRUE(wait(2));
    EXPECT_EQ(keys[1].keyCode, quint32(118));
    EXPECT_EQ(keys[1].modifiers, option);
    settle();
    EXPECT_FALSE(window.isClosed);
}

TEST_F(KeyCaptureOnX11, locksAreModifiersThatDoNotCount)
{
    keyboard.tap(TestKeyboard::capsLock);
    keyboard.tap(TestKeyboard::numLock);
    begin();
    ASSERT_TRUE(session);
    keyboard.chord({TestKeyboard::control, codeA});
    keyboard.tap(TestKeyboard::capsLock);
    keyboard.tap(TestKeyboard::numLock);
    ASSERT_TRUE(wait(4));
    EXPECT_EQ(keys[1].modifiers, control);
    EXPECT_TRUE(keys[2].isModifier);
    EXPECT_TRUE(keys[3].isModifier);
}

TEST_F(KeyCaptureOnX11, namesNoNumberForAKeyOutsideTheTable)
{
    begin();
    ASSERT_TRUE(session);
    keyboard.chord({TestKeyboard::control, codePlayMedia});
    ASSERT_TRUE(wait(2));
    EXPECT_EQ(keys[1].keyCode, std::nullopt);
    EXPECT_FALSE(keys[1].isModifier);
}

TEST_F(KeyCaptureOnX11, doesNotPressTheHotkeyThatIsRegistered)
{
    X11HotKeys hotKeys(connection);
    int presses = 0;
    QObject::connect(&hotKeys, &HotKeys::pressed, &hotKeys, [&] { ++presses; });
    ASSERT_TRUE(hotKeys.registerHotKey(keyP, command | shift));
    begin();
    ASSERT_TRUE(session);
    keyboard.chord({TestKeyboard::super, TestKeyboard::shift, TestKeyboard::p});
    ASSERT_TRUE(wait(3));
    settle();
    EXPECT_EQ(presses, 0);
    session.reset();
    keyboard.chord({TestKeyboard::super, TestKeyboard::shift, TestKeyboard::p});
    EXPECT_TRUE(waitUntil([&] { return presses == 1; })) << "the hotkey must work again afterwards";
}

TEST_F(KeyCaptureOnX11, doesNotPressTheNewHotkeyByTheRepeatsOfItsRecording)
{
    X11HotKeys hotKeys(connection);
    int presses = 0;
    QObject::connect(&hotKeys, &HotKeys::pressed, &hotKeys, [&] { ++presses; });
    session = capture.begin(*window.windowHandle(), [&](const CapturedKey &key) {
        keys.append(key);
        if (key.isModifier || !key.keyCode)
            return;
        session.reset();
        ASSERT_TRUE(hotKeys.registerHotKey(*key.keyCode, key.modifiers));
    });
    ASSERT_TRUE(session);
    keyboard.press(TestKeyboard::control);
    keyboard.press(codeA);
    ASSERT_TRUE(wait(2));
    settle(std::chrono::milliseconds(1200)); // some repeats
    EXPECT_EQ(presses, 0);
    keyboard.release(codeA);
    EXPECT_TRUE(waitUntil([this] { return isKeyboardFree(); }));
    keyboard.tap(codeA);
    EXPECT_TRUE(waitUntil([&] { return presses == 1; }));
}

TEST_F(KeyCaptureOnX11, givesTheKeyboardBackWithTheSession)
{
    begin();
    ASSERT_TRUE(session);
    EXPECT_FALSE(isKeyboardFree());
    session.reset();
    connection.sync();
    EXPECT_TRUE(isKeyboardFree());
    keyboard.tap(codeA);
    EXPECT_TRUE(waitUntil([this] { return window.presses == 1; }));
}

TEST_F(KeyCaptureOnX11, givesTheKeyboardBackWithTheWindow)
{
    begin();
    ASSERT_TRUE(session);
    window.hide();
    EXPECT_TRUE(waitUntil([this] { return isKeyboardFree(); }));
}

TEST_F(KeyCaptureOnX11, givesTheKeyboardBackThoughAKeyIsHeldForEver)
{
    begin();
    ASSERT_TRUE(session);
    keyboard.press(codeA);
    ASSERT_TRUE(wait(1));
    session.reset();
    EXPECT_FALSE(isKeyboardFree());
    EXPECT_TRUE(waitUntil([this] { return isKeyboardFree(); }));
}

TEST_F(KeyCaptureOnX11, isRefusedWhenSomebodyElseHasTheKeyboard)
{
    auto *xcb = other.connection();
    XcbPointer<xcb_grab_keyboard_reply_t>(
        xcb_grab_keyboard_reply(xcb,
                                xcb_grab_keyboard(xcb, false, other.root(), XCB_CURRENT_TIME,
                                                  XCB_GRAB_MODE_ASYNC, XCB_GRAB_MODE_ASYNC),
                                nullptr));
    begin();
    EXPECT_FALSE(session);
    xcb_ungrab_keyboard(xcb, XCB_CURRENT_TIME);
    other.sync();
    begin();
    EXPECT_TRUE(session);
}

TEST_F(KeyCaptureOnX11, survivesTheEndOfTheCaptureBeforeItsSession)
{
    auto shortLived = std::make_unique<X11KeyCapture>(connection);
    session = shortLived->begin(*window.windowHandle(), [](const CapturedKey &) {});
    ASSERT_TRUE(session);
    shortLived.reset();
    session.reset();
    connection.sync();
    EXPECT_TRUE(isKeyboardFree());
}

TEST_F(KeyCaptureOnX11, knowsTheKeysOfQtsOwnEvents)
{
    EXPECT_EQ(capture.keyCode(codeA), keyA);
    EXPECT_EQ(capture.keyCode(codePlayMedia), std::nullopt);
}
