// SPDX-License-Identifier: GPL-3.0-or-later
#include "FlowLayout.h"

#include <QHash>
#include <QStyle>
#include <QWidget>

#include <algorithm>

FlowLayout::FlowLayout(QWidget *parent, Content content, int spacing)
    : QLayout(parent)
    , m_content(std::move(content))
{
    setContentsMargins(0, 0, 0, 0);
    setSpacing(spacing);
}

FlowLayout::~FlowLayout()
{
    qDeleteAll(m_laidOut);
}

void FlowLayout::setItems(const QStringList &items)
{
    if (items == m_items)
        return;
    QMultiHash<QString, QLayoutItem *> present;
    for (qsizetype index = 0; index < m_items.size(); ++index)
        present.insert(m_items.at(index), m_laidOut.at(index));
    QList<QLayoutItem *> arranged;
    for (const QString &item : items) {
        if (QLayoutItem *kept = present.take(item)) {
            arranged.append(kept);
            continue;
        }
        QWidget *widget = m_content(item);
        widget->setParent(parentWidget());
        widget->show();
        arranged.append(new QWidgetItem(widget));
    }
    for (QLayoutItem *gone : std::as_const(present)) {
        gone->widget()->hide();
        gone->widget()->deleteLater();
        delete gone;
    }
    m_items = items;
    m_laidOut = arranged;
    invalidate();
}

void FlowLayout::addItem(QLayoutItem *item)
{
    m_items.append(QString());
    m_laidOut.append(item);
}

QLayoutItem *FlowLayout::takeAt(int index)
{
    if (index < 0 || index >= count())
        return nullptr;
    m_items.removeAt(index);
    return m_laidOut.takeAt(index);
}

int FlowLayout::heightForWidth(int width) const
{
    return arrange(QRect(0, 0, width, 0), Apply::no);
}

QSize FlowLayout::minimumSize() const
{
    QSize size;
    for (const QLayoutItem *item : m_laidOut)
        size = size.expandedTo(QSize(item->minimumSize().width(), item->sizeHint().height()));
    return size;
}

void FlowLayout::setGeometry(const QRect &rect)
{
    QLayout::setGeometry(rect);
    arrange(rect, Apply::yes);
}

/// Gives the height that the items take in the width of @p rect.
int FlowLayout::arrange(const QRect &rect, Apply apply) const
{
    const Qt::LayoutDirection direction =
        parentWidget() ? parentWidget()->layoutDirection() : Qt::LeftToRight;
    int x = rect.left();
    int y = rect.top();
    int lineHeight = 0;
    for (QLayoutItem *item : m_laidOut) {
        QSize size = item->sizeHint();
        size.setWidth(std::min(size.width(), rect.width()));
        const bool isFull = x > rect.left() && x + size.width() > rect.right() + 1;
        if (isFull) {
            x = rect.left();
            y += lineHeight + spacing();
            lineHeight = 0;
        }
        if (apply == Apply::yes)
            item->setGeometry(QStyle::visualRect(direction, rect, QRect(QPoint(x, y), size)));
        x += size.width() + spacing();
        lineHeight = std::max(lineHeight, size.height());
    }
    return y + lineHeight - rect.top();
}
