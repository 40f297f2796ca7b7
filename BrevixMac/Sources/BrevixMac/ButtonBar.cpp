// SPDX-License-Identifier: GPL-3.0-or-later
#include "ButtonBar.h"

#include "LayoutWatch.h"
#include "Theme.h"
#include "ThemedButton.h"

#include <QLayout>
#include <QPainter>

void ButtonBar::setShrinking(const QList<ThemedButton *> &buttons)
{
    m_shrinking = buttons;
    new LayoutWatch(this, [this] { arrange(); });
    for (ThemedButton *button : buttons)
        button->setToolTip(button->text());
}

void ButtonBar::arrange()
{
    using Face = ThemedButton::Face;
    const QMargins margins = layout()->contentsMargins();
    int room = width() - margins.left() - margins.right();
    for (const ThemedButton *button : findChildren<ThemedButton *>())
        room -= button->isHidden() ? 0 : button->sizeFor(Face::full).width() + layout()->spacing();
    for (ThemedButton *button : std::as_const(m_shrinking)) {
        button->setFace(room < 0 ? Face::symbolOnly : Face::full);
        if (room < 0)
            room += button->sizeFor(Face::full).width() - button->sizeFor(Face::symbolOnly).width();
    }
}

void ButtonBar::paintEvent(QPaintEvent *)
{
    QPainter(this).fillRect(QRect(0, 0, width(), 1), Theme::shared().color(Theme::Color::line));
}
