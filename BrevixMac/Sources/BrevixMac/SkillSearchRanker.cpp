// SPDX-License-Identifier: GPL-3.0-or-later
#include "SkillSearchRanker.h"

#include "SearchRanking.h"

namespace {

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
    const auto scoring = [](const SearchRanking::Search &search) {
        return [&search](const SkillItem &skill) {
            qint64 score = search.pointsOfTitle(skill.title);
            if (skill.sourceFilename && search.isIn(*skill.sourceFilename))
                score += filenameContainsPoints;
            if (search.isIn(skill.text))
                score += textContainsPoints;
            return score;
        };
    };
    return SearchRanking::ranked(query, candidates, recentIDs, scoring);
}

} // namespace SkillSearchRanker
