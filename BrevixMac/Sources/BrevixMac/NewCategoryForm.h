// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QFrame>

class ColorSwatches;
class PromptEditorModel;
class TextField;
class ThemedButton;

/// A name, one of six colours, and Create: the form for a new category. Return creates.
class NewCategoryForm final : public QFrame
{
    Q_OBJECT

public:
    /// @p model must outlive this widget.
    NewCategoryForm(PromptEditorModel &model, QWidget *parent);

    TextField &nameField() const { return *m_name; }
    ColorSwatches &swatches() const { return *m_swatches; }
    ThemedButton &createButton() const { return *m_create; }

protected:
    void paintEvent(QPaintEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;

private:
    void refresh();
    void onThemeChanged();

    PromptEditorModel &m_model;
    TextField *m_name;
    ColorSwatches *m_swatches;
    ThemedButton *m_create;
};
