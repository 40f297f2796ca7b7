// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QPixmap>
#include <QWidget>

class QVariantAnimation;

/// Lets the screen that was shown fade away over the one that has taken its place. Does nothing when the
/// desktop asks for less motion. Input goes to what lies below.
class PageFade final : public QWidget
{
    Q_OBJECT

public:
    /// Lies over @p screen, which becomes its parent.
    explicit PageFade(QWidget *screen);

    /// Call before the change: takes the picture of the window as it is now.
    void begin();

    /// Milliseconds.
    int duration() const;

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    QPixmap m_before;
    QVariantAnimation *m_animation;
};
