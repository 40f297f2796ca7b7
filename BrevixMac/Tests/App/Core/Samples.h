// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Models.h"

#include <QDateTime>
#include <QStringList>

#include <ostream>

/// Short ways to write records in tests, and readable failure messages.

inline PromptItem makePrompt(const QString &id, const QString &title, const QString &text = {},
                             const QString &categoryID = {}, qint64 order = 0)
{
    return {
        .id = id, .title = title, .text = text, .categoryID = categoryID, .order = order, .createdAt = {}};
}

inline SkillItem makeSkill(const QString &id, const QString &title, const QString &text = {},
                           const std::optional<QString> &sourceFilename = {}, qint64 order = 0)
{
    return {.id = id,
            .title = title,
            .text = text,
            .sourceFilename = sourceFilename,
            .order = order,
            .createdAt = {}};
}

inline PromptCategory makeCategory(const QString &id, const QString &name, qint64 order = 0)
{
    return {.id = id, .name = name, .colorHex = {}, .order = order, .createdAt = {}};
}

template <typename Item>
QStringList idsOf(const QList<Item> &items)
{
    QStringList ids;
    for (const Item &item : items)
        ids.append(item.id);
    return ids;
}

inline QDateTime utc(int hour, int minute = 0, int second = 0)
{
    return QDateTime(QDate(2024, 5, 1), QTime(hour, minute, second), Qt::UTC);
}

QT_BEGIN_NAMESPACE
inline void PrintTo(const QString &text, std::ostream *stream)
{
    *stream << '"' << text.toStdString() << '"';
}
inline void PrintTo(const QStringList &list, std::ostream *stream)
{
    *stream << '[' << list.join(QStringLiteral(", ")).toStdString() << ']';
}
QT_END_NAMESPACE
