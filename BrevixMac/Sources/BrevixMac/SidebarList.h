// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "SidebarModel.h"

#include <QListView>

#include <functional>

class RowOverlay;
class ThemedButton;

/// The filters beside a list: one is selected, and a selected category carries its share button. One stop of
/// the Tab key; the arrows move the selection there, which takes effect at once. A click selects and leaves
/// the focus where it is. Main thread only.
class SidebarList final : public QListView
{
    Q_OBJECT

public:
    explicit SidebarList(const QString &accessibleName, QWidget *parent = nullptr);

    /// Keeps @p selectedID selected, which is not reported as a choice.
    void show(const QList<SidebarEntry> &entries, const QString &selectedID);

    /// Identifier of the selected line; empty when there is none.
    QString selectedID() const;

    /// Asks @p isSharing, by identifier, and shows the answer on the share button.
    void refreshSharing(const std::function<bool(const QString &)> &isSharing);

    SidebarModel &entries() const { return *m_entries; }
    ThemedButton &shareButton() const { return *m_share; }

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

Q_SIGNALS:
    /// The user has selected another line.
    void chosen(const QString &id);
    void shareRequested(const QString &id);

protected:
    void currentChanged(const QModelIndex &current, const QModelIndex &previous) override;
    void resizeEvent(QResizeEvent *event) override;
    void scrollContentsBy(int dx, int dy) override;
    void focusInEvent(QFocusEvent *event) override;
    void focusOutEvent(QFocusEvent *event) override;

private:
    class Delegate;

    void onThemeChanged();
    void placeShareButton();

    SidebarModel *m_entries;
    Delegate *m_delegate;
    ThemedButton *m_share;
    RowOverlay *m_overlay;
    bool m_isShowing = false;
};
