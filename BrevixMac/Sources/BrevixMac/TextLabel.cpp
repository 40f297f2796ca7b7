// SPDX-License-Identifier: GPL-3.0-or-later
#include "TextLabel.h"

#include <QPainter>
#include <QStyle>
#include <QTextLayout>

#include <cmath>

namespace {

constexpr int anyHeight = 100'000;

QTextOption brokenText()
{
    QTextOption option;
    option.setWrapMode(QTextOption::WrapAtWordBoundaryOrAnywhere);
    return option;
}

} // namespace

TextLabel::TextLabel(Theme::Type type, Theme::Color ink, Overflow overflow, QWidget *parent)
    : QLabel(parent)
    , m_type(type)
    , m_ink(ink)
{
    setTextFormat(Qt::PlainText);
    setOverflow(overflow);
    connect(&Theme::shared(), &Theme::changed, this, &TextLabel::onThemeChanged);
    onThemeChanged();
}

void TextLabel::setOverflow(Overflow overflow)
{
    m_overflow = overflow;
    const bool wraps = overflow == Overflow::wrap;
    setSizePolicy(QSizePolicy::Preferred, wraps ? QSizePolicy::Preferred : QSizePolicy::Fixed);
    setWordWrap(wraps); // adds that the height follows the width
    updateGeometry();
}

void TextLabel::setElideMode(Qt::TextElideMode mode)
{
    m_elideMode = mode;
    update();
}

bool TextLabel::isElided() const
{
    return m_overflow == Overflow::elide && fontMetrics().horizontalAdvance(text()) > contentsRect().width();
}

void TextLabel::setInk(Theme::Color ink)
{
    if (ink == m_ink)
        return;
    m_ink = ink;
    onThemeChanged();
}

void TextLabel::onThemeChanged()
{
    const Theme &theme = Theme::shared();
    setFont(theme.font(m_type));
    QPalette colors = palette();
    colors.setColor(QPalette::WindowText, theme.color(m_ink));
    setPalette(colors);
    updateGeometry();
}

QSize TextLabel::sizeHint() const
{
    if (m_overflow == Overflow::wrap)
        return QLabel::sizeHint();
    const QMargins margins = contentsMargins();
    return {fontMetrics().horizontalAdvance(text()) + 1 + margins.left() + margins.right(),
            fontMetrics().height()};
}

QSize TextLabel::minimumSizeHint() const
{
    // A wrapped label's height comes from the width it gets; its own guess would be many short lines.
    return {std::min(sizeHint().width(), fontMetrics().averageCharWidth() * 4), fontMetrics().height()};
}

/// A label by itself lets a word stick out that is wider than it, such as an address. What can be selected is
/// laid out in another way, that does not.
bool TextLabel::breaksWords(int width) const
{
    return m_overflow == Overflow::wrap && width > 0 &&
           !(textInteractionFlags() & Qt::TextSelectableByMouse) &&
           fontMetrics().boundingRect(QRect(0, 0, width, anyHeight), Qt::TextWordWrap, text()).width() >
               width;
}

int TextLabel::heightForWidth(int width) const
{
    const QMargins margins = contentsMargins();
    const int room = width - margins.left() - margins.right();
    if (!breaksWords(room))
        return QLabel::heightForWidth(width);
    QTextLayout layout(text(), font());
    layout.setTextOption(brokenText());
    layout.beginLayout();
    qreal height = 0;
    for (QTextLine line = layout.createLine(); line.isValid(); line = layout.createLine()) {
        line.setLineWidth(room);
        height += line.height() + fontMetrics().leading();
    }
    layout.endLayout();
    return static_cast<int>(std::ceil(height)) + margins.top() + margins.bottom();
}

void TextLabel::paintEvent(QPaintEvent *event)
{
    const bool breaks = breaksWords(contentsRect().width());
    if (m_overflow == Overflow::wrap && !breaks) {
        QLabel::paintEvent(event);
        return;
    }
    QPainter painter(this);
    painter.setPen(palette().color(QPalette::WindowText));
    if (breaks) {
        QTextOption option = brokenText();
        const Qt::LayoutDirection direction = text().isRightToLeft() ? Qt::RightToLeft : Qt::LeftToRight;
        option.setTextDirection(direction);
        option.setAlignment(QStyle::visualAlignment(direction, alignment()));
        painter.drawText(contentsRect(), text(), option);
        return;
    }
    const QRect line = contentsRect();
    painter.drawText(line, static_cast<int>(alignment() | Qt::TextSingleLine),
                     fontMetrics().elidedText(text(), m_elideMode, line.width()));
}
