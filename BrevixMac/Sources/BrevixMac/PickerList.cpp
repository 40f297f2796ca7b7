// SPDX-License-Identifier: GPL-3.0-or-later
#include "PickerList.h"

#include "PickerRowDelegate.h"
#include "RowOverlay.h"
#include "Theme.h"
#include "ThinScrollBar.h"

#include <QMouseEvent>

#include <algorithm>

namespace {

constexpr int leastVisibleRows = 2;
constexpr int designRowHeight = 52;
constexpr int designHeadingHeight = 32;

} // namespace

PickerList::PickerList(PickerRowActions::Wording wording, QWidget *parent, PickerRowDelegate *delegate)
    : QListView(parent)
    , m_items(new PickerListModel(this))
    , m_delegate(delegate ? delegate : new PickerRowDelegate)
    , m_actions(new PickerRowActions(wording, this))
    , m_overlay(new RowOverlay(*this, *m_actions))
{
    m_delegate->setParent(this);
    setModel(m_items);
    setItemDelegate(m_delegate);
    setFrameShape(QFrame::NoFrame);
    setFocusPolicy(Qt::NoFocus);
    setMouseTracking(true);
    setSelectionMode(QAbstractItemView::SingleSelection);
    setEditTriggers(QAbstractItemView::NoEditTriggers);
    setVerticalScrollMode(QAbstractItemView::ScrollPerPixel);
    setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    setVerticalScrollBar(new ThinScrollBar(this));
    setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOn);
    setSideMargins(Theme::margin, Theme::margin);
    setAccessibleName(QStringLiteral("Prompts and skills"));
    viewport()->setAutoFillBackground(false);
    connect(&Theme::shared(), &Theme::changed, this, &PickerList::onThemeChanged);
}

void PickerList::setSideMargins(int left, int right)
{
    setViewportMargins(left, 0, right - ThinScrollBar::extent, 0);
}

void PickerList::onThemeChanged()
{
    scheduleDelayedItemsLayout();
    viewport()->update();
    placeActions();
}

const PickerResult *PickerList::selectedResult() const
{
    return m_items->result(currentIndex().row());
}

void PickerList::selectResult(const QString &id)
{
    const int row = m_items->rowOf(id, m_section);
    selectRow(row >= 0 ? row : m_items->nextItemRow(-1, 1));
}

void PickerList::selectRow(int row)
{
    if (row < 0) {
        placeActions();
        return;
    }
    setCurrentIndex(m_items->index(row));
    // The heading of a section comes into view with its first row.
    if (!m_items->result(row - 1))
        scrollTo(m_items->index(row - 1));
    scrollTo(m_items->index(row));
    placeActions();
}

int PickerList::rowsPerPage() const
{
    return std::max(1, viewport()->height() / std::max(1, Theme::shared().scaled(designRowHeight)) - 1);
}

void PickerList::moveSelection(Move move)
{
    const int current = currentIndex().row();
    const int step = move == Move::previous || move == Move::pageUp || move == Move::last ? -1 : 1;
    const bool isPage = move == Move::pageUp || move == Move::pageDown;
    int row = move == Move::first ? -1 : move == Move::last ? m_items->rowCount() : current;
    for (int count = isPage ? rowsPerPage() : 1; count > 0; --count) {
        const int next = m_items->nextItemRow(row, step);
        if (next < 0)
            break;
        row = next;
    }
    if (m_items->result(row))
        selectRow(row);
}

void PickerList::describeActions(const PickerRowActions::Circumstances &circumstances)
{
    if (const PickerResult *result = selectedResult())
        m_actions->describe(*result, circumstances);
    placeActions();
}

void PickerList::currentChanged(const QModelIndex &current, const QModelIndex &previous)
{
    QListView::currentChanged(current, previous);
    if (current.isValid())
        m_section = m_items->sectionOf(current.row());
    Q_EMIT selectedResultChanged();
}

void PickerList::placeActions()
{
    const QRect row = selectedResult() ? visualRect(currentIndex()) : QRect();
    if (!row.isValid()) {
        m_overlay->place({});
        return;
    }
    const int width = m_actions->fit(row.width());
    m_delegate->setActionsWidth(width + Theme::shared().scaled(8));
    m_overlay->place(QRect(row.right() + 1 - width, row.top(), width, row.height()));
    viewport()->update(row);
}

void PickerList::resizeEvent(QResizeEvent *event)
{
    QListView::resizeEvent(event);
    placeActions();
}

void PickerList::scrollContentsBy(int dx, int dy)
{
    QListView::scrollContentsBy(dx, dy);
    placeActions();
}

void PickerList::mouseDoubleClickEvent(QMouseEvent *event)
{
    if (event->button() == Qt::LeftButton && m_items->result(indexAt(event->position().toPoint()).row()))
        Q_EMIT insertRequested();
}

QSize PickerList::sizeHint() const
{
    return {Theme::panelWidth, 0};
}

QSize PickerList::minimumSizeHint() const
{
    const Theme &theme = Theme::shared();
    return {0, theme.scaled(designHeadingHeight) + leastVisibleRows * theme.scaled(designRowHeight)};
}
