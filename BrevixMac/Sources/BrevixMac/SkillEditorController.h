// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <memory>

class AppState;
class SkillEditorView;
class QDataStream;

/// Owns the window of the skill editor, made on first use. Main thread only.
class SkillEditorController
{
public:
    /// @p appState must outlive this object.
    explicit SkillEditorController(AppState &appState);

    /// A window cannot be created from an archive: stops the program.
    [[noreturn]] explicit SkillEditorController(QDataStream &coder);

    ~SkillEditorController();

    SkillEditorController(const SkillEditorController &) = delete;
    SkillEditorController &operator=(const SkillEditorController &) = delete;

    /// Shows the window in front of the others.
    void show();

    /// Null before the first show().
    SkillEditorView *view() const { return m_view.get(); }

private:
    AppState *m_appState = nullptr;
    std::unique_ptr<SkillEditorView> m_view;
};
