// SPDX-License-Identifier: GPL-3.0-or-later
#include "ButtonBar.h"

#include "Theme.h"

#include <QPainter>

void ButtonBar::paintEvent(QPaintEvent *)
{
    QPainter(this).fillRect(QRect(0, 0, width(), 1), Theme::shared().color(Theme::Color::line));
}
