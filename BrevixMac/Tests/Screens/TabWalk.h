// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QList>
#include <QRect>
#include <QStringList>

class QWidget;

/// Where the key Tab leads in a window, and how it is seen.
namespace TabWalk {

/// Presses Tab until the focus is again where it was after the first press. Gives one sentence for each
/// fault: controls that are not reached, or twice, or out of their visual order, or whose focus cannot be
/// seen.
QStringList faults(QWidget &window);

/// Whether one reads @p places in this order: block after block, each above or left of what follows. The
/// reading may begin anywhere and go round.
bool isReadingOrder(const QList<QRect> &places);

} // namespace TabWalk
