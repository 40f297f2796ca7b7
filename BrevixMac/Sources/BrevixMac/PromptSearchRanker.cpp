// SPDX-License-Identifier: GPL-3.0-or-later
#include "PromptSearchRanker.h"

#include "SearchRanking.h"

#include <QSet>

namespace {

constexpr qint64 titleBeginsPoints = 100;
constexpr qint64 titleContainsPoints = 50;
constexpr qint64 textContainsPoints = 20;
constexpr qint64 categoryContainsPoints = 10;

std::vector<const PromptItem *> promptsOfCategory(const QList<PromptItem> &prompts,
                                                  const std::optional<QString> &categoryID)
{
    std::vector<const PromptItem *> kept;
    kept.reserve(prompts.size());
    for (const PromptItem &prompt : prompts) {
        if (!categoryID || prompt.categoryID == *categoryID)
            kept.push_back(&prompt);
    }
    return kept;
}

/// Identifiers of the categories whose name contains the query, worked out once for all prompts.
QSet<QString> matchingCategories(const CategoriesByID &categoriesByID, const Text::Needle &query)
{
    QSet<QString> matching;
    for (auto it = categoriesByID.cbegin(); it != categoriesByID.cend(); ++it) {
        if (query.isContainedIn(Text::lowercased(it->name)))
            matching.insert(it.key());
    }
    return matching;
}

} // namespace

namespace PromptSearchRanker {

QList<PromptItem> rankedPrompts(const QString &query, const QList<PromptItem> &prompts,
                                const CategoriesByID &categoriesByID, const QStringList &recentIDs,
                                const std::optional<QString> &selectedCategory)
{
    const std::vector<const PromptItem *> candidates = promptsOfCategory(prompts, selectedCategory);
    const QHash<QString, qint64> recency = SearchRanking::recencyByID(recentIDs);
    const QString normalized = SearchRanking::normalizedQuery(query);
    if (normalized.isEmpty())
        return SearchRanking::rankedByRecency(candidates, recency);

    thread_local SearchRanking::LowercaseCache cache(SearchRanking::cacheCapacity);
    const Text::Needle needle(normalized);
    const QSet<QString> categories = matchingCategories(categoriesByID, needle);
    const auto matchScore = [&](const PromptItem &prompt) {
        const QString title = cache.lowercased(prompt.title);
        const bool inTitle = needle.isContainedIn(title);
        qint64 score = 0;
        if (inTitle && needle.isPrefixOf(title))
            score += titleBeginsPoints;
        if (inTitle)
            score += titleContainsPoints;
        if (needle.isContainedIn(cache.lowercased(prompt.text)))
            score += textContainsPoints;
        if (categories.contains(prompt.categoryID))
            score += categoryContainsPoints;
        return score;
    };
    const QList<PromptItem> ranked = SearchRanking::rankedByScore(candidates, recency, matchScore);
    cache.endRanking();
    return ranked;
}

} // namespace PromptSearchRanker
