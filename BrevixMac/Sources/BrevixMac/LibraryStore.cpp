// SPDX-License-Identifier: GPL-3.0-or-later
#include "LibraryStore.h"

#include "AuthService.h"

#include "Foundation/Worker.h"

namespace {

template <typename Item>
QList<Item> makeSorted(const QList<QJsonObject> &documents, Item (*make)(const QJsonObject &))
{
    QList<Item> items;
    items.reserve(documents.size());
    for (const QJsonObject &document : documents)
        items.append(make(document));
    LibraryDocuments::sortForDisplay(items);
    return items;
}

} // namespace

LibraryStore::LibraryStore(AppConfiguration configuration, CloudEndpoints endpoints, AuthService &auth,
                           HttpClient &http, std::function<QDateTime()> now)
    : m_configuration(std::move(configuration))
    , m_auth(auth)
    , m_firestore(m_configuration.firebase.projectID, std::move(endpoints), http)
    , m_now(std::move(now))
    , m_refreshTimer(this)
{
    m_firestore.onTokenRejected = [this](const QString &idToken) { m_auth.noteRejectedToken(idToken); };
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
    m_writeTasks.restart();
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
    const QList<PromptCategory> categories =
        co_await fetchItems(categoriesPath, &LibraryDocuments::makeCategory, idToken, token);
    if (token.stop_requested())
        co_return;
    const QStringList promptsPath = collectionPath(userID, QStringLiteral("prompts"));
    const QList<PromptItem> prompts =
        co_await fetchItems(promptsPath, &LibraryDocuments::makePrompt, idToken, token);
    if (token.stop_requested())
        co_return;
    const QStringList skillsPath = collectionPath(userID, QStringLiteral("skills"));
    const QList<SkillItem> skills =
        co_await fetchItems(skillsPath, &LibraryDocuments::makeSkill, idToken, token);

    // An observer of the first list may unbind, so each step looks again.
    if (!token.stop_requested())
        setCategories(categories);
    if (!token.stop_requested())
        setPrompts(prompts);
    if (!token.stop_requested())
        setSkills(skills);
    if (!token.stop_requested())
        setSyncState(SyncState::synced(m_now()));
}

template <typename Item>
QCoro::Task<QList<Item>> LibraryStore::fetchItems(QStringList collectionSegments,
                                                  Item (*make)(const QJsonObject &), QString firebaseIDToken,
                                                  std::stop_token token)
{
    const QByteArray page = co_await m_firestore.fetchPage(collectionSegments, firebaseIDToken, token);
    // Reading a full page takes longer than the main thread may be away.
    const auto read = [page, make] { return makeSorted(FirestoreClient::documentsIn(page), make); };
    QList<Item> items = co_await onWorker(read);
    co_return items;
}

QStringList LibraryStore::collectionPath(const QString &userID, const QString &collection) const
{
    return {QStringLiteral("artifacts"), m_configuration.logicalLibraryAppID, QStringLiteral("users"), userID,
            collection};
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
