// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QDateTime>
#include <QString>

/// How the shown library stands to the server's. A value.
struct SyncState
{
    enum class Kind { idle, loading, synced, error };

    Kind kind = Kind::idle;
    QDateTime date;  ///< of the last successful refresh; kind synced only
    QString message; ///< kind error only

    static SyncState idle() { return {}; }
    static SyncState loading() { return {.kind = Kind::loading, .date = {}, .message = {}}; }
    static SyncState synced(const QDateTime &date)
    {
        return {.kind = Kind::synced, .date = date, .message = {}};
    }
    static SyncState error(const QString &message)
    {
        return {.kind = Kind::error, .date = {}, .message = message};
    }

    /// The status line's text, times in the user's locale.
    QString title() const;

    bool operator==(const SyncState &) const = default;
};
