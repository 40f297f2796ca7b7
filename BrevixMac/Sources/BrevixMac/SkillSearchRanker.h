// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Models.h"

#include <QStringList>

/// Ranks skills against a search text, as PromptSearchRanker ranks prompts.
namespace SkillSearchRanker {

/// @p skills in library order; @p recentIDs newest first and without repetition (a repeated identifier stops
/// the program).
QList<SkillItem> rankedSkills(const QString &query, const QList<SkillItem> &skills,
                              const QStringList &recentIDs);

} // namespace SkillSearchRanker
