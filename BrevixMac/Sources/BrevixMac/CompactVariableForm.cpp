// SPDX-License-Identifier: GPL-3.0-or-later
#include "CompactVariableForm.h"

#include "AppState.h"
#include "ContentScrollArea.h"
#include "OneLine.h"
#include "TextField.h"
#include "TextLabel.h"
#include "ThemedButton.h"
#include "VariableFields.h"

#include <QHBoxLayout>
#include <QKeyEvent>

namespace {

constexpr int halo = Theme::haloWidth;
constexpr int leastFieldsHeight = 70;

} // namespace

CompactVariableForm::CompactVariableForm(AppState &appState, QWidget *parent)
    : QWidget(parent)
    , m_appState(appState)
    , m_promptTitle(
          new TextLabel(Theme::Type::caption, Theme::Color::secondary, TextLabel::Overflow::elide, this))
    , m_fields(new VariableFields(VariableFields::Placeholder::value))
    , m_back(new ThemedButton(ThemedButton::Kind::quiet, QStringLiteral("Back"), this))
    , m_continue(new ThemedButton(ThemedButton::Kind::primary, QStringLiteral("Continue"), this))
{
    auto *title = new TextLabel(Theme::Type::rowTitle, Theme::Color::text, TextLabel::Overflow::elide, this);
    title->setText(QStringLiteral("Fill Variables"));
    for (TextLabel *label : {title, m_promptTitle})
        label->setContentsMargins(halo, 0, 0, 0);
    auto *scroll = new ContentScrollArea(m_fields, leastFieldsHeight, Theme::margin - halo, this);
    m_continue->setTrailingSymbol(QStringLiteral("return"));

    auto *buttons = new QHBoxLayout;
    buttons->setContentsMargins(0, 0, Theme::margin - halo, 0);
    buttons->setSpacing(8 - 2 * halo);
    buttons->addStretch(1);
    buttons->addWidget(m_back);
    buttons->addWidget(m_continue);

    auto *column = new QVBoxLayout(this);
    column->setContentsMargins(Theme::margin - halo, 12, 0, 0);
    column->setSpacing(0);
    column->addWidget(title);
    column->addWidget(m_promptTitle);
    column->addSpacing(10);
    column->addWidget(scroll);
    column->addSpacing(6);
    column->addLayout(buttons);
    column->addStretch(1);

    connect(m_back, &QPushButton::clicked, this, [this] { m_appState.cancelVariableAction(); });
    connect(m_continue, &QPushButton::clicked, this, &CompactVariableForm::confirm);
    connect(m_fields, &VariableFields::valueEdited, &appState, &AppState::setVariableValue);
    connect(&appState, &AppState::variableValuesChanged, this,
            [this] { m_fields->setValues(m_appState.variableValues()); });
    connect(m_fields, &VariableFields::confirmed, this, &CompactVariableForm::confirm);
    connect(&appState, &AppState::isInsertingChanged, this, &CompactVariableForm::refreshButtons);
}

void CompactVariableForm::begin()
{
    const auto &prompt = m_appState.activeVariablePrompt();
    if (!prompt)
        return;
    m_promptTitle->setText(OneLine::of(prompt->title));
    m_fields->setPrompt(*prompt, m_appState.variableValues());
    refreshButtons();
    m_fields->focusFirst();
}

QList<QWidget *> CompactVariableForm::tabOrder() const
{
    return m_fields->tabOrder() << m_back << m_continue;
}

void CompactVariableForm::refreshButtons()
{
    m_continue->setBusy(m_appState.isInserting());
    m_continue->setEnabled(!m_appState.isInserting());
}

void CompactVariableForm::confirm()
{
    if (!m_appState.isInserting())
        m_appState.confirmVariableAction();
}

void CompactVariableForm::keyPressEvent(QKeyEvent *event)
{
    if (event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter)
        confirm();
    else
        QWidget::keyPressEvent(event);
}
