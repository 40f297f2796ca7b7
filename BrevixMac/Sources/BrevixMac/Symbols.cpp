// SPDX-License-Identifier: GPL-3.0-or-later
#include "Symbols.h"

#include <QFile>
#include <QPainter>
#include <QPixmapCache>
#include <QSvgRenderer>

#include <cmath>

// Resources of a static library have to be asked for by name, and outside any namespace.
static void initializeSymbolResources()
{
    Q_INIT_RESOURCE(Symbols);
}

namespace {

QString resourcePath(const QString &name)
{
    static const bool isInitialized = (initializeSymbolResources(), true);
    Q_UNUSED(isInitialized)
    return QStringLiteral(":/symbols/%1.svg").arg(name);
}

QPixmap render(const QString &path, const QColor &color, int pixels)
{
    QPixmap pixmap(pixels, pixels);
    pixmap.fill(Qt::transparent);
    QPainter painter(&pixmap);
    QSvgRenderer(path).render(&painter, QRectF(0, 0, pixels, pixels));
    painter.setCompositionMode(QPainter::CompositionMode_SourceIn);
    painter.fillRect(pixmap.rect(), color);
    return pixmap;
}

} // namespace

bool Symbols::exists(const QString &name)
{
    return QFile::exists(resourcePath(name));
}

QPixmap Symbols::pixmap(const QString &name, const QColor &color, int size, qreal devicePixelRatio)
{
    const QString path = resourcePath(name);
    const int pixels = static_cast<int>(std::ceil(size * devicePixelRatio));
    const QString key = QStringLiteral("symbol/%1/%2/%3").arg(name).arg(color.rgba()).arg(pixels);
    QPixmap found;
    if (!QPixmapCache::find(key, &found)) {
        if (!QFile::exists(path) || pixels <= 0)
            return {};
        found = render(path, color, pixels);
        QPixmapCache::insert(key, found);
    }
    found.setDevicePixelRatio(devicePixelRatio);
    return found;
}

void Symbols::paint(QPainter &painter, const QString &name, const QColor &color, const QRectF &area, int size)
{
    // The transformation also knows the ratio of an image that a widget is rendered into.
    const QPixmap drawing = pixmap(name, color, size, painter.deviceTransform().m11());
    const QPointF topLeft(std::round(area.center().x() - size / 2.0),
                          std::round(area.center().y() - size / 2.0));
    painter.drawPixmap(topLeft, drawing);
}
