// SPDX-License-Identifier: GPL-3.0-or-later
#include "EditorDraft.h"

#include "Foundation/Text.h"

#include <QJsonDocument>
#include <QJsonObject>

#include <utility>

namespace {

/// Every text with the name it has in a file.
template <typename Draft, typename Visit>
void forEachText(Draft &draft, Visit visit)
{
    visit(u"title", draft.title);
    visit(u"text", draft.text);
    visit(u"categoryID", draft.categoryID);
    visit(u"variableName", draft.variableName);
    visit(u"newCategoryName", draft.newCategoryName);
    visit(u"newCategoryColor", draft.newCategoryColor);
}

template <typename Draft, typename Visit>
void forEachOptionalText(Draft &draft, Visit visit)
{
    visit(u"previousText", draft.previousText);
    visit(u"sourceFilename", draft.sourceFilename);
}

} // namespace

bool EditorDraft::isBlank() const
{
    return Text::isBlank(title) && Text::isBlank(text) && Text::isBlank(variableName) &&
           Text::isBlank(newCategoryName) && !previousText;
}

qsizetype EditorDraft::length() const
{
    qsizetype sum = 0;
    forEachText(*this, [&](QStringView, const QString &value) { sum += value.size(); });
    forEachOptionalText(
        *this, [&](QStringView, const std::optional<QString> &value) { sum += value ? value->size() : 0; });
    return sum;
}

QByteArray EditorDraft::toJson() const
{
    QJsonObject object;
    forEachText(*this, [&](QStringView name, const QString &value) { object.insert(name, value); });
    forEachOptionalText(*this, [&](QStringView name, const std::optional<QString> &value) {
        if (value)
            object.insert(name, *value);
    });
    return QJsonDocument(object).toJson();
}

std::optional<EditorDraft> EditorDraft::fromJson(const QByteArray &json)
{
    const QJsonDocument document = QJsonDocument::fromJson(json);
    if (!document.isObject())
        return std::nullopt;
    const QJsonObject object = document.object();
    if (!object.value(u"title").isString() || !object.value(u"text").isString())
        return std::nullopt;
    EditorDraft draft;
    forEachText(draft, [&](QStringView name, QString &value) { value = object.value(name).toString(); });
    forEachOptionalText(draft, [&](QStringView name, std::optional<QString> &value) {
        if (object.value(name).isString())
            value = object.value(name).toString();
    });
    return draft;
}
