// SPDX-License-Identifier: GPL-3.0-or-later
#include "Desktop/X11/X11KeyEvents.h"
#include "ClipboardTest.h"
#include "Desktop/X11/X11Keyboard.h"
#include "Desktop/X11/X11Pasteboard.h"
#include "Support/Waiting.h"

#include <QElapsedTimer>
#include <QFile>
#include <QSignalSpy>
#include <QStandardPaths>

namespace {

using namespace std::chrono_literals;

const QString prompt = QStringLiteral("Grüße мир {x} – done");

class X11KeyEventsTest : public ClipboardTest
{
protected:
    X11Connection m_connection;
    X11KeyEvents m_keyEvents{m_connection};
    X11Pasteboard m_pasteboard{m_connection, &m_keyEvents};
    QSignalSpy m_restored{&m_pasteboard, &Pasteboard::restored};

    void TearDown() override
    {
        layout({QStringLiteral("us")});
        EXPECT_TRUE(waitUntil([this] { return areAllKeysUp(); }));
    }

    static void layout(const QStringList &arguments) { outputOf(QStringLiteral("setxkbmap"), arguments); }

    static void xdotool(const QStringList &arguments) { outputOf(QStringLiteral("xdotool"), arguments); }

    bool areAllKeysUp()
    {
        auto *xcb = m_observer.connection();
        const XcbPointer<xcb_query_keymap_reply_t> keys(
            xcb_query_keymap_reply(xcb, xcb_query_keymap(xcb), nullptr));
        return keys && std::all_of(std::begin(keys->keys), std::end(keys->keys),
                                   [](quint8 bits) { return bits == 0; });
    }

    /// WM_CLASS of the active window, once its client also has the keyboard focus.
    QString focusedClass()
    {
        auto *xcb = m_observer.connection();
        const auto property = [&](xcb_window_t window, const char *name) {
            const auto cookie =
                xcb_get_property(xcb, false, window, m_observer.atom(name), XCB_GET_PROPERTY_TYPE_ANY, 0, 64);
            const XcbPointer<xcb_get_property_reply_t> reply(xcb_get_property_reply(xcb, cookie, nullptr));
            return reply ? QByteArray(static_cast<const char *>(xcb_get_property_value(reply.get())),
                                      xcb_get_property_value_length(reply.get()))
                         : QByteArray();
        };
        const QByteArray active = property(m_observer.root(), "_NET_ACTIVE_WINDOW");
        xcb_window_t window = XCB_WINDOW_NONE;
        std::memcpy(&window, active.constData(), std::min<size_t>(size_t(active.size()), sizeof window));
        const XcbPointer<xcb_get_input_focus_reply_t> focus(
            xcb_get_input_focus_reply(xcb, xcb_get_input_focus(xcb), nullptr));
        if (!focus || !m_observer.isSameClient(focus->focus, window))
            return {};
        return QString::fromLatin1(property(window, "WM_CLASS"));
    }

    /// Opens @p program and waits until its window has the focus.
    std::unique_ptr<Program> open(const QString &program, const QStringList &arguments,
                                  const QString &windowClass)
    {
        auto opened = std::make_unique<Program>(program, arguments);
        EXPECT_TRUE(
            waitUntil([&] { return focusedClass().contains(windowClass, Qt::CaseInsensitive); }, 30s));
        return opened;
    }

    std::unique_ptr<Program> editor()
    {
        QFile file(m_folder.filePath(QStringLiteral("note.txt")));
        EXPECT_TRUE(file.open(QIODevice::WriteOnly));
        return open(QStringLiteral("mousepad"), {QStringLiteral("--disable-server"), file.fileName()},
                    QStringLiteral("mousepad"));
    }

    QString saved()
    {
        layout({QStringLiteral("us")});
        xdotool({QStringLiteral("key"), QStringLiteral("ctrl+s")});
        QFile file(m_folder.filePath(QStringLiteral("note.txt")));
        waitUntil([&] { return file.size() > 0; });
        EXPECT_TRUE(file.open(QIODevice::ReadOnly));
        return QString::fromUtf8(file.readAll());
    }

    /// The whole paste, as an insertion does it. The milliseconds from the chord until the text has been
    /// restored.
    qint64 paste(PasteConvention convention)
    {
        const auto items = await(m_pasteboard.items());
        EXPECT_TRUE(items);
        const xcb_window_t primaryOwner = ownerWindow("PRIMARY");
        EXPECT_TRUE(m_pasteboard.setTransientString(prompt, convention));
        // An insertion activates the target meanwhile; that is the time in which the selection is saved.
        const bool takesPrimary = convention == PasteConvention::primarySelection;
        EXPECT_TRUE(
            waitUntil([&] { return !takesPrimary || ownerWindow("PRIMARY") != primaryOwner; }, 180ms));
        QElapsedTimer clock;
        clock.start();
        EXPECT_TRUE(await(m_keyEvents.postPasteChord(convention)));
        EXPECT_TRUE(m_pasteboard.restore(items.value_or(QList<PasteboardItem>())));
        EXPECT_TRUE(waitUntil([this] { return !m_restored.isEmpty(); }, 12s));
        m_restored.clear();
        return clock.elapsed();
    }
};

namespace {

QCoro::Task<bool> answer(const bool *isWanted, int *questions)
{
    ++*questions;
    co_return *isWanted;
}

} // namespace

TEST_F(X11KeyEventsTest, postingIsAllowedWhereTheExtensionIs)
{
    EXPECT_TRUE(m_keyEvents.isPostingAllowed());
}

TEST_F(X11KeyEventsTest, thePasteLandsInAnEditorInEveryLayout)
{
    const struct
    {
        const char *name;
        QStringList layout;
    } table[] = {
        {"us", {QStringLiteral("us")}},
        {"Cyrillic only", {QStringLiteral("ru")}},
        {"Cyrillic active beside Latin", {QStringLiteral("ru,us")}},
        {"Dvorak", {QStringLiteral("us"), QStringLiteral("dvorak")}},
        {"French", {QStringLiteral("fr")}},
        {"Greek", {QStringLiteral("gr")}},
    };
    for (const auto &row : table) {
        SCOPED_TRACE(row.name);
        layout(row.layout);
        const auto mousepad = editor();
        // Another text each time: the one before is still on the clipboard, put back by the last paste.
        const QString original = QStringLiteral("original for ") + QString::fromLatin1(row.name);
        const auto other = copy(original);
        const qint64 time = paste(PasteConvention::standard);
        std::printf("%s: chord to restored %lld ms\n", row.name, time);
        EXPECT_LT(time, 4000);
        EXPECT_EQ(pasted(), original);
        EXPECT_EQ(saved(), prompt);
    }
}

TEST_F(X11KeyEventsTest, thePasteLandsInXterm)
{
    const QString path = m_folder.filePath(QStringLiteral("typed"));
    const auto selection = copy(QStringLiteral("selected"), QStringLiteral("primary"));
    const auto terminal = open(QStringLiteral("xterm"),
                               {QStringLiteral("-e"), QStringLiteral("sh"), QStringLiteral("-c"),
                                QStringLiteral("cat > '%1'").arg(path)},
                               QStringLiteral("xterm"));
    EXPECT_TRUE(waitUntil([&] { return QFile::exists(path); }));
    EXPECT_LT(paste(PasteConvention::primarySelection), 4000);
    xdotool({QStringLiteral("key"), QStringLiteral("Return")});
    QFile file(path);
    EXPECT_TRUE(waitUntil([&] { return file.size() > 0; }));
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    EXPECT_EQ(QString::fromUtf8(file.readAll()), prompt + u'\n');
    EXPECT_EQ(pasted(QStringLiteral("primary")), QStringLiteral("selected"));
}

TEST_F(X11KeyEventsTest, thePasteLandsInATerminalOfAToolkit)
{
    if (QStandardPaths::findExecutable(QStringLiteral("xfce4-terminal")).isEmpty())
        GTEST_SKIP() << "xfce4-terminal is missing";
    const QString path = m_folder.filePath(QStringLiteral("typed"));
    const auto terminal = open(QStringLiteral("xfce4-terminal"),
                               {QStringLiteral("--disable-server"), QStringLiteral("-e"),
                                QStringLiteral("sh -c 'cat > %1'").arg(path)},
                               QStringLiteral("xfce4-terminal"));
    EXPECT_TRUE(waitUntil([&] { return QFile::exists(path); }));
    EXPECT_LT(paste(PasteConvention::terminal), 4000);
    xdotool({QStringLiteral("key"), QStringLiteral("Return")});
    QFile file(path);
    EXPECT_TRUE(waitUntil([&] { return file.size() > 0; }));
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    EXPECT_EQ(QString::fromUtf8(file.readAll()), prompt + u'\n');
}

TEST_F(X11KeyEventsTest, heldModifiersAreWaitedFor)
{
    const auto mousepad = editor();
    xdotool({QStringLiteral("keydown"), QStringLiteral("super")});
    bool isDone = false;
    bool isPosted = false;
    QSignalSpy aboutToPost(&m_keyEvents, &X11KeyEvents::aboutToPostPasteChord);
    ASSERT_TRUE(m_pasteboard.setTransientString(prompt, PasteConvention::standard));
    auto task = m_keyEvents.postPasteChord(PasteConvention::standard).then([&](bool posted) {
        isDone = true;
        isPosted = posted;
    });
    EXPECT_FALSE(waitUntil([&] { return isDone || !aboutToPost.isEmpty(); }, 400ms));
    xdotool({QStringLiteral("keyup"), QStringLiteral("super")});
    EXPECT_TRUE(waitUntil([&] { return isDone; }));
    EXPECT_TRUE(isPosted);
    EXPECT_EQ(saved(), prompt);
}

TEST_F(X11KeyEventsTest, modifiersThatStayHeldMeanThatNothingIsPosted)
{
    for (const char *key : {"ctrl", "shift", "alt", "super"}) {
        SCOPED_TRACE(key);
        QSignalSpy aboutToPost(&m_keyEvents, &X11KeyEvents::aboutToPostPasteChord);
        xdotool({QStringLiteral("keydown"), QString::fromLatin1(key)});
        QElapsedTimer clock;
        clock.start();
        EXPECT_FALSE(await(m_keyEvents.postPasteChord(PasteConvention::standard)));
        EXPECT_GE(clock.elapsed(), 1900);
        EXPECT_LT(clock.elapsed(), 4000);
        EXPECT_TRUE(aboutToPost.isEmpty());
        xdotool({QStringLiteral("keyup"), QString::fromLatin1(key)});
    }
}

TEST_F(X11KeyEventsTest, whetherTheChordIsStillWantedIsAskedWhenTheModifiersAreFree)
{
    bool isWanted = true;
    int questions = 0;
    const KeyEvents::Guard guard = [&]() -> QCoro::Task<bool> { return answer(&isWanted, &questions); };
    QSignalSpy aboutToPost(&m_keyEvents, &X11KeyEvents::aboutToPostPasteChord);
    xdotool({QStringLiteral("keydown"), QStringLiteral("alt")});
    auto task = m_keyEvents.postPasteChord(PasteConvention::standard, guard);
    EXPECT_FALSE(waitUntil([&] { return questions > 0; }, 200ms));
    isWanted = false; // the user has switched to another window meanwhile
    xdotool({QStringLiteral("keyup"), QStringLiteral("alt")});
    EXPECT_FALSE(await(std::move(task)));
    EXPECT_EQ(questions, 1);
    EXPECT_TRUE(aboutToPost.isEmpty());
    EXPECT_TRUE(areAllKeysUp());

    isWanted = true;
    EXPECT_TRUE(await(m_keyEvents.postPasteChord(PasteConvention::standard, guard)));
    EXPECT_EQ(aboutToPost.size(), 1);
}

TEST_F(X11KeyEventsTest, locksAreNoHeldModifiers)
{
    xdotool({QStringLiteral("key"), QStringLiteral("Num_Lock")});
    xdotool({QStringLiteral("key"), QStringLiteral("Caps_Lock")});
    const auto mousepad = editor();
    EXPECT_LT(paste(PasteConvention::standard), 4000);
    xdotool({QStringLiteral("key"), QStringLiteral("Caps_Lock")});
    xdotool({QStringLiteral("key"), QStringLiteral("Num_Lock")});
    EXPECT_EQ(saved(), prompt);
}

TEST_F(X11KeyEventsTest, everyKeyIsUpAgainAfterTheChord)
{
    for (const auto convention :
         {PasteConvention::standard, PasteConvention::terminal, PasteConvention::primarySelection}) {
        EXPECT_TRUE(await(m_keyEvents.postPasteChord(convention)));
        EXPECT_TRUE(waitUntil([this] { return areAllKeysUp(); }, 1s));
    }
}

TEST_F(X11KeyEventsTest, everyKeyIsUpAgainWhenTheOwnerEndsInTheMiddle)
{
    auto keyEvents = std::make_unique<X11KeyEvents>(m_connection);
    auto task = keyEvents->postPasteChord(PasteConvention::standard);
    EXPECT_TRUE(waitUntil([this] { return !areAllKeysUp(); }));
    QElapsedTimer clock;
    clock.start();
    keyEvents.reset();
    EXPECT_LT(clock.elapsed(), 500);
    EXPECT_TRUE(areAllKeysUp());
    EXPECT_TRUE(await(std::move(task))); // the chord was posted whole
}

TEST_F(X11KeyEventsTest, anEndWhileModifiersAreAwaitedPostsNothing)
{
    auto keyEvents = std::make_unique<X11KeyEvents>(m_connection);
    xdotool({QStringLiteral("keydown"), QStringLiteral("alt")});
    auto task = keyEvents->postPasteChord(PasteConvention::standard);
    keyEvents.reset();
    EXPECT_FALSE(await(std::move(task)));
    xdotool({QStringLiteral("keyup"), QStringLiteral("alt")});
}

TEST_F(X11KeyEventsTest, aSecondChordWaitsForTheFirst)
{
    const auto mousepad = editor();
    ASSERT_TRUE(m_pasteboard.setTransientString(QStringLiteral("x"), PasteConvention::standard));
    auto first = m_keyEvents.postPasteChord(PasteConvention::standard);
    auto second = m_keyEvents.postPasteChord(PasteConvention::standard);
    EXPECT_TRUE(await(std::move(first)));
    EXPECT_TRUE(await(std::move(second)));
    EXPECT_EQ(saved(), QStringLiteral("xx"));
}

TEST_F(X11KeyEventsTest, theKeyOfTheLetterFollowsTheLayout)
{
    constexpr xcb_keysym_t letterV = 'v';
    const struct
    {
        QStringList layout;
        std::optional<int> key; ///< key code
    } table[] = {
        {{QStringLiteral("us")}, 55},
        {{QStringLiteral("fr")}, 55},
        {{QStringLiteral("us"), QStringLiteral("dvorak")}, 60},
        {{QStringLiteral("ru")}, std::nullopt},
        {{QStringLiteral("ru,us")}, 55},
        {{QStringLiteral("us,ru")}, 55},
    };
    for (const auto &row : table) {
        SCOPED_TRACE(qPrintable(row.layout.join(u' ')));
        layout(row.layout);
        const auto key = X11Keyboard(m_connection).shortcutKey(letterV);
        EXPECT_EQ(key ? std::optional<int>(*key) : std::nullopt, row.key);
    }
}

} // namespace
