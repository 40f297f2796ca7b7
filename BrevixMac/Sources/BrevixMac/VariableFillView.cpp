// SPDX-License-Identifier: GPL-3.0-or-later
#include "VariableFillView.h"

#include "AppState.h"
#include "ContentScrollArea.h"
#include "PreviewText.h"
#include "ResultLine.h"
#include "TextField.h"
#include "TextLabel.h"
#include "ThemePainting.h"
#include "ThemedButton.h"
#include "VariableFields.h"

#include <QHBoxLayout>
#include <QKeyEvent>
#include <QPainter>

namespace {

constexpr int halo = Theme::haloWidth;
constexpr int leastFieldsHeight = 130;
constexpr int footerHeight = 65;

/// The sunken box around the preview, with the focus ring of the text inside it.
class PreviewBox final : public QWidget
{
public:
    PreviewBox(QWidget *text, QWidget *parent)
        : QWidget(parent)
        , m_text(text)
    {
        auto *layout = new QVBoxLayout(this);
        layout->setContentsMargins(0, 0, 0, 0);
        layout->addWidget(text);
        setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Maximum);
        text->installEventFilter(this);
    }

protected:
    void paintEvent(QPaintEvent *) override
    {
        const Theme &theme = Theme::shared();
        const int radius = theme.scaled(Theme::fieldRadius);
        const QRectF frame = ThemePainting::controlFrame(*this);
        QPainter painter(this);
        ThemePainting::fillRounded(painter, frame, radius, theme.color(Theme::Color::sunken));
        if (m_text->hasFocus())
            ThemePainting::focusRing(painter, frame, radius);
    }

    bool eventFilter(QObject *watched, QEvent *event) override
    {
        if (event->type() == QEvent::FocusIn || event->type() == QEvent::FocusOut)
            update();
        return QWidget::eventFilter(watched, event);
    }

private:
    QWidget *m_text;
};

/// Draws the hairline above the buttons.
class ButtonBar final : public QWidget
{
public:
    using QWidget::QWidget;

protected:
    void paintEvent(QPaintEvent *) override
    {
        QPainter(this).fillRect(QRect(0, 0, width(), 1), Theme::shared().color(Theme::Color::line));
    }
};

} // namespace

VariableFillView::VariableFillView(AppState &appState, QWidget *parent)
    : QWidget(parent)
    , m_appState(appState)
    , m_promptTitle(
          new TextLabel(Theme::Type::caption, Theme::Color::secondary, TextLabel::Overflow::elide, this))
    , m_fields(new VariableFields(appState, VariableFields::Placeholder::valueForName))
    , m_preview(new PreviewText(this))
    , m_chevron(new ThemedButton(ThemedButton::Kind::plain, QStringLiteral("Back"), this))
    , m_back(new ThemedButton(ThemedButton::Kind::quiet, QStringLiteral("Back"), this))
    , m_continue(new ThemedButton(ThemedButton::Kind::primary, QStringLiteral("Continue"), this))
{
    auto *scroll = new ContentScrollArea(m_fields, leastFieldsHeight, Theme::margin - halo, this);
    auto *previewTitle =
        new TextLabel(Theme::Type::sectionTitle, Theme::Color::secondary, TextLabel::Overflow::elide, this);
    previewTitle->setText(QStringLiteral("Preview"));

    auto *body = new QVBoxLayout;
    body->setContentsMargins(Theme::margin - halo, 0, 0, 0);
    body->setSpacing(0);
    body->addWidget(scroll);
    body->addSpacing(14);
    auto *previewColumn = new QVBoxLayout;
    previewColumn->setContentsMargins(0, 0, Theme::margin - halo, 0);
    previewColumn->setSpacing(3);
    previewTitle->setContentsMargins(halo, 0, 0, 0);
    previewColumn->addWidget(previewTitle);
    previewColumn->addWidget(new PreviewBox(m_preview, this));
    body->addLayout(previewColumn);
    body->addStretch(1);

    auto *column = new QVBoxLayout(this);
    column->setContentsMargins(0, 18, 0, 0);
    column->setSpacing(0);
    column->addWidget(makeHeader());
    column->addSpacing(14);
    column->addLayout(body, 1);
    column->addSpacing(8);
    column->addWidget(new ResultLine(appState, this));
    column->addWidget(makeFooter());

    connect(m_fields, &VariableFields::confirmed, this, &VariableFillView::confirm);
    connect(m_fields, &VariableFields::fieldFocused, scroll,
            [scroll](QWidget *field) { scroll->ensureWidgetVisible(field, 0, 24); });
    connect(&appState, &AppState::variableValuesChanged, this, &VariableFillView::refreshPreview);
    connect(&appState, &AppState::isInsertingChanged, this, &VariableFillView::refreshButtons);
}

QWidget *VariableFillView::makeHeader()
{
    auto *header = new QWidget(this);
    auto *title =
        new TextLabel(Theme::Type::screenTitle, Theme::Color::text, TextLabel::Overflow::elide, header);
    title->setText(QStringLiteral("Fill Variables"));
    m_chevron->setFaceSymbol(QStringLiteral("chevron.left"));
    m_chevron->setFace(ThemedButton::Face::symbolOnly);
    m_chevron->setToolTip(m_chevron->text());
    connect(m_chevron, &QPushButton::clicked, this, [this] { m_appState.cancelVariableAction(); });

    auto *texts = new QVBoxLayout;
    texts->setSpacing(0);
    texts->addWidget(title);
    texts->addWidget(m_promptTitle);
    auto *row = new QHBoxLayout(header);
    row->setContentsMargins(Theme::margin - halo, 0, Theme::margin, 0);
    row->setSpacing(8 - halo);
    row->addWidget(m_chevron, 0, Qt::AlignVCenter);
    row->addLayout(texts, 1);
    return header;
}

QWidget *VariableFillView::makeFooter()
{
    auto *footer = new ButtonBar(this);
    m_back->setDesignHeight(34);
    m_continue->setDesignHeight(34);
    m_continue->setTrailingSymbol(QStringLiteral("return"));
    auto *row = new QHBoxLayout(footer);
    row->setContentsMargins(Theme::margin - halo, 9, Theme::margin - halo, 10);
    row->setSpacing(10 - 2 * halo);
    row->addStretch(1);
    row->addWidget(m_back);
    row->addWidget(m_continue);
    row->addStrut(footerHeight - 19);
    connect(m_back, &QPushButton::clicked, this, [this] { m_appState.cancelVariableAction(); });
    connect(m_continue, &QPushButton::clicked, this, &VariableFillView::confirm);
    return footer;
}

void VariableFillView::begin()
{
    const auto &prompt = m_appState.activeVariablePrompt();
    if (!prompt)
        return;
    m_promptTitle->setText(prompt->title.simplified());
    m_fields->setPrompt(*prompt);
    setTabOrder(m_chevron, m_fields->fields().first());
    setTabOrder(m_fields->fields().last(), m_preview);
    setTabOrder(m_preview, m_back);
    setTabOrder(m_back, m_continue);
    refreshPreview();
    refreshButtons();
    m_fields->focusFirst();
}

void VariableFillView::refreshPreview()
{
    const auto &prompt = m_appState.activeVariablePrompt();
    if (prompt && !isHidden())
        m_preview->setPrompt(*prompt, m_appState.variableValues());
}

void VariableFillView::refreshButtons()
{
    m_continue->setBusy(m_appState.isInserting());
    m_continue->setEnabled(!m_appState.isInserting());
}

void VariableFillView::confirm()
{
    if (!m_appState.isInserting())
        m_appState.confirmVariableAction();
}

void VariableFillView::keyPressEvent(QKeyEvent *event)
{
    if (event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter)
        confirm();
    else
        QWidget::keyPressEvent(event);
}
