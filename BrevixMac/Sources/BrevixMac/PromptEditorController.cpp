// SPDX-License-Identifier: GPL-3.0-or-later
#include "PromptEditorController.h"

#include "ProgrammingError.h"
#include "PromptEditorView.h"

PromptEditorController::PromptEditorController(AppState &appState)
    : m_appState(&appState)
{
}

PromptEditorController::PromptEditorController(QDataStream &)
{
    stopOnArchive();
}

PromptEditorController::~PromptEditorController() = default;

void PromptEditorController::show()
{
    if (!m_view)
        m_view = std::make_unique<PromptEditorView>(*m_appState);
    m_view->present();
}
