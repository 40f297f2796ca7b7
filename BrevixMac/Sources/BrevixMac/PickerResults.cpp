// SPDX-License-Identifier: GPL-3.0-or-later
#include "PickerResults.h"

#include "ProgrammingError.h"
#include "PromptSearchRanker.h"
#include "SkillSearchRanker.h"

#include "Foundation/Text.h"

#include <algorithm>

namespace {

constexpr qsizetype recentRows = 8;
constexpr qsizetype rankedRows = 6;

struct DatedResult
{
    PickerResult result;
    QDateTime lastUsedAt;
};

template <typename Item>
QHash<QString, const Item *> indexByID(const QList<Item> &items)
{
    QHash<QString, const Item *> index;
    index.reserve(items.size());
    for (const Item &item : items) {
        if (index.contains(item.id))
            stopOnProgrammingError(u"duplicate identifier in the library: " + item.id);
        index.insert(item.id, &item);
    }
    return index;
}

template <typename Item, typename Record>
void appendLiveItems(QList<DatedResult> &results, const QList<Item> &items, const QList<Record> &records)
{
    const QHash<QString, const Item *> index = indexByID(items);
    for (const Record &record : records) {
        if (const Item *item = index.value(record.id))
            results.append({.result = {.item = *item}, .lastUsedAt = record.lastUsedAt});
    }
}

template <typename Item>
void appendAll(QList<PickerResult> &results, const QList<Item> &items)
{
    for (const Item &item : items)
        results.append({.item = item});
}

template <typename Item>
QList<PickerResult> firstRows(const QList<Item> &items)
{
    QList<PickerResult> rows;
    appendAll(rows, items.mid(0, rankedRows));
    return rows;
}

QList<PromptItem> promptsOfCategory(const QList<PromptItem> &prompts, const QString &categoryID)
{
    QList<PromptItem> result;
    std::copy_if(prompts.begin(), prompts.end(), std::back_inserter(result),
                 [&](const PromptItem &prompt) { return prompt.categoryID == categoryID; });
    return result;
}

PickerTargetStatus unavailable(const QString &title, const QString &detail, const QString &icon,
                               PickerTargetStatus::Tint tint)
{
    return {.ready = false, .appName = {}, .title = title, .detail = detail, .icon = icon, .tint = tint};
}

} // namespace

QString PickerResult::id() const
{
    if (const PromptItem *item = prompt())
        return u"prompt:" + item->id;
    return u"skill:" + skill()->id;
}

QString PickerResult::title() const
{
    return std::visit([](const auto &either) { return either.title; }, item);
}

QString PickerResult::text() const
{
    return std::visit([](const auto &either) { return either.text; }, item);
}

namespace PickerResults {

QList<PickerResult> recentPickerResults(const QList<PromptItem> &prompts, const QList<SkillItem> &skills,
                                        const QList<RecentPromptRecord> &recents,
                                        const QList<RecentSkillRecord> &recentSkills)
{
    QList<DatedResult> dated;
    appendLiveItems(dated, prompts, recents);
    appendLiveItems(dated, skills, recentSkills);
    std::stable_sort(dated.begin(), dated.end(), [](const DatedResult &left, const DatedResult &right) {
        return left.lastUsedAt > right.lastUsedAt;
    });

    QList<PickerResult> results;
    results.reserve(dated.size());
    for (const DatedResult &entry : std::as_const(dated))
        results.append(entry.result);
    return results;
}

QList<PickerResultSection> resultSections(const QString &query, const QList<PickerResult> &recent,
                                          const QList<PromptItem> &visiblePrompts,
                                          const QList<SkillItem> &visibleSkills, const SyncState &syncState)
{
    if (Text::trimmed(query).isEmpty() && !recent.isEmpty()) {
        return {{.id = QStringLiteral("recent"),
                 .title = QStringLiteral("Recent"),
                 .subtitle = syncState.title(),
                 .results = recent.mid(0, recentRows)}};
    }

    QList<PickerResultSection> sections;
    if (!visiblePrompts.isEmpty()) {
        sections.append({.id = QStringLiteral("prompts"),
                         .title = QStringLiteral("Prompts"),
                         .subtitle = syncState.title(),
                         .results = firstRows(visiblePrompts)});
    }
    if (!visibleSkills.isEmpty()) {
        sections.append({.id = QStringLiteral("skills"),
                         .title = QStringLiteral("Skills"),
                         .subtitle = QStringLiteral("Reusable instructions"),
                         .results = firstRows(visibleSkills)});
    }
    return sections;
}

bool hasResults(const QList<PickerResultSection> &sections)
{
    return std::any_of(sections.begin(), sections.end(),
                       [](const PickerResultSection &section) { return !section.results.isEmpty(); });
}

QList<PickerResult> libraryResults(const QString &query, const LibraryFilter &filter,
                                   const QList<PromptItem> &prompts, const QList<SkillItem> &skills,
                                   const CategoriesByID &categoriesByID, const QStringList &recentIDs,
                                   const QStringList &recentSkillIDs)
{
    using Kind = LibraryFilter::Kind;
    QList<PickerResult> results;

    // A query of blanks is not empty here on purpose: it shows the recency order instead of the library's.
    if (filter.kind != Kind::skills) {
        const bool oneCategory = filter.kind == Kind::category;
        const QList<PromptItem> shown = oneCategory ? promptsOfCategory(prompts, filter.categoryID) : prompts;
        appendAll(results, query.isEmpty() ? shown
                                           : PromptSearchRanker::rankedPrompts(query, shown, categoriesByID,
                                                                               recentIDs, {}));
    }
    if (filter.kind == Kind::all || filter.kind == Kind::skills) {
        appendAll(results,
                  query.isEmpty() ? skills : SkillSearchRanker::rankedSkills(query, skills, recentSkillIDs));
    }
    return results;
}

QString libraryFilterTitle(const LibraryFilter &filter, const CategoriesByID &categoriesByID)
{
    switch (filter.kind) {
    case LibraryFilter::Kind::all:
        return QStringLiteral("All Library Items");
    case LibraryFilter::Kind::prompts:
        return QStringLiteral("Prompts");
    case LibraryFilter::Kind::skills:
        return QStringLiteral("Skills");
    case LibraryFilter::Kind::category: {
        const auto category = categoriesByID.constFind(filter.categoryID);
        return category == categoriesByID.cend() ? QStringLiteral("Category") : category->name;
    }
    }
    Q_UNREACHABLE();
}

qsizetype libraryItemCount(const LibraryFilter &filter, const QList<PromptItem> &prompts,
                           const QList<SkillItem> &skills)
{
    switch (filter.kind) {
    case LibraryFilter::Kind::all:
        return prompts.size() + skills.size();
    case LibraryFilter::Kind::prompts:
        return prompts.size();
    case LibraryFilter::Kind::skills:
        return skills.size();
    case LibraryFilter::Kind::category:
        return std::count_if(prompts.begin(), prompts.end(), [&](const PromptItem &prompt) {
            return prompt.categoryID == filter.categoryID;
        });
    }
    Q_UNREACHABLE();
}

PickerTargetStatus targetStatus(bool accessibilityGranted, bool postEventGranted,
                                const FocusedTargetPtr &target, bool isSecure, const QString &hotkeyLabel)
{
    using Tint = PickerTargetStatus::Tint;
    if (!accessibilityGranted || !postEventGranted) {
        return unavailable(QStringLiteral("Permissions needed"),
                           QStringLiteral("Grant permissions before using insert."),
                           QStringLiteral("hand.raised"), Tint::orange);
    }
    if (!target) {
        return unavailable(QStringLiteral("No editable field captured"),
                           u"Click a text field, then press " + hotkeyLabel + u'.',
                           QStringLiteral("exclamationmark.circle"), Tint::orange);
    }
    if (isSecure) {
        return unavailable(QStringLiteral("Password fields are not supported"),
                           QStringLiteral("Copy instead if you need to paste manually."),
                           QStringLiteral("lock.circle"), Tint::red);
    }
    const QString appName = target->applicationName.value_or(QStringLiteral("the selected app"));
    return {.ready = true, .appName = appName, .title = {}, .detail = {}, .icon = {}, .tint = Tint::none};
}

} // namespace PickerResults
