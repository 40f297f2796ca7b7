// SPDX-License-Identifier: GPL-3.0-or-later
#include "VariableFields.h"

#include "OneLine.h"
#include "PromptTemplateParser.h"
#include "TextField.h"
#include "TextLabel.h"

#include <QVBoxLayout>

#include <algorithm>
#include <utility>

namespace {

constexpr int labelGap = 3;
constexpr int fieldGap = 6;

} // namespace

VariableFields::VariableFields(Placeholder placeholder, QWidget *parent)
    : QWidget(parent)
    , m_placeholder(placeholder)
    , m_column(new QVBoxLayout)
    , m_note(new TextLabel(Theme::Type::caption, Theme::Color::warning, TextLabel::Overflow::wrap, this))
{
    m_column->setContentsMargins(0, 0, 0, 0);
    m_column->setSpacing(0);
    m_note->setContentsMargins(Theme::haloWidth, labelGap, 0, 0);
    auto *whole = new QVBoxLayout(this);
    whole->setContentsMargins(0, 0, 0, 0);
    whole->setSpacing(0);
    whole->addLayout(m_column);
    whole->addWidget(m_note);
    m_note->hide();
}

void VariableFields::setPrompt(const PromptItem &prompt, const VariableValues &values)
{
    m_fields.clear();
    while (QLayoutItem *item = m_column->takeAt(0)) {
        delete item->widget();
        delete item;
    }
    m_variables = PromptTemplateParser::variables(prompt.text);
    const qsizetype found = m_variables.size();
    m_variables.resize(std::min(found, mostFields));
    for (const VariableToken &variable : std::as_const(m_variables))
        addField(variable);
    m_bound = found <= mostFields
                  ? QString()
                  : QStringLiteral("This prompt has %L1 variables. Those after the first %L2 stay empty.")
                        .arg(found)
                        .arg(mostFields);
    setNote(m_bound);
    setValues(values);
}

QList<QWidget *> VariableFields::tabOrder() const
{
    return {m_fields.cbegin(), m_fields.cend()};
}

QString VariableFields::note() const
{
    return m_note->text();
}

void VariableFields::setNote(const QString &note)
{
    m_note->setText(note);
    m_note->setVisible(!note.isEmpty());
}

void VariableFields::onEdited(TextField &field, const QString &name, const QString &value)
{
    if (value.size() > longestValue) {
        field.undo(); // says that it was edited, too
        setNote(QStringLiteral("That text is too long for a field. A value can have %L1 characters.")
                    .arg(longestValue));
        return;
    }
    setNote(m_bound);
    Q_EMIT valueEdited(name, value);
}

void VariableFields::addField(const VariableToken &variable)
{
    const QString name = OneLine::of(variable.name);
    if (!m_fields.isEmpty())
        m_column->addSpacing(fieldGap);
    auto *label =
        new TextLabel(Theme::Type::sectionTitle, Theme::Color::secondary, TextLabel::Overflow::elide, this);
    label->setText(name);
    label->setContentsMargins(Theme::haloWidth, 0, 0, 0);
    auto *field = new TextField(this);
    field->setPlaceholderText(m_placeholder == Placeholder::value ? QStringLiteral("Value")
                                                                  : QString(u"Value for " + name));
    field->setAccessibleName(name);
    field->setMaxLength(longestValue + 1); // one more, so that what does not fit is noticed
    m_column->addWidget(label);
    m_column->addSpacing(labelGap);
    m_column->addWidget(field);
    // The layout would show them only later, and what is not shown cannot have the focus.
    label->show();
    field->show();
    m_fields.append(field);
    connect(field, &QLineEdit::textEdited, this,
            [this, field, key = variable.name](const QString &value) { onEdited(*field, key, value); });
    connect(field, &QLineEdit::returnPressed, this, &VariableFields::confirmed);
}

void VariableFields::setValues(const VariableValues &values)
{
    for (qsizetype index = 0; index < m_fields.size(); ++index) {
        const QString value = values.value(m_variables.at(index).name);
        // Writing an equal text would move the caret.
        if (m_fields.at(index)->text() != value)
            m_fields.at(index)->setText(value);
    }
}

void VariableFields::focusFirst()
{
    if (!m_fields.isEmpty())
        m_fields.first()->setFocus();
}
