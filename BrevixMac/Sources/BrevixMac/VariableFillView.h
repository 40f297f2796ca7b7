// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "VariableForm.h"

class AppState;

/// The form that fills the variables of AppState::activeVariablePrompt(). Holds no value itself: all of them
/// are in AppState. Continue is the default action.
class VariableFillView final : public VariableForm
{
    Q_OBJECT

public:
    /// @p appState must outlive this widget.
    explicit VariableFillView(AppState &appState, QWidget *parent = nullptr);

    /// Shows AppState::activeVariablePrompt() and puts the focus into the first field.
    void begin();

    ThemedButton &backButton() const { return cancelButton(); }
    ThemedButton &continueButton() const { return confirmButton(); }

private:
    void showValues();

    AppState &m_appState;
};
