// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "PickerListModel.h"
#include "PickerRowActions.h"

#include <QListView>

class PickerRowDelegate;
class RowOverlay;

/// A list of prompts and skills under a search field. Exactly one item is selected while there are any, and
/// that row carries the actions. Never takes the focus itself: the search field moves its selection.
class PickerList final : public QListView
{
    Q_OBJECT

public:
    enum class Move { previous, next, pageUp, pageDown, first, last };

    /// @p delegate draws the rows; the list takes it over. Without one it is a PickerRowDelegate.
    explicit PickerList(PickerRowActions::Wording wording, QWidget *parent = nullptr,
                        PickerRowDelegate *delegate = nullptr);

    /// Free pixels left and right of the rows; the scroll bar lies in those on the right.
    void setSideMargins(int left, int right);

    PickerListModel &items() const { return *m_items; }
    PickerRowActions &actions() const { return *m_actions; }

    /// The selected item; null when the list is empty.
    const PickerResult *selectedResult() const;

    /// Selects the item with this PickerResult::id(), or the first one when it is not in the list. Where
    /// several sections have it, the section that was selected last is preferred.
    void selectResult(const QString &id);

    /// Moves over headings and stops at the ends.
    void moveSelection(Move move);

    /// Says what the actions of the selected row offer now.
    void describeActions(const PickerRowActions::Circumstances &circumstances);

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

Q_SIGNALS:
    void selectedResultChanged();
    void insertRequested();

protected:
    void currentChanged(const QModelIndex &current, const QModelIndex &previous) override;
    void resizeEvent(QResizeEvent *event) override;
    void scrollContentsBy(int dx, int dy) override;
    void mouseDoubleClickEvent(QMouseEvent *event) override;

private:
    void onThemeChanged();
    void selectRow(int row);
    void placeActions();
    int rowsPerPage() const;

    PickerListModel *m_items;
    PickerRowDelegate *m_delegate;
    PickerRowActions *m_actions;
    RowOverlay *m_overlay;
    QString m_section; ///< of the row that was selected last
};
