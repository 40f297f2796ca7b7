// SPDX-License-Identifier: GPL-3.0-or-later
#include "ClipboardTest.h"
#include "Desktop/X11/X11Pasteboard.h"
#include "Support/Waiting.h"

#include <QElapsedTimer>
#include <QStandardPaths>
#include <QTimer>

namespace {

using namespace std::chrono_literals;
using Items = std::optional<QList<PasteboardItem>>;

const QString clipboard = QStringLiteral("CLIPBOARD");

class X11PasteboardReadingTest : public ClipboardTest
{
protected:
    X11Connection m_connection;
    X11Pasteboard m_pasteboard{m_connection};

    /// The names read, "hung" when there is no answer.
    QStringList typesRead()
    {
        const Items items = await(m_pasteboard.items());
        if (!items)
            return {QStringLiteral("hung")};
        QStringList names;
        for (const PasteboardItem &item : *items) {
            for (const auto &[name, bytes] : item.types)
                names.append(name);
        }
        return names;
    }
};

TEST_F(X11PasteboardReadingTest, anEmptyClipboardIsAnEmptyList)
{
    EXPECT_EQ(await(m_pasteboard.items()), Items(QList<PasteboardItem>()));
}

TEST_F(X11PasteboardReadingTest, everyTypeIsReadInTheOwnersOrderWithItsBytes)
{
    const QByteArray picture = pattern(5 * 1024 * 1024);
    const auto other =
        owner(clipboard, {{QStringLiteral("image/png"), QStringLiteral("image/png"), 8, picture},
                          {QStringLiteral("text/html"), QStringLiteral("text/html"), 8, "<b>b\xc3\xa9</b>"},
                          text(QStringLiteral("bé")),
                          {QStringLiteral("application/x-none"), QStringLiteral("STRING"), 8, {}},
                          {QStringLiteral("LENGTH"), QStringLiteral("INTEGER"), 32, pattern(4)}});
    QElapsedTimer clock;
    clock.start();
    const Items items = await(m_pasteboard.items());
    RecordProperty("milliseconds", int(clock.elapsed()));
    std::printf("5 types, 5 MiB: %lld ms\n", clock.elapsed());

    const QList<QPair<QString, QByteArray>> expected{
        {QStringLiteral("image/png"), picture},       {QStringLiteral("text/html"), "<b>b\xc3\xa9</b>"},
        {QStringLiteral("UTF8_STRING"), "b\xc3\xa9"}, {QStringLiteral("application/x-none"), {}},
        {QStringLiteral("LENGTH"), pattern(4)},
    };
    ASSERT_TRUE(items);
    ASSERT_EQ(items->size(), 1);
    EXPECT_TRUE(items->first().types == expected) << qPrintable(typesRead().join(u' '));
}

TEST_F(X11PasteboardReadingTest, whatIsNoContentIsNeverAskedFor)
{
    const QByteArray bytes = "x";
    QList<SeenType> types;
    for (const char *name :
         {"MULTIPLE", "SAVE_TARGETS", "DELETE", "INSERT_SELECTION", "INSERT_PROPERTY",
          "GTK_TEXT_BUFFER_CONTENTS", "application/x-libreoffice-internal-id-1234", "PIXMAP"})
        types.append({QString::fromLatin1(name), QStringLiteral("STRING"), 8, bytes});
    types.append(text(QStringLiteral("t")));
    const auto other = owner(clipboard, types);

    EXPECT_EQ(typesRead(), QStringList{QStringLiteral("UTF8_STRING")});
    EXPECT_TRUE(other->says(QStringLiteral("read UTF8_STRING")));
    EXPECT_EQ(other->lines(), (QStringList{QStringLiteral("owning"), QStringLiteral("read UTF8_STRING")}));
}

TEST_F(X11PasteboardReadingTest, aRefusedTypeIsLeftOut)
{
    const auto other = owner(clipboard, {{QStringLiteral("text/html"), QStringLiteral("text/html"), 0, "x"},
                                         text(QStringLiteral("t"))});
    EXPECT_EQ(typesRead(), QStringList{QStringLiteral("UTF8_STRING")});
}

TEST_F(X11PasteboardReadingTest, anOwnerOfNothingIsOneItemWithoutTypes)
{
    const auto other = owner(clipboard, {});
    EXPECT_EQ(await(m_pasteboard.items()), Items(QList<PasteboardItem>{PasteboardItem{}}));
}

TEST_F(X11PasteboardReadingTest, anOldOwnerThatOnlyKnowsTextIsReadAllTheSame)
{
    const auto other = owner(clipboard, {{QStringLiteral("STRING"), QStringLiteral("STRING"), 8, "old"}},
                             QStringLiteral("--refuse-targets"));
    EXPECT_EQ(typesRead(), QStringList{QStringLiteral("STRING")});
}

TEST_F(X11PasteboardReadingTest, aToolkitsClipboardIsReadWhole)
{
    if (QProcess::execute(QStringLiteral("/usr/bin/python3"),
                          {QStringLiteral("-c"), QStringLiteral("import gi")}))
        GTEST_SKIP() << "python3-gi is missing";
    QFile file(m_folder.filePath(QStringLiteral("picture")));
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write(pattern(3'000'000));
    file.close();
    Program other(QStringLiteral("/usr/bin/python3"),
                  {script(QStringLiteral("GtkClipboardOwner.py")), clipboard,
                   QStringLiteral("image/png=image/png|8|") + file.fileName(),
                   QStringLiteral("text/x-note=text/x-note|8|") + file.fileName()});
    ASSERT_TRUE(other.says(QStringLiteral("owning")));

    const Items items = await(m_pasteboard.items());
    ASSERT_TRUE(items);
    ASSERT_EQ(items->first().types.size(), 2);
    for (const auto &[name, bytes] : items->first().types)
        EXPECT_TRUE(bytes == pattern(3'000'000)) << qPrintable(name);
}

TEST_F(X11PasteboardReadingTest, aStoppedOwnerCostsTheBudgetAndNeverTheEventLoop)
{
    const auto other = owner(clipboard, {text(QStringLiteral("t"))});
    other->suspend();
    int turns = 0;
    QTimer timer;
    QObject::connect(&timer, &QTimer::timeout, &timer, [&] { ++turns; });
    timer.start(10ms);
    QElapsedTimer clock;
    clock.start();

    EXPECT_EQ(await(m_pasteboard.items()), std::nullopt);

    EXPECT_GE(clock.elapsed(), 450);
    EXPECT_LT(clock.elapsed(), 1500);
    EXPECT_GT(turns, 10);
    std::printf("stopped owner: %lld ms, %d turns of the loop\n", clock.elapsed(), turns);

    other->resume();
    EXPECT_TRUE(waitUntil([&] { return typesRead() == QStringList{QStringLiteral("UTF8_STRING")}; }));
}

TEST_F(X11PasteboardReadingTest, anOwnerThatAnswersSlowlyButSteadilyIsReadWhole)
{
    QStringList expected;
    QList<SeenType> offers;
    for (int number = 0; number < 5; ++number) {
        expected.append(QStringLiteral("application/x-%1").arg(number));
        offers.append({expected.last(), expected.last(), 8, QByteArrayLiteral("content")});
    }
    const auto other = owner(clipboard, offers, QStringLiteral("--slow"));
    EXPECT_EQ(typesRead(), expected);
}

TEST_F(X11PasteboardReadingTest, anOwnerThatDiesHalfwayLeavesAnEmptyClipboardAtOnce)
{
    const auto other =
        owner(clipboard,
              {text(QStringLiteral("t")),
               {QStringLiteral("image/png"), QStringLiteral("image/png"), 8, pattern(1'000'000)}},
              QStringLiteral("--die"));
    QElapsedTimer clock;
    clock.start();
    EXPECT_EQ(await(m_pasteboard.items()), Items(QList<PasteboardItem>()));
    EXPECT_LT(clock.elapsed(), 450);
    std::printf("owner died: %lld ms\n", clock.elapsed());
}

TEST_F(X11PasteboardReadingTest, aTransferThatStallsGivesNothing)
{
    const auto other =
        owner(clipboard, {{QStringLiteral("text/html"), QStringLiteral("text/html"), 8, pattern(1'000'000)}},
              QStringLiteral("--stall"));
    EXPECT_EQ(await(m_pasteboard.items()), std::nullopt);
}

TEST_F(X11PasteboardReadingTest, moreThanCanBeKeptGivesNothing)
{
    const auto other = owner(clipboard, {{QStringLiteral("text/html"), QStringLiteral("text/html"), 8,
                                          QByteArray(65 * 1024 * 1024, 'x')}});
    EXPECT_EQ(await(m_pasteboard.items()), std::nullopt);
    EXPECT_TRUE(hasOwner());
}

// What an owner announces is only a lower bound, so that it turns out in the middle that it is too much. The
// owner was then left waiting for its increment to be taken.
TEST_F(X11PasteboardReadingTest, anOwnerThatSendsMoreThanItAnnouncedIsLetGo)
{
    const auto other =
        owner(clipboard, {{QStringLiteral("text/html"), QStringLiteral("text/html"), 8, pattern(1'000'000)}},
              QStringLiteral("--understate"));
    X11PasteboardReader reader(m_connection, QByteArrayLiteral("CLIPBOARD"));
    const auto reading = reader.read({.bytes = 150'000});
    ASSERT_TRUE(waitUntil([&] { return reading.isFinished(); }));
    EXPECT_FALSE(reading.result());
    EXPECT_TRUE(other->says(QStringLiteral("read text/html")));
}

TEST_F(X11PasteboardReadingTest, severalTypesThatAreTooMuchTogetherGiveNothing)
{
    const QByteArray large(33 * 1024 * 1024, 'x');
    const auto other = owner(clipboard, {{QStringLiteral("text/html"), QStringLiteral("text/html"), 8, large},
                                         {QStringLiteral("text/rtf"), QStringLiteral("text/rtf"), 8, large}});
    EXPECT_EQ(await(m_pasteboard.items()), std::nullopt);
}

TEST_F(X11PasteboardReadingTest, oneLosslessPictureIsEnoughWhenAllAreTooMuch)
{
    const QByteArray large(24 * 1024 * 1024, 'x');
    const auto other =
        owner(clipboard, {{QStringLiteral("image/bmp"), QStringLiteral("image/bmp"), 8, large},
                          {QStringLiteral("image/png"), QStringLiteral("image/png"), 8, pattern(300'000)},
                          {QStringLiteral("image/tiff"), QStringLiteral("image/tiff"), 8, large},
                          {QStringLiteral("image/x-xbm"), QStringLiteral("image/x-xbm"), 8, large},
                          text(QStringLiteral("t"))});
    const QStringList types = typesRead();
    EXPECT_TRUE(types.contains(QStringLiteral("image/png"))) << qPrintable(types.join(u' '));
    EXPECT_TRUE(types.contains(QStringLiteral("UTF8_STRING")));
    EXPECT_LT(types.size(), 5);
}

TEST_F(X11PasteboardReadingTest, severalSmallPicturesAreAllKept)
{
    const auto other = owner(clipboard, {{QStringLiteral("image/bmp"), QStringLiteral("image/bmp"), 8, "b"},
                                         {QStringLiteral("image/png"), QStringLiteral("image/png"), 8, "p"}});
    EXPECT_EQ(typesRead(), (QStringList{QStringLiteral("image/bmp"), QStringLiteral("image/png")}));
}

TEST_F(X11PasteboardReadingTest, twoWhoAskAtOnceShareOneReading)
{
    const auto other = owner(clipboard, {text(QStringLiteral("t"))});
    auto first = m_pasteboard.items();
    auto second = m_pasteboard.items();
    EXPECT_EQ(await(std::move(first)), await(std::move(second)));
    EXPECT_EQ(other->lines().count(QStringLiteral("read UTF8_STRING")), 1);
}

TEST_F(X11PasteboardReadingTest, ownTextIsKnownWithoutAsking)
{
    ASSERT_TRUE(m_pasteboard.setString(QStringLiteral("ours")));
    const Items items = await(m_pasteboard.items());
    ASSERT_TRUE(items);
    EXPECT_EQ(items->first().types.first().second, "ours");
}

TEST_F(X11PasteboardReadingTest, aPasteboardThatGoesAwayAnswersNothing)
{
    const auto other = owner(clipboard, {text(QStringLiteral("t"))});
    other->suspend();
    auto pasteboard = std::make_unique<X11Pasteboard>(m_connection);
    auto items = pasteboard->items();
    pasteboard.reset();
    EXPECT_EQ(await(std::move(items)), std::nullopt);
}

} // namespace
