// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Models.h"

#include <QStringList>

/// Ranks prompts against a search text: matches first, recency breaks near-ties. A pure function of its
/// arguments.
namespace PromptSearchRanker {

/// @p prompts in library order; @p recentIDs newest first and without repetition (a repeated identifier stops
/// the program: the caller made it). An empty or blank @p query keeps every prompt of the category.
QList<PromptItem> rankedPrompts(const QString &query, const QList<PromptItem> &prompts,
                                const CategoriesByID &categoriesByID, const QStringList &recentIDs,
                                const std::optional<QString> &selectedCategory);

} // namespace PromptSearchRanker
