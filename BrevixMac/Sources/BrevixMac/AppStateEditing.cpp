// SPDX-License-Identifier: GPL-3.0-or-later
#include "AppState.h"

// What the editors ask for. The services throw; the screens get values.

namespace {

/// Touches nothing but @p task, so that it ends well even when its asker is gone.
template <typename T>
QCoro::Task<Outcome<T>> outcomeOf(QCoro::Task<T> task)
{
    Outcome<T> outcome;
    try {
        outcome.value = co_await task;
    } catch (const std::exception &error) {
        outcome.problem = QString::fromUtf8(error.what());
    }
    co_return outcome;
}

} // namespace

QCoro::Task<Outcome<PromptCategory>> AppState::createCategory(QString name, QString colorHex)
{
    return outcomeOf(m_libraryStore->createCategory(std::move(name), std::move(colorHex)));
}

QCoro::Task<Outcome<PromptItem>> AppState::createPrompt(QString title, QString text, QString categoryID)
{
    return outcomeOf(m_libraryStore->createPrompt(std::move(title), std::move(text), std::move(categoryID)));
}

QCoro::Task<Outcome<SkillItem>> AppState::createSkill(QString title, QString text,
                                                      std::optional<QString> sourceFilename)
{
    return outcomeOf(
        m_libraryStore->createSkill(std::move(title), std::move(text), std::move(sourceFilename)));
}

QCoro::Task<Outcome<QString>> AppState::optimize(QString prompt)
{
    return outcomeOf(m_promptOptimizationService->optimize(std::move(prompt)));
}
