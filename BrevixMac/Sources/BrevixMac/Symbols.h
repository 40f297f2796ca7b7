// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QColor>
#include <QPixmap>
#include <QRectF>
#include <QString>

class QPainter;

/// The line drawings of this product by their symbol names, tinted. Main thread only; drawings are cached per
/// colour, size and pixel ratio.
namespace Symbols {

bool exists(const QString &name);

/// @p size in logical pixels. A null pixmap for an unknown name.
QPixmap pixmap(const QString &name, const QColor &color, int size, qreal devicePixelRatio);

/// Draws into the square of @p size logical pixels centred in @p area, sharp on the painter's device.
void paint(QPainter &painter, const QString &name, const QColor &color, const QRectF &area, int size);

} // namespace Symbols
