// SPDX-License-Identifier: GPL-3.0-or-later
#include "PreviewBox.h"

#include "ThemePainting.h"

#include <QEvent>
#include <QPainter>
#include <QVBoxLayout>

PreviewBox::PreviewBox(QWidget *text, QWidget *parent)
    : QWidget(parent)
    , m_text(text)
{
    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(text);
    setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Maximum);
    text->installEventFilter(this);
}

void PreviewBox::paintEvent(QPaintEvent *)
{
    const Theme &theme = Theme::shared();
    const int radius = theme.scaled(Theme::fieldRadius);
    const QRectF frame = ThemePainting::controlFrame(*this);
    QPainter painter(this);
    ThemePainting::fillSunken(painter, frame, radius);
    if (m_text->hasFocus())
        ThemePainting::focusRing(painter, frame, radius);
}

bool PreviewBox::eventFilter(QObject *watched, QEvent *event)
{
    if (event->type() == QEvent::FocusIn || event->type() == QEvent::FocusOut)
        update();
    return QWidget::eventFilter(watched, event);
}
