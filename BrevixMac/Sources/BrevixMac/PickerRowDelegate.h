// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QAbstractItemDelegate>

/// Draws the headings and rows of a PickerListModel. Text is drawn as it stands and elided, never wrapped.
class PickerRowDelegate final : public QAbstractItemDelegate
{
    Q_OBJECT

public:
    using QAbstractItemDelegate::QAbstractItemDelegate;

    /// Room in pixels kept free at the right end of the selected row.
    void setActionsWidth(int width) { m_actionsWidth = width; }

    void paint(QPainter *painter, const QStyleOptionViewItem &option,
               const QModelIndex &index) const override;
    QSize sizeHint(const QStyleOptionViewItem &option, const QModelIndex &index) const override;

    /// Where the text of a row starts, in pixels from its left edge.
    static int textLeft();

private:
    static void paintHeading(QPainter &painter, const QRect &frame, const QModelIndex &index);
    void paintItem(QPainter &painter, const QStyleOptionViewItem &option, const QModelIndex &index) const;
    static void paintTitle(QPainter &painter, const QRect &line, const QModelIndex &index);

    int m_actionsWidth = 0;
};
