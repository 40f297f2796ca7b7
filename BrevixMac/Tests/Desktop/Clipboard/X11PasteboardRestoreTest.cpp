// SPDX-License-Identifier: GPL-3.0-or-later
#include "ClipboardTest.h"
#include "Desktop/X11/X11KeyEvents.h"
#include "Desktop/X11/X11Pasteboard.h"
#include "Support/Waiting.h"

#include <QElapsedTimer>
#include <QSignalSpy>

namespace {

using namespace std::chrono_literals;

const QString clipboard = QStringLiteral("CLIPBOARD");
const QString prompt = QStringLiteral("the prompt's text");

class X11PasteboardRestoreTest : public ClipboardTest
{
protected:
    X11Connection m_connection;
    std::unique_ptr<X11Pasteboard> m_pasteboard = std::make_unique<X11Pasteboard>(m_connection);
    QSignalSpy m_restored{m_pasteboard.get(), &Pasteboard::restored};

    QList<PasteboardItem> begin(const QString &text = prompt,
                                PasteConvention convention = PasteConvention::standard)
    {
        const auto items = await(m_pasteboard->items());
        EXPECT_TRUE(items);
        EXPECT_TRUE(m_pasteboard->setTransientString(text, convention));
        return items.value_or(QList<PasteboardItem>());
    }

    bool isRestored(int count = 1, std::chrono::milliseconds deadline = 5s)
    {
        return waitUntil([&] { return m_restored.size() >= count; }, deadline);
    }

    bool staysUnrestored(std::chrono::milliseconds time) { return !isRestored(1, time); }
};

TEST_F(X11PasteboardRestoreTest, everyTypeIsBackWithItsBytesTypeAndFormat)
{
    const QList<SeenType> types{
        {QStringLiteral("image/png"), QStringLiteral("image/png"), 8, pattern(5 * 1024 * 1024)},
        {QStringLiteral("text/html"), QStringLiteral("text/html"), 8, "<b>x</b>"},
        text(QStringLiteral("x – мир")),
        {QStringLiteral("TEXT"), QStringLiteral("COMPOUND_TEXT"), 8, "x"},
        {QStringLiteral("LENGTH"), QStringLiteral("INTEGER"), 32, pattern(4)},
        {QStringLiteral("_SHORTS"), QStringLiteral("CARDINAL"), 16, pattern(300'000)},
        {QStringLiteral("application/x-empty"), QStringLiteral("NULL"), 8, {}},
    };
    const auto other = owner(clipboard, types);
    const QList<PasteboardItem> original = begin();
    EXPECT_TRUE(other->says(QStringLiteral("lost")));
    EXPECT_EQ(pasted(), prompt);
    ASSERT_TRUE(m_pasteboard->restore(original));
    ASSERT_TRUE(isRestored());

    QStringList names;
    for (const SeenType &type : types) {
        names.append(type.name);
        EXPECT_EQ(seen(clipboard, type.name), type);
    }
    EXPECT_EQ(offered(), names);
    EXPECT_EQ(await(m_pasteboard->items()), std::optional(original));
}

TEST_F(X11PasteboardRestoreTest, aToolkitSeesTheSameBeforeAndAfter)
{
    if (QProcess::execute(QStringLiteral("/usr/bin/python3"),
                          {QStringLiteral("-c"), QStringLiteral("import gi")}))
        GTEST_SKIP() << "python3-gi is missing";
    QFile file(m_folder.filePath(QStringLiteral("picture")));
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write(pattern(5'000'000));
    file.close();
    Program other(
        QStringLiteral("/usr/bin/python3"),
        {script(QStringLiteral("GtkClipboardOwner.py")), clipboard,
         QStringLiteral("image/png=image/png|8|") + file.fileName(),
         QStringLiteral("UTF8_STRING=UTF8_STRING|8|") + script(QStringLiteral("GtkClipboardOwner.py"))});
    ASSERT_TRUE(other.says(QStringLiteral("owning")));
    const QStringList reader{script(QStringLiteral("GtkClipboardReader.py")), clipboard};
    const QByteArray before = outputOf(QStringLiteral("/usr/bin/python3"), reader);
    ASSERT_EQ(before.count('\n'), 2);

    const QList<PasteboardItem> original = begin();
    EXPECT_EQ(pasted(), prompt);
    ASSERT_TRUE(m_pasteboard->restore(original));
    ASSERT_TRUE(isRestored());
    EXPECT_EQ(outputOf(QStringLiteral("/usr/bin/python3"), reader), before);
}

TEST_F(X11PasteboardRestoreTest, aRestoreIsPendingFromTheTransientTextUntilItHasTakenEffect)
{
    const auto other = copy(QStringLiteral("theirs"));
    EXPECT_FALSE(m_pasteboard->isRestorePending());
    const QList<PasteboardItem> original = begin();
    EXPECT_TRUE(m_pasteboard->isRestorePending());
    ASSERT_TRUE(m_pasteboard->restore(original));
    EXPECT_TRUE(m_pasteboard->isRestorePending());
    EXPECT_EQ(pasted(), prompt);
    bool wasPendingAtTheEnd = true;
    QObject::connect(m_pasteboard.get(), &Pasteboard::restored, m_pasteboard.get(),
                     [&] { wasPendingAtTheEnd = m_pasteboard->isRestorePending(); });
    ASSERT_TRUE(isRestored());
    EXPECT_FALSE(wasPendingAtTheEnd);
}

TEST_F(X11PasteboardRestoreTest, whatSomebodyElseHasCopiedIsNotPending)
{
    begin();
    const auto other = copy(QStringLiteral("theirs"));
    EXPECT_FALSE(m_pasteboard->isRestorePending());
}

TEST_F(X11PasteboardRestoreTest, anEmptyClipboardIsEmptyAgain)
{
    const QList<PasteboardItem> original = begin();
    EXPECT_TRUE(original.isEmpty());
    EXPECT_EQ(pasted(), prompt);
    ASSERT_TRUE(m_pasteboard->restore(original));
    ASSERT_TRUE(isRestored());
    EXPECT_FALSE(hasOwner());
}

TEST_F(X11PasteboardRestoreTest, waitsForTheTextToBeReadAndForQuiet)
{
    const auto other = copy(QStringLiteral("original"));
    ASSERT_TRUE(m_pasteboard->restore(begin()));
    EXPECT_TRUE(offered().contains(QStringLiteral("UTF8_STRING"))); // asking what there is, is no reading
    EXPECT_TRUE(seen(clipboard, QStringLiteral("x-kde-passwordManagerHint")));
    EXPECT_TRUE(staysUnrestored(700ms));

    EXPECT_EQ(pasted(), prompt);
    EXPECT_EQ(pasted(), prompt); // some ask twice
    ASSERT_TRUE(isRestored());
    EXPECT_EQ(pasted(), QStringLiteral("original"));
}

TEST_F(X11PasteboardRestoreTest, aTextThatNobodyReadsGoesAfterTheCap)
{
    const auto other = copy(QStringLiteral("original"));
    QElapsedTimer clock;
    clock.start();
    ASSERT_TRUE(m_pasteboard->restore(begin()));
    ASSERT_TRUE(isRestored(1, 12s));
    EXPECT_GE(clock.elapsed(), 7900);
    EXPECT_EQ(pasted(), QStringLiteral("original"));
}

TEST_F(X11PasteboardRestoreTest, whatSomebodyCopiedMeanwhileStays)
{
    const auto other = copy(QStringLiteral("original"));
    const QList<PasteboardItem> original = begin();
    const auto newer = copy(QStringLiteral("copied meanwhile"));
    ASSERT_TRUE(m_pasteboard->restore(original));
    ASSERT_TRUE(isRestored());
    EXPECT_EQ(pasted(), QStringLiteral("copied meanwhile"));
}

TEST_F(X11PasteboardRestoreTest, whatSomebodyCopiesWhileARestoreWaitsStays)
{
    const auto other = copy(QStringLiteral("original"));
    ASSERT_TRUE(m_pasteboard->restore(begin()));
    const auto newer = copy(QStringLiteral("copied meanwhile"));
    ASSERT_TRUE(isRestored(1, 2s));
    EXPECT_EQ(pasted(), QStringLiteral("copied meanwhile"));
    EXPECT_EQ(m_restored.size(), 1);
}

TEST_F(X11PasteboardRestoreTest, ownTextCopiedMeanwhileStays)
{
    ASSERT_TRUE(m_pasteboard->restore(begin()));
    ASSERT_TRUE(m_pasteboard->setString(QStringLiteral("copied instead")));
    EXPECT_EQ(m_restored.size(), 1);
    ASSERT_TRUE(m_pasteboard->restore({}));
    ASSERT_TRUE(isRestored(2));
    EXPECT_EQ(pasted(), QStringLiteral("copied instead"));
}

TEST_F(X11PasteboardRestoreTest, aSecondPasteCarriesTheOriginalOver)
{
    const auto other = copy(QStringLiteral("original"));
    const QList<PasteboardItem> original = begin(QStringLiteral("first"));
    ASSERT_TRUE(m_pasteboard->restore(original));
    const QList<PasteboardItem> again = begin(QStringLiteral("second"));
    EXPECT_EQ(again, original);
    EXPECT_EQ(pasted(), QStringLiteral("second"));
    ASSERT_TRUE(m_pasteboard->restore(again));
    ASSERT_TRUE(isRestored());
    EXPECT_EQ(pasted(), QStringLiteral("original"));
    EXPECT_EQ(m_restored.size(), 1);
}

TEST_F(X11PasteboardRestoreTest, twoPastesAtOnceAreBothAwaited)
{
    const auto other = copy(QStringLiteral("original"));
    const QList<PasteboardItem> original = begin(QStringLiteral("first"));
    const QList<PasteboardItem> again = begin(QStringLiteral("second"));
    ASSERT_TRUE(m_pasteboard->restore(original));
    EXPECT_EQ(pasted(), QStringLiteral("second"));
    EXPECT_TRUE(staysUnrestored(2500ms)); // the second paste has not asked yet
    ASSERT_TRUE(m_pasteboard->restore(again));
    ASSERT_TRUE(isRestored());
    EXPECT_EQ(pasted(), QStringLiteral("original"));
}

TEST_F(X11PasteboardRestoreTest, aSlowApplicationStillGetsWhatTheUserPasted)
{
    const auto other = copy(QStringLiteral("original"));
    const QList<PasteboardItem> original = begin();
    const auto keyTime = m_observer.serverTime();
    EXPECT_EQ(pasted(), prompt);
    ASSERT_TRUE(m_pasteboard->restore(original));
    ASSERT_TRUE(isRestored());

    const auto late =
        seen(clipboard, QStringLiteral("UTF8_STRING"), {QStringLiteral("--time"), QString::number(keyTime)});
    ASSERT_TRUE(late);
    EXPECT_EQ(late->bytes, prompt.toUtf8());
    EXPECT_EQ(pasted(), QStringLiteral("original"));
}

TEST_F(X11PasteboardRestoreTest, aReaderThatStopsHalfwayDelaysButNeverPreventsIt)
{
    const auto other = copy(QStringLiteral("original"));
    const QList<PasteboardItem> original = begin(QString(3'000'000, u'x'));
    const auto hung = peer({QStringLiteral("read"), clipboard, QStringLiteral("UTF8_STRING"),
                            m_folder.filePath(QStringLiteral("hung")), QStringLiteral("--hang")});
    ASSERT_TRUE(hung->says(QStringLiteral("hanging")));
    ASSERT_TRUE(m_pasteboard->restore(original));
    ASSERT_TRUE(isRestored(1, 12s));
    EXPECT_EQ(pasted(), QStringLiteral("original"));
}

TEST_F(X11PasteboardRestoreTest, thePrimarySelectionIsLentAndGivenBack)
{
    const QString primary = QStringLiteral("PRIMARY");
    const auto other = copy(QStringLiteral("original"));
    const QList<SeenType> selected{
        text(QStringLiteral("selected")),
        {QStringLiteral("text/html"), QStringLiteral("text/html"), 8, "<i>selected</i>"}};
    const auto selection = owner(primary, selected);

    const QList<PasteboardItem> original = begin(prompt, PasteConvention::primarySelection);
    EXPECT_TRUE(selection->says(QStringLiteral("lost")));
    EXPECT_EQ(pasted(QStringLiteral("primary")), prompt);
    ASSERT_TRUE(m_pasteboard->restore(original));
    ASSERT_TRUE(isRestored());
    EXPECT_EQ(pasted(), QStringLiteral("original"));
    for (const SeenType &type : selected)
        EXPECT_EQ(seen(primary, type.name), type);
}

TEST_F(X11PasteboardRestoreTest, anotherConventionLeavesThePrimarySelectionAlone)
{
    const auto selection = copy(QStringLiteral("selected"), QStringLiteral("primary"));
    for (const auto convention : {PasteConvention::standard, PasteConvention::terminal}) {
        const QList<PasteboardItem> original = begin(prompt, convention);
        EXPECT_EQ(pasted(), prompt);
        EXPECT_EQ(pasted(QStringLiteral("primary")), QStringLiteral("selected"));
        ASSERT_TRUE(m_pasteboard->restore(original));
        ASSERT_TRUE(isRestored());
        m_restored.clear();
    }
}

TEST_F(X11PasteboardRestoreTest, aHungOwnerOfThePrimarySelectionDoesNotHoldThePasteUp)
{
    const auto selection = owner(QStringLiteral("PRIMARY"), {text(QStringLiteral("selected"))});
    selection->suspend();
    const xcb_window_t hung = ownerWindow("PRIMARY");
    const QList<PasteboardItem> original = begin(prompt, PasteConvention::primarySelection);
    EXPECT_TRUE(waitUntil([&] { return ownerWindow("PRIMARY") != hung; }, 1s));
    EXPECT_EQ(pasted(QStringLiteral("primary")), prompt);
    ASSERT_TRUE(m_pasteboard->restore(original));
    ASSERT_TRUE(isRestored());
    EXPECT_FALSE(hasOwner("PRIMARY")); // better nothing than the prompt
    selection->resume();
}

TEST_F(X11PasteboardRestoreTest, withoutAPasteItTakesEffectAtOnce)
{
    X11KeyEvents keyEvents(m_connection);
    X11Pasteboard pasteboard(m_connection, &keyEvents);
    QSignalSpy restored(&pasteboard, &Pasteboard::restored);
    const auto other = copy(QStringLiteral("original"));
    const auto items = await(pasteboard.items());
    ASSERT_TRUE(items);
    ASSERT_TRUE(pasteboard.setTransientString(prompt, PasteConvention::standard));
    EXPECT_EQ(pasted(), prompt);
    ASSERT_TRUE(pasteboard.restore(*items));
    EXPECT_EQ(restored.size(), 1);
    EXPECT_EQ(pasted(), QStringLiteral("original"));
}

TEST_F(X11PasteboardRestoreTest, theEndOfThePasteboardRestoresAndHandsOver)
{
    const auto manager = peer({QStringLiteral("manager")});
    ASSERT_TRUE(manager->says(QStringLiteral("managing")));
    const QList<SeenType> types{
        text(QStringLiteral("original")),
        {QStringLiteral("image/png"), QStringLiteral("image/png"), 8, pattern(700'000)}};
    const auto other = owner(clipboard, types);
    ASSERT_TRUE(m_pasteboard->restore(begin()));

    QElapsedTimer clock;
    clock.start();
    m_pasteboard.reset();
    EXPECT_LT(clock.elapsed(), 1000);
    std::printf("handed over in %lld ms\n", clock.elapsed());

    EXPECT_TRUE(manager->says(QStringLiteral("saved UTF8_STRING image/png")));
    for (const SeenType &type : types)
        EXPECT_EQ(seen(clipboard, type.name), type);
}

TEST_F(X11PasteboardRestoreTest, theEndOfThePasteboardRestoresWhatNobodyAskedForYet)
{
    const auto manager = peer({QStringLiteral("manager")});
    ASSERT_TRUE(manager->says(QStringLiteral("managing")));
    const auto other = copy(QStringLiteral("original"));
    begin();
    m_pasteboard.reset();
    EXPECT_EQ(pasted(), QStringLiteral("original"));
}

TEST_F(X11PasteboardRestoreTest, aHungClipboardManagerCostsLittleAtTheEnd)
{
    const auto manager = peer({QStringLiteral("manager")});
    ASSERT_TRUE(manager->says(QStringLiteral("managing")));
    manager->suspend();
    ASSERT_TRUE(m_pasteboard->setString(QStringLiteral("kept")));
    QElapsedTimer clock;
    clock.start();
    m_pasteboard.reset();
    EXPECT_LT(clock.elapsed(), 1000);
}

} // namespace
