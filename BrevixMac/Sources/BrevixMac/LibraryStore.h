// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "AppConfiguration.h"
#include "AppStateInterfaces.h"
#include "FirestoreClient.h"
#include "LibraryDocuments.h"

#include "Foundation/TaskScope.h"

#include <QObject>
#include <QTimer>

#include <functional>

class AuthService;

/// Keeps the three published lists equal to the server's for the bound user, adds to them, and publishes
/// items under public links. Main thread only. A failed refresh becomes syncState() and leaves the lists as
/// they were; the writing calls throw.
class LibraryStore final : public QObject, public PromptLibraryProviding
{
    Q_OBJECT

public:
    static constexpr std::chrono::seconds refreshInterval{45};

    /// @p auth and @p http must outlive this object.
    LibraryStore(AppConfiguration configuration, CloudEndpoints endpoints, AuthService &auth,
                 HttpClient &http, std::function<QDateTime()> now = &QDateTime::currentDateTimeUtc);
    ~LibraryStore() override;

    const QList<PromptCategory> &categories() const override { return m_categories; }
    const QList<PromptItem> &prompts() const override { return m_prompts; }
    const QList<SkillItem> &skills() const override { return m_skills; }
    const SyncState &syncState() const override { return m_syncState; }

    /// Shows @p userID's library and keeps it fresh every 45 s. Does nothing if it is shown already.
    void bind(const QString &userID) override;

    /// Stops, clears the lists and is idle. Requests under way end as cancelled.
    void unbind() override;

    // The calls below throw FirestoreRESTError (also when nobody is bound), AuthError, TransportError,
    // CancelledError, or the parser's error. What failed has changed nothing here.

    // Each shows what the server has made of the new record at once, in its place, and then refreshes.
    QCoro::Task<PromptCategory> createCategory(QString name, QString colorHex);
    QCoro::Task<PromptItem> createPrompt(QString title, QString text, QString categoryID);
    QCoro::Task<SkillItem> createSkill(QString title, QString text, std::optional<QString> sourceFilename);

    // Each makes a public copy, a new one every time, and gives the link to it.
    QCoro::Task<QUrl> sharePrompt(PromptItem prompt);
    QCoro::Task<QUrl> shareSkill(SkillItem skill);
    /// With the category's shown prompts.
    QCoro::Task<QUrl> shareCategory(PromptCategory category);

Q_SIGNALS:
    void categoriesChanged();
    void promptsChanged();
    void skillsChanged();
    void syncStateChanged();

private:
    /// Who writes, and until when that may go on.
    struct Writer
    {
        LibraryDocuments::Author author;
        std::stop_token token;
    };

    // Reading (LibraryStore.cpp)
    void refreshNow();
    QCoro::Task<> refresh(QString userID, std::stop_token token);
    QCoro::Task<> fetchAndPublish(QString userID, std::stop_token token);
    template <typename Item>
    QCoro::Task<QList<Item>> fetchItems(QStringList collectionSegments, Item (*make)(const QJsonObject &),
                                        QString firebaseIDToken, std::stop_token token);
    QStringList collectionPath(const QString &userID, const QString &collection) const;
    void setCategories(const QList<PromptCategory> &categories);
    void setPrompts(const QList<PromptItem> &prompts);
    void setSkills(const QList<SkillItem> &skills);
    void setSyncState(const SyncState &state);

    // Writing (LibraryStoreWrites.cpp)
    Writer writer() const;
    QCoro::Task<QJsonObject> create(Writer writer, QString collection, FirestoreClient::Fields fields);
    /// After the server has taken a record.
    void finishCreation(const std::stop_token &token);
    QCoro::Task<QUrl> share(Writer writer, QString collection, QString itemID,
                            FirestoreClient::Fields fields);

    AppConfiguration m_configuration;
    AuthService &m_auth;
    FirestoreClient m_firestore;
    std::function<QDateTime()> m_now;
    QList<PromptCategory> m_categories;
    QList<PromptItem> m_prompts;
    QList<SkillItem> m_skills;
    SyncState m_syncState;
    std::optional<QString> m_boundUserID;
    QTimer m_refreshTimer;
    // Keep last: they stop the coroutines before the other members die.
    TaskScope m_refreshTasks;
    TaskScope m_writeTasks; ///< of the bound user
};
