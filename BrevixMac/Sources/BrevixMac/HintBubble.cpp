// SPDX-License-Identifier: GPL-3.0-or-later
#include "HintBubble.h"

#include "OneLine.h"
#include "TextField.h"
#include "TextLabel.h"
#include "ThemePainting.h"

#include <QEvent>
#include <QPainter>

#include <algorithm>

namespace {

constexpr int gap = 2;
constexpr int edgeGap = 10;
constexpr int widest = 300;

} // namespace

QString HintBubble::tipFor(const QWidget &widget)
{
    const auto *label = qobject_cast<const TextLabel *>(&widget);
    if (label && label->isElided())
        return OneLine::of(label->text());
    const auto *field = qobject_cast<const TextField *>(&widget);
    if (field && field->isPlaceholderCut())
        return OneLine::of(field->placeholderText());
    return widget.toolTip();
}

HintBubble::HintBubble(QWidget *parent)
    : QLabel(parent)
{
    setTextFormat(Qt::PlainText);
    setWordWrap(true);
    setAttribute(Qt::WA_TransparentForMouseEvents);
    setContentsMargins(8, 4, 8, 5);
    hide();
    connect(&Theme::shared(), &Theme::changed, this, &HintBubble::onThemeChanged);
    onThemeChanged();
}

void HintBubble::onThemeChanged()
{
    setFont(Theme::shared().font(Theme::Type::count));
    QPalette colors = palette();
    colors.setColor(QPalette::WindowText, Theme::shared().color(Theme::Color::surface));
    setPalette(colors);
}

void HintBubble::showFor(const QPoint &position)
{
    hide();
    if (m_control)
        m_control->removeEventFilter(this);
    m_control = parentWidget()->childAt(position);
    const QString tip = m_control ? tipFor(*m_control) : QString();
    if (tip.isEmpty())
        return;
    m_control->installEventFilter(this);
    setText(tip);
    const QMargins margins = contentsMargins();
    const int textWidth =
        std::min(widest, fontMetrics().horizontalAdvance(text()) + 2) + margins.left() + margins.right();
    const QSize size(textWidth, heightForWidth(textWidth));
    const QRect control(m_control->mapTo(parentWidget(), QPoint()), m_control->size());
    const QRect room = parentWidget()->rect().adjusted(edgeGap, edgeGap, -edgeGap, -edgeGap);
    const int x = std::clamp(control.center().x() - size.width() / 2, room.left(),
                             std::max(room.left(), room.right() + 1 - size.width()));
    const bool fitsBelow = control.bottom() + gap + size.height() <= room.bottom();
    const int y = fitsBelow ? control.bottom() + gap : control.top() - gap - size.height();
    setGeometry(QRect(QPoint(x, y), size));
    show();
    raise();
}

bool HintBubble::eventFilter(QObject *watched, QEvent *event)
{
    switch (event->type()) {
    case QEvent::Leave:
    case QEvent::HoverLeave:
    case QEvent::MouseButtonPress:
    case QEvent::Hide:
        hide();
        break;
    default:
        break;
    }
    return QLabel::eventFilter(watched, event);
}

void HintBubble::paintEvent(QPaintEvent *event)
{
    {
        QPainter painter(this);
        QColor background = Theme::shared().color(Theme::Color::text);
        ThemePainting::fillRounded(painter, rect(), Theme::chipRadius, background);
    }
    QLabel::paintEvent(event);
}
