// SPDX-License-Identifier: GPL-3.0-or-later
#include "X11Coordinates.h"

#include <QGuiApplication>
#include <QScreen>

QPoint logicalPosition(QPoint native)
{
    // Qt scales a screen's size, but leaves its origin where the server has it.
    const auto screens = QGuiApplication::screens();
    for (const QScreen *screen : screens) {
        const QRect logical = screen->geometry();
        const QRect physical(logical.topLeft(),
                             (QSizeF(logical.size()) * screen->devicePixelRatio()).toSize());
        if (physical.contains(native))
            return logical.topLeft() +
                   (QPointF(native - logical.topLeft()) / screen->devicePixelRatio()).toPoint();
    }
    return native;
}
