// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QScrollBar>

/// A narrow scroll bar without a trough; invisible while there is nothing to scroll, so that its room never
/// changes.
class ThinScrollBar final : public QScrollBar
{
    Q_OBJECT

public:
    static constexpr int extent = 12;

    explicit ThinScrollBar(QWidget *parent = nullptr);

    QSize sizeHint() const override { return {extent, extent}; }

protected:
    void paintEvent(QPaintEvent *event) override;
};
