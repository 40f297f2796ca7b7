// SPDX-License-Identifier: GPL-3.0-or-later
#include "LibraryStore.h"

#include "AuthService.h"
#include "ShareLinks.h"

// What the library store writes: new records in the user's collections, and the public copies behind share
// links.

namespace {

const QString sharedPrompts = QStringLiteral("sharedPrompts"); ///< skills live there too
const QString sharedCategories = QStringLiteral("sharedCategories");

/// @p items, which are sorted, with @p item in its place. A refresh that overtook the answer may have brought
/// it already.
template <typename Item>
QList<Item> withItem(QList<Item> items, const Item &item)
{
    items.removeIf([&](const Item &other) { return other.id == item.id; });
    const auto place =
        std::upper_bound(items.cbegin(), items.cend(), item, &LibraryDocuments::isShownBefore<Item>);
    items.insert(place, item);
    return items;
}

} // namespace

LibraryStore::Writer LibraryStore::writer() const
{
    if (!m_boundUserID)
        throw FirestoreRESTError(FirestoreRESTError::Kind::notSignedIn);
    return {.author = {.userID = *m_boundUserID, .time = m_now()}, .token = m_writeTasks.token()};
}

QCoro::Task<PromptCategory> LibraryStore::createCategory(QString name, QString colorHex)
{
    const Writer writer = this->writer();
    const auto fields = LibraryDocuments::newCategory(name, colorHex, writer.author);
    const QJsonObject document = co_await create(writer, QStringLiteral("categories"), fields);
    const PromptCategory category = LibraryDocuments::makeCategory(document);
    setCategories(withItem(m_categories, category));
    finishCreation(writer.token);
    co_return category;
}

QCoro::Task<PromptItem> LibraryStore::createPrompt(QString title, QString text, QString categoryID)
{
    const Writer writer = this->writer();
    const auto fields = LibraryDocuments::newPrompt(title, text, categoryID, writer.author);
    const QJsonObject document = co_await create(writer, QStringLiteral("prompts"), fields);
    const PromptItem prompt = LibraryDocuments::makePrompt(document);
    setPrompts(withItem(m_prompts, prompt));
    finishCreation(writer.token);
    co_return prompt;
}

QCoro::Task<SkillItem> LibraryStore::createSkill(QString title, QString text,
                                                 std::optional<QString> sourceFilename)
{
    const Writer writer = this->writer();
    const auto fields = LibraryDocuments::newSkill(title, text, sourceFilename, writer.author);
    const QJsonObject document = co_await create(writer, QStringLiteral("skills"), fields);
    const SkillItem skill = LibraryDocuments::makeSkill(document);
    setSkills(withItem(m_skills, skill));
    finishCreation(writer.token);
    co_return skill;
}

QCoro::Task<QJsonObject> LibraryStore::create(Writer writer, QString collection,
                                              FirestoreClient::Fields fields)
{
    const QString idToken = co_await m_auth.validFirebaseIDToken();
    if (writer.token.stop_requested())
        throw CancelledError();
    const QStringList path = collectionPath(writer.author.userID, collection);
    const QJsonObject document = co_await m_firestore.createDocument(path, fields, idToken, writer.token);
    if (writer.token.stop_requested())
        throw CancelledError();
    co_return document;
}

void LibraryStore::finishCreation(const std::stop_token &token)
{
    // An observer of the new list may have unbound the user.
    if (token.stop_requested())
        return;
    setSyncState(SyncState::synced(m_now()));
    refreshNow();
}

QCoro::Task<QUrl> LibraryStore::sharePrompt(PromptItem prompt)
{
    const Writer writer = this->writer();
    const auto fields = LibraryDocuments::sharedPrompt(prompt, writer.author);
    co_return co_await share(writer, sharedPrompts, prompt.id, fields);
}

QCoro::Task<QUrl> LibraryStore::shareSkill(SkillItem skill)
{
    const Writer writer = this->writer();
    const auto fields = LibraryDocuments::sharedSkill(skill, writer.author);
    co_return co_await share(writer, sharedPrompts, skill.id, fields);
}

QCoro::Task<QUrl> LibraryStore::shareCategory(PromptCategory category)
{
    const Writer writer = this->writer();
    const auto fields = LibraryDocuments::sharedCategory(category, m_prompts, writer.author);
    co_return co_await share(writer, sharedCategories, category.id, fields);
}

QCoro::Task<QUrl> LibraryStore::share(Writer writer, QString collection, QString itemID,
                                      FirestoreClient::Fields fields)
{
    const QString idToken = co_await m_auth.validFirebaseIDToken();
    if (writer.token.stop_requested())
        throw CancelledError();
    // The link comes first: without one there is no use in publishing.
    const QString queryItem =
        collection == sharedCategories ? ShareLinks::categoryItem : ShareLinks::promptItem;
    const QString shareID = ShareLinks::shareDocumentID(writer.author.userID, itemID, writer.author.time);
    const QUrl link = ShareLinks::publicShareURL(m_configuration.publicShareBaseURL, queryItem, shareID);
    const QStringList path{QStringLiteral("artifacts"),
                           m_configuration.logicalLibraryAppID,
                           QStringLiteral("public"),
                           QStringLiteral("data"),
                           collection,
                           shareID};
    co_await m_firestore.setDocument(path, fields, idToken, writer.token);
    if (writer.token.stop_requested())
        throw CancelledError();
    co_return link;
}
