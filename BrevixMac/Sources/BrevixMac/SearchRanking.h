// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Foundation/Text.h"

#include <QCoroTask>
#include <QHash>
#include <QString>
#include <QStringList>

#include <algorithm>
#include <limits>
#include <stop_token>
#include <vector>

/// What the prompt and the skill ranker share.
namespace SearchRanking {

/// Keeps lower-cased copies of texts from one keystroke to the next: lower-casing a library of some megabytes
/// at each of them costs far more than searching it.
///
/// A text is known by the address of its shared characters. The cache holds a reference to them, so they can
/// neither be changed nor their address be used again while the entry lives. Texts that do not own their
/// characters, and all texts once the cache is full, are lower-cased anew each time; the answer is the same
/// either way. Not thread-safe.
class LowercaseCache
{
public:
    /// @p capacity in UTF-16 units of cached text.
    explicit LowercaseCache(qsizetype capacity)
        : m_capacity(capacity)
    {
    }

    QString lowercased(const QString &text);

    /// Takes @p lowercased for the lower-cased @p text, as if that had been asked for.
    void insert(const QString &text, const QString &lowercased);

    /// Forgets everything.
    void clear();

    /// To be called after each ranking: forgets texts that several rankings have not asked for, once they are
    /// most of what is held.
    void endRanking();

    qsizetype entryCount() const { return qsizetype(m_entries.size()); }

private:
    struct Entry
    {
        QString original;
        QString lowercased;
        quint64 lastRanking = 0;
    };

    Entry *find(const QString &text);
    void forgetUnused();

    std::vector<Entry> m_entries;
    QHash<const QChar *, std::size_t> m_positions; ///< by the address of the original's characters
    /// Rankings ask for the same texts in the same order, so the next one is likely to be at hand, which is
    /// half the cost of a search in many short texts.
    std::size_t m_likelyNext = 0;
    qsizetype m_capacity;
    qsizetype m_size = 0;
    qsizetype m_usedNow = 0;
    quint64 m_ranking = 1;
};

/// The cache of all rankings on this thread.
LowercaseCache &lowercaseCache();

/// Lower-cases @p texts on a worker, so that the next ranking on this thread finds it done, and forgets what
/// is kept of others. A ranking that comes first does it itself.
QCoro::Task<> prepare(QStringList texts, std::stop_token token);

/// What is looked for, and where.
class Search
{
public:
    explicit Search(const QString &normalizedQuery)
        : m_needle(normalizedQuery)
        , m_cache(lowercaseCache())
    {
    }

    bool isIn(const QString &text) const { return m_needle.isContainedIn(m_cache.lowercased(text)); }
    qint64 pointsOfTitle(const QString &title) const;

private:
    Text::Needle m_needle;
    LowercaseCache &m_cache;
};

/// Position of each identifier. A repeated one stops the program.
QHash<QString, qint64> recencyByID(const QStringList &recentIDs);

/// Trimmed and lower-cased.
QString normalizedQuery(const QString &query);

/// The order without a search text: recency, then the library's order, then title.
template <typename Item>
QList<Item> rankedByRecency(std::vector<const Item *> items, const QHash<QString, qint64> &recency)
{
    struct Entry
    {
        const Item *item;
        qint64 position;
    };
    std::vector<Entry> entries;
    entries.reserve(items.size());
    for (const Item *item : items)
        entries.push_back({item, recency.value(item->id, std::numeric_limits<qint64>::max())});

    std::stable_sort(entries.begin(), entries.end(), [](const Entry &left, const Entry &right) {
        if (left.position != right.position)
            return left.position < right.position;
        if (left.item->order != right.item->order)
            return left.item->order < right.item->order;
        return Text::compareTitles(left.item->title, right.item->title) < 0;
    });

    QList<Item> ranked;
    ranked.reserve(entries.size());
    for (const Entry &entry : entries)
        ranked.append(*entry.item);
    return ranked;
}

/// The order with a search text: match score less recency penalty, then title. @p matchScore gives the points
/// of an item; an item with none is dropped.
template <typename Item, typename MatchScore>
QList<Item> rankedByScore(const std::vector<const Item *> &items, const QHash<QString, qint64> &recency,
                          MatchScore matchScore)
{
    struct Entry
    {
        const Item *item;
        qint64 score;
    };
    // So much that no item that was not used lately gets ahead by recency alone.
    const qint64 penaltyOfTheRest = recency.size() + 10;
    std::vector<Entry> entries;
    for (const Item *item : items) {
        if (const qint64 score = matchScore(*item); score != 0)
            entries.push_back({item, score - recency.value(item->id, penaltyOfTheRest)});
    }

    std::stable_sort(entries.begin(), entries.end(), [](const Entry &left, const Entry &right) {
        if (left.score != right.score)
            return left.score > right.score;
        return Text::compareTitles(left.item->title, right.item->title) < 0;
    });

    QList<Item> ranked;
    ranked.reserve(static_cast<qsizetype>(entries.size()));
    for (const Entry &entry : entries)
        ranked.append(*entry.item);
    return ranked;
}

/// The order for @p query. @p scoring makes the function that gives an item's points out of a Search.
template <typename Item, typename Scoring>
QList<Item> ranked(const QString &query, const std::vector<const Item *> &items, const QStringList &recentIDs,
                   Scoring scoring)
{
    const QHash<QString, qint64> recency = recencyByID(recentIDs);
    const QString normalized = normalizedQuery(query);
    if (normalized.isEmpty())
        return rankedByRecency(items, recency);
    const Search search(normalized);
    QList<Item> ranked = rankedByScore(items, recency, scoring(search));
    lowercaseCache().endRanking();
    return ranked;
}

} // namespace SearchRanking
