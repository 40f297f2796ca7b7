// SPDX-License-Identifier: GPL-3.0-or-later
#include "StatusChip.h"

#include "ThemePainting.h"

#include <QPainter>

namespace {

constexpr int leastHeight = 20;
constexpr int padding = 8;

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

void StatusChip::describe(Tint tint, const QString &text)
{
    m_tint = tint;
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
    return {fontMetrics().horizontalAdvance(text()) + 2 * theme.scaled(padding),
            std::max(theme.scaled(leastHeight), fontMetrics().height() + theme.scaled(4))};
}

void StatusChip::paintEvent(QPaintEvent *)
{
    const Theme &theme = Theme::shared();
    const Inks tinted = inks(m_tint);
    QPainter painter(this);
    ThemePainting::fillRounded(painter, rect(), theme.scaled(Theme::chipRadius),
                               theme.color(tinted.background));
    painter.setPen(theme.color(tinted.ink));
    painter.drawText(rect(), Qt::AlignCenter | Qt::TextSingleLine, text());
}
