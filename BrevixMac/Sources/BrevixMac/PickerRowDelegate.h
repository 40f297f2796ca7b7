// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Theme.h"

#include <QAbstractItemDelegate>

/// Draws the headings and rows of a PickerListModel. Text is drawn as it stands and elided, never wrapped.
class PickerRowDelegate : public QAbstractItemDelegate
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

protected:
    /// What stands after the title of a prompt with variables, beside the mark; nothing by default.
    virtual QString variablesLabel() const { return {}; }

    /// The line under the title.
    virtual void paintDetail(QPainter &painter, const QRect &line, const QModelIndex &index) const;

    /// Draws elided text; returns the width it took.
    static int drawText(QPainter &painter, const QRect &line, Theme::Type type, Theme::Color ink,
                        const QString &text);

private:
    static void paintHeading(QPainter &painter, const QRect &frame, const QModelIndex &index);
    void paintItem(QPainter &painter, const QStyleOptionViewItem &option, const QModelIndex &index) const;
    void paintTitle(QPainter &painter, const QRect &line, const QModelIndex &index) const;

    int m_actionsWidth = 0;
};
