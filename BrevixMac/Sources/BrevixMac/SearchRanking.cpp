// SPDX-License-Identifier: GPL-3.0-or-later
#include "SearchRanking.h"

#include "ProgrammingError.h"

#include "Foundation/TaskScope.h"
#include "Foundation/Worker.h"

namespace {

// Rankings alternate between lists (the picker's and the library screen's), so a text may skip some of them.
constexpr quint64 rankingsUnused = 16;
constexpr qsizetype alwaysKept = 256;

/// 64 MiB of lower-cased text and as much of the library's own.
constexpr qsizetype cacheCapacity = qsizetype(32) * 1024 * 1024;

constexpr qint64 titleBeginsPoints = 100;
constexpr qint64 titleContainsPoints = 50;

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

    if (Entry *known = find(text)) {
        m_usedNow += known->lastRanking != m_ranking;
        known->lastRanking = m_ranking;
        return known->lowercased;
    }

    QString lowercased = Text::lowercased(text);
    insert(text, lowercased);
    return lowercased;
}

LowercaseCache::Entry *LowercaseCache::find(const QString &text)
{
    const auto isOf = [&text](const Entry &entry) {
        return entry.original.constData() == text.constData() && entry.original.size() == text.size();
    };
    if (m_likelyNext >= m_entries.size() || !isOf(m_entries[m_likelyNext])) {
        const auto known = m_positions.constFind(text.constData());
        if (known == m_positions.cend() || !isOf(m_entries[*known]))
            return nullptr;
        m_likelyNext = *known;
    }
    return &m_entries[m_likelyNext++];
}

void LowercaseCache::insert(const QString &text, const QString &lowercased)
{
    const bool fits = m_size + text.size() <= m_capacity;
    if (!ownsItsCharacters(text) || !fits || m_positions.contains(text.constData()))
        return;
    // What is lower-case already shares its characters.
    m_positions.insert(text.constData(), m_entries.size());
    m_entries.push_back({text, lowercased == text ? text : lowercased, m_ranking});
    m_size += text.size();
    ++m_usedNow;
}

void LowercaseCache::clear()
{
    m_entries.clear();
    m_positions.clear();
    m_size = 0;
    m_usedNow = 0;
}

void LowercaseCache::endRanking()
{
    if (entryCount() > 2 * m_usedNow + alwaysKept)
        forgetUnused();
    m_usedNow = 0;
    ++m_ranking;
}

void LowercaseCache::forgetUnused()
{
    const auto removed = std::erase_if(m_entries, [this](const Entry &entry) {
        const bool isUnused = entry.lastRanking + rankingsUnused < m_ranking;
        m_size -= isUnused ? entry.original.size() : 0;
        return isUnused;
    });
    if (removed == 0)
        return;
    m_positions.clear();
    for (std::size_t position = 0; position < m_entries.size(); ++position)
        m_positions.insert(m_entries[position].original.constData(), position);
}

LowercaseCache &lowercaseCache()
{
    thread_local LowercaseCache cache(cacheCapacity);
    return cache;
}

QCoro::Task<> prepare(QStringList texts, std::stop_token token)
{
    // Lists that change together are prepared once, by the last to ask.
    co_await sleepFor(std::chrono::milliseconds::zero(), token);
    if (token.stop_requested())
        co_return;
    const auto lowercaseAll = [texts] {
        QStringList lowercased;
        lowercased.reserve(texts.size());
        for (const QString &text : texts)
            lowercased.append(Text::lowercased(text));
        return lowercased;
    };
    const QStringList lowercased = co_await onWorker(lowercaseAll);
    if (token.stop_requested())
        co_return;
    // A library that changes while nobody searches must not pile up here.
    lowercaseCache().clear();
    for (qsizetype index = 0; index < texts.size(); ++index)
        lowercaseCache().insert(texts[index], lowercased[index]);
}

qint64 Search::pointsOfTitle(const QString &title) const
{
    const QString lowercased = m_cache.lowercased(title);
    if (!m_needle.isContainedIn(lowercased))
        return 0;
    return titleContainsPoints + (m_needle.isPrefixOf(lowercased) ? titleBeginsPoints : 0);
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
