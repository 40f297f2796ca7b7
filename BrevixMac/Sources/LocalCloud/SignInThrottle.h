// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Timestamp.h"

#include <QHash>
#include <QString>

namespace Cloud {

/// Slows down the guessing of passwords: after some wrong ones for an address, each further one doubles the
/// wait until the next is looked at, up to a bound. A stranger who keeps guessing thereby keeps the owner of
/// the address from signing in anew, for as long as he goes on and no longer; sessions that exist are not
/// touched. In memory only, and little of it; belongs to one thread.
class SignInThrottle
{
public:
    static constexpr int freeTries = 5;
    static constexpr std::chrono::seconds longestWait{60};
    static constexpr qsizetype maximumEntries = 10'000; ///< addresses; the one tried longest ago makes room

    explicit SignInThrottle(Clock clock);

    /// How long the next try for @p email must wait; 0 when it need not.
    std::chrono::seconds waitFor(const QString &email) const;

    /// A try for @p email has begun. It counts as a wrong one from now on, so that many at the same time are
    /// as slow as one after the other; succeeded() takes that back.
    void tried(const QString &email);
    void succeeded(const QString &email);

    qsizetype entries() const { return m_entries.size(); }

private:
    struct Entry
    {
        int failures = 0;
        Timestamp last;
    };

    void makeRoom();

    Clock m_clock;
    QHash<QString, Entry> m_entries;
};

} // namespace Cloud
