// SPDX-License-Identifier: GPL-3.0-or-later
#include "StatusCard.h"

#include "LayoutWatch.h"
#include "OneLine.h"
#include "Symbols.h"
#include "TextLabel.h"
#include "ThemePainting.h"

#include <QBoxLayout>
#include <QPainter>

#include <chrono>

namespace {

constexpr int padding = 12;
constexpr int verticalPadding = 10;
constexpr int symbolGap = 9;
constexpr int leastTextWidth = 140; // beside buttons
constexpr std::chrono::milliseconds frameInterval{40};
constexpr qreal turnsPerFrame = 0.045;

} // namespace

StatusCard::StatusCard(QWidget *parent)
    : QFrame(parent)
    , m_title(new TextLabel(Theme::Type::cardTitle, Theme::Color::text, TextLabel::Overflow::wrap, this))
    , m_detail(new TextLabel(Theme::Type::caption, Theme::Color::secondary, TextLabel::Overflow::wrap, this))
    , m_row(new QBoxLayout(QBoxLayout::LeftToRight, this))
    , m_texts(new QVBoxLayout)
    , m_buttons(new QBoxLayout(QBoxLayout::LeftToRight))
{
    m_texts->setSpacing(0);
    m_texts->addStretch();
    m_texts->addWidget(m_title);
    m_texts->addWidget(m_detail);
    m_texts->addStretch();
    m_row->addLayout(m_texts, 1);
    m_row->addLayout(m_buttons);
    connect(&Theme::shared(), &Theme::changed, this, &StatusCard::onThemeChanged);
    onThemeChanged();
    new LayoutWatch(this, [this] { arrange(); });
}

void StatusCard::onThemeChanged()
{
    const Theme &theme = Theme::shared();
    const int left = theme.scaled(padding + Theme::symbolSize + symbolGap);
    m_row->setContentsMargins(left, 0, theme.scaled(padding) - Theme::haloWidth, 0);
    m_row->setSpacing(theme.scaled(4));
    m_buttons->setSpacing(theme.scaled(4));
    arrange();
    update();
}

void StatusCard::arrange()
{
    const Theme &theme = Theme::shared();
    const QMargins margins = m_row->contentsMargins();
    const int room = width() - margins.left() - margins.right() - m_row->spacing();
    const int needed = m_buttons->sizeHint().width();
    const bool isStacked = needed > 0 && room - needed < theme.scaled(leastTextWidth);
    const int vertical = theme.scaled(verticalPadding);
    m_texts->setContentsMargins(0, vertical, 0, isStacked ? 0 : vertical);
    m_buttons->setContentsMargins(0, 0, 0, isStacked ? vertical - Theme::haloWidth : 0);
    m_row->setDirection(isStacked ? QBoxLayout::TopToBottom : QBoxLayout::LeftToRight);
    m_row->setAlignment(m_buttons, isStacked ? Qt::AlignLeft : Qt::Alignment());
}

void StatusCard::describe(Tint tint, const QString &symbol, const QString &title, const QString &detail)
{
    m_tint = tint;
    m_symbol = symbol;
    // A message may be whatever a server answered, up to a whole page.
    const QString shownTitle = OneLine::of(title);
    const QString shownDetail = OneLine::of(detail);
    m_title->setText(shownTitle);
    m_title->setVisible(!shownTitle.isEmpty());
    m_detail->setText(shownDetail);
    m_detail->setVisible(!shownDetail.isEmpty());
    setAccessibleName(shownTitle.isEmpty() ? shownDetail : shownTitle);
    setAccessibleDescription(shownTitle.isEmpty() ? QString() : shownDetail);
    update();
}

void StatusCard::addButton(QWidget *button)
{
    m_buttons->addWidget(button, 0, Qt::AlignVCenter);
}

QString StatusCard::title() const
{
    return m_title->text();
}

QString StatusCard::detail() const
{
    return m_detail->text();
}

void StatusCard::setBusy(bool busy)
{
    if (busy == m_isBusy)
        return;
    m_isBusy = busy;
    updateTurning();
    update();
}

void StatusCard::updateTurning()
{
    // Unseen, it would only wake the processor.
    const bool turns = m_isBusy && isVisible() && !Theme::shared().reducedMotion();
    if (turns == (m_turningTimer != 0))
        return;
    if (m_turningTimer)
        killTimer(m_turningTimer);
    m_turningTimer = turns ? startTimer(frameInterval) : 0;
}

void StatusCard::showEvent(QShowEvent *event)
{
    QFrame::showEvent(event);
    updateTurning();
}

void StatusCard::hideEvent(QHideEvent *event)
{
    QFrame::hideEvent(event);
    updateTurning();
}

void StatusCard::timerEvent(QTimerEvent *)
{
    m_turns += turnsPerFrame;
    update();
}

Theme::Color StatusCard::ink() const
{
    switch (m_tint) {
    case Tint::success:
        return Theme::Color::success;
    case Tint::warning:
        return Theme::Color::warning;
    case Tint::danger:
        return Theme::Color::danger;
    case Tint::neutral:
        break;
    }
    return Theme::Color::secondary;
}

Theme::Color StatusCard::background() const
{
    switch (m_tint) {
    case Tint::success:
        return Theme::Color::successSoft;
    case Tint::warning:
        return Theme::Color::warningSoft;
    case Tint::danger:
        return Theme::Color::dangerSoft;
    case Tint::neutral:
        break;
    }
    return Theme::Color::sunken;
}

void StatusCard::paintEvent(QPaintEvent *)
{
    const Theme &theme = Theme::shared();
    QPainter painter(this);
    ThemePainting::fillRounded(painter, rect(),
                               std::min<qreal>(theme.scaled(Theme::cardRadius), height() / 2.0),
                               theme.color(background()));
    const int size = theme.scaled(Theme::symbolSize);
    // Level with the first line of text.
    const QFontMetrics firstLine(m_title->isHidden() ? m_detail->font() : m_title->font());
    const TextLabel *first = m_title->isHidden() ? m_detail : m_title;
    const QRectF area(theme.scaled(padding), first->y(), size, firstLine.height() + 2);
    if (m_isBusy)
        ThemePainting::progressRing(painter, area, theme.color(ink()), m_turns);
    else
        Symbols::paint(painter, m_symbol, theme.color(ink()), area, size);
}
