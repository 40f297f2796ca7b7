// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <memory>

class AppState;
class PromptEditorView;
class QDataStream;

/// Owns the window of the prompt editor, made on first use. Main thread only.
class PromptEditorController
{
public:
    /// @p appState must outlive this object.
    explicit PromptEditorController(AppState &appState);

    /// A window cannot be created from an archive: stops the program.
    [[noreturn]] explicit PromptEditorController(QDataStream &coder);

    ~PromptEditorController();

    PromptEditorController(const PromptEditorController &) = delete;
    PromptEditorController &operator=(const PromptEditorController &) = delete;

    /// Shows the window in front of the others.
    void show();

    /// Null before the first show().
    PromptEditorView *view() const { return m_view.get(); }

private:
    AppState *m_appState = nullptr;
    std::unique_ptr<PromptEditorView> m_view;
};
