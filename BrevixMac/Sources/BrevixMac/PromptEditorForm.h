// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QWidget>

class CategoryField;
class EditorTextView;
class NewCategoryForm;
class PromptBodyTextView;
class PromptEditorModel;
class QBoxLayout;
class QVBoxLayout;
class TextField;
class TextLabel;
class ThemedButton;
class VariableChips;

/// The words in which the two prompt editors differ.
struct PromptEditorTexts
{
    QString line;             ///< under the title "New Prompt"
    QString hideNewCategory;  ///< the toggle while the new-category form is open
    QString optimize;         ///< the optimise button
    QString variablesHeading; ///< empty for none
    QString variablesHint;
    QString insertVariable;
    QString save;
    QString categoryNeeded; ///< the problem of saving without a category
};

/// The fields of a new prompt, for both editors: in one column, or in a form column and an inspector column.
/// Shows and forwards; PromptEditorModel decides.
class PromptEditorForm final : public QWidget
{
    Q_OBJECT

public:
    enum class Columns { one, two };

    /// @p margin is free at both sides. @p model must outlive this widget.
    PromptEditorForm(PromptEditorModel &model, const PromptEditorTexts &texts, Columns columns, int margin,
                     QWidget *parent);

    /// Puts the focus where writing begins.
    void focusFirst();

    /// Its controls as Tab visits them.
    QList<QWidget *> tabOrder() const;

    TextField &titleField() const { return *m_title; }
    CategoryField &categoryField() const { return *m_category; }
    ThemedButton &newCategoryToggle() const { return *m_newCategoryToggle; }
    NewCategoryForm &newCategoryForm() const { return *m_newCategory; }
    PromptBodyTextView &body() const { return *m_body; }
    ThemedButton &optimizeButton() const { return *m_optimize; }
    ThemedButton &undoOptimizeButton() const { return *m_undoOptimize; }
    TextField &variableField() const { return *m_variable; }
    ThemedButton &insertButton() const { return *m_insert; }
    VariableChips &chips() const { return *m_chips; }
    EditorTextView &preview() const { return *m_preview; }

protected:
    void resizeEvent(QResizeEvent *event) override;

private:
    void addWritingFields(QVBoxLayout &column);
    void addVariables(QVBoxLayout &column);
    void addPreview(QVBoxLayout &column, int stretch);
    void layOutOneColumn(int margin);
    void layOutTwoColumns(int margin);
    void observeModel();
    void onTextEdited();
    void showContent();
    void refreshCategories();
    void refreshNewCategory();
    void refreshOptimization();
    void refreshText();
    void setEditable();

    PromptEditorModel &m_model;
    PromptEditorTexts m_texts;
    TextField *m_title;
    CategoryField *m_category;
    ThemedButton *m_newCategoryToggle;
    NewCategoryForm *m_newCategory;
    PromptBodyTextView *m_body;
    ThemedButton *m_optimize;
    ThemedButton *m_undoOptimize;
    TextField *m_variable;
    ThemedButton *m_insert;
    VariableChips *m_chips;
    EditorTextView *m_preview;
    QBoxLayout *m_columns = nullptr; ///< where there are two
};
