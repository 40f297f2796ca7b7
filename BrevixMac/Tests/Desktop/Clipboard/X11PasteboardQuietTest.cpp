// SPDX-License-Identifier: GPL-3.0-or-later
// How long the paste waits for a second reading: the busier the application in front, the longer.
#include "ClipboardTest.h"
#include "Desktop/X11/X11KeyEvents.h"
#include "Desktop/X11/X11Pasteboard.h"
#include "Support/Waiting.h"

#include <QElapsedTimer>
#include <QSignalSpy>

#include <algorithm>

namespace {

using namespace std::chrono_literals;

const QString prompt = QStringLiteral("the prompt's text");

constexpr qint64 shortestQuiet = 600;
constexpr qint64 longestQuiet = 4000;
constexpr qint64 slack = 1500; // of a busy machine

/// Milliseconds of quiet that follow a first reading so long after the chord.
qint64 quietAfter(qint64 latency)
{
    return std::clamp(10 * latency, shortestQuiet, longestQuiet);
}

class X11PasteboardQuietTest : public ClipboardTest
{
protected:
    X11Connection m_connection;
    X11KeyEvents m_keyEvents{m_connection};
    X11Pasteboard m_pasteboard{m_connection, &m_keyEvents};
    QSignalSpy m_restored{&m_pasteboard, &Pasteboard::restored};

    struct Times
    {
        qint64 told = 0;     ///< from the chord until the reader was known to have read
        qint64 restored = 0; ///< from the chord to the restore
    };

    /// A paste into a program that reads @p delay after the key.
    Times paste(std::chrono::milliseconds delay)
    {
        const auto target = peer({QStringLiteral("paste"), QStringLiteral("CLIPBOARD"),
                                  QStringLiteral("UTF8_STRING"), QString::number(delay.count())});
        EXPECT_TRUE(target->says(QStringLiteral("ready")));
        const auto items = await(m_pasteboard.items());
        EXPECT_TRUE(items);
        EXPECT_TRUE(m_pasteboard.setTransientString(prompt, PasteConvention::standard));
        QElapsedTimer clock;
        QObject::connect(&m_keyEvents, &X11KeyEvents::aboutToPostPasteChord, &m_restored,
                         [&clock] { clock.start(); });
        EXPECT_TRUE(await(m_keyEvents.postPasteChord(PasteConvention::standard)));
        EXPECT_TRUE(m_pasteboard.restore(items.value_or(QList<PasteboardItem>())));
        Times times;
        EXPECT_TRUE(target->says(QStringLiteral("pasted %1").arg(prompt.size())));
        times.told = clock.elapsed();
        EXPECT_TRUE(waitUntil([this] { return !m_restored.isEmpty(); }, 12s));
        times.restored = clock.elapsed();
        return times;
    }
};

TEST_F(X11PasteboardQuietTest, anApplicationThatReadsAtOnceIsGivenTheShortestQuiet)
{
    const auto other = copy(QStringLiteral("original"));
    const Times times = paste(0ms);
    EXPECT_GE(times.restored, shortestQuiet);
    EXPECT_LE(times.restored, times.told + quietAfter(times.told) + slack);
    EXPECT_EQ(pasted(), QStringLiteral("original"));
}

TEST_F(X11PasteboardQuietTest, aSlowApplicationIsGivenTenTimesItsDelay)
{
    const auto other = copy(QStringLiteral("original"));
    const Times times = paste(200ms);
    EXPECT_GE(times.restored, 200 + quietAfter(200));
    EXPECT_LE(times.restored, times.told + quietAfter(times.told) + slack);
    EXPECT_EQ(pasted(), QStringLiteral("original"));
}

TEST_F(X11PasteboardQuietTest, aVerySlowApplicationIsGivenTheLongestQuietAndNoMore)
{
    const auto other = copy(QStringLiteral("original"));
    const Times times = paste(900ms);
    EXPECT_GE(times.restored, 900 + longestQuiet);
    EXPECT_LE(times.restored, times.told + longestQuiet + slack);
    EXPECT_EQ(pasted(), QStringLiteral("original"));
}

TEST_F(X11PasteboardQuietTest, readingsBeforeTheChordAreNotTheTargets)
{
    const auto other = copy(QStringLiteral("original"));
    const auto items = await(m_pasteboard.items());
    ASSERT_TRUE(items);
    ASSERT_TRUE(m_pasteboard.setTransientString(prompt, PasteConvention::standard));
    EXPECT_EQ(pasted(), prompt); // a clipboard history
    const auto target = peer({QStringLiteral("paste"), QStringLiteral("CLIPBOARD"),
                              QStringLiteral("UTF8_STRING"), QStringLiteral("1500")});
    ASSERT_TRUE(target->says(QStringLiteral("ready")));
    EXPECT_TRUE(await(m_keyEvents.postPasteChord(PasteConvention::standard)));
    ASSERT_TRUE(m_pasteboard.restore(*items));
    EXPECT_TRUE(target->says(QStringLiteral("pasted %1").arg(prompt.size())));
    EXPECT_TRUE(m_restored.isEmpty()) << "the target would have got the old clipboard";
    EXPECT_TRUE(waitUntil([this] { return !m_restored.isEmpty(); }, 12s));
}

} // namespace
