// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Models.h"

#include <QWidget>

class AppState;
class TextField;

/// One labelled text field per variable of a prompt, bound to AppState::variableValues(). Every form that
/// fills variables is made of it.
class VariableFields final : public QWidget
{
    Q_OBJECT

public:
    /// What stands in an empty field: "Value", or "Value for " and the variable's name.
    enum class Placeholder { value, valueForName };

    /// @p appState must outlive this widget.
    VariableFields(AppState &appState, Placeholder placeholder, QWidget *parent = nullptr);

    /// Makes the fields of @p prompt anew; the values come from AppState.
    void setPrompt(const PromptItem &prompt);

    const QList<TextField *> &fields() const { return m_fields; }

    void focusFirst();

Q_SIGNALS:
    /// Return was pressed in a field.
    void confirmed();
    /// A field has got the focus: it should be in view.
    void fieldFocused(QWidget *field);

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    void addField(const VariableToken &variable);
    void showValues();

    AppState &m_appState;
    Placeholder m_placeholder;
    QList<VariableToken> m_variables;
    QList<TextField *> m_fields;
};
