// SPDX-License-Identifier: GPL-3.0-or-later
#include "ClipboardTest.h"
#include "Desktop/X11/X11Pasteboard.h"
#include "Support/Waiting.h"

#include <QSignalSpy>

namespace {

using namespace std::chrono_literals;

const QString clipboard = QStringLiteral("CLIPBOARD");
const QString sample = QStringLiteral("Grüße, мир – 👍🏽\nsecond line\t");

class X11PasteboardOwningTest : public ClipboardTest
{
protected:
    X11Connection m_connection;
};

TEST_F(X11PasteboardOwningTest, textIsOfferedInEveryPlainTextType)
{
    X11Pasteboard pasteboard(m_connection);
    ASSERT_TRUE(pasteboard.setString(sample));
    EXPECT_EQ(offered(),
              (QStringList{QStringLiteral("UTF8_STRING"), QStringLiteral("text/plain;charset=utf-8"),
                           QStringLiteral("text/plain"), QStringLiteral("STRING"), QStringLiteral("TEXT")}));
    const struct
    {
        const char *target;
        const char *type;
        QByteArray bytes;
    } table[] = {
        {"UTF8_STRING", "UTF8_STRING", sample.toUtf8()},
        {"text/plain;charset=utf-8", "text/plain;charset=utf-8", sample.toUtf8()},
        {"text/plain", "text/plain", sample.toUtf8()},
        {"STRING", "STRING", sample.toLatin1()},
        {"TEXT", "UTF8_STRING", sample.toUtf8()},
    };
    for (const auto &row : table) {
        const SeenType expected{QString::fromLatin1(row.target), QString::fromLatin1(row.type), 8, row.bytes};
        EXPECT_EQ(seen(clipboard, expected.name), expected);
    }
    EXPECT_EQ(pasted(), sample);
    EXPECT_EQ(seen(clipboard, QStringLiteral("text/html")), std::nullopt);
}

TEST_F(X11PasteboardOwningTest, onlyTransientTextIsMarkedAsSecret)
{
    X11Pasteboard pasteboard(m_connection);
    const QString hint = QStringLiteral("x-kde-passwordManagerHint");
    ASSERT_TRUE(pasteboard.setString(sample));
    EXPECT_EQ(seen(clipboard, hint), std::nullopt);
    ASSERT_TRUE(pasteboard.setTransientString(sample, PasteConvention::standard));
    const auto mark = seen(clipboard, hint);
    ASSERT_TRUE(mark);
    EXPECT_EQ(mark->bytes, "secret");
}

TEST_F(X11PasteboardOwningTest, severalTypesAreServedInOneRequest)
{
    X11Pasteboard pasteboard(m_connection);
    ASSERT_TRUE(pasteboard.setString(QStringLiteral("four")));
    const QByteArray answer =
        outputOf(peerPath(), {QStringLiteral("multiple"), clipboard, QStringLiteral("UTF8_STRING"),
                              QStringLiteral("text/html"), QStringLiteral("STRING")});
    EXPECT_EQ(answer, "UTF8_STRING 4\ntext/html refused\nSTRING 4\n");
}

TEST_F(X11PasteboardOwningTest, theTimeOfOwnershipIsTold)
{
    X11Pasteboard pasteboard(m_connection);
    const auto before = m_observer.serverTime();
    ASSERT_TRUE(pasteboard.setString(sample));
    const auto answer = seen(clipboard, QStringLiteral("TIMESTAMP"));
    ASSERT_TRUE(answer);
    ASSERT_EQ(answer->bytes.size(), 4);
    xcb_timestamp_t time = 0;
    std::memcpy(&time, answer->bytes.constData(), sizeof time);
    EXPECT_EQ(answer->type, QStringLiteral("INTEGER"));
    EXPECT_GE(time, before);
    EXPECT_LE(time, m_observer.serverTime());
}

TEST_F(X11PasteboardOwningTest, largeTextGoesInIncrements)
{
    X11Pasteboard pasteboard(m_connection);
    const QString large = QString(2'500'001, u'ж');
    ASSERT_TRUE(pasteboard.setString(large));
    EXPECT_EQ(pasted(), large);
    EXPECT_EQ(seen(clipboard, QStringLiteral("UTF8_STRING"))->bytes, large.toUtf8());
}

TEST_F(X11PasteboardOwningTest, emptyTextIsText)
{
    X11Pasteboard pasteboard(m_connection);
    ASSERT_TRUE(pasteboard.setString(QString()));
    EXPECT_EQ(seen(clipboard, QStringLiteral("UTF8_STRING")), text(QString()));
}

TEST_F(X11PasteboardOwningTest, clearedMeansThatNobodyOwnsTheClipboard)
{
    const auto other = copy(QStringLiteral("theirs"));
    X11Pasteboard pasteboard(m_connection);
    pasteboard.clearContents();
    EXPECT_FALSE(hasOwner());
    ASSERT_TRUE(pasteboard.setString(sample));
    pasteboard.clearContents();
    EXPECT_FALSE(hasOwner());
    EXPECT_EQ(await(pasteboard.items()), std::optional(QList<PasteboardItem>()));
}

TEST_F(X11PasteboardOwningTest, aHungReaderIsDroppedAndOthersAreServedMeanwhile)
{
    X11PasteboardOwner owner(m_connection, "CLIPBOARD");
    ASSERT_TRUE(owner.own(contentOfText(m_connection, QString(3'000'000, u'x'))));
    const auto hung = peer({QStringLiteral("read"), clipboard, QStringLiteral("UTF8_STRING"),
                            m_folder.filePath(QStringLiteral("hung")), QStringLiteral("--hang")});
    ASSERT_TRUE(hung->says(QStringLiteral("hanging")));
    EXPECT_TRUE(owner.isTransferring());
    EXPECT_EQ(pasted().size(), 3'000'000);
    EXPECT_TRUE(waitUntil([&] { return !owner.isTransferring(); }, 15s));
    EXPECT_EQ(pasted().size(), 3'000'000);
}

TEST_F(X11PasteboardOwningTest, aReaderThatDiesIsForgottenAtOnce)
{
    X11PasteboardOwner owner(m_connection, "CLIPBOARD");
    ASSERT_TRUE(owner.own(contentOfText(m_connection, QString(3'000'000, u'x'))));
    const auto dying = peer({QStringLiteral("read"), clipboard, QStringLiteral("UTF8_STRING"),
                             m_folder.filePath(QStringLiteral("dying")), QStringLiteral("--hang")});
    ASSERT_TRUE(dying->says(QStringLiteral("hanging")));
    dying->kill();
    EXPECT_TRUE(waitUntil([&] { return !owner.isTransferring(); }, 3s));
    EXPECT_EQ(pasted().size(), 3'000'000);
}

// Whoever asks again for the same property used to get the rest of what it had given up.
TEST_F(X11PasteboardOwningTest, aReaderThatGivesUpAndAsksAgainGetsTheWholeFromItsBeginning)
{
    X11PasteboardOwner owner(m_connection, "CLIPBOARD");
    X11PasteboardContent content;
    const QByteArray bytes = pattern(1'500'000);
    const xcb_atom_t note = m_connection.atom("NOTE");
    content.entries.append({.target = note, .type = note, .format = 8, .bytes = bytes});
    ASSERT_TRUE(owner.own(content));
    const SeenType expected{QStringLiteral("NOTE"), QStringLiteral("NOTE"), 8, bytes};
    EXPECT_EQ(seen(clipboard, QStringLiteral("NOTE"), {QStringLiteral("--again")}), expected);
    EXPECT_FALSE(owner.isTransferring());
}

TEST_F(X11PasteboardOwningTest, aReadingThatIsBegunAnewLeavesItsWindowWatchedAsBefore)
{
    constexpr qsizetype size = 1'500'000;
    X11PasteboardOwner owner(m_connection, "CLIPBOARD");
    ASSERT_TRUE(owner.own(contentOfText(m_connection, QString(size, u'x'))));
    const QSignalSpy reads(&owner, &X11PasteboardOwner::dataRead);
    auto *xcb = m_observer.connection();
    const xcb_window_t window = xcb_generate_id(xcb);
    m_observer.createHiddenWindow(window);
    m_observer.sync();
    const quint32 watched = XCB_EVENT_MASK_FOCUS_CHANGE;
    xcb_change_window_attributes(m_connection.connection(), window, XCB_CW_EVENT_MASK, &watched);

    int answers = 0;
    const auto events = m_observer.addEventHandler(
        [&](const xcb_generic_event_t &event) { answers += eventKind(event) == XCB_SELECTION_NOTIFY; });
    const xcb_atom_t property = m_observer.atom("BEGUN_ANEW");
    for (int attempt = 1; attempt <= 2; ++attempt) {
        xcb_convert_selection(xcb, window, m_observer.atom("CLIPBOARD"), m_observer.atom("UTF8_STRING"),
                              property, XCB_CURRENT_TIME);
        m_observer.flush();
        ASSERT_TRUE(waitUntil([&] { return answers == attempt; }));
    }
    qsizetype received = 0;
    EXPECT_TRUE(waitUntil([&] {
        const auto cookie = xcb_get_property(xcb, true, window, property, XCB_ATOM_ANY, 0, 1 << 20);
        const XcbPointer<xcb_get_property_reply_t> part(xcb_get_property_reply(xcb, cookie, nullptr));
        if (part && part->type == m_observer.atom("UTF8_STRING"))
            received += xcb_get_property_value_length(part.get());
        return !owner.isTransferring();
    }));
    EXPECT_EQ(received, size);
    EXPECT_EQ(reads.count(), 1);

    const auto cookie = xcb_get_window_attributes(m_connection.connection(), window);
    const XcbPointer<xcb_get_window_attributes_reply_t> attributes(
        xcb_get_window_attributes_reply(m_connection.connection(), cookie, nullptr));
    ASSERT_TRUE(attributes);
    EXPECT_EQ(attributes->your_event_mask, watched);
}

TEST_F(X11PasteboardOwningTest, theFormatOfEveryTypeIsKept)
{
    X11PasteboardOwner owner(m_connection, "CLIPBOARD");
    X11PasteboardContent content;
    content.entries.append({.target = m_connection.atom("LIST"),
                            .type = m_connection.atom("INTEGER"),
                            .format = 32,
                            .bytes = pattern(400'000)});
    content.entries.append({.target = m_connection.atom("SHORTS"),
                            .type = m_connection.atom("X"),
                            .format = 16,
                            .bytes = pattern(6)});
    ASSERT_TRUE(owner.own(content));
    EXPECT_EQ(seen(clipboard, QStringLiteral("LIST")),
              (SeenType{QStringLiteral("LIST"), QStringLiteral("INTEGER"), 32, pattern(400'000)}));
    EXPECT_EQ(seen(clipboard, QStringLiteral("SHORTS")),
              (SeenType{QStringLiteral("SHORTS"), QStringLiteral("X"), 16, pattern(6)}));
}

} // namespace
