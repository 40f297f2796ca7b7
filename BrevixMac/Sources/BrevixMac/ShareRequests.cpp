// SPDX-License-Identifier: GPL-3.0-or-later
#include "ShareRequests.h"

#include "AppState.h"

ShareRequests::ShareRequests(AppState &appState, QObject *parent)
    : QObject(parent)
    , m_appState(appState)
{
}

QString ShareRequests::idOf(const PromptCategory &category)
{
    return u"category:" + category.id;
}

void ShareRequests::share(const PickerResult &result)
{
    const QString id = result.id();
    if (isSharing(id))
        return;
    m_underWay.insert(id);
    Q_EMIT changed();
    if (result.prompt())
        detach(run(id, m_appState.share(*result.prompt()), m_tasks.token()), "sharing a prompt");
    else
        detach(run(id, m_appState.share(*result.skill()), m_tasks.token()), "sharing a skill");
}

void ShareRequests::share(const PromptCategory &category)
{
    const QString id = idOf(category);
    if (isSharing(id))
        return;
    m_underWay.insert(id);
    Q_EMIT changed();
    detach(run(id, m_appState.share(category), m_tasks.token()), "sharing a category");
}

QCoro::Task<> ShareRequests::run(QString id, QCoro::Task<> request, std::stop_token token)
{
    co_await request;
    if (token.stop_requested())
        co_return;
    m_underWay.remove(id);
    Q_EMIT changed();
}
