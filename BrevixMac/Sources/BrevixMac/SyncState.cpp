// SPDX-License-Identifier: GPL-3.0-or-later
#include "SyncState.h"

#include <QLocale>

namespace {

QString shortTime(const QTime &time)
{
    const QLocale locale;
    // The C locale, unlike those of people, has seconds in its short form.
    const QString format = locale.timeFormat(QLocale::ShortFormat).remove(QStringLiteral(":ss"));
    return locale.toString(time, format);
}

} // namespace

QString SyncState::title() const
{
    switch (kind) {
    case Kind::idle:
        return QStringLiteral("Idle");
    case Kind::loading:
        return QStringLiteral("Syncing...");
    case Kind::synced:
        return u"Updated " + shortTime(date.toLocalTime().time());
    case Kind::error:
        return message;
    }
    Q_UNREACHABLE();
}
