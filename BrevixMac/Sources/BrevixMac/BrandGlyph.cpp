// SPDX-License-Identifier: GPL-3.0-or-later
#include "BrandGlyph.h"

#include "MenuBarController.h"
#include "Theme.h"

#include <QLinearGradient>
#include <QPainter>

namespace {

constexpr int designSize = 30;
constexpr int glyphSize = 64; // drawn large once, shown smaller
constexpr qreal cornerShare = 0.3;
constexpr qreal initialShare = 0.72;
constexpr QRgb brandTop = 0xff9b6dff;
constexpr QRgb brandBottom = 0xff6a36e4;

void paintGlyph(QPainter &painter, const QRectF &frame, const QIcon &glyph)
{
    QLinearGradient violet(frame.topLeft(), frame.bottomRight());
    violet.setColorAt(0, QColor::fromRgb(brandTop));
    violet.setColorAt(1, QColor::fromRgb(brandBottom));
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    painter.setBrush(violet);
    painter.drawRoundedRect(frame, frame.width() * cornerShare, frame.width() * cornerShare);

    const int side = static_cast<int>(frame.width() * initialShare);
    QPixmap initial = glyph.pixmap(QSize(side, side), painter.deviceTransform().m11());
    QPainter tint(&initial);
    tint.setCompositionMode(QPainter::CompositionMode_SourceIn);
    tint.fillRect(QRect({}, initial.deviceIndependentSize().toSize()), Qt::white);
    tint.end();
    painter.drawPixmap(frame.topLeft() + QPointF((frame.width() - side) / 2, (frame.height() - side) / 2),
                       initial);
}

} // namespace

BrandGlyph::BrandGlyph(QWidget *parent)
    : QWidget(parent)
    , m_initial(MenuBarController::brevixTemplateGlyph(glyphSize))
{
    setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
    connect(&Theme::shared(), &Theme::changed, this, &BrandGlyph::updateGeometry);
}

QSize BrandGlyph::sizeHint() const
{
    const int side = Theme::shared().scaled(designSize);
    return {side, side};
}

QIcon BrandGlyph::icon()
{
    const QIcon glyph = MenuBarController::brevixTemplateGlyph(glyphSize);
    QIcon icon;
    for (const int side : {16, 18, 22, 24, 32, 48, 64}) {
        QPixmap pixmap(side, side);
        pixmap.fill(Qt::transparent);
        QPainter painter(&pixmap);
        paintGlyph(painter, QRectF(0, 0, side, side), glyph);
        painter.end();
        icon.addPixmap(pixmap);
    }
    return icon;
}

void BrandGlyph::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    paintGlyph(painter, rect(), m_initial);
}
