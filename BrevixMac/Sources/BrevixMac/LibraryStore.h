// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "AppConfiguration.h"
#include "AppStateInterfaces.h"
#include "CloudEndpoints.h"

#include "Foundation/HttpClient.h"
#include "Foundation/TaskScope.h"

#include <QJsonObject>
#include <QObject>
#include <QTimer>

#include <functional>

class AuthService;

/// Keeps the three published lists equal to the server's for the bound user. Main thread only.
/// Failures become syncState(); nothing is thrown, and the lists stay as they were.
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

    /// Stops, clears the lists and is idle.
    void unbind() override;

    static PromptCategory makeCategory(const QJsonObject &document);
    static PromptItem makePrompt(const QJsonObject &document);
    static SkillItem makeSkill(const QJsonObject &document);

Q_SIGNALS:
    void categoriesChanged();
    void promptsChanged();
    void skillsChanged();
    void syncStateChanged();

private:
    void refreshNow();
    QCoro::Task<> refresh(QString userID, std::stop_token token);
    QCoro::Task<> fetchAndPublish(QString userID, std::stop_token token);
    QCoro::Task<QList<QJsonObject>> fetchDocuments(QStringList collectionSegments, QString firebaseIDToken,
                                                   std::stop_token token);
    QStringList collectionPath(const QString &userID, const QString &collection) const;
    void setCategories(const QList<PromptCategory> &categories);
    void setPrompts(const QList<PromptItem> &prompts);
    void setSkills(const QList<SkillItem> &skills);
    void setSyncState(const SyncState &state);

    AppConfiguration m_configuration;
    CloudEndpoints m_endpoints;
    AuthService &m_auth;
    HttpClient &m_http;
    std::function<QDateTime()> m_now;
    QList<PromptCategory> m_categories;
    QList<PromptItem> m_prompts;
    QList<SkillItem> m_skills;
    SyncState m_syncState;
    std::optional<QString> m_boundUserID;
    QTimer m_refreshTimer;
    TaskScope m_refreshTasks; // keep last: stops the coroutines before the other members die
};
