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
    const bool isHandled = QScrollArea::eventFilter(watched, event);
    if (watched == widget() && event->type() == QEvent::LayoutRequest) {
        updateGeometry();
        fitContent();
    }
    return isHandled;
}

void ContentScrollArea::fitContent()
{
    // A wrapped text knows its height only once it has its width. Without asking again then, the content
    // could stay squeezed into the height it was first given.
    QEvent request(QEvent::LayoutRequest);
    QScrollArea::event(&request);
}

void ContentScrollArea::showEvent(QShowEvent *event)
{
    QScrollArea::showEvent(event);
    fitContent();
}

void ContentScrollArea::resizeEvent(QResizeEvent *event)
{
    QScrollArea::resizeEvent(event);
    updateGeometry();
}
