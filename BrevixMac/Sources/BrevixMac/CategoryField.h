// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Models.h"

#include <QAbstractButton>
#include <QPointer>

class CategoryMenu;

/// Shows the chosen category as a coloured dot and its name, and opens the menu of all categories inside the
/// window, because a panel cannot open windows of its own on every desktop.
class CategoryField final : public QAbstractButton
{
    Q_OBJECT

public:
    explicit CategoryField(QWidget *parent = nullptr);

    /// @p selectedID may be unknown or empty: then nothing is chosen.
    void setCategories(const QList<PromptCategory> &categories, const QString &selectedID);

    void openMenu();
    /// Null while it is closed.
    CategoryMenu *menu() const;

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

Q_SIGNALS:
    void chosen(const QString &id);

protected:
    void paintEvent(QPaintEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;

private:
    bool isMenuOpen() const;
    void describe();

    QList<PromptCategory> m_categories;
    QString m_selectedID;
    QPointer<CategoryMenu> m_menu;
};
