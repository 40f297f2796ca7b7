// SPDX-License-Identifier: GPL-3.0-or-later
#include "SkillSearchRanker.h"

#include "SearchRanking.h"

namespace {

constexpr qint64 titleBeginsPoints = 100;
constexpr qint64 titleContainsPoints = 50;
constexpr qint64 filenameContainsPoints = 30;
constexpr qint64 textContainsPoints = 20;

} // namespace

namespace SkillSearchRanker {

QList<SkillItem> rankedSkills(const QString &query, const QList<SkillItem> &skills,
                              const QStringList &recentIDs)
{
    std::vector<const SkillItem *> candidates;
    candidates.reserve(skills.size());
    for (const SkillItem &skill : skills)
        candidates.push_back(&skill);
    const QHash<QString, qint64> recency = SearchRanking::recencyByID(recentIDs);
    const QString normalized = SearchRanking::normalizedQuery(query);
    if (normalized.isEmpty())
        return SearchRanking::rankedByRecency(candidates, recency);

    thread_local SearchRanking::LowercaseCache cache(SearchRanking::cacheCapacity);
    const Text::Needle needle(normalized);
    const auto matchScore = [&](const SkillItem &skill) {
        const QString title = cache.lowercased(skill.title);
        const bool inTitle = needle.isContainedIn(title);
        qint64 score = 0;
        if (inTitle && needle.isPrefixOf(title))
            score += titleBeginsPoints;
        if (inTitle)
            score += titleContainsPoints;
        if (skill.sourceFilename && needle.isContainedIn(cache.lowercased(*skill.sourceFilename)))
            score += filenameContainsPoints;
        if (needle.isContainedIn(cache.lowercased(skill.text)))
            score += textContainsPoints;
        return score;
    };
    const QList<SkillItem> ranked = SearchRanking::rankedByScore(candidates, recency, matchScore);
    cache.endRanking();
    return ranked;
}

} // namespace SkillSearchRanker
