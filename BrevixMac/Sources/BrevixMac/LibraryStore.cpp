// SPDX-License-Identifier: GPL-3.0-or-later
#include "LibraryStore.h"

#include "AuthService.h"
#include "FirestoreFieldValue.h"

#include "Foundation/Text.h"

#include <QJsonArray>
#include <QJsonDocument>

#include <algorithm>
#include <stdexcept>

namespace {

const QString pageQuery = QStringLiteral("pageSize=500");

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

const QString &displayText(const PromptCategory &category)
{
    return category.name;
}

template <typename Item>
const QString &displayText(const Item &item)
{
    return item.title;
}

template <typename Item>
void sortForDisplay(QList<Item> &items)
{
    std::stable_sort(items.begin(), items.end(), [](const Item &left, const Item &right) {
        if (left.order != right.order)
            return left.order < right.order;
        return Text::compareTitles(displayText(left), displayText(right)) < 0;
    });
}

template <typename Item>
QList<Item> makeSorted(const QList<QJsonObject> &documents, Item (*make)(const QJsonObject &))
{
    QList<Item> items;
    items.reserve(documents.size());
    for (const QJsonObject &document : documents)
        items.append(make(document));
    sortForDisplay(items);
    return items;
}

/// The documents of an answer; none when it has no list of them, as for an empty collection.
QList<QJsonObject> documentsIn(const QByteArray &body)
{
    QJsonParseError parseError;
    const QJsonDocument answer = QJsonDocument::fromJson(body, &parseError);
    if (parseError.error != QJsonParseError::NoError)
        throw std::runtime_error("Brevix couldn't read the Firestore response: " +
                                 parseError.errorString().toStdString());
    if (!answer.isObject())
        throw FirestoreRESTError(FirestoreRESTError::Kind::invalidPayload);

    QList<QJsonObject> documents;
    const QJsonArray list = answer.object().value(u"documents").toArray();
    documents.reserve(list.size());
    for (const auto &value : list) {
        if (!value.isObject())
            return {};
        documents.append(value.toObject());
    }
    return documents;
}

} // namespace

LibraryStore::LibraryStore(AppConfiguration configuration, CloudEndpoints endpoints, AuthService &auth,
                           HttpClient &http, std::function<QDateTime()> now)
    : m_configuration(std::move(configuration))
    , m_endpoints(std::move(endpoints))
    , m_auth(auth)
    , m_http(http)
    , m_now(std::move(now))
    , m_refreshTimer(this)
{
    m_refreshTimer.setInterval(refreshInterval);
    connect(&m_refreshTimer, &QTimer::timeout, this, &LibraryStore::refreshNow);
}

LibraryStore::~LibraryStore() = default;

void LibraryStore::bind(const QString &userID)
{
    if (m_boundUserID == userID)
        return;
    unbind();
    m_boundUserID = userID;
    setSyncState(SyncState::loading());
    refreshNow();
    m_refreshTimer.start();
}

void LibraryStore::unbind()
{
    m_refreshTasks.restart();
    m_refreshTimer.stop();
    m_boundUserID.reset();
    setCategories({});
    setPrompts({});
    setSkills({});
    setSyncState(SyncState::idle());
}

void LibraryStore::refreshNow()
{
    if (!m_boundUserID)
        return;
    m_refreshTasks.restart();
    // A library that is on screen does not flicker to "Syncing..." every time.
    if (m_categories.isEmpty() && m_prompts.isEmpty() && m_skills.isEmpty())
        setSyncState(SyncState::loading());
    detach(refresh(*m_boundUserID, m_refreshTasks.token()), "refreshing the library");
}

QCoro::Task<> LibraryStore::refresh(QString userID, std::stop_token token)
{
    QString failure;
    try {
        co_await fetchAndPublish(userID, token);
        co_return;
    } catch (const CancelledError &) {
        co_return;
    } catch (const std::exception &error) {
        failure = QString::fromUtf8(error.what());
    }
    if (!token.stop_requested())
        setSyncState(SyncState::error(failure));
}

QCoro::Task<> LibraryStore::fetchAndPublish(QString userID, std::stop_token token)
{
    const QString idToken = co_await m_auth.validFirebaseIDToken();
    if (token.stop_requested())
        co_return;
    const QStringList categoriesPath = collectionPath(userID, QStringLiteral("categories"));
    const QList<QJsonObject> categories = co_await fetchDocuments(categoriesPath, idToken, token);
    if (token.stop_requested())
        co_return;
    const QStringList promptsPath = collectionPath(userID, QStringLiteral("prompts"));
    const QList<QJsonObject> prompts = co_await fetchDocuments(promptsPath, idToken, token);
    if (token.stop_requested())
        co_return;
    const QStringList skillsPath = collectionPath(userID, QStringLiteral("skills"));
    const QList<QJsonObject> skills = co_await fetchDocuments(skillsPath, idToken, token);

    // An observer of the first list may unbind, so each step looks again.
    if (!token.stop_requested())
        setCategories(makeSorted(categories, &makeCategory));
    if (!token.stop_requested())
        setPrompts(makeSorted(prompts, &makePrompt));
    if (!token.stop_requested())
        setSkills(makeSorted(skills, &makeSkill));
    if (!token.stop_requested())
        setSyncState(SyncState::synced(m_now()));
}

QStringList LibraryStore::collectionPath(const QString &userID, const QString &collection) const
{
    return {QStringLiteral("artifacts"), m_configuration.logicalLibraryAppID, QStringLiteral("users"), userID,
            collection};
}

QCoro::Task<QList<QJsonObject>> LibraryStore::fetchDocuments(QStringList collectionSegments,
                                                             QString firebaseIDToken, std::stop_token token)
{
    // Only the first page: no page token is asked for or followed.
    const QString path = FirestoreCodec::encodedPath(collectionSegments);
    const std::optional<QUrl> url =
        m_endpoints.firestoreDocuments(m_configuration.firebase.projectID, path, pageQuery);
    if (!url)
        throw FirestoreRESTError(FirestoreRESTError::Kind::invalidURL);
    HttpRequest request;
    request.url = *url;
    request.headers = {{"Authorization", "Bearer " + firebaseIDToken.toUtf8()}};
    const HttpResponse response = co_await m_http.send(request, token);
    if (!response.isHttp())
        throw FirestoreRESTError(FirestoreRESTError::Kind::invalidResponse);
    if (!response.isSuccess())
        throw FirestoreCodec::decodeFirestoreError(response.body, response.statusCode);
    co_return documentsIn(response.body);
}

PromptCategory LibraryStore::makeCategory(const QJsonObject &document)
{
    const QJsonObject fields = fieldsOf(document);
    return {.id = FirestoreCodec::documentID(document),
            .name = text(fields, u"name").value_or(QStringLiteral("Untitled Category")),
            .colorHex = text(fields, u"color"),
            .order = FirestoreCodec::readInt(fields.value(u"order")),
            .createdAt = FirestoreCodec::readDate(fields.value(u"createdAt"))};
}

PromptItem LibraryStore::makePrompt(const QJsonObject &document)
{
    const QJsonObject fields = fieldsOf(document);
    return {.id = FirestoreCodec::documentID(document),
            .title = text(fields, u"title").value_or(QStringLiteral("Untitled Prompt")),
            .text = text(fields, u"text").value_or(QString()),
            .categoryID = text(fields, u"categoryId").value_or(QString()),
            .order = FirestoreCodec::readInt(fields.value(u"order")),
            .createdAt = FirestoreCodec::readDate(fields.value(u"createdAt"))};
}

SkillItem LibraryStore::makeSkill(const QJsonObject &document)
{
    const QJsonObject fields = fieldsOf(document);
    return {.id = FirestoreCodec::documentID(document),
            .title = firstText(fields, u"title", u"name").value_or(QStringLiteral("Untitled Skill")),
            .text = firstText(fields, u"text", u"content").value_or(QString()),
            .sourceFilename = text(fields, u"sourceFilename"),
            .order = FirestoreCodec::readInt(fields.value(u"order")),
            .createdAt = FirestoreCodec::readDate(fields.value(u"createdAt"))};
}

// A list that came back unchanged is not replaced: its observers are left in peace, and what is kept by its
// texts (the rankers' lower-cased copies) stays good.
void LibraryStore::setCategories(const QList<PromptCategory> &categories)
{
    if (m_categories == categories)
        return;
    m_categories = categories;
    Q_EMIT categoriesChanged();
}

void LibraryStore::setPrompts(const QList<PromptItem> &prompts)
{
    if (m_prompts == prompts)
        return;
    m_prompts = prompts;
    Q_EMIT promptsChanged();
}

void LibraryStore::setSkills(const QList<SkillItem> &skills)
{
    if (m_skills == skills)
        return;
    m_skills = skills;
    Q_EMIT skillsChanged();
}

void LibraryStore::setSyncState(const SyncState &state)
{
    if (m_syncState == state)
        return;
    m_syncState = state;
    Q_EMIT syncStateChanged();
}
