// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Theme.h"

#include <QRectF>

class QPainter;
class QWidget;
struct PromptCategory;

/// Shapes that several controls share. A control that can have the focus draws its frame haloWidth inside its
/// widget rectangle, so that the halo has room and nothing moves when the focus comes.
namespace ThemePainting {

/// The part of @p widget that looks like the control.
QRectF controlFrame(const QWidget &widget);

void fillRounded(QPainter &painter, const QRectF &frame, qreal radius, const QColor &fill);

/// The ground of a field, a quiet button or a tag.
void fillSunken(QPainter &painter, const QRectF &frame, qreal radius);

/// A one pixel border inside @p frame.
void strokeRounded(QPainter &painter, const QRectF &frame, qreal radius, const QColor &color,
                   qreal width = 1);

/// The soft shade under something that floats over its window. Goes @p spread beyond @p frame at its sides
/// and below, and less above; @p strength is the opacity of one of its one pixel steps.
void shadow(QPainter &painter, const QRectF &frame, qreal radius, int spread, qreal strength);

/// The accent border and the halo around it.
void focusRing(QPainter &painter, const QRectF &frame, qreal radius);

/// The same for a control that is filled with the accent itself: a ring with a gap around it.
void focusRingAround(QPainter &painter, const QRectF &frame, qreal radius);

/// The colour a category was given; invalid when it has none or one that cannot be read.
QColor categoryColor(const PromptCategory &category);

/// An arc of a turning progress ring; @p phase counts turns.
void progressRing(QPainter &painter, const QRectF &area, const QColor &color, qreal phase);

} // namespace ThemePainting
