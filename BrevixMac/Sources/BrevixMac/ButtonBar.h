// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QWidget>

class ThemedButton;

/// The row of buttons at the foot of a screen, under a hairline. Its owner gives it a layout.
class ButtonBar final : public QWidget
{
    Q_OBJECT

public:
    using QWidget::QWidget;

    /// Which buttons show only their symbols, one after the other, where not all texts have room. The tool
    /// tips of these tell their texts. To be called once.
    void setShrinking(const QList<ThemedButton *> &buttons);

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    void arrange();

    QList<ThemedButton *> m_shrinking;
};
