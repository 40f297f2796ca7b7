// SPDX-License-Identifier: GPL-3.0-or-later
#include "PageFade.h"

#include "Theme.h"

#include <QPainter>
#include <QVariantAnimation>

namespace {

constexpr int fadeDuration = 110;
static_assert(fadeDuration <= Theme::longestMotion);

} // namespace

PageFade::PageFade(QWidget *screen)
    : QWidget(screen)
    , m_animation(new QVariantAnimation(this))
{
    setAttribute(Qt::WA_TransparentForMouseEvents);
    setFocusPolicy(Qt::NoFocus);
    hide();
    m_animation->setDuration(fadeDuration);
    m_animation->setEasingCurve(QEasingCurve::OutQuad);
    m_animation->setStartValue(1.0);
    m_animation->setEndValue(0.0);
    connect(m_animation, &QVariantAnimation::valueChanged, this, qOverload<>(&QWidget::update));
    connect(m_animation, &QVariantAnimation::finished, this, [this] {
        hide();
        m_before = {};
    });
}

void PageFade::begin()
{
    if (!parentWidget()->isVisible() || Theme::shared().reducedMotion())
        return;
    hide();
    const QPoint origin = parentWidget()->mapTo(window(), QPoint());
    m_before = window()->grab(QRect(origin, parentWidget()->size()));
    setGeometry(parentWidget()->rect());
    m_animation->stop();
    m_animation->start();
    show();
    raise();
}

int PageFade::duration() const
{
    return m_animation->duration();
}

void PageFade::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    painter.setOpacity(m_animation->currentValue().toReal());
    painter.drawPixmap(0, 0, m_before);
}
