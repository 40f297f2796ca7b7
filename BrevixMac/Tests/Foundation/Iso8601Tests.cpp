// SPDX-License-Identifier: GPL-3.0-or-later
#include "Foundation/Iso8601.h"

#include <gtest/gtest.h>

namespace {

QDateTime utc(int year, int month, int day, int hour, int minute, int second, int millisecond = 0)
{
    return QDateTime(QDate(year, month, day), QTime(hour, minute, second, millisecond), Qt::UTC);
}

struct Row
{
    QString text;
    std::optional<QDateTime> expected;
};

} // namespace

TEST(Iso8601, formatsInUtcWithMilliseconds)
{
    const QDateTime inTokyo =
        QDateTime(QDate(2024, 5, 1), QTime(18, 30, 12, 345), Qt::OffsetFromUTC, 9 * 3600);
    EXPECT_EQ(Iso8601::format(utc(2024, 5, 1, 9, 30, 12, 345)), QStringLiteral("2024-05-01T09:30:12.345Z"));
    EXPECT_EQ(Iso8601::format(inTokyo), QStringLiteral("2024-05-01T09:30:12.345Z"));
    EXPECT_EQ(Iso8601::format(utc(1970, 1, 1, 0, 0, 0)), QStringLiteral("1970-01-01T00:00:00.000Z"));
    EXPECT_EQ(Iso8601::format(utc(999, 12, 31, 23, 59, 59, 7)), QStringLiteral("0999-12-31T23:59:59.007Z"));
}

TEST(Iso8601, parsesDatesWithAFraction)
{
    const QList<Row> rows{
        {QStringLiteral("2024-05-01T09:30:12.345Z"), utc(2024, 5, 1, 9, 30, 12, 345)},
        {QStringLiteral("2024-05-01T09:30:12.3Z"), utc(2024, 5, 1, 9, 30, 12, 300)},
        {QStringLiteral("2024-05-01T09:30:12.05Z"), utc(2024, 5, 1, 9, 30, 12, 50)},
        {QStringLiteral("2024-05-01T09:30:12.345999Z"), utc(2024, 5, 1, 9, 30, 12, 345)},
        {QStringLiteral("2024-05-01T09:30:12.123456789Z"), utc(2024, 5, 1, 9, 30, 12, 123)},
        {QStringLiteral("2024-05-01T09:30:12.000Z"), utc(2024, 5, 1, 9, 30, 12)},
        {QStringLiteral("2024-05-01T00:30:12.5+02:00"), utc(2024, 4, 30, 22, 30, 12, 500)},
        {QStringLiteral("2024-12-31T23:30:12.5-01:30"), utc(2025, 1, 1, 1, 0, 12, 500)},
        {QStringLiteral("2024-02-29T12:00:00.1Z"), utc(2024, 2, 29, 12, 0, 0, 100)},
    };
    for (const Row &row : rows) {
        EXPECT_EQ(Iso8601::parseWithFraction(row.text), row.expected) << qPrintable(row.text);
        EXPECT_FALSE(Iso8601::parseWithoutFraction(row.text)) << qPrintable(row.text);
    }
}

TEST(Iso8601, parsesDatesWithoutAFraction)
{
    const QList<Row> rows{
        {QStringLiteral("2024-05-01T09:30:12Z"), utc(2024, 5, 1, 9, 30, 12)},
        {QStringLiteral("2024-05-01T09:30:12+00:00"), utc(2024, 5, 1, 9, 30, 12)},
        {QStringLiteral("2024-05-01T09:30:12-00:00"), utc(2024, 5, 1, 9, 30, 12)},
        {QStringLiteral("2024-05-01T09:30:12+05:45"), utc(2024, 5, 1, 3, 45, 12)},
        {QStringLiteral("0001-01-01T00:00:00Z"), utc(1, 1, 1, 0, 0, 0)},
        {QStringLiteral("9999-12-31T23:59:59Z"), utc(9999, 12, 31, 23, 59, 59)},
    };
    for (const Row &row : rows) {
        EXPECT_EQ(Iso8601::parseWithoutFraction(row.text), row.expected) << qPrintable(row.text);
        EXPECT_FALSE(Iso8601::parseWithFraction(row.text)) << qPrintable(row.text);
    }
}

TEST(Iso8601, resultsAreInUtc)
{
    EXPECT_EQ(Iso8601::parseWithoutFraction(u"2024-05-01T09:30:12+05:45")->timeSpec(), Qt::UTC);
}

TEST(Iso8601, takesNothingElse)
{
    for (const char16_t *text :
         {u"", u"Z", u"today", u"2024-05-01", u"09:30:12Z", u"2024-05-01T09:30:12", u"2024-05-01T09:30:12.5",
          u"2024-05-01T09:30Z", u"2024-05-01 09:30:12Z", u"2024-05-01t09:30:12z", u"2024-5-1T9:30:12Z",
          u"20240501T093012Z", u"2024-05-01T09:30:12.Z", u"2024-05-01T09:30:12,5Z",
          u"2024-05-01T09:30:12.1234567890Z", u"2024-05-01T09:30:12+0200", u"2024-05-01T09:30:12+02",
          u"2024-05-01T09:30:12 Z", u" 2024-05-01T09:30:12Z", u"2024-05-01T09:30:12Z ",
          u"2024-05-01T09:30:12Z\n", u"2024-05-01T09:30:12ZZ", u"+2024-05-01T09:30:12Z",
          u"12024-05-01T09:30:12Z", u"-024-05-01T09:30:12Z", u"٢٠٢٤-05-01T09:30:12Z",
          // impossible dates, times and zones
          u"2024-00-01T09:30:12Z", u"2024-13-01T09:30:12Z", u"2024-05-00T09:30:12Z", u"2024-05-32T09:30:12Z",
          u"2023-02-29T09:30:12Z", u"1900-02-29T09:30:12Z", u"2024-04-31T09:30:12Z", u"2024-05-01T24:00:00Z",
          u"2024-05-01T09:60:12Z", u"2024-05-01T09:30:60Z", u"0000-01-01T00:00:00Z",
          u"2024-05-01T09:30:12+24:00", u"2024-05-01T09:30:12+02:60", u"2023-02-29T09:30:12.5Z"}) {
        const QString shown = QString::fromUtf16(text);
        EXPECT_FALSE(Iso8601::parseWithFraction(text)) << qPrintable(shown);
        EXPECT_FALSE(Iso8601::parseWithoutFraction(text)) << qPrintable(shown);
    }
}

TEST(Iso8601, readsBackWhatItWrites)
{
    for (qint64 moment = -62135596800000; moment < 253402300800000; moment += 86399999 * 365LL) {
        const QDateTime dateTime = QDateTime::fromMSecsSinceEpoch(moment, Qt::UTC);
        EXPECT_EQ(Iso8601::parseWithFraction(Iso8601::format(dateTime)), dateTime) << moment;
    }
}
