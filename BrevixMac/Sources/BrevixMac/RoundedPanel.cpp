// SPDX-License-Identifier: GPL-3.0-or-later
#include "RoundedPanel.h"

#include "Theme.h"
#include "ThemePainting.h"

#include <QBitmap>
#include <QCloseEvent>
#include <QPainter>
#include <QPainterPath>

#include <algorithm>

namespace {

constexpr int screenMargin = 8;

QRegion roundedRegion(const QRect &frame, int radius)
{
    QPainterPath outline;
    outline.addRoundedRect(frame, radius, radius);
    return QRegion(outline.toFillPolygon().toPolygon());
}

} // namespace

RoundedPanel::RoundedPanel(Qt::WindowFlags flags, int radius)
    : QWidget(nullptr, flags | Qt::FramelessWindowHint | Qt::WindowStaysOnTopHint)
    , m_radius(radius)
{
    setAttribute(Qt::WA_TranslucentBackground);
    setAttribute(Qt::WA_QuitOnClose, false);
    connect(&Theme::shared(), &Theme::changed, this, qOverload<>(&QWidget::update));
}

void RoundedPanel::setCompositing(bool isCompositing)
{
    m_isCompositing = isCompositing;
    roundCorners();
}

void RoundedPanel::roundCorners()
{
    if (m_isCompositing)
        clearMask();
    else
        setMask(roundedRegion(rect(), m_radius));
}

void RoundedPanel::fitInto(const QSize &available, const QSize &designed, const QSize &least)
{
    const Theme &theme = Theme::shared();
    const QSize grown(theme.scaled(designed.width()), theme.scaled(designed.height()));
    const QSize room = available - QSize(2 * screenMargin, 2 * screenMargin);
    setFixedSize(grown.boundedTo(room).expandedTo(least));
}

void RoundedPanel::resizeEvent(QResizeEvent *event)
{
    QWidget::resizeEvent(event);
    roundCorners();
}

void RoundedPanel::paintEvent(QPaintEvent *)
{
    const Theme &theme = Theme::shared();
    QPainter painter(this);
    ThemePainting::fillRounded(painter, rect(), m_radius, theme.color(Theme::Color::surface));
    ThemePainting::strokeRounded(painter, rect(), m_radius, theme.color(Theme::Color::line));
}

void RoundedPanel::hideEvent(QHideEvent *event)
{
    QWidget::hideEvent(event);
    if (!event->spontaneous())
        Q_EMIT didHide();
}

void RoundedPanel::closeEvent(QCloseEvent *event)
{
    // This only hides the panel, which is used again. It must not be refused: Qt asks every window on screen
    // before the program ends, and a refusal would keep it running.
    QWidget::closeEvent(event);
}
