// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QWidget>

/// The column of categories, set apart by its ground and a hairline. Leaves the window's round corner free.
class SidebarGround final : public QWidget
{
    Q_OBJECT

public:
    explicit SidebarGround(int windowRadius, QWidget *parent = nullptr);

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    int m_windowRadius;
};

/// A hairline between two columns, or between two that stand one over the other.
class ColumnLine final : public QWidget
{
    Q_OBJECT

public:
    explicit ColumnLine(QWidget *parent = nullptr);

    void setOrientation(Qt::Orientation orientation);

protected:
    void paintEvent(QPaintEvent *event) override;
};

/// The head of a window, with a hairline below.
class HeaderGround final : public QWidget
{
    Q_OBJECT

public:
    using QWidget::QWidget;

protected:
    void paintEvent(QPaintEvent *event) override;
};
