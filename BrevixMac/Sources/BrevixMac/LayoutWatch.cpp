// SPDX-License-Identifier: GPL-3.0-or-later
#include "LayoutWatch.h"

#include <QEvent>
#include <QWidget>

#include <utility>

LayoutWatch::LayoutWatch(QWidget *widget, std::function<void()> arrange)
    : QObject(widget)
    , m_arrange(std::move(arrange))
{
    widget->installEventFilter(this);
}

bool LayoutWatch::eventFilter(QObject *watched, QEvent *event)
{
    if (event->type() == QEvent::Resize || event->type() == QEvent::LayoutRequest)
        m_arrange();
    return QObject::eventFilter(watched, event);
}
