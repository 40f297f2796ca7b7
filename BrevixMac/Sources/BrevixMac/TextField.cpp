// SPDX-License-Identifier: GPL-3.0-or-later
#include "TextField.h"

#include "Symbols.h"
#include "ThemePainting.h"

#include <QEvent>
#include <QPainter>

namespace {

constexpr int padding = 12;
constexpr int symbolPadding = 16;
constexpr int symbolGap = 10;
constexpr int styleInset = 2; // what the line edit itself leaves free beside its text margins

} // namespace

TextField::TextField(QWidget *parent)
    : QLineEdit(parent)
{
    setFrame(false);
    setContextMenuPolicy(Qt::NoContextMenu);
    setAttribute(Qt::WA_MacShowFocusRect, false);
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
    connect(&Theme::shared(), &Theme::changed, this, &TextField::onThemeChanged);
    onThemeChanged();
}

void TextField::setSymbol(const QString &name)
{
    m_symbol = name;
    onThemeChanged();
}

void TextField::setDesignHeight(int height)
{
    m_designHeight = height;
    updateGeometry();
}

void TextField::onThemeChanged()
{
    const Theme &theme = Theme::shared();
    setFont(theme.font(Theme::Type::body));
    QPalette colors = palette();
    colors.setColor(QPalette::Base, Qt::transparent);
    colors.setColor(QPalette::Text, theme.color(Theme::Color::text));
    colors.setColor(QPalette::PlaceholderText, theme.color(Theme::Color::tertiary));
    colors.setColor(QPalette::Highlight, theme.color(Theme::Color::accent));
    colors.setColor(QPalette::HighlightedText, theme.color(Theme::Color::onAccent));
    setPalette(colors);
    const int leading = m_symbol.isEmpty() ? theme.scaled(padding)
                                           : theme.scaled(symbolPadding + Theme::symbolSize + symbolGap);
    setTextMargins(Theme::haloWidth + leading - styleInset, 0,
                   Theme::haloWidth + theme.scaled(padding) - styleInset, 0);
    updateGeometry();
    update();
}

bool TextField::isPlaceholderCut() const
{
    const QMargins margins = textMargins();
    const int room = width() - margins.left() - margins.right() - 2 * styleInset;
    return text().isEmpty() && fontMetrics().horizontalAdvance(placeholderText()) > room;
}

QSize TextField::sizeHint() const
{
    const Theme &theme = Theme::shared();
    const int height = std::max(theme.scaled(m_designHeight), fontMetrics().height() + theme.scaled(12));
    return {theme.scaled(200), height + 2 * Theme::haloWidth};
}

QSize TextField::minimumSizeHint() const
{
    return {80, sizeHint().height()};
}

bool TextField::event(QEvent *event)
{
    if (event->type() == QEvent::ToolTip) {
        event->ignore();
        return false;
    }
    return QLineEdit::event(event);
}

void TextField::paintEvent(QPaintEvent *event)
{
    const Theme &theme = Theme::shared();
    const int radius = theme.scaled(Theme::fieldRadius);
    {
        QPainter painter(this);
        const QRectF frame = ThemePainting::controlFrame(*this);
        ThemePainting::fillSunken(painter, frame, radius);
        if (!m_symbol.isEmpty()) {
            const int size = theme.scaled(Theme::symbolSize);
            const QRectF area(frame.left() + theme.scaled(symbolPadding), frame.top(), size, frame.height());
            Symbols::paint(painter, m_symbol,
                           theme.color(hasFocus() ? Theme::Color::text : Theme::Color::secondary), area,
                           size);
        }
        if (hasFocus())
            ThemePainting::focusRing(painter, frame, radius);
    }
    QLineEdit::paintEvent(event);
}
