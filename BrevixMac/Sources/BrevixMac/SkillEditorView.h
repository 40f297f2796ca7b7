// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "EditorWindow.h"

#include <QTimer>

class AppState;
class QFileDialog;
class QBoxLayout;
class QVBoxLayout;
class EditorTextView;
class SkillEditorModel;
class TextField;
class TextLabel;
class ThemedButton;
struct SkillItem;

/// The skill editor: a window in which a skill is typed, pasted or imported from a text file, by a file
/// chooser, by dropping the file or by pasting it. After a save it closes, and AppState has the new skill
/// selected.
class SkillEditorView final : public EditorWindow
{
    Q_OBJECT

public:
    /// @p appState must outlive this widget.
    explicit SkillEditorView(AppState &appState);

    SkillEditorModel &model() const { return *m_model; }
    EditorFrame &frame() const { return *m_frame; }
    TextField &titleField() const { return *m_title; }
    EditorTextView &body() const { return *m_body; }
    ThemedButton &importButton() const { return *m_import; }
    ThemedButton &removeButton() const { return *m_remove; }
    TextLabel &sourceLine() const { return *m_source; }
    TextLabel &statisticsLine() const { return *m_statistics; }
    TextLabel &previewTitle() const { return *m_previewTitle; }
    EditorTextView &preview() const { return *m_preview; }

    /// The file chooser, while it is open.
    QFileDialog *fileChooser() const;
    void chooseFile();

protected:
    void focusFirst() override;
    void report() override;
    void dragEnterEvent(QDragEnterEvent *event) override;
    void dropEvent(QDropEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;

private:
    QWidget *makeForm();
    void addFields(QVBoxLayout &column);
    void addInspector(QVBoxLayout &column);
    void observeModel();
    void onTextEdited();
    void showContent();
    void showText();
    void showTitle();
    void refreshImport();
    void refreshStatistics();
    void showInList(const SkillItem &skill);

    AppState &m_appState;
    SkillEditorModel *m_model;
    TextField *m_title;
    EditorTextView *m_body;
    ThemedButton *m_import;
    ThemedButton *m_remove;
    TextLabel *m_source;
    TextLabel *m_statistics;
    TextLabel *m_previewTitle;
    EditorTextView *m_preview;
    EditorFrame *m_frame;
    QBoxLayout *m_columns = nullptr;
    QTimer m_counting;
};
