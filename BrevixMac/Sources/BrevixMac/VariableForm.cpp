// SPDX-License-Identifier: GPL-3.0-or-later
#include "VariableForm.h"

#include "ButtonBar.h"
#include "ContentScrollArea.h"
#include "OneLine.h"
#include "PageHeader.h"
#include "PreviewBox.h"
#include "PreviewText.h"
#include "TabOrder.h"
#include "TextField.h"
#include "TextLabel.h"
#include "ThemedButton.h"

#include <QHBoxLayout>
#include <QKeyEvent>

namespace {

constexpr int halo = Theme::haloWidth;
constexpr int leastFieldsHeight = 130;
constexpr int footerHeight = 65;
// The preview of a longer one takes up to some 30 ms, where a variable stands in every paragraph.
constexpr qsizetype longText = 8LL * 1024;
constexpr std::chrono::milliseconds frame{16};

} // namespace

VariableForm::VariableForm(const Wording &wording, QWidget *parent)
    : QWidget(parent)
    , m_header(new PageHeader(wording.title, this))
    , m_fields(new VariableFields(wording.placeholder))
    , m_preview(new PreviewText(this))
    , m_cancel(new ThemedButton(ThemedButton::Kind::quiet, wording.cancel, this))
    , m_confirm(new ThemedButton(ThemedButton::Kind::primary, wording.confirm, this))
    , m_notices(new QVBoxLayout)
{
    auto *column = new QVBoxLayout(this);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(0);
    column->addWidget(m_header);
    column->addSpacing(14);
    column->addLayout(makeBody(), 1);
    column->addSpacing(8);
    column->addLayout(m_notices);
    column->addWidget(makeFooter());

    m_refreshing.setSingleShot(true);
    m_refreshing.setInterval(frame);
    connect(&m_refreshing, &QTimer::timeout, this, &VariableForm::refreshPreview);
    connect(m_header, &PageHeader::backRequested, this, &VariableForm::cancelled);
    connect(m_cancel, &QPushButton::clicked, this, &VariableForm::cancelled);
    connect(m_confirm, &QPushButton::clicked, this, &VariableForm::confirm);
    connect(m_fields, &VariableFields::valueEdited, this, &VariableForm::valueEdited);
    connect(m_fields, &VariableFields::confirmed, this, &VariableForm::confirm);
}

QVBoxLayout *VariableForm::makeBody()
{
    auto *scroll = new ContentScrollArea(m_fields, leastFieldsHeight, Theme::margin - halo, this);
    auto *previewTitle =
        new TextLabel(Theme::Type::sectionTitle, Theme::Color::secondary, TextLabel::Overflow::elide, this);
    previewTitle->setText(QStringLiteral("Preview"));
    previewTitle->setContentsMargins(halo, 0, 0, 0);
    auto *previewColumn = new QVBoxLayout;
    previewColumn->setContentsMargins(0, 0, Theme::margin - halo, 0);
    previewColumn->setSpacing(3);
    previewColumn->addWidget(previewTitle);
    previewColumn->addWidget(new PreviewBox(m_preview, this));

    auto *body = new QVBoxLayout;
    body->setContentsMargins(Theme::margin - halo, 0, 0, 0);
    body->setSpacing(0);
    body->addWidget(scroll);
    body->addSpacing(14);
    body->addLayout(previewColumn);
    body->addStretch(1);
    return body;
}

QWidget *VariableForm::makeFooter()
{
    auto *footer = new ButtonBar(this);
    m_cancel->setDesignHeight(34);
    m_confirm->setDesignHeight(34);
    m_confirm->setTrailingSymbol(QStringLiteral("return"));
    auto *row = new QHBoxLayout(footer);
    row->setContentsMargins(Theme::margin - halo, 9, Theme::margin - halo, 10);
    row->setSpacing(10 - 2 * halo);
    row->addStretch(1);
    row->addWidget(m_cancel);
    row->addWidget(m_confirm);
    row->addStrut(footerHeight - 19);
    return footer;
}

void VariableForm::addNotice(QWidget *notice)
{
    m_notices->addWidget(notice);
    m_noticeButtons += notice->findChildren<ThemedButton *>();
}

void VariableForm::begin(const PromptItem &prompt, const VariableValues &values)
{
    m_prompt = prompt;
    m_header->setSubtitle(OneLine::of(prompt.title), TextLabel::Overflow::elide);
    m_fields->setPrompt(prompt, values);
    m_values = values;
    refreshPreview();
    setTabOrders();
    m_fields->focusFirst();
}

void VariableForm::setTabOrders()
{
    QList<QWidget *> order{&m_header->backButton()};
    order << m_fields->tabOrder() << m_preview;
    for (ThemedButton *button : std::as_const(m_noticeButtons))
        order.append(button);
    TabOrder::set(order << m_cancel << m_confirm);
}

void VariableForm::setValues(const VariableValues &values)
{
    m_fields->setValues(values);
    m_values = values;
    if (m_prompt.text.size() < longText)
        refreshPreview();
    else if (!m_refreshing.isActive())
        m_refreshing.start(); // the field is repainted first, and several keys may share one refresh
}

void VariableForm::refreshPreview()
{
    m_refreshing.stop();
    m_preview->setPrompt(m_prompt, m_values);
}

void VariableForm::setBusy(bool isBusy)
{
    m_confirm->setBusy(isBusy);
    m_confirm->setEnabled(!isBusy);
}

void VariableForm::confirm()
{
    if (m_confirm->isEnabled())
        Q_EMIT confirmed();
}

void VariableForm::keyPressEvent(QKeyEvent *event)
{
    if (event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter)
        confirm();
    else
        QWidget::keyPressEvent(event);
}
