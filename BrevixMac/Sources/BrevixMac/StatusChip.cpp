// SPDX-License-Identifier: GPL-3.0-or-later
#include "StatusChip.h"

#include "Symbols.h"
#include "ThemePainting.h"

#include <QPainter>

namespace {

constexpr int leastHeight = 20;
constexpr int padding = 8;
constexpr int symbolSize = 13;
constexpr int symbolGap = 4;

struct Inks
{
    Theme::Color ink;
    Theme::Color background;
};

Inks inks(StatusChip::Tint tint)
{
    switch (tint) {
    case StatusChip::Tint::success:
        return {Theme::Color::success, Theme::Color::successSoft};
    case StatusChip::Tint::warning:
        return {Theme::Color::warning, Theme::Color::warningSoft};
    case StatusChip::Tint::danger:
        return {Theme::Color::danger, Theme::Color::dangerSoft};
    case StatusChip::Tint::neutral:
        break;
    }
    return {Theme::Color::secondary, Theme::Color::sunken};
}

} // namespace

StatusChip::StatusChip(QWidget *parent)
    : QLabel(parent)
{
    setTextFormat(Qt::PlainText);
    setAlignment(Qt::AlignCenter);
    setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
    connect(&Theme::shared(), &Theme::changed, this, &StatusChip::onThemeChanged);
    onThemeChanged();
}

void StatusChip::describe(Tint tint, const QString &text, const QString &symbol)
{
    m_tint = tint;
    m_symbol = symbol;
    setText(text);
    updateGeometry();
    update();
}

void StatusChip::onThemeChanged()
{
    setFont(Theme::shared().font(Theme::Type::chip));
    updateGeometry();
    update();
}

QSize StatusChip::sizeHint() const
{
    const Theme &theme = Theme::shared();
    return {symbolRoom() + fontMetrics().horizontalAdvance(text()) + 2 * theme.scaled(padding),
            std::max(theme.scaled(leastHeight), fontMetrics().height() + theme.scaled(4))};
}

void StatusChip::paintEvent(QPaintEvent *)
{
    const Theme &theme = Theme::shared();
    const Inks tinted = inks(m_tint);
    QPainter painter(this);
    ThemePainting::fillRounded(painter, rect(), theme.scaled(Theme::chipRadius),
                               theme.color(tinted.background));
    QRect room = rect();
    if (!m_symbol.isEmpty()) {
        room.adjust(theme.scaled(padding), 0, -theme.scaled(padding), 0);
        const QRect place(room.topLeft(), QSize(theme.scaled(symbolSize), room.height()));
        Symbols::paint(painter, m_symbol, theme.color(tinted.ink), place, theme.scaled(symbolSize));
        room.setLeft(room.left() + symbolRoom());
    }
    painter.setPen(theme.color(tinted.ink));
    painter.drawText(room, Qt::AlignCenter | Qt::TextSingleLine, text());
}

int StatusChip::symbolRoom() const
{
    return m_symbol.isEmpty() ? 0 : Theme::shared().scaled(symbolSize) + Theme::shared().scaled(symbolGap);
}
