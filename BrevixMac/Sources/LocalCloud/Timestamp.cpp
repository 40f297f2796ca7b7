// SPDX-License-Identifier: GPL-3.0-or-later
#include "Timestamp.h"

#include <QDateTime>
#include <QRegularExpression>

namespace Cloud {

Timestamp systemTime()
{
    return std::chrono::floor<std::chrono::microseconds>(std::chrono::system_clock::now());
}

std::optional<Timestamp> parseTimestamp(const QString &text)
{
    static const QRegularExpression form(QStringLiteral(
        "^(\\d{4}-\\d\\d-\\d\\dT\\d\\d:\\d\\d:\\d\\d)(?:\\.(\\d{1,9}))?(Z|[+-]\\d\\d:\\d\\d)$"));
    const auto match = form.match(text);
    const QDateTime whole = match.hasMatch()
                                ? QDateTime::fromString(match.captured(1) + match.captured(3), Qt::ISODate)
                                : QDateTime();
    if (!whole.isValid() || whole.toUTC().date().year() < 1 || whole.toUTC().date().year() > 9999)
        return std::nullopt;
    const qint64 micros = match.captured(2).left(6).leftJustified(6, u'0').toLongLong();
    return Timestamp(std::chrono::seconds(whole.toSecsSinceEpoch()) + std::chrono::microseconds(micros));
}

QByteArray formatTimestamp(Timestamp time)
{
    const auto seconds = std::chrono::floor<std::chrono::seconds>(time);
    const int micros = int((time - seconds).count());
    const QDateTime whole = QDateTime::fromSecsSinceEpoch(seconds.time_since_epoch().count(), Qt::UTC);
    QByteArray text = whole.toString(QStringLiteral("yyyy-MM-ddTHH:mm:ss")).toLatin1();
    if (micros % 1000 != 0)
        text += '.' + QByteArray::number(micros).rightJustified(6, '0');
    else if (micros != 0)
        text += '.' + QByteArray::number(micros / 1000).rightJustified(3, '0');
    return text + 'Z';
}

} // namespace Cloud
