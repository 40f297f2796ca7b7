// SPDX-License-Identifier: GPL-3.0-or-later
#include "Timestamp.h"

#include <QDateTime>

namespace Cloud {

Timestamp systemTime()
{
    return std::chrono::floor<std::chrono::microseconds>(std::chrono::system_clock::now());
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
