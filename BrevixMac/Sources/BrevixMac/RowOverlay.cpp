// SPDX-License-Identifier: GPL-3.0-or-later
#include "RowOverlay.h"

#include <QAbstractItemView>
#include <QCoreApplication>
#include <QEvent>
#include <QStackedWidget>

RowOverlay::RowOverlay(QAbstractItemView &list, QWidget &controls)
    : QObject(&list)
    , m_list(list)
    , m_controls(controls)
{
    list.installEventFilter(this);
    controls.installEventFilter(this);
    controls.hide();
    adopt();
}

void RowOverlay::adopt()
{
    QWidget *host = &m_list;
    while (host->parentWidget()) {
        host = host->parentWidget();
        if (!qobject_cast<QStackedWidget *>(host))
            break;
        host->installEventFilter(this); // it may move or hide, and the list with it
    }
    if (m_controls.parentWidget() != host)
        m_controls.setParent(host);
}

void RowOverlay::place(const QRect &frame)
{
    m_frame = frame;
    show();
}

void RowOverlay::show()
{
    const QRect visible = m_frame & m_list.viewport()->rect();
    if (!m_list.isVisibleTo(m_controls.parentWidget()) || visible.isEmpty()) {
        m_controls.hide();
        return;
    }
    m_controls.setGeometry(
        QRect(m_list.viewport()->mapTo(m_controls.parentWidget(), m_frame.topLeft()), m_frame.size()));
    if (visible == m_frame)
        m_controls.clearMask();
    else
        m_controls.setMask(visible.translated(-m_frame.topLeft()));
    m_controls.show();
    m_controls.raise();
}

bool RowOverlay::eventFilter(QObject *watched, QEvent *event)
{
    if (watched == &m_controls) {
        if (event->type() != QEvent::Wheel)
            return false;
        QCoreApplication::sendEvent(m_list.viewport(), event);
        return true;
    }
    switch (event->type()) {
    case QEvent::ParentChange:
        adopt();
        break;
    case QEvent::Move:
    case QEvent::ShowToParent:
    case QEvent::HideToParent:
        show();
        break;
    default:
        break;
    }
    return false;
}
