// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "EditorWindow.h"

class AppState;
class PromptEditorForm;
class PromptEditorModel;
struct PromptItem;

/// The prompt editor in a window of its own. After a save it closes, and AppState's search shows the new
/// prompt.
class PromptEditorView final : public EditorWindow
{
    Q_OBJECT

public:
    /// @p appState must outlive this widget.
    explicit PromptEditorView(AppState &appState);

    PromptEditorModel &model() const { return *m_model; }
    PromptEditorForm &form() const { return *m_form; }
    EditorFrame &frame() const { return *m_frame; }

protected:
    void focusFirst() override;
    void report() override;

private:
    void showInList(const PromptItem &prompt);

    AppState &m_appState;
    PromptEditorModel *m_model;
    PromptEditorForm *m_form;
    EditorFrame *m_frame;
};
