// SPDX-License-Identifier: GPL-3.0-or-later
#include "PromptSearchRanker.h"

#include "SearchRanking.h"

#include <QSet>

namespace {

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
QSet<QString> matchingCategories(const CategoriesByID &categoriesByID, const SearchRanking::Search &search)
{
    QSet<QString> matching;
    for (auto it = categoriesByID.cbegin(); it != categoriesByID.cend(); ++it) {
        if (search.isIn(it->name))
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
    const auto scoring = [&categoriesByID](const SearchRanking::Search &search) {
        const QSet<QString> categories = matchingCategories(categoriesByID, search);
        return [&search, categories](const PromptItem &prompt) {
            qint64 score = search.pointsOfTitle(prompt.title);
            if (search.isIn(prompt.text))
                score += textContainsPoints;
            if (categories.contains(prompt.categoryID))
                score += categoryContainsPoints;
            return score;
        };
    };
    return SearchRanking::ranked(query, candidates, recentIDs, scoring);
}

} // namespace PromptSearchRanker
