// SPDX-License-Identifier: GPL-3.0-or-later
#include "SearchRanking.h"

#include "ProgrammingError.h"

namespace {

// Rankings alternate between lists (the picker's and the library screen's), so a text may skip some of them.
constexpr quint64 rankingsUnused = 16;
constexpr qsizetype alwaysKept = 256;

bool ownsItsCharacters(const QString &text)
{
    return const_cast<QString &>(text).data_ptr().d_ptr() != nullptr;
}

} // namespace

namespace SearchRanking {

QString LowercaseCache::lowercased(const QString &text)
{
    if (!ownsItsCharacters(text))
        return Text::lowercased(text);

    const auto known = m_entries.find(text.constData());
    if (known != m_entries.end() && known->original.size() == text.size()) {
        m_usedNow += known->lastRanking != m_ranking;
        known->lastRanking = m_ranking;
        return known->lowercased;
    }

    QString lowercased = Text::lowercased(text);
    if (known == m_entries.end() && m_size + text.size() <= m_capacity) {
        if (lowercased == text)
            lowercased = text; // shares the characters
        m_entries.insert(text.constData(), {text, lowercased, m_ranking});
        m_size += text.size();
        ++m_usedNow;
    }
    return lowercased;
}

void LowercaseCache::endRanking()
{
    if (m_entries.size() > 2 * m_usedNow + alwaysKept) {
        m_entries.removeIf([this](const auto &entry) {
            const bool unused = entry.value().lastRanking + rankingsUnused < m_ranking;
            m_size -= unused ? entry.value().original.size() : 0;
            return unused;
        });
    }
    m_usedNow = 0;
    ++m_ranking;
}

QHash<QString, qint64> recencyByID(const QStringList &recentIDs)
{
    QHash<QString, qint64> recency;
    recency.reserve(recentIDs.size());
    for (const QString &id : recentIDs) {
        if (recency.contains(id))
            stopOnProgrammingError(u"duplicate identifier among the recent ones: " + id);
        recency.insert(id, recency.size());
    }
    return recency;
}

QString normalizedQuery(const QString &query)
{
    return Text::lowercased(Text::trimmed(query));
}

} // namespace SearchRanking
