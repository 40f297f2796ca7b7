// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Models.h"

#include <QWidget>

class QVBoxLayout;
class TextField;
class TextLabel;

/// One labelled text field per variable of a prompt. Every form that fills variables is made of it. Keeps no
/// value: it shows those it is given and reports each edit. A value that is too long to be edited in one line
/// is refused with a note, never cut.
class VariableFields final : public QWidget
{
    Q_OBJECT

public:
    /// What stands in an empty field: "Value", or "Value for " and the variable's name.
    enum class Placeholder { value, valueForName };

    /// The longest value, in UTF-16 units: a field lays its line out at every key.
    static constexpr int longestValue = 128 * 1024;
    /// The most fields of one prompt.
    static constexpr qsizetype mostFields = 200;

    explicit VariableFields(Placeholder placeholder, QWidget *parent = nullptr);

    /// Makes the fields of @p prompt anew, filled with @p values.
    void setPrompt(const PromptItem &prompt, const VariableValues &values);

    /// A variable without an entry shows an empty field.
    void setValues(const VariableValues &values);

    const QList<TextField *> &fields() const { return m_fields; }

    /// The fields, as Tab visits them.
    QList<QWidget *> tabOrder() const;

    /// What is said below the fields, empty as a rule.
    QString note() const;

    void focusFirst();

Q_SIGNALS:
    void valueEdited(const QString &name, const QString &value);
    /// Return was pressed in a field.
    void confirmed();

private:
    void addField(const VariableToken &variable);
    void onEdited(TextField &field, const QString &name, const QString &value);
    void setNote(const QString &note);

    Placeholder m_placeholder;
    QList<VariableToken> m_variables;
    QList<TextField *> m_fields;
    QString m_bound; ///< what is said of variables without a field
    QVBoxLayout *m_column;
    TextLabel *m_note;
};
