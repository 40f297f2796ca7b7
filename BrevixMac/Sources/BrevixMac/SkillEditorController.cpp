// SPDX-License-Identifier: GPL-3.0-or-later
#include "SkillEditorController.h"

#include "ProgrammingError.h"
#include "SkillEditorView.h"

SkillEditorController::SkillEditorController(AppState &appState)
    : m_appState(&appState)
{
}

SkillEditorController::SkillEditorController(QDataStream &)
{
    stopOnArchive();
}

SkillEditorController::~SkillEditorController() = default;

void SkillEditorController::show()
{
    if (!m_view)
        m_view = std::make_unique<SkillEditorView>(*m_appState);
    m_view->present();
}
