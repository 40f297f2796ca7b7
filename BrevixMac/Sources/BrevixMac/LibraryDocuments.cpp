// SPDX-License-Identifier: GPL-3.0-or-later
#include "LibraryDocuments.h"

namespace {

using Value = FirestoreFieldValue;

/// Written to public documents as the organisation of whoever shares: Brevix knows only personal libraries.
const QString personalOrganization = QStringLiteral("personal");

QJsonObject fieldsOf(const QJsonObject &document)
{
    return document.value(u"fields").toObject();
}

std::optional<QString> text(const QJsonObject &fields, QStringView name)
{
    return FirestoreCodec::readString(fields.value(name));
}

std::optional<QString> firstText(const QJsonObject &fields, QStringView name, QStringView olderName)
{
    const auto value = text(fields, name);
    return value ? value : text(fields, olderName);
}

LibraryDocuments::Fields titleAndText(const QString &title, const QString &text)
{
    return {{QStringLiteral("title"), Value::string(title)}, {QStringLiteral("text"), Value::string(text)}};
}

void insertSourceFilename(LibraryDocuments::Fields &fields, const std::optional<QString> &sourceFilename)
{
    if (sourceFilename)
        fields.insert(QStringLiteral("sourceFilename"), Value::string(*sourceFilename));
}

void insertCreation(LibraryDocuments::Fields &fields, const LibraryDocuments::Author &author)
{
    fields.insert(QStringLiteral("createdAt"), Value::timestamp(author.time));
    fields.insert(QStringLiteral("createdBy"), Value::string(author.userID));
}

void insertSharing(LibraryDocuments::Fields &fields, const LibraryDocuments::Author &author)
{
    fields.insert(QStringLiteral("sharedBy"), Value::string(author.userID));
    fields.insert(QStringLiteral("orgId"), Value::string(personalOrganization));
}

} // namespace

namespace LibraryDocuments {

PromptCategory makeCategory(const QJsonObject &document)
{
    const QJsonObject fields = fieldsOf(document);
    return {.id = FirestoreCodec::documentID(document),
            .name = text(fields, u"name").value_or(QStringLiteral("Untitled Category")),
            .colorHex = text(fields, u"color"),
            .order = FirestoreCodec::readInt(fields.value(u"order")),
            .createdAt = FirestoreCodec::readDate(fields.value(u"createdAt"))};
}

PromptItem makePrompt(const QJsonObject &document)
{
    const QJsonObject fields = fieldsOf(document);
    return {.id = FirestoreCodec::documentID(document),
            .title = text(fields, u"title").value_or(QStringLiteral("Untitled Prompt")),
            .text = text(fields, u"text").value_or(QString()),
            .categoryID = text(fields, u"categoryId").value_or(QString()),
            .order = FirestoreCodec::readInt(fields.value(u"order")),
            .createdAt = FirestoreCodec::readDate(fields.value(u"createdAt"))};
}

SkillItem makeSkill(const QJsonObject &document)
{
    const QJsonObject fields = fieldsOf(document);
    return {.id = FirestoreCodec::documentID(document),
            .title = firstText(fields, u"title", u"name").value_or(QStringLiteral("Untitled Skill")),
            .text = firstText(fields, u"text", u"content").value_or(QString()),
            .sourceFilename = text(fields, u"sourceFilename"),
            .order = FirestoreCodec::readInt(fields.value(u"order")),
            .createdAt = FirestoreCodec::readDate(fields.value(u"createdAt"))};
}

Fields newCategory(const QString &name, const QString &colorHex, const Author &author)
{
    Fields fields{{QStringLiteral("name"), Value::string(name)},
                  {QStringLiteral("color"), Value::string(colorHex)}};
    insertCreation(fields, author);
    return fields;
}

Fields newPrompt(const QString &title, const QString &text, const QString &categoryID, const Author &author)
{
    Fields fields = titleAndText(title, text);
    fields.insert(QStringLiteral("categoryId"), Value::string(categoryID));
    insertCreation(fields, author);
    return fields;
}

Fields newSkill(const QString &title, const QString &text, const std::optional<QString> &sourceFilename,
                const Author &author)
{
    Fields fields = titleAndText(title, text);
    insertSourceFilename(fields, sourceFilename);
    insertCreation(fields, author);
    return fields;
}

Fields sharedPrompt(const PromptItem &prompt, const Author &author)
{
    Fields fields = titleAndText(prompt.title, prompt.text);
    insertSharing(fields, author);
    fields.insert(QStringLiteral("sharedAt"), Value::timestamp(author.time));
    fields.insert(QStringLiteral("promptId"), Value::string(prompt.id));
    return fields;
}

Fields sharedSkill(const SkillItem &skill, const Author &author)
{
    Fields fields = titleAndText(skill.title, skill.text);
    insertSharing(fields, author);
    insertSourceFilename(fields, skill.sourceFilename);
    fields.insert(QStringLiteral("sharedAt"), Value::timestamp(author.time));
    fields.insert(QStringLiteral("sourceType"), Value::string(QStringLiteral("skill")));
    return fields;
}

Fields sharedCategory(const PromptCategory &category, const QList<PromptItem> &prompts, const Author &author)
{
    FirestoreFieldValue::Array members;
    for (const PromptItem &prompt : prompts) {
        if (prompt.categoryID == category.id)
            members.append(Value::map(titleAndText(prompt.title, prompt.text)));
    }
    Fields fields{{QStringLiteral("name"), Value::string(category.name)},
                  {QStringLiteral("prompts"), Value::array(members)}};
    insertSharing(fields, author);
    return fields;
}

} // namespace LibraryDocuments
