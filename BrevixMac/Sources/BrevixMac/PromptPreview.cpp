// SPDX-License-Identifier: GPL-3.0-or-later
#include "PromptPreview.h"

#include "EmptyState.h"
#include "OneLine.h"
#include "PreviewBox.h"
#include "PreviewText.h"
#include "PromptTemplateParser.h"
#include "TextLabel.h"

#include <QScrollBar>
#include <QStackedWidget>
#include <QVBoxLayout>

namespace {

constexpr int halo = Theme::haloWidth;
constexpr int sideMargin = 18;

/// Values with which a prompt renders as it is written, so that its variables are marked where they stand.
VariableValues placeholders(const PromptItem &prompt)
{
    VariableValues values;
    for (const VariableToken &variable : PromptTemplateParser::variables(prompt.text))
        values.insert(variable.name, u"{{" + variable.name + u"}}");
    return values;
}

} // namespace

PromptPreview::PromptPreview(QWidget *parent)
    : QWidget(parent)
    , m_title(new TextLabel(Theme::Type::rowTitle, Theme::Color::text, TextLabel::Overflow::elide))
    , m_category(new TextLabel(Theme::Type::caption, Theme::Color::secondary, TextLabel::Overflow::elide))
    , m_text(new PreviewText)
    , m_empty(new EmptyState)
    , m_stack(new QStackedWidget(this))
{
    for (TextLabel *label : {m_title, m_category})
        label->setContentsMargins(halo, 0, halo, 0);
    m_empty->setButtonsShown(false);
    m_empty->describe(QStringLiteral("text.quote"), {}, QStringLiteral("Choose a prompt to preview it."));
    auto *page = new QWidget;
    auto *column = new QVBoxLayout(page);
    column->setContentsMargins(sideMargin - halo, 10, sideMargin - halo, 8);
    column->setSpacing(2);
    column->addWidget(m_title);
    column->addWidget(m_category);
    column->addSpacing(6);
    column->addWidget(new PreviewBox(m_text));
    column->addStretch(1);
    m_stack->addWidget(page);
    m_stack->addWidget(m_empty);
    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(m_stack);
    m_stack->setCurrentWidget(m_empty);
}

void PromptPreview::show(const std::optional<PromptItem> &prompt, const QString &categoryName)
{
    m_category->setText(OneLine::of(categoryName));
    m_category->setVisible(!categoryName.isEmpty());
    // Writing the same text again would lose the reader's place and selection.
    if (prompt == m_prompt)
        return;
    m_prompt = prompt;
    m_stack->setCurrentIndex(prompt ? 0 : 1);
    if (!prompt)
        return;
    m_title->setText(OneLine::of(prompt->title));
    m_text->setPrompt(*prompt, placeholders(*prompt));
    m_text->verticalScrollBar()->setValue(0);
}
