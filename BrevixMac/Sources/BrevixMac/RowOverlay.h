// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QObject>
#include <QRect>

class QAbstractItemView;
class QWidget;

/// Keeps controls over a row of a list. They are the list's neighbours, not its children: what lies inside an
/// item view or beside the pages of a stack is not told to screen readers. Cut off where the list is, and
/// scrolled through. Main thread only.
class RowOverlay final : public QObject
{
    Q_OBJECT

public:
    /// Both must outlive this object; @p controls follows the list to where it is put.
    RowOverlay(QAbstractItemView &list, QWidget &controls);

    /// Shows the controls at @p frame of the list's viewport, or hides them when it is empty.
    void place(const QRect &frame);

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    void adopt();
    void show();

    QAbstractItemView &m_list;
    QWidget &m_controls;
    QRect m_frame;
};
