// SPDX-License-Identifier: GPL-3.0-or-later
#include "VariableFields.h"

#include "OneLine.h"
#include "PromptTemplateParser.h"
#include "TextField.h"
#include "TextLabel.h"

#include <QEvent>
#include <QVBoxLayout>

namespace {

constexpr int labelGap = 3;
constexpr int fieldGap = 6;

} // namespace

VariableFields::VariableFields(Placeholder placeholder, QWidget *parent)
    : QWidget(parent)
    , m_placeholder(placeholder)
{
    auto *column = new QVBoxLayout(this);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(0);
}

void VariableFields::setPrompt(const PromptItem &prompt, const VariableValues &values)
{
    m_fields.clear();
    while (QLayoutItem *item = layout()->takeAt(0)) {
        delete item->widget();
        delete item;
    }
    m_variables = PromptTemplateParser::variables(prompt.text);
    for (const VariableToken &variable : std::as_const(m_variables))
        addField(variable);
    for (qsizetype index = 1; index < m_fields.size(); ++index)
        setTabOrder(m_fields.at(index - 1), m_fields.at(index));
    setValues(values);
}

void VariableFields::addField(const VariableToken &variable)
{
    const QString name = OneLine::of(variable.name);
    auto *column = static_cast<QVBoxLayout *>(layout());
    if (!m_fields.isEmpty())
        column->addSpacing(fieldGap);
    auto *label =
        new TextLabel(Theme::Type::sectionTitle, Theme::Color::secondary, TextLabel::Overflow::elide, this);
    label->setText(name);
    label->setContentsMargins(Theme::haloWidth, 0, 0, 0);
    auto *field = new TextField(this);
    field->setPlaceholderText(m_placeholder == Placeholder::value ? QStringLiteral("Value")
                                                                  : QString(u"Value for " + name));
    field->setAccessibleName(name);
    field->installEventFilter(this);
    column->addWidget(label);
    column->addSpacing(labelGap);
    column->addWidget(field);
    // The layout would show them only later, and what is not shown cannot have the focus.
    label->show();
    field->show();
    m_fields.append(field);
    connect(field, &QLineEdit::textEdited, this,
            [this, key = variable.name](const QString &value) { Q_EMIT valueEdited(key, value); });
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

bool VariableFields::eventFilter(QObject *watched, QEvent *event)
{
    if (event->type() == QEvent::FocusIn)
        Q_EMIT fieldFocused(static_cast<QWidget *>(watched));
    return QWidget::eventFilter(watched, event);
}
