// SPDX-License-Identifier: GPL-3.0-or-later
#include "ThemedSwitch.h"

#include "ThemePainting.h"

#include <QKeyEvent>
#include <QPainter>

namespace {

constexpr int trackWidth = 38;
constexpr int trackHeight = 22;
constexpr int leastTarget = 28; // the pointer's
constexpr qreal knobGap = 3;
constexpr qreal disabledOpacity = 0.42;
constexpr int brightestGround = 160; // of 255, on which a white knob can still be seen

} // namespace

ThemedSwitch::ThemedSwitch(const QString &name, QWidget *parent)
    : QCheckBox(parent)
{
    setAccessibleName(name);
    setFocusPolicy(Qt::TabFocus);
    setAttribute(Qt::WA_Hover);
    setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
    m_knob.setStartValue(0.0);
    m_knob.setEndValue(0.0);
    m_knob.setEasingCurve(QEasingCurve::OutCubic);
    connect(&m_knob, &QVariantAnimation::valueChanged, this, qOverload<>(&ThemedSwitch::update));
    connect(this, &QCheckBox::toggled, this, &ThemedSwitch::slide);
    connect(&Theme::shared(), &Theme::changed, this, [this] {
        updateGeometry();
        update();
    });
}

void ThemedSwitch::slide(bool isOn)
{
    const QVariant from = m_knob.currentValue();
    m_knob.stop();
    m_knob.setStartValue(from);
    m_knob.setEndValue(isOn ? 1.0 : 0.0);
    m_knob.setDuration(Theme::shared().reducedMotion() || !isVisible() ? 0 : Theme::longestMotion);
    m_knob.start();
}

QSize ThemedSwitch::sizeHint() const
{
    const Theme &theme = Theme::shared();
    return {theme.scaled(trackWidth) + 2 * Theme::haloWidth,
            std::max(theme.scaled(trackHeight) + 2 * Theme::haloWidth, theme.scaled(leastTarget))};
}

void ThemedSwitch::keyPressEvent(QKeyEvent *event)
{
    if ((event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter) && !event->isAutoRepeat())
        click();
    else
        QCheckBox::keyPressEvent(event);
}

void ThemedSwitch::paintEvent(QPaintEvent *)
{
    const Theme &theme = Theme::shared();
    QPainter painter(this);
    QRectF track(0, 0, theme.scaled(trackWidth), theme.scaled(trackHeight));
    track.moveCenter(QRectF(rect()).center());
    const qreal radius = track.height() / 2;
    painter.setOpacity(isEnabled() ? 1 : disabledOpacity);
    const QColor ground = theme.color(isChecked() ? Theme::Color::accent : Theme::Color::tertiary);
    ThemePainting::fillRounded(painter, track, radius, ground);
    const qreal diameter = track.height() - 2 * knobGap;
    const qreal way = track.width() - diameter - 2 * knobGap;
    const QRectF knob(track.left() + knobGap + way * m_knob.currentValue().toReal(), track.top() + knobGap,
                      diameter, diameter);
    const bool isBright = qGray(ground.rgb()) > brightestGround;
    ThemePainting::fillRounded(painter, knob, diameter / 2,
                               isBright ? theme.color(Theme::Color::surface) : QColor(Qt::white));
    if (hasFocus())
        ThemePainting::focusRingAround(painter, track, radius);
}
