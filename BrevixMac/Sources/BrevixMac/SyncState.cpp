// SPDX-License-Identifier: GPL-3.0-or-later
#include "SyncState.h"

#include <QLocale>

QString SyncState::title() const
{
    switch (kind) {
    case Kind::idle:
        return QStringLiteral("Idle");
    case Kind::loading:
        return QStringLiteral("Syncing...");
    case Kind::synced:
        return u"Updated " + QLocale().toString(date.toLocalTime().time(), QLocale::ShortFormat);
    case Kind::error:
        return message;
    }
    Q_UNREACHABLE();
}
