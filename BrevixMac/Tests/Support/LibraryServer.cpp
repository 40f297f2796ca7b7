// SPDX-License-Identifier: GPL-3.0-or-later
#include "LibraryServer.h"

#include "LibraryDocuments.h"

#include <QJsonArray>
#include <QJsonDocument>

namespace {

const QByteArray optimizeFunction = "optimizePrompt";

QJsonObject stringValue(const QString &text)
{
    return {{QStringLiteral("stringValue"), text}};
}

void insertIfPresent(QJsonObject &fields, const QString &name, const std::optional<QString> &text)
{
    if (text)
        fields.insert(name, stringValue(*text));
}

template <typename Item>
QJsonObject document(const Item &item, QJsonObject fields)
{
    fields.insert(QStringLiteral("order"),
                  QJsonObject{{QStringLiteral("integerValue"), QString::number(item.order)}});
    if (item.createdAt) {
        const QString time = item.createdAt->toUTC().toString(Qt::ISODateWithMs);
        fields.insert(QStringLiteral("createdAt"), QJsonObject{{QStringLiteral("timestampValue"), time}});
    }
    const QString name = u"projects/p/databases/(default)/documents/collection/" + item.id;
    return {{QStringLiteral("name"), name}, {QStringLiteral("fields"), fields}};
}

QJsonObject document(const PromptCategory &category)
{
    QJsonObject fields{{QStringLiteral("name"), stringValue(category.name)}};
    insertIfPresent(fields, QStringLiteral("color"), category.colorHex);
    return document(category, fields);
}

QJsonObject document(const PromptItem &prompt)
{
    return document(prompt, {{QStringLiteral("title"), stringValue(prompt.title)},
                             {QStringLiteral("text"), stringValue(prompt.text)},
                             {QStringLiteral("categoryId"), stringValue(prompt.categoryID)}});
}

QJsonObject document(const SkillItem &skill)
{
    QJsonObject fields{{QStringLiteral("title"), stringValue(skill.title)},
                       {QStringLiteral("text"), stringValue(skill.text)}};
    insertIfPresent(fields, QStringLiteral("sourceFilename"), skill.sourceFilename);
    return document(skill, fields);
}

bool isCollection(const QByteArray &name)
{
    return name == "categories" || name == "prompts" || name == "skills";
}

template <typename Item>
QByteArray listOf(const QList<Item> &items)
{
    QJsonArray documents;
    for (const Item &item : items)
        documents.append(document(item));
    return QJsonDocument(QJsonObject{{QStringLiteral("documents"), documents}}).toJson();
}

} // namespace

void LibraryServer::addCategory(const QString &id, const QString &name, const QString &color)
{
    categories.append({.id = id, .name = name, .colorHex = color, .order = categories.size()});
}

void LibraryServer::addPrompt(const QString &id, const QString &title, const QString &text,
                              const QString &categoryID)
{
    prompts.append(
        {.id = id, .title = title, .text = text, .categoryID = categoryID, .order = prompts.size()});
}

void LibraryServer::addSkill(const QString &id, const QString &title, const QString &text)
{
    skills.append({.id = id, .title = title, .text = text, .order = skills.size()});
}

void LibraryServer::clear()
{
    categories.clear();
    prompts.clear();
    skills.clear();
}

void LibraryServer::removeCategory(const QString &id)
{
    categories.removeIf([&](const PromptCategory &category) { return category.id == id; });
}

QString LibraryServer::text(const QJsonObject &fields, const QString &name)
{
    return fields.value(name).toObject().value(u"stringValue").toString();
}

FaultyServer::Reply LibraryServer::unscriptedReply(const Request &request)
{
    if (request.method == "GET")
        return list(request.lastPiece());
    if (isHolding)
        return {.fault = Reply::Fault::hold};
    if (refusal) {
        const QJsonObject error{{QStringLiteral("message"), *refusal}};
        return {.status = 403, .body = QJsonDocument(QJsonObject{{QStringLiteral("error"), error}}).toJson()};
    }
    return write(request);
}

void LibraryServer::noteRequest(const Request &request)
{
    if (request.lastPiece() == optimizeFunction) {
        const QJsonObject data = QJsonDocument::fromJson(request.body).object().value(u"data").toObject();
        optimizeRequests.append(data.value(u"prompt").toString());
    } else if (request.method != "GET") {
        ++writes;
    }
}

FaultyServer::Reply LibraryServer::write(const Request &request)
{
    if (request.lastPiece() == optimizeFunction) {
        const QJsonObject result{{QStringLiteral("text"), optimizedText}};
        return {.body = QJsonDocument(QJsonObject{{QStringLiteral("result"), result}}).toJson()};
    }
    if (request.method == "POST")
        return isCollection(request.lastPiece()) ? create(request) : Reply();
    documents.insert(request.path(), QJsonDocument::fromJson(request.body).object());
    return {.body = request.body};
}

void LibraryServer::release()
{
    isHolding = false;
    releaseHeldRequests();
}

void LibraryServer::releaseOldest()
{
    isHolding = false;
    releaseOldestHeldRequest();
    isHolding = true;
}

FaultyServer::Reply LibraryServer::list(const QByteArray &collection) const
{
    if (collection == "categories")
        return {.body = listOf(categories)};
    if (collection == "prompts")
        return {.body = listOf(prompts)};
    if (collection == "skills")
        return {.body = listOf(skills)};
    return {};
}

FaultyServer::Reply LibraryServer::create(const Request &request)
{
    QJsonObject document = QJsonDocument::fromJson(request.body).object();
    m_created[request.lastPiece()].append(document.value(u"fields").toObject());
    const QString id = QStringLiteral("new%1").arg(++m_lastID);
    document.insert(QStringLiteral("name"), QString(u"projects/p/databases/(default)/documents/x/" + id));
    if (request.lastPiece() == "categories")
        categories.append(LibraryDocuments::makeCategory(document));
    else if (request.lastPiece() == "prompts")
        prompts.append(LibraryDocuments::makePrompt(document));
    else if (request.lastPiece() == "skills")
        skills.append(LibraryDocuments::makeSkill(document));
    return {.body = QJsonDocument(document).toJson()};
}
