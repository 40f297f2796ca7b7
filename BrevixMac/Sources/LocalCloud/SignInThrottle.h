// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Timestamp.h"

#include <QHash>
#include <QString>

namespace Cloud {

/// Slows down the guessing of passwords: after some wrong ones for an address, each further one doubles the
/// wait until the next is looked at, up to a bound that keeps a stranger from locking somebody out. In memory
/// only; belongs to one thread.
class SignInThrottle
{
public:
    static constexpr int freeTries = 5;
    static constexpr std::chrono::seconds longestWait{60};

    explicit SignInThrottle(Clock clock);

    /// How long the next try for @p email must wait; 0 when it need not.
    std::chrono::seconds waitFor(const QString &email) const;

    void failed(const QString &email);
    void succeeded(const QString &email);

private:
    struct Entry
    {
        int failures = 0;
        Timestamp last;
    };

    void forgetOld();

    Clock m_clock;
    QHash<QString, Entry> m_entries;
};

} // namespace Cloud
