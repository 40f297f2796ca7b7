// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "FirestoreFieldValue.h"
#include "Models.h"

#include "Foundation/Text.h"

#include <algorithm>

/// The library's records as Firestore documents, both ways. Pure, on any thread.
namespace LibraryDocuments {

using Fields = FirestoreFieldValue::Map;

// Reading never fails: what is missing takes its default.
PromptCategory makeCategory(const QJsonObject &document);
PromptItem makePrompt(const QJsonObject &document);
SkillItem makeSkill(const QJsonObject &document);

/// Who wrote a document, and when.
struct Author
{
    QString userID;
    QDateTime time;
};

// The documents of new records. None holds an order: it reads back as 0.
Fields newCategory(const QString &name, const QString &colorHex, const Author &author);
Fields newPrompt(const QString &title, const QString &text, const QString &categoryID, const Author &author);
Fields newSkill(const QString &title, const QString &text, const std::optional<QString> &sourceFilename,
                const Author &author);

// The documents behind public links.
Fields sharedPrompt(const PromptItem &prompt, const Author &author);
Fields sharedSkill(const SkillItem &skill, const Author &author);
/// Of @p prompts those that belong to @p category, in the given order.
Fields sharedCategory(const PromptCategory &category, const QList<PromptItem> &prompts, const Author &author);

inline const QString &displayText(const PromptCategory &category)
{
    return category.name;
}

template <typename Item>
const QString &displayText(const Item &item)
{
    return item.title;
}

/// By order, then by name or title without regard to case, in the user's language.
template <typename Item>
bool isShownBefore(const Item &left, const Item &right)
{
    if (left.order != right.order)
        return left.order < right.order;
    return Text::compareTitles(displayText(left), displayText(right)) < 0;
}

template <typename Item>
void sortForDisplay(QList<Item> &items)
{
    std::stable_sort(items.begin(), items.end(), &isShownBefore<Item>);
}

} // namespace LibraryDocuments
