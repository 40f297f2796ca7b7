// SPDX-License-Identifier: GPL-3.0-or-later
#include "AppState.h"

#include "PromptSearchRanker.h"
#include "PromptTemplateParser.h"
#include "SearchRanking.h"
#include "SkillSearchRanker.h"

#include "Desktop/Workspace.h"

#include <QLoggingCategory>
#include <QSet>

namespace {

Q_LOGGING_CATEGORY(log, "brevix.state", QtInfoMsg)

/// @p items with only the first of every identifier. A damaged library or recents file must not stop the
/// rankers.
template <typename Item>
QList<Item> uniqueByID(const QList<Item> &items)
{
    QSet<QString> seen;
    QList<Item> unique;
    unique.reserve(items.size());
    for (const Item &item : items) {
        if (seen.contains(item.id)) {
            qCInfo(log) << "left out a repeated identifier";
            continue;
        }
        seen.insert(item.id);
        unique.append(item);
    }
    return unique;
}

QStringList unique(QStringList ids)
{
    ids.removeDuplicates();
    return ids;
}

PromptItem wrapped(const SkillItem &skill)
{
    return {.id = QStringLiteral("skill:") + skill.id,
            .title = skill.title,
            .text = skill.text,
            .categoryID = QStringLiteral("skills"),
            .order = skill.order,
            .createdAt = skill.createdAt};
}

QStringList searchedTexts(const QList<PromptItem> &prompts, const QList<SkillItem> &skills)
{
    QStringList texts;
    for (const PromptItem &prompt : prompts)
        texts << prompt.title << prompt.text;
    for (const SkillItem &skill : skills)
        texts << skill.title << skill.text << skill.sourceFilename.value_or(QString());
    return texts;
}

RenderedPrompt rendered(const SkillItem &skill)
{
    return {.prompt = wrapped(skill), .text = skill.text, .variables = {}};
}

} // namespace

QString InsertionRecovery::actionTitle() const
{
    return skill ? QStringLiteral("Copy Skill Instead") : QStringLiteral("Copy Prompt Instead");
}

// Observable state

void AppState::setQuery(const QString &query)
{
    if (m_query == query)
        return;
    m_query = query;
    Q_EMIT queryChanged();
}

void AppState::setRootDestination(RootDestination destination)
{
    if (m_rootDestination == destination)
        return;
    m_rootDestination = destination;
    Q_EMIT rootDestinationChanged();
}

void AppState::setSelectedCategoryID(const std::optional<QString> &id)
{
    if (m_selectedCategoryID == id)
        return;
    m_selectedCategoryID = id;
    Q_EMIT selectionChanged();
}

void AppState::setSelectedPromptID(const std::optional<QString> &id)
{
    if (m_selectedPromptID == id)
        return;
    m_selectedPromptID = id;
    Q_EMIT selectionChanged();
}

void AppState::setSelectedSkillID(const std::optional<QString> &id)
{
    if (m_selectedSkillID == id)
        return;
    m_selectedSkillID = id;
    Q_EMIT selectionChanged();
}

void AppState::setVariableValue(const QString &name, const QString &value)
{
    const auto found = m_variableValues.constFind(name);
    if (found != m_variableValues.constEnd() && *found == value)
        return;
    m_variableValues.insert(name, value);
    Q_EMIT variableValuesChanged();
}

void AppState::setLastInsertionResult(const std::optional<InsertionResult> &result)
{
    if (m_lastInsertionResult == result)
        return;
    m_lastInsertionResult = result;
    Q_EMIT lastInsertionResultChanged();
}

void AppState::setPalettePresented(bool presented)
{
    if (m_palettePresented == presented)
        return;
    m_palettePresented = presented;
    Q_EMIT palettePresentedChanged();
}

void AppState::setFocusedTarget(const FocusedTargetPtr &target)
{
    if (m_focusedTarget == target)
        return;
    m_focusedTarget = target;
    Q_EMIT focusedTargetChanged();
}

void AppState::setInsertionRecovery(const std::optional<InsertionRecovery> &recovery)
{
    if (m_insertionRecovery == recovery)
        return;
    m_insertionRecovery = recovery;
    Q_EMIT insertionRecoveryChanged();
}

void AppState::setShareConfirmation(const std::optional<ShareConfirmation> &confirmation)
{
    if (m_shareConfirmation == confirmation)
        return;
    m_shareConfirmation = confirmation;
    Q_EMIT shareConfirmationChanged();
}

void AppState::beginInserting()
{
    if (m_insertionsUnderWay++ == 0)
        Q_EMIT isInsertingChanged();
}

void AppState::endInserting()
{
    if (--m_insertionsUnderWay == 0)
        Q_EMIT isInsertingChanged();
}

// Opening the picker

void AppState::handleHotkey()
{
    setPickerAutoFocusSearch(true);
    handlePaletteInvocation(true);
}

void AppState::handlePaletteInvocation(bool allowCachedTarget)
{
    const auto present = [this] {
        setPalettePresented(true);
        if (presentPaletteAction)
            presentPaletteAction();
    };
    m_invocationTasks.restart();
    detach(invokePalette(allowCachedTarget, present, m_invocationTasks.token()), "opening the picker");
}

void AppState::handleWindowInvocation(std::function<void()> present)
{
    m_invocationTasks.restart();
    detach(invokePalette(true, std::move(present), m_invocationTasks.token()), "opening a window");
}

QCoro::Task<> AppState::invokePalette(bool allowCachedTarget, std::function<void()> present,
                                      std::stop_token token)
{
    if (allowCachedTarget)
        rememberFrontmostExternalApplication();
    m_permissions->refresh();
    const FocusedTargetPtr target = co_await resolvedInsertionTarget(allowCachedTarget, token);
    if (token.stop_requested())
        co_return;
    setFocusedTarget(target);
    setQuery(QString());
    closeVariableForm();
    clearOutcome();
    present();
}

QCoro::Task<FocusedTargetPtr> AppState::resolvedInsertionTarget(bool allowCachedTarget, std::stop_token token)
{
    FocusedTargetPtr captured;
    if (m_permissions->accessibilityGranted()) {
        captured = co_await m_accessibilityService->captureFocusedTarget();
        if (token.stop_requested())
            co_return FocusedTargetPtr();
    }
    if (const FocusedTargetPtr usable = usableExternalTarget(captured))
        co_return usable;
    if (!allowCachedTarget)
        co_return FocusedTargetPtr();
    const FocusedTargetPtr last = co_await targetFromLastExternalApplication(token);
    if (token.stop_requested())
        co_return FocusedTargetPtr();
    co_return last ? last : freshLastExternalFocusedTarget();
}

QCoro::Task<FocusedTargetPtr> AppState::targetFromLastExternalApplication(std::stop_token token)
{
    if (!m_permissions->accessibilityGranted() || !m_lastExternalApplication)
        co_return FocusedTargetPtr();
    const RunningApplication application = *m_lastExternalApplication;
    if (m_environment.workspace.isTerminated(application) || !isExternalApplication(application))
        co_return FocusedTargetPtr();
    const FocusedTargetPtr captured = co_await m_accessibilityService->captureFocusedTarget(application);
    if (token.stop_requested())
        co_return FocusedTargetPtr();
    if (const FocusedTargetPtr usable = usableExternalTarget(captured))
        co_return usable;
    co_return m_accessibilityService->applicationFallbackTarget(application);
}

FocusedTargetPtr AppState::freshLastExternalFocusedTarget() const
{
    const FocusedTargetPtr &target = m_lastExternalFocusedTarget;
    if (!target || target->capturedAt.addSecs(externalTargetFreshness.count()) < m_environment.now())
        return nullptr;
    if (target->application && m_environment.workspace.isTerminated(*target->application))
        return nullptr;
    return target;
}

// Actions

void AppState::clearOutcome()
{
    setLastInsertionResult({});
    setInsertionRecovery({});
    setShareConfirmation({});
}

void AppState::beginAction(const PromptItem &prompt, PendingVariableAction action)
{
    const QList<VariableToken> variables = PromptTemplateParser::variables(prompt.text);
    m_pendingVariableAction = action;
    clearOutcome();
    if (variables.isEmpty()) {
        runPendingAction(PromptTemplateParser::render(prompt, {}));
        return;
    }
    m_variableValues.clear();
    for (const VariableToken &variable : variables)
        m_variableValues.insert(variable.name, QString());
    m_activeVariablePrompt = prompt;
    Q_EMIT activeVariablePromptChanged();
    Q_EMIT variableValuesChanged();
}

void AppState::confirmVariableAction()
{
    if (m_activeVariablePrompt)
        runPendingAction(PromptTemplateParser::render(*m_activeVariablePrompt, m_variableValues));
}

void AppState::cancelVariableAction()
{
    closeVariableForm();
}

void AppState::runPendingAction(const RenderedPrompt &rendered)
{
    if (m_pendingVariableAction == PendingVariableAction::copy)
        performCopy(rendered);
    else
        detach(performInsertion(rendered, m_tasks.token()), "inserting a prompt");
}

void AppState::insertRaw(const PromptItem &prompt)
{
    detach(performInsertion(PromptTemplateParser::render(prompt, {}), m_tasks.token()),
           "inserting a prompt as it is");
}

QCoro::Task<> AppState::performInsertion(RenderedPrompt rendered, std::stop_token token)
{
    setShareConfirmation({});
    const InsertionResult result = co_await insertIntoCurrentTarget(rendered, token);
    if (token.stop_requested())
        co_return;
    if (!result.succeeded) {
        setInsertionRecovery(InsertionRecovery{.renderedPrompt = rendered, .prompt = rendered.prompt});
        Q_EMIT insertionFailed();
        co_return;
    }
    setInsertionRecovery({});
    recordUse(rendered.prompt);
    closeVariableForm();
    dismissPalette();
}

QCoro::Task<InsertionResult> AppState::insertIntoCurrentTarget(RenderedPrompt rendered, std::stop_token token)
{
    beginInserting();
    FocusedTargetPtr target = m_focusedTarget;
    if (!target) {
        target = co_await resolvedInsertionTarget(true, token);
        if (token.stop_requested())
            co_return InsertionResult{};
    }
    setFocusedTarget(target);
    const InsertionResult result = co_await m_insertionService->insert(rendered, target);
    if (token.stop_requested())
        co_return InsertionResult{};
    endInserting();
    setLastInsertionResult(result);
    co_return result;
}

bool AppState::isTargetInFront() const
{
    const auto front = m_environment.workspace.frontmostApplication();
    return m_focusedTarget && front && front->processIdentifier == m_focusedTarget->pid;
}

void AppState::performCopy(const RenderedPrompt &rendered)
{
    setShareConfirmation({});
    finishCopy(rendered.text);
    setInsertionRecovery({});
    recordUse(rendered.prompt);
    closeVariableForm();
}

void AppState::use(const SkillItem &skill)
{
    detach(performSkillInsertion(skill, m_tasks.token()), "inserting a skill");
}

QCoro::Task<> AppState::performSkillInsertion(SkillItem skill, std::stop_token token)
{
    setInsertionRecovery({});
    setShareConfirmation({});
    const RenderedPrompt text = rendered(skill);
    const InsertionResult result = co_await insertIntoCurrentTarget(text, token);
    if (token.stop_requested())
        co_return;
    if (!result.succeeded) {
        setInsertionRecovery(InsertionRecovery{.renderedPrompt = text, .skill = skill});
        Q_EMIT insertionFailed();
        co_return;
    }
    setInsertionRecovery({});
    m_recents->record(skill);
    dismissPalette();
}

void AppState::performSkillCopy(const SkillItem &skill)
{
    setInsertionRecovery({});
    setShareConfirmation({});
    finishCopy(skill.text);
    m_recents->record(skill);
}

void AppState::copyFailedInsertion()
{
    if (!m_insertionRecovery)
        return;
    const InsertionRecovery recovery = *m_insertionRecovery;
    setShareConfirmation({});
    finishCopy(recovery.renderedPrompt.text);
    if (recovery.prompt)
        recordUse(*recovery.prompt);
    else if (recovery.skill)
        m_recents->record(*recovery.skill);
    setInsertionRecovery({});
}

void AppState::finishCopy(const QString &text)
{
    m_insertionService->copy(text);
    setLastInsertionResult(
        InsertionResult::success(InsertionMethod::copiedOnly, QStringLiteral("Prompt copied to clipboard.")));
}

void AppState::recordUse(const PromptItem &prompt)
{
    const CategoriesByID categories = categoriesByID();
    const auto category = categories.constFind(prompt.categoryID);
    const bool isKnown = category != categories.constEnd();
    m_recents->record(prompt, isKnown ? std::optional(category->name) : std::nullopt);
}

void AppState::closeVariableForm()
{
    if (m_activeVariablePrompt) {
        m_activeVariablePrompt.reset();
        Q_EMIT activeVariablePromptChanged();
    }
    if (!m_variableValues.isEmpty()) {
        m_variableValues.clear();
        Q_EMIT variableValuesChanged();
    }
}

void AppState::dismissPalette()
{
    setPalettePresented(false);
    if (dismissPaletteAction)
        dismissPaletteAction();
    Q_EMIT insertionFinished();
}

void AppState::ensurePromptSelection()
{
    if (selectedPrompt())
        return;
    const QList<PromptItem> visible = visiblePrompts();
    setSelectedPromptID(visible.isEmpty() ? std::nullopt : std::optional(visible.first().id));
}

// Derived values

CategoriesByID AppState::categoriesByID() const
{
    CategoriesByID byID;
    for (const PromptCategory &category : m_libraryStore->categories()) {
        if (!byID.contains(category.id))
            byID.insert(category.id, category);
    }
    return byID;
}

QList<PromptItem> AppState::visiblePrompts() const
{
    return PromptSearchRanker::rankedPrompts(m_query, m_libraryPrompts, categoriesByID(),
                                             unique(m_recents->recentIDs()), m_selectedCategoryID);
}

QList<SkillItem> AppState::visibleSkills() const
{
    return SkillSearchRanker::rankedSkills(m_query, m_librarySkills, unique(m_recents->recentSkillIDs()));
}

QList<PromptItem> AppState::recentPromptItems() const
{
    QHash<QString, const PromptItem *> byID;
    for (const PromptItem &prompt : m_libraryPrompts)
        byID.insert(prompt.id, &prompt);
    QList<PromptItem> items;
    for (const QString &id : unique(m_recents->recentIDs())) {
        if (const PromptItem *prompt = byID.value(id))
            items.append(*prompt);
    }
    return items;
}

std::optional<PromptItem> AppState::selectedPrompt() const
{
    const auto found =
        std::find_if(m_libraryPrompts.begin(), m_libraryPrompts.end(),
                     [this](const PromptItem &prompt) { return prompt.id == m_selectedPromptID; });
    return found == m_libraryPrompts.end() ? std::nullopt : std::optional(*found);
}

QList<PickerResultSection> AppState::resultSections() const
{
    const QList<PickerResult> recent = PickerResults::recentPickerResults(
        m_libraryPrompts, m_librarySkills, m_recents->recents(), m_recents->recentSkills());
    return PickerResults::resultSections(m_query, recent, visiblePrompts(), visibleSkills(),
                                         m_libraryStore->syncState());
}

QList<PromptCategory> AppState::libraryCategories() const
{
    return uniqueByID(m_libraryStore->categories());
}

QList<PickerResult> AppState::libraryResults(const QString &query, const LibraryFilter &filter) const
{
    return PickerResults::libraryResults(query, filter, m_libraryPrompts, m_librarySkills, categoriesByID(),
                                         unique(m_recents->recentIDs()), unique(m_recents->recentSkillIDs()));
}

PickerTargetStatus AppState::targetStatus() const
{
    const bool isSecure = m_focusedTarget && AccessibilityService::isSecureField(*m_focusedTarget);
    return PickerResults::targetStatus(m_permissions->accessibilityGranted(),
                                       m_permissions->postEventGranted(), m_focusedTarget, isSecure,
                                       hotkeyLabel());
}

QString AppState::hotkeyLabel() const
{
    return m_preferences->preferredShortcut().displayLabel();
}

void AppState::readLibrary()
{
    m_libraryPrompts = uniqueByID(m_libraryStore->prompts());
    m_librarySkills = uniqueByID(m_libraryStore->skills());
    m_searchTasks.restart();
    detach(SearchRanking::prepare(searchedTexts(m_libraryPrompts, m_librarySkills), m_searchTasks.token()),
           "preparing the search");
    Q_EMIT libraryChanged();
}
