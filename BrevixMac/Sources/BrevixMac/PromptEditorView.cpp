// SPDX-License-Identifier: GPL-3.0-or-later
#include "PromptEditorView.h"

#include "AppState.h"
#include "EditorFrame.h"
#include "PromptBodyTextView.h"
#include "PromptEditorForm.h"
#include "PromptEditorModel.h"
#include "Theme.h"

namespace {

constexpr QSize designSize(880, 640);

PromptEditorTexts texts()
{
    return {
        .line = QStringLiteral(
            "Create a reusable Brevix prompt with variables, categories, and AI optimization."),
        .hideNewCategory = QStringLiteral("Hide New Category"),
        .optimize = QStringLiteral("Optimize with AI"),
        .variablesHeading = QStringLiteral("Variables"),
        .variablesHint = QStringLiteral("Use {{variable}} in the prompt text to create dynamic fields."),
        .insertVariable = QStringLiteral("Insert Variable"),
        .save = QStringLiteral("Create Prompt"),
        .categoryNeeded = QStringLiteral("Create a category before saving your first prompt."),
    };
}

} // namespace

PromptEditorView::PromptEditorView(AppState &appState)
    : EditorWindow(QStringLiteral("New Prompt"), designSize)
    , m_appState(appState)
    , m_model(new PromptEditorModel(appState, DraftStore::Form::promptWindow, texts().categoryNeeded, this))
    , m_form(new PromptEditorForm(*m_model, texts(), PromptEditorForm::Columns::two, Theme::margin, this))
    , m_frame(new EditorFrame(*m_model, makeHeader(QStringLiteral("text.quote"), texts().line), m_form,
                              texts().save, Theme::margin, this))
{
    setFrame(*m_model, *m_frame);
    m_frame->setTabOrders({}, m_form->tabOrder());
    connect(m_model, &PromptEditorModel::promptSaved, this, &PromptEditorView::showInList);
}

void PromptEditorView::focusFirst()
{
    m_form->focusFirst();
}

void PromptEditorView::report()
{
    m_form->body().report();
}

void PromptEditorView::showInList(const PromptItem &prompt)
{
    // Not the prompt's own category: a filter that stays behind would hide the rest of the library from the
    // picker, which has no control to clear it.
    m_appState.setSelectedCategoryID({});
    m_appState.setQuery(prompt.title);
    m_appState.setSelectedPromptID(prompt.id);
}
