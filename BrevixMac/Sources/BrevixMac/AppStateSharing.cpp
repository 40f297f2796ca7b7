// SPDX-License-Identifier: GPL-3.0-or-later
#include "AppState.h"

// Sharing: the library store publishes and gives the link, the link goes to the clipboard, and the outcome is
// told where that of an insertion is.

QCoro::Task<> AppState::share(const PromptItem &prompt)
{
    setLastInsertionResult({});
    setInsertionRecovery({});
    return performShare(prompt.title, m_libraryStore->sharePrompt(prompt), m_tasks.token());
}

QCoro::Task<> AppState::share(const SkillItem &skill)
{
    setLastInsertionResult({});
    setInsertionRecovery({});
    return performShare(skill.title, m_libraryStore->shareSkill(skill), m_tasks.token());
}

QCoro::Task<> AppState::share(const PromptCategory &category)
{
    setLastInsertionResult({});
    setInsertionRecovery({});
    return performShare(category.name, m_libraryStore->shareCategory(category), m_tasks.token());
}

QCoro::Task<> AppState::performShare(QString title, QCoro::Task<QUrl> link, std::stop_token token)
{
    QUrl url;
    QString failure;
    try {
        url = co_await link;
    } catch (const CancelledError &) {
        co_return; // the user has signed out, and nobody waits for the link any more
    } catch (const std::exception &error) {
        failure = u"Couldn't create share link: " + QString::fromUtf8(error.what());
    }
    if (token.stop_requested())
        co_return;
    if (failure.isNull())
        finishShare(title, url);
    else
        failShare(failure);
}

void AppState::finishShare(const QString &title, const QUrl &url)
{
    if (!m_insertionService->copy(url.toString(QUrl::FullyEncoded))) {
        failShare(QStringLiteral("Share link created, but Brevix couldn't copy it."));
        return;
    }
    setShareConfirmation(ShareConfirmation{
        .id = QUuid::createUuid(), .title = title, .url = url, .createdAt = m_environment.now()});
    setLastInsertionResult(InsertionResult::success(InsertionMethod::copiedOnly,
                                                    QStringLiteral("Share link copied to clipboard.")));
}

void AppState::failShare(const QString &message)
{
    setShareConfirmation({});
    setLastInsertionResult(InsertionResult::failure(InsertionFailureReason::unknown, message));
}

void AppState::dismissShareConfirmation(const std::optional<ShareConfirmation> &confirmation)
{
    const bool isShown =
        !confirmation || (m_shareConfirmation && m_shareConfirmation->id == confirmation->id);
    if (isShown)
        setShareConfirmation({});
}
