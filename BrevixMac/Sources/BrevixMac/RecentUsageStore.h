// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Models.h"

#include <QObject>
#include <QStringList>

#include <functional>

class UserDefaults;

/// One use of a prompt, with enough text to be shown without the library.
struct RecentPromptRecord
{
    QString id;
    QString title;
    std::optional<QString> categoryName = {};
    QString preview;
    QDateTime lastUsedAt;

    bool operator==(const RecentPromptRecord &) const = default;
};

struct RecentSkillRecord
{
    QString id;
    QString title;
    QString preview;
    QDateTime lastUsedAt;

    bool operator==(const RecentSkillRecord &) const = default;
};

size_t qHash(const RecentPromptRecord &record, size_t seed = 0);
size_t qHash(const RecentSkillRecord &record, size_t seed = 0);

/// Remembers the prompts and skills used last on this machine, newest first, 20 of each. Main thread only.
/// Loads at construction, writes the whole list at every use. Unreadable stored lists count as empty.
class RecentUsageStore : public QObject
{
    Q_OBJECT

public:
    static constexpr qsizetype cap = 20;

    /// @p defaults must outlive this object. @p now tells the time of a use.
    explicit RecentUsageStore(UserDefaults &defaults,
                              std::function<QDateTime()> now = &QDateTime::currentDateTimeUtc);

    const QList<RecentPromptRecord> &recents() const { return m_recents; }
    const QList<RecentSkillRecord> &recentSkills() const { return m_recentSkills; }

    /// Identifiers in list order, newest first. May repeat one if the stored list was damaged.
    QStringList recentIDs() const;
    QStringList recentSkillIDs() const;

    void record(const PromptItem &prompt, const std::optional<QString> &categoryName);
    void record(const SkillItem &skill);

    /// One-line excerpt of at most 110 user-perceived characters.
    static QString preview(const QString &text);

Q_SIGNALS:
    void recentsChanged();
    void recentSkillsChanged();

private:
    UserDefaults &m_defaults;
    std::function<QDateTime()> m_now;
    QList<RecentPromptRecord> m_recents;
    QList<RecentSkillRecord> m_recentSkills;
};
