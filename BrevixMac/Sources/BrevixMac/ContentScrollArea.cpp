// SPDX-License-Identifier: GPL-3.0-or-later
#include "ContentScrollArea.h"

#include "Theme.h"
#include "ThinScrollBar.h"

#include <QEvent>
#include <QLayout>

#include <algorithm>

ContentScrollArea::ContentScrollArea(QWidget *content, int leastHeight, int rightMargin, QWidget *parent)
    : QScrollArea(parent)
    , m_leastHeight(leastHeight)
{
    setFrameShape(QFrame::NoFrame);
    setFocusPolicy(Qt::NoFocus);
    setWidgetResizable(true);
    setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    setVerticalScrollBar(new ThinScrollBar(this));
    setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOn);
    setViewportMargins(0, 0, rightMargin - ThinScrollBar::extent, 0);
    setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Maximum);
    setWidget(content);
    content->setAutoFillBackground(false);
    viewport()->setAutoFillBackground(false);
}

QSize ContentScrollArea::sizeHint() const
{
    const QLayout *layout = widget()->layout();
    const int width = viewport()->width();
    return {Theme::panelWidth, layout->hasHeightForWidth() ? layout->totalHeightForWidth(width)
                                                           : layout->totalSizeHint().height()};
}

QSize ContentScrollArea::minimumSizeHint() const
{
    return {0, std::min(Theme::shared().scaled(m_leastHeight), sizeHint().height())};
}

bool ContentScrollArea::eventFilter(QObject *watched, QEvent *event)
{
    if (watched == widget() && event->type() == QEvent::LayoutRequest)
        updateGeometry();
    return QScrollArea::eventFilter(watched, event);
}

void ContentScrollArea::resizeEvent(QResizeEvent *event)
{
    QScrollArea::resizeEvent(event);
    updateGeometry();
}
