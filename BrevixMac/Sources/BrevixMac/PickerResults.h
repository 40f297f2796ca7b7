// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "FocusedTarget.h"
#include "Models.h"
#include "RecentUsageStore.h"
#include "SyncState.h"

#include <variant>

/// A row of the picker: a prompt or a skill.
struct PickerResult
{
    std::variant<PromptItem, SkillItem> item;

    const PromptItem *prompt() const { return std::get_if<PromptItem>(&item); }
    const SkillItem *skill() const { return std::get_if<SkillItem>(&item); }

    /// "prompt:" or "skill:" and the item's identifier, so that equal identifiers stay apart in one list.
    QString id() const;
    QString title() const;
    QString text() const;

    bool operator==(const PickerResult &) const = default;
};

struct PickerResultSection
{
    QString id; ///< "recent", "prompts" or "skills"
    QString title;
    QString subtitle;
    QList<PickerResult> results;

    bool operator==(const PickerResultSection &) const = default;
};

/// What the library screen's sidebar narrows the list to.
struct LibraryFilter
{
    enum class Kind { category, all, prompts, skills };

    Kind kind = Kind::all;
    QString categoryID; ///< kind category only

    static LibraryFilter all() { return {}; }
    static LibraryFilter prompts() { return {.kind = Kind::prompts, .categoryID = {}}; }
    static LibraryFilter skills() { return {.kind = Kind::skills, .categoryID = {}}; }
    static LibraryFilter category(const QString &id) { return {.kind = Kind::category, .categoryID = id}; }

    bool operator==(const LibraryFilter &) const = default;
};

/// The picker window's screens.
enum class PickerPanelRoute { picker, library, settings, newPrompt };

/// Whether text can go into the captured field, as the picker's target row shows it.
struct PickerTargetStatus
{
    enum class Tint { none, red, orange };

    bool ready = false;
    QString appName; ///< ready only
    QString title;   ///< the rest: not ready only
    QString detail;
    QString icon; ///< name of a symbol
    Tint tint = Tint::none;

    bool operator==(const PickerTargetStatus &) const = default;
};

/// The rules that fill the picker's value types. Pure functions.
namespace PickerResults {

/// The recent list: live items of the recent records, newest first. A repeated identifier among @p prompts or
/// among @p skills stops the program.
QList<PickerResult> recentPickerResults(const QList<PromptItem> &prompts, const QList<SkillItem> &skills,
                                        const QList<RecentPromptRecord> &recents,
                                        const QList<RecentSkillRecord> &recentSkills);

/// The quick picker's sections: the first 8 recent results for a blank @p query, else up to 6 ranked prompts
/// and 6 ranked skills.
QList<PickerResultSection> resultSections(const QString &query, const QList<PickerResult> &recent,
                                          const QList<PromptItem> &visiblePrompts,
                                          const QList<SkillItem> &visibleSkills, const SyncState &syncState);

bool hasResults(const QList<PickerResultSection> &sections);

QList<PickerResult> libraryResults(const QString &query, const LibraryFilter &filter,
                                   const QList<PromptItem> &prompts, const QList<SkillItem> &skills,
                                   const CategoriesByID &categoriesByID, const QStringList &recentIDs,
                                   const QStringList &recentSkillIDs);

QString libraryFilterTitle(const LibraryFilter &filter, const CategoriesByID &categoriesByID);

qsizetype libraryItemCount(const LibraryFilter &filter, const QList<PromptItem> &prompts,
                           const QList<SkillItem> &skills);

/// @p isSecure answers for @p target.
PickerTargetStatus targetStatus(bool accessibilityGranted, bool postEventGranted,
                                const FocusedTargetPtr &target, bool isSecure, const QString &hotkeyLabel);

} // namespace PickerResults
