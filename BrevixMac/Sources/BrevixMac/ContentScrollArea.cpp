// SPDX-License-Identifier: GPL-3.0-or-later
#include "ContentScrollArea.h"

#include "Theme.h"
#include "ThinScrollBar.h"

#include <QApplication>
#include <QEvent>
#include <QLayout>
#include <QScrollBar>

#include <algorithm>

namespace {

constexpr int focusMargin = 24;

}

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
    connect(qApp, &QApplication::focusChanged, this, &ContentScrollArea::onFocusChanged);
}

void ContentScrollArea::onFocusChanged(QWidget *, QWidget *now)
{
    // What has been clicked is in view, and must not move under the pointer.
    if (now && widget()->isAncestorOf(now) && QGuiApplication::mouseButtons() == Qt::NoButton)
        reveal(*now);
}

/// Of what is higher than the view, its beginning.
void ContentScrollArea::reveal(const QWidget &control)
{
    const int top = control.mapTo(widget(), QPoint()).y() - focusMargin;
    const int bottom = top + control.height() + 2 * focusMargin;
    QScrollBar &bar = *verticalScrollBar();
    bar.setValue(std::min(std::max(bar.value(), bottom - viewport()->height()), top));
}

bool ContentScrollArea::focusNextPrevChild(bool next)
{
    // Not the scroll area's own way, which shows the place of the caret: in a text that is scrolled itself,
    // that may be far outside.
    return QWidget::focusNextPrevChild(next); // NOLINT(bugprone-parent-virtual-call)
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
