// SPDX-License-Identifier: GPL-3.0-or-later
// Clipboards at the limit of what is kept, and beyond it.
#include "ClipboardTest.h"
#include "Desktop/X11/X11Pasteboard.h"
#include "Support/Waiting.h"

#include <QElapsedTimer>
#include <QSignalSpy>

namespace {

using namespace std::chrono_literals;

const QString clipboard = QStringLiteral("CLIPBOARD");
const QString prompt = QStringLiteral("the prompt's text");
constexpr qsizetype limit = qsizetype(64) * 1024 * 1024;

class X11PasteboardLargeTest : public ClipboardTest
{
protected:
    X11Connection m_connection;
    X11Pasteboard m_pasteboard{m_connection};

    static SeenType picture(qsizetype size)
    {
        return {QStringLiteral("image/png"), QStringLiteral("image/png"), 8, pattern(size)};
    }
};

TEST_F(X11PasteboardLargeTest, aPictureOfSixtyFourMebibytesIsTheSameAfterAPaste)
{
    const SeenType original = picture(limit);
    const auto other = owner(clipboard, {original});
    QSignalSpy restored(&m_pasteboard, &Pasteboard::restored);
    QElapsedTimer clock;
    clock.start();
    const auto items = await(m_pasteboard.items());
    const qint64 readTime = clock.restart();
    ASSERT_TRUE(items) << "not read within the limits of time";
    ASSERT_TRUE(m_pasteboard.setTransientString(prompt, PasteConvention::standard));
    EXPECT_TRUE(other->says(QStringLiteral("lost")));
    EXPECT_EQ(pasted(), prompt);
    ASSERT_TRUE(m_pasteboard.restore(*items));
    ASSERT_TRUE(waitUntil([&] { return !restored.isEmpty(); }));

    clock.restart();
    const auto again = seen(clipboard, original.name);
    std::printf("64 MiB: saved in %lld ms, served again in %lld ms\n", readTime, clock.elapsed());
    ASSERT_TRUE(again);
    EXPECT_EQ(again->type, original.type);
    EXPECT_TRUE(again->bytes == original.bytes) << again->bytes.size();
}

TEST_F(X11PasteboardLargeTest, aPictureBeyondTheLimitIsRefusedAndStaysWithItsOwner)
{
    const SeenType original = picture(limit + 1);
    const auto other = owner(clipboard, {original});
    const xcb_window_t before = ownerWindow("CLIPBOARD");

    EXPECT_EQ(await(m_pasteboard.items()), std::nullopt);

    EXPECT_EQ(ownerWindow("CLIPBOARD"), before);
    const auto again = seen(clipboard, original.name);
    ASSERT_TRUE(again);
    EXPECT_TRUE(again->bytes == original.bytes) << again->bytes.size();
}

} // namespace
