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

    const auto known = m_entries.find(text.constData());
    if (known != m_entries.end() && known->original.size() == text.size()) {
        m_usedNow += known->lastRanking != m_ranking;
        known->lastRanking = m_ranking;
        return known->lowercased;
    }

    const QString lowercased = Text::lowercased(text);
    insert(text, lowercased);
    return lowercased;
}

void LowercaseCache::insert(const QString &text, const QString &lowercased)
{
    const bool fits = m_size + text.size() <= m_capacity;
    if (!ownsItsCharacters(text) || !fits || m_entries.contains(text.constData()))
        return;
    // What is lower-case already shares its characters.
    m_entries.insert(text.constData(), {text, lowercased == text ? text : lowercased, m_ranking});
    m_size += text.size();
    ++m_usedNow;
}

void LowercaseCache::clear()
{
    m_entries.clear();
    m_size = 0;
    m_usedNow = 0;
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
