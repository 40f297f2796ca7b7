// SPDX-License-Identifier: GPL-3.0-or-later
#include "Iso8601.h"

#include <QRegularExpression>

#include <algorithm>

namespace {

enum class Fraction { required, absent };

int number(QStringView digits)
{
    return digits.toInt();
}

/// Fractions have 1 to 9 digits, milliseconds 3.
int milliseconds(QStringView fraction)
{
    return number(fraction.first(std::min<qsizetype>(fraction.size(), 3)).toString().leftJustified(3, u'0'));
}

/// Seconds east of UTC for "Z" or "±hh:mm"; nothing for an impossible offset.
std::optional<int> zoneOffset(QStringView designator)
{
    if (designator == u"Z")
        return 0;
    const int hours = number(designator.sliced(1, 2));
    const int minutes = number(designator.sliced(4, 2));
    if (hours > 23 || minutes > 59)
        return std::nullopt;
    const int seconds = (hours * 60 + minutes) * 60;
    return designator.startsWith(u'-') ? -seconds : seconds;
}

std::optional<QDateTime> parse(QStringView text, Fraction fraction)
{
    static const QRegularExpression shape(QRegularExpression::anchoredPattern(
        u"(\\d{4})-(\\d\\d)-(\\d\\d)T(\\d\\d):(\\d\\d):(\\d\\d)(?:\\.(\\d{1,9}))?(Z|[+-]\\d\\d:\\d\\d)"));
    const QRegularExpressionMatch match = shape.match(text);
    if (!match.hasMatch() || match.hasCaptured(7) != (fraction == Fraction::required))
        return std::nullopt;
    const auto field = [&match](int group) { return number(match.capturedView(group)); };
    const int thousandths = match.hasCaptured(7) ? milliseconds(match.capturedView(7)) : 0;
    const QDate date(field(1), field(2), field(3));
    const QTime time(field(4), field(5), field(6), thousandths);
    const auto offset = zoneOffset(match.capturedView(8));
    if (!date.isValid() || !time.isValid() || !offset)
        return std::nullopt;
    return QDateTime(date, time, Qt::UTC).addSecs(-*offset);
}

} // namespace

QString Iso8601::format(const QDateTime &dateTime)
{
    return dateTime.toUTC().toString(Qt::ISODateWithMs);
}

std::optional<QDateTime> Iso8601::parseWithFraction(QStringView text)
{
    return parse(text, Fraction::required);
}

std::optional<QDateTime> Iso8601::parseWithoutFraction(QStringView text)
{
    return parse(text, Fraction::absent);
}
