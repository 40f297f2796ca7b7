// SPDX-License-Identifier: GPL-3.0-or-later
#include "ResultActions.h"

#include "AppState.h"
#include "PickerList.h"
#include "PromptTemplateParser.h"
#include "ResultLine.h"
#include "SearchListKeys.h"
#include "ShareRequests.h"

ResultActions::ResultActions(const Screen &screen, QObject *parent)
    : QObject(parent)
    , m_screen(screen)
{
    const PickerList &list = screen.list;
    const auto *keys = new SearchListKeys(screen.search, screen.list, this);
    connect(keys, &SearchListKeys::insertRequested, this, &ResultActions::insert);
    connect(keys, &SearchListKeys::copyRequested, this, &ResultActions::copy);
    connect(&list, &PickerList::insertRequested, this, &ResultActions::insert);
    connect(&list.actions(), &PickerRowActions::insertRequested, this, &ResultActions::insert);
    connect(&list.actions(), &PickerRowActions::copyRequested, this, &ResultActions::copy);
    connect(&list.actions(), &PickerRowActions::shareRequested, this, &ResultActions::share);

    const AppState &state = screen.appState;
    const PermissionsService &permissions = screen.appState.permissions();
    const auto changed = &ResultActions::circumstancesChanged;
    connect(&state, &AppState::focusedTargetChanged, this, changed);
    connect(&state, &AppState::isInsertingChanged, this, changed);
    connect(&permissions, &PermissionsService::accessibilityGrantedChanged, this, changed);
    connect(&permissions, &PermissionsService::postEventGrantedChanged, this, changed);
    connect(&screen.sharing, &ShareRequests::changed, this, changed);
}

void ResultActions::insert()
{
    const PickerResult *selected = m_screen.list.selectedResult();
    if (!selected || m_screen.appState.isInserting())
        return;
    const PickerTargetStatus status = m_screen.appState.targetStatus();
    if (!status.ready) {
        m_screen.result.showHint(status.title, QStringLiteral("Press Ctrl+Return to copy instead."));
        return;
    }
    // A copy: acting may replace the list the pointer looks into.
    const PickerResult result = *selected;
    if (result.prompt())
        m_screen.appState.beginAction(*result.prompt(), PendingVariableAction::insert);
    else
        m_screen.appState.use(*result.skill());
}

void ResultActions::copy()
{
    const PickerResult *selected = m_screen.list.selectedResult();
    if (!selected)
        return;
    const PickerResult result = *selected;
    if (result.skill())
        m_screen.appState.performSkillCopy(*result.skill());
    else if (m_fillBeforeCopy && !PromptTemplateParser::variables(result.prompt()->text).isEmpty())
        m_fillBeforeCopy(*result.prompt());
    else
        m_screen.appState.beginAction(*result.prompt(), PendingVariableAction::copy);
}

void ResultActions::share()
{
    if (const PickerResult *selected = m_screen.list.selectedResult())
        m_screen.sharing.share(PickerResult(*selected));
}

bool ResultActions::isSharing() const
{
    const PickerResult *selected = m_screen.list.selectedResult();
    return selected && m_screen.sharing.isSharing(selected->id());
}

void ResultActions::describe()
{
    m_screen.list.describeActions({.target = m_screen.appState.targetStatus(),
                                   .isInserting = m_screen.appState.isInserting(),
                                   .isSharing = isSharing()});
}
