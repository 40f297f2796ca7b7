// SPDX-License-Identifier: GPL-3.0-or-later
#include "PaletteGrounds.h"

#include "Theme.h"

#include <QPainter>
#include <QPainterPath>

SidebarGround::SidebarGround(int windowRadius, QWidget *parent)
    : QWidget(parent)
    , m_windowRadius(windowRadius)
{
}

void SidebarGround::paintEvent(QPaintEvent *)
{
    const Theme &theme = Theme::shared();
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    QPainterPath panel;
    panel.addRoundedRect(QRect(mapFrom(window(), QPoint()), window()->size()), m_windowRadius,
                         m_windowRadius);
    painter.setClipRect(rect());
    painter.fillPath(panel, theme.color(Theme::Color::sidebar));
    painter.fillRect(QRect(width() - 1, 0, 1, height()), theme.color(Theme::Color::line));
}

ColumnLine::ColumnLine(QWidget *parent)
    : QWidget(parent)
{
    setOrientation(Qt::Vertical);
}

void ColumnLine::setOrientation(Qt::Orientation orientation)
{
    const bool isVertical = orientation == Qt::Vertical;
    setMinimumSize(1, 1);
    setMaximumSize(isVertical ? 1 : QWIDGETSIZE_MAX, isVertical ? QWIDGETSIZE_MAX : 1);
}

void ColumnLine::paintEvent(QPaintEvent *)
{
    QPainter(this).fillRect(rect(), Theme::shared().color(Theme::Color::line));
}

void HeaderGround::paintEvent(QPaintEvent *)
{
    QPainter(this).fillRect(QRect(0, height() - 1, width(), 1), Theme::shared().color(Theme::Color::line));
}
