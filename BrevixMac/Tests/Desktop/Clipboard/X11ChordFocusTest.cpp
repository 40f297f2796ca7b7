// SPDX-License-Identifier: GPL-3.0-or-later
// The paste chord goes to the window that was agreed to, or nowhere.
#include "ClipboardTest.h"
#include "Desktop/X11/X11KeyEvents.h"
#include "Support/Waiting.h"

#include <QElapsedTimer>
#include <QSignalSpy>

#include <functional>

namespace {

using namespace std::chrono_literals;

class X11ChordFocusTest : public ClipboardTest
{
protected:
    X11Connection m_connection;
    X11KeyEvents m_keyEvents{m_connection};
    QSignalSpy m_dropped{&m_keyEvents, &X11KeyEvents::pasteChordDropped};
    xcb_window_t m_first = XCB_WINDOW_NONE;
    xcb_window_t m_second = XCB_WINDOW_NONE;
    QList<xcb_window_t> m_pressedIn;
    int m_questions = 0;
    std::unique_ptr<X11Connection::Subscription> m_events;

    void SetUp() override
    {
        ClipboardTest::SetUp();
        m_first = makeWindow(0);
        m_second = makeWindow(300);
        m_events = m_observer.addEventHandler([this](const xcb_generic_event_t &event) {
            if ((event.response_type & 0x7f) == XCB_KEY_PRESS)
                m_pressedIn.append(reinterpret_cast<const xcb_key_press_event_t &>(event).event);
        });
        focus(m_first);
    }

    void TearDown() override
    {
        for (const xcb_window_t window : {m_first, m_second})
            xcb_destroy_window(m_observer.connection(), window);
        m_observer.sync();
    }

    /// A window that no window manager gives the focus to or takes it from.
    xcb_window_t makeWindow(int16_t x)
    {
        auto *xcb = m_observer.connection();
        const xcb_window_t window = xcb_generate_id(xcb);
        const quint32 values[] = {true, XCB_EVENT_MASK_KEY_PRESS};
        xcb_create_window(xcb, XCB_COPY_FROM_PARENT, window, m_observer.root(), x, 0, 200, 100, 0,
                          XCB_WINDOW_CLASS_INPUT_OUTPUT, XCB_COPY_FROM_PARENT,
                          XCB_CW_OVERRIDE_REDIRECT | XCB_CW_EVENT_MASK, values);
        xcb_map_window(xcb, window);
        m_observer.sync();
        return window;
    }

    void focus(xcb_window_t window)
    {
        xcb_set_input_focus(m_observer.connection(), XCB_INPUT_FOCUS_POINTER_ROOT, window, XCB_CURRENT_TIME);
        m_observer.sync();
    }

    /// A question that calls @p meanwhile with its number before it is answered.
    KeyEvents::Guard guard(std::function<bool(int)> meanwhile)
    {
        return [this, meanwhile = std::move(meanwhile)] { return ask(meanwhile); };
    }

    bool post(const KeyEvents::Guard &guard)
    {
        return await(m_keyEvents.postPasteChord(PasteConvention::standard, guard));
    }

    /// Whether both keys of the chord arrive in @p window, and none elsewhere.
    bool isPressedOnlyIn(xcb_window_t window)
    {
        return waitUntil([&] { return m_pressedIn.size() >= 2; }, 2s) && m_pressedIn.count(window) == 2 &&
               m_pressedIn.size() == 2;
    }

private:
    QCoro::Task<bool> ask(std::function<bool(int)> meanwhile) { co_return meanwhile(++m_questions); }
};

TEST_F(X11ChordFocusTest, theChordGoesToTheWindowThatHadTheFocusAtTheQuestion)
{
    EXPECT_TRUE(post(guard([](int) { return true; })));
    EXPECT_TRUE(isPressedOnlyIn(m_first));
    EXPECT_EQ(m_questions, 1);
    EXPECT_TRUE(m_dropped.isEmpty());
}

TEST_F(X11ChordFocusTest, aFocusThatMovesAfterTheAnswerGetsNoKeyAndTheQuestionIsAskedAgain)
{
    const auto moveOnce = guard([this](int number) {
        if (number == 1)
            focus(m_second);
        return number == 1; // the second time it is seen that the target has lost the focus
    });
    EXPECT_FALSE(post(moveOnce));
    EXPECT_EQ(m_questions, 2);
    EXPECT_EQ(m_dropped.size(), 1);
    EXPECT_FALSE(isPressedOnlyIn(m_second));
    EXPECT_TRUE(m_pressedIn.isEmpty());
}

TEST_F(X11ChordFocusTest, aFocusThatIsBackIsPastedInto)
{
    const auto moveAndReturn = guard([this](int number) {
        focus(number == 1 ? m_second : m_first);
        return true;
    });
    EXPECT_TRUE(post(moveAndReturn));
    EXPECT_TRUE(isPressedOnlyIn(m_first));
    EXPECT_GE(m_questions, 2);
}

TEST_F(X11ChordFocusTest, aFocusThatNeverRestsGetsNothingAndTheWaitEnds)
{
    QElapsedTimer clock;
    clock.start();
    const auto alwaysMove = guard([this](int number) {
        focus(number % 2 == 1 ? m_second : m_first);
        return true;
    });
    EXPECT_FALSE(post(alwaysMove));
    EXPECT_GE(clock.elapsed(), 1900);
    EXPECT_LT(clock.elapsed(), 6000);
    EXPECT_TRUE(m_pressedIn.isEmpty());
    EXPECT_EQ(m_dropped.size(), m_questions);
}

} // namespace
