// SPDX-License-Identifier: GPL-3.0-or-later
#include "VariableFillView.h"

#include "AppState.h"
#include "ResultLine.h"

VariableFillView::VariableFillView(AppState &appState, QWidget *parent)
    : VariableForm({.title = QStringLiteral("Fill Variables"),
                    .cancel = QStringLiteral("Back"),
                    .confirm = QStringLiteral("Continue"),
                    .placeholder = VariableFields::Placeholder::valueForName},
                   parent)
    , m_appState(appState)
{
    addNotice(new ResultLine(appState, this));
    connect(this, &VariableForm::valueEdited, &appState, &AppState::setVariableValue);
    connect(this, &VariableForm::confirmed, &appState, &AppState::confirmVariableAction);
    connect(this, &VariableForm::cancelled, &appState, &AppState::cancelVariableAction);
    connect(&appState, &AppState::variableValuesChanged, this, &VariableFillView::showValues);
    connect(&appState, &AppState::isInsertingChanged, this, [this] { setBusy(m_appState.isInserting()); });
}

void VariableFillView::begin()
{
    const auto &prompt = m_appState.activeVariablePrompt();
    if (!prompt)
        return;
    setBusy(m_appState.isInserting());
    VariableForm::begin(*prompt, m_appState.variableValues());
}

void VariableFillView::showValues()
{
    if (m_appState.activeVariablePrompt() && !isHidden())
        setValues(m_appState.variableValues());
}
