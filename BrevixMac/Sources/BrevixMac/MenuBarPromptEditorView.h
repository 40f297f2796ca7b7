// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QWidget>

class AppState;
class EditorFrame;
class PageHeader;
class PromptEditorForm;
class PromptEditorModel;
class ThemedButton;

/// The prompt editor inside the picker panel. What is typed outlives the panel's closing and the program's
/// end, until it is saved or cancelled.
class MenuBarPromptEditorView final : public QWidget
{
    Q_OBJECT

public:
    /// @p appState must outlive this widget.
    explicit MenuBarPromptEditorView(AppState &appState, QWidget *parent = nullptr);

    PromptEditorModel &model() const { return *m_model; }
    PromptEditorForm &form() const { return *m_form; }
    EditorFrame &frame() const { return *m_frame; }
    ThemedButton &windowButton() const { return *m_openWindow; }

Q_SIGNALS:
    /// The user goes back without saving, by Back, Cancel or Escape.
    void cancelled();
    void saved();
    /// The user wants to go on in a window.
    void windowRequested();

protected:
    void showEvent(QShowEvent *event) override;
    void hideEvent(QHideEvent *event) override;

private:
    PromptEditorModel *m_model;
    PageHeader *m_header;
    ThemedButton *m_openWindow;
    PromptEditorForm *m_form;
    EditorFrame *m_frame;
};
