// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QLabel>
#include <QPointer>

/// Shows tool tips inside the panel, because a panel cannot open windows of its own on every desktop. Put on
/// the widget that contains the controls; those leave their tool tip events to it.
class HintBubble final : public QLabel
{
    Q_OBJECT

public:
    explicit HintBubble(QWidget *parent);

    /// What is shown for @p widget: its whole text where that is cut short, else its tool tip.
    static QString tipFor(const QWidget &widget);

    /// Shows the tool tip of the child of the parent at @p position (parent coordinates), or hides.
    void showFor(const QPoint &position);

protected:
    void paintEvent(QPaintEvent *event) override;
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    void onThemeChanged();

    QPointer<QWidget> m_control;
};
