// SPDX-License-Identifier: GPL-3.0-or-later
#include "EditorStatusLine.h"

#include "OneLine.h"
#include "ThemePainting.h"

#include <QAccessible>
#include <QPainter>

#include <algorithm>

namespace {

constexpr int sidePadding = 7;
constexpr int verticalPadding = 3;
constexpr int mostLines = 5;
constexpr int filledShare = 88; // percent of a line that its words fill

} // namespace

EditorStatusLine::EditorStatusLine(QWidget *parent)
    : QLabel(parent)
{
    setTextFormat(Qt::PlainText);
    hide();
    connect(&Theme::shared(), &Theme::changed, this, &EditorStatusLine::onThemeChanged);
    onThemeChanged();
}

void EditorStatusLine::onThemeChanged()
{
    const Theme &theme = Theme::shared();
    setFont(theme.font(Theme::Type::sectionTitle));
    const int side = theme.scaled(sidePadding);
    const int vertical = theme.scaled(verticalPadding);
    setContentsMargins(side, vertical, side, vertical);
    QPalette colors = palette();
    colors.setColor(QPalette::WindowText,
                    theme.color(m_isError ? Theme::Color::danger : Theme::Color::success));
    setPalette(colors);
    updateGeometry();
    update();
}

void EditorStatusLine::show(const std::optional<EditorStatusMessage> &message)
{
    m_isError = message && message->isError;
    m_message = message ? OneLine::of(message->text) : QString();
    setText(m_message);
    setToolTip(m_message);
    setAccessibleName(m_message);
    onThemeChanged();
    setVisible(message.has_value());
    if (message) {
        QAccessibleEvent event(this, QAccessible::Alert);
        QAccessible::updateAccessibility(&event);
    }
}

int EditorStatusLine::widthOfOneLine() const
{
    if (m_message.isEmpty())
        return 0;
    const QMargins margins = contentsMargins();
    return fontMetrics().horizontalAdvance(m_message) + margins.left() + margins.right() + 2;
}

void EditorStatusLine::fit(int width)
{
    const bool wraps = widthOfOneLine() > width;
    const QMargins margins = contentsMargins();
    const int room = (width - margins.left() - margins.right()) * mostLines * filledShare / 100;
    setText(wraps ? fontMetrics().elidedText(m_message, Qt::ElideRight, std::max(room, 0)) : m_message);
    setWordWrap(wraps);
    QSizePolicy policy(wraps ? QSizePolicy::Preferred : QSizePolicy::Maximum, QSizePolicy::Fixed);
    policy.setHeightForWidth(wraps);
    setSizePolicy(policy);
    updateGeometry();
}

QSize EditorStatusLine::sizeHint() const
{
    if (wordWrap())
        return QLabel::sizeHint();
    const QMargins margins = contentsMargins();
    return {widthOfOneLine(), fontMetrics().height() + margins.top() + margins.bottom()};
}

QSize EditorStatusLine::minimumSizeHint() const
{
    // A wrapped label's height comes from the width it gets.
    const QMargins margins = contentsMargins();
    return {0, fontMetrics().height() + margins.top() + margins.bottom()};
}

void EditorStatusLine::paintEvent(QPaintEvent *event)
{
    {
        const Theme &theme = Theme::shared();
        QPainter painter(this);
        ThemePainting::fillRounded(
            painter, rect(), theme.scaled(Theme::chipRadius),
            theme.color(m_isError ? Theme::Color::dangerSoft : Theme::Color::successSoft));
    }
    QLabel::paintEvent(event);
}
