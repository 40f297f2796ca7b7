// SPDX-License-Identifier: GPL-3.0-or-later
#include "ThinScrollBar.h"

#include "ThemePainting.h"

#include <QPainter>
#include <QStyle>
#include <QStyleOptionSlider>

namespace {

constexpr qreal thumbWidth = 5;

}

ThinScrollBar::ThinScrollBar(QWidget *parent)
    : QScrollBar(Qt::Vertical, parent)
{
    setAttribute(Qt::WA_Hover);
    setFocusPolicy(Qt::NoFocus);
    setContextMenuPolicy(Qt::NoContextMenu);
}

void ThinScrollBar::paintEvent(QPaintEvent *)
{
    if (maximum() <= minimum())
        return;
    QStyleOptionSlider option;
    initStyleOption(&option);
    const QRectF slider =
        style()->subControlRect(QStyle::CC_ScrollBar, &option, QStyle::SC_ScrollBarSlider, this);
    QRectF thumb(0, slider.top() + 2, thumbWidth, slider.height() - 4);
    thumb.moveLeft(rect().center().x() - thumbWidth / 2);
    QColor ink = Theme::shared().color(Theme::Color::tertiary);
    ink.setAlphaF(underMouse() || isSliderDown() ? 0.8F : 0.4F);
    QPainter painter(this);
    ThemePainting::fillRounded(painter, thumb, thumbWidth / 2, ink);
}
