// SPDX-License-Identifier: GPL-3.0-or-later
#include "ThemePainting.h"

#include "Models.h"

#include <QPainter>
#include <QWidget>

#include <algorithm>

QRectF ThemePainting::controlFrame(const QWidget &widget)
{
    constexpr int halo = Theme::haloWidth;
    return QRectF(widget.rect()).adjusted(halo, halo, -halo, -halo);
}

void ThemePainting::fillRounded(QPainter &painter, const QRectF &frame, qreal radius, const QColor &fill)
{
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    painter.setBrush(fill);
    painter.drawRoundedRect(frame, radius, radius);
}

void ThemePainting::fillSunken(QPainter &painter, const QRectF &frame, qreal radius)
{
    const Theme &theme = Theme::shared();
    fillRounded(painter, frame, radius, theme.color(Theme::Color::sunken));
    const QColor edge = theme.color(Theme::Color::edge);
    if (edge.alpha() > 0)
        strokeRounded(painter, frame, radius, edge);
}

void ThemePainting::strokeRounded(QPainter &painter, const QRectF &frame, qreal radius, const QColor &color,
                                  qreal width)
{
    const qreal inset = width / 2;
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(QPen(color, width));
    painter.setBrush(Qt::NoBrush);
    painter.drawRoundedRect(frame.adjusted(inset, inset, -inset, -inset), radius - inset, radius - inset);
}

void ThemePainting::shadow(QPainter &painter, const QRectF &frame, qreal radius, int spread, qreal strength)
{
    constexpr int drop = 3;
    QColor shade(Qt::black);
    shade.setAlphaF(float(strength));
    for (int step = spread - drop; step > 0; --step)
        fillRounded(painter, frame.adjusted(-step, -step, step, step).translated(0, drop), radius + step,
                    shade);
}

void ThemePainting::focusRing(QPainter &painter, const QRectF &frame, qreal radius)
{
    constexpr qreal halo = Theme::haloWidth;
    const Theme &theme = Theme::shared();
    strokeRounded(painter, frame.adjusted(-halo, -halo, halo, halo), radius + halo,
                  theme.color(Theme::Color::accentSoft), halo);
    strokeRounded(painter, frame, radius, theme.color(Theme::Color::accent), Theme::focusBorder);
}

void ThemePainting::focusRingAround(QPainter &painter, const QRectF &frame, qreal radius)
{
    constexpr qreal halo = Theme::haloWidth;
    strokeRounded(painter, frame.adjusted(-halo, -halo, halo, halo), radius + halo,
                  Theme::shared().color(Theme::Color::accent), Theme::focusBorder);
}

QColor ThemePainting::categoryColor(const PromptCategory &category)
{
    const QString digits = category.colorHex.value_or(QString()).trimmed();
    if (digits.isEmpty())
        return {};
    const QColor color(digits.startsWith(u'#') ? digits : u'#' + digits);
    return color.isValid() ? QColor(color.rgb()) : QColor();
}

void ThemePainting::progressRing(QPainter &painter, const QRectF &area, const QColor &color, qreal phase)
{
    constexpr int fullTurn = 360 * 16;
    const qreal side = std::min(area.width(), area.height()) - 3;
    QRectF ring(0, 0, side, side);
    ring.moveCenter(area.center());
    QColor track = color;
    track.setAlphaF(color.alphaF() * 0.25F);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setBrush(Qt::NoBrush);
    painter.setPen(QPen(track, 1.75));
    painter.drawEllipse(ring);
    painter.setPen(QPen(color, 1.75, Qt::SolidLine, Qt::RoundCap));
    painter.drawArc(ring, static_cast<int>(-phase * fullTurn) + fullTurn / 4, -fullTurn / 4);
}
