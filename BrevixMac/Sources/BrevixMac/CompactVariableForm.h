// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QWidget>

class AppState;
class TextLabel;
class ThemedButton;
class VariableFields;

/// The short form of VariableFillView that stands in the place of the picker's list, for prompts with few
/// variables. Continue is the default action.
class CompactVariableForm final : public QWidget
{
    Q_OBJECT

public:
    /// Prompts with more variables get the full form.
    static constexpr qsizetype mostVariables = 2;

    /// @p appState must outlive this widget.
    explicit CompactVariableForm(AppState &appState, QWidget *parent = nullptr);

    /// Shows AppState::activeVariablePrompt() and puts the focus into the first field.
    void begin();

    /// Its controls as Tab visits them.
    QList<QWidget *> tabOrder() const;

    VariableFields &fields() const { return *m_fields; }
    ThemedButton &backButton() const { return *m_back; }
    ThemedButton &continueButton() const { return *m_continue; }

protected:
    void keyPressEvent(QKeyEvent *event) override;

private:
    void refreshButtons();
    void confirm();

    AppState &m_appState;
    TextLabel *m_promptTitle;
    VariableFields *m_fields;
    ThemedButton *m_back;
    ThemedButton *m_continue;
};
