// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QWidget>

/// The row of buttons at the foot of a screen, under a hairline. Its owner gives it a layout.
class ButtonBar final : public QWidget
{
    Q_OBJECT

public:
    using QWidget::QWidget;

protected:
    void paintEvent(QPaintEvent *event) override;
};
