// SPDX-License-Identifier: GPL-3.0-or-later
#include "SignInThrottle.h"

#include <algorithm>
#include <utility>

namespace Cloud {

namespace {

constexpr std::chrono::minutes memory{15};

QString keyOf(const QString &email)
{
    return email.toLower();
}

} // namespace

SignInThrottle::SignInThrottle(Clock clock)
    : m_clock(std::move(clock))
{
}

std::chrono::seconds SignInThrottle::waitFor(const QString &email) const
{
    const Entry entry = m_entries.value(keyOf(email));
    if (entry.failures < freeTries)
        return std::chrono::seconds(0);
    const auto wait =
        std::min(std::chrono::seconds(1 << std::min(entry.failures - freeTries, 10)), longestWait);
    const Timestamp now = m_clock();
    return entry.last + wait > now ? std::chrono::ceil<std::chrono::seconds>(entry.last + wait - now)
                                   : std::chrono::seconds(0);
}

void SignInThrottle::tried(const QString &email)
{
    const QString key = keyOf(email);
    if (!m_entries.contains(key))
        makeRoom();
    Entry &entry = m_entries[key];
    ++entry.failures;
    entry.last = m_clock();
}

void SignInThrottle::succeeded(const QString &email)
{
    m_entries.remove(keyOf(email));
}

void SignInThrottle::makeRoom()
{
    const Timestamp limit = m_clock() - memory;
    m_entries.removeIf([limit](const auto &entry) { return entry.value().last < limit; });
    if (m_entries.size() >= maximumEntries)
        m_entries.erase(
            std::min_element(m_entries.cbegin(), m_entries.cend(),
                             [](const Entry &left, const Entry &right) { return left.last < right.last; }));
}

} // namespace Cloud
