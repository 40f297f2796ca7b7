// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Models.h"

#include <QFrame>
#include <QPointer>

class QListWidget;
class QListWidgetItem;

/// The list that a CategoryField opens: as many rows as fit into the window, the rest by scrolling; arrow
/// keys and the first letters of a name move in it. Closes on a choice, Escape, and a press or a focus
/// elsewhere, and deletes itself.
class CategoryMenu final : public QFrame
{
    Q_OBJECT

public:
    CategoryMenu(const QList<PromptCategory> &categories, const QString &selectedID, QWidget &field);

    QListWidget &list() const { return *m_list; }
    void close();

Q_SIGNALS:
    void chosen(const QString &id);

protected:
    void paintEvent(QPaintEvent *event) override;
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    void place();
    void choose(const QListWidgetItem *item);
    void onThemeChanged();

    QPointer<QWidget> m_field;
    QListWidget *m_list;
    bool m_isClosing = false;
};
