// SPDX-License-Identifier: GPL-3.0-or-later
#include "ThemedButton.h"

#include "Symbols.h"
#include "ThemePainting.h"

#include <QKeyEvent>
#include <QPainter>

namespace {

constexpr int textPadding = 12;
constexpr int plainPadding = 8;
constexpr int symbolGap = 6;
constexpr qreal disabledOpacity = 0.42;
constexpr std::chrono::milliseconds frameInterval{40};
constexpr qreal millisecondsPerTurn = 900;

} // namespace

ThemedButton::ThemedButton(Kind kind, const QString &text, QWidget *parent)
    : QPushButton(parent)
    , m_kind(kind)
{
    setLabel(text);
    setFocusPolicy(Qt::TabFocus);
    setAttribute(Qt::WA_Hover);
    setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Fixed);
    setAutoDefault(false);
    m_turning.setInterval(frameInterval);
    connect(&m_turning, &QTimer::timeout, this, qOverload<>(&ThemedButton::update));
    connect(&Theme::shared(), &Theme::changed, this, &ThemedButton::onThemeChanged);
    onThemeChanged();
}

void ThemedButton::onThemeChanged()
{
    setFont(Theme::shared().font(Theme::Type::button));
    updateGeometry();
    update();
}

void ThemedButton::setLabel(const QString &text)
{
    if (text == this->text() && text == accessibleName())
        return;
    setText(text);
    setAccessibleName(text);
    updateGeometry();
}

void ThemedButton::setSymbol(const QString &name)
{
    m_symbol = name;
    updateGeometry();
    update();
}

void ThemedButton::setTrailingSymbol(const QString &name)
{
    m_trailingSymbol = name;
    updateGeometry();
    update();
}

void ThemedButton::setFaceSymbol(const QString &name)
{
    m_faceSymbol = name;
    update();
}

QString ThemedButton::loneSymbol() const
{
    if (!m_faceSymbol.isEmpty())
        return m_faceSymbol;
    return m_symbol.isEmpty() ? m_trailingSymbol : m_symbol;
}

void ThemedButton::setFace(Face face)
{
    if (face == m_face)
        return;
    m_face = face;
    updateGeometry();
    update();
}

void ThemedButton::setDesignHeight(int height)
{
    m_designHeight = height;
    updateGeometry();
}

void ThemedButton::setLeading(bool isLeading)
{
    m_isLeading = isLeading;
    update();
}

void ThemedButton::setInk(Theme::Color ink)
{
    m_ink = ink;
    update();
}

void ThemedButton::setBusy(bool busy)
{
    if (busy == m_isBusy)
        return;
    m_isBusy = busy;
    m_turningSince.start();
    updateTurning();
    updateGeometry();
    update();
}

void ThemedButton::updateTurning()
{
    // Unseen, it would only wake the processor.
    if (m_isBusy && isVisible() && !Theme::shared().reducedMotion())
        m_turning.start();
    else
        m_turning.stop();
}

void ThemedButton::showEvent(QShowEvent *event)
{
    QPushButton::showEvent(event);
    updateTurning();
}

void ThemedButton::hideEvent(QHideEvent *event)
{
    QPushButton::hideEvent(event);
    updateTurning();
}

int ThemedButton::symbolSize() const
{
    const int designSize = m_kind == Kind::primary ? Theme::symbolSize - 3 : Theme::symbolSize;
    return Theme::shared().scaled(designSize);
}

QSize ThemedButton::sizeFor(Face face) const
{
    const Theme &theme = Theme::shared();
    const int height = std::max(theme.scaled(m_designHeight), fontMetrics().height() + theme.scaled(8));
    int width = height;
    if (face == Face::full) {
        const int padding = theme.scaled(m_kind == Kind::plain ? plainPadding : textPadding);
        const int symbols = (hasLeadingSymbol() ? 1 : 0) + (m_trailingSymbol.isEmpty() ? 0 : 1);
        width = 2 * padding + fontMetrics().horizontalAdvance(text()) +
                symbols * (symbolSize() + theme.scaled(symbolGap));
    }
    return {width + 2 * Theme::haloWidth, height + 2 * Theme::haloWidth};
}

QSize ThemedButton::minimumSizeHint() const
{
    return sizeFor(Face::symbolOnly);
}

bool ThemedButton::event(QEvent *event)
{
    // Left to the panel, which shows tips inside itself.
    if (event->type() == QEvent::ToolTip) {
        event->ignore();
        return false;
    }
    return QPushButton::event(event);
}

void ThemedButton::keyPressEvent(QKeyEvent *event)
{
    if ((event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter) &&
        event->modifiers() == Qt::NoModifier)
        click();
    else
        QPushButton::keyPressEvent(event);
}

bool ThemedButton::focusNextPrevChild(bool next)
{
    // What Qt asks for when it disables the control with the focus.
    return (m_isBusy && !isEnabled()) || QPushButton::focusNextPrevChild(next);
}

QColor ThemedButton::background() const
{
    const Theme &theme = Theme::shared();
    const bool isHovered = underMouse() && isEnabled();
    switch (m_kind) {
    case Kind::primary:
        return theme.color(isDown()    ? Theme::Color::accentPressed
                           : isHovered ? Theme::Color::accentHover
                                       : Theme::Color::accent);
    case Kind::quiet:
        return theme.color(Theme::Color::sunken);
    case Kind::plain:
        return isHovered ? theme.color(Theme::Color::hover) : QColor(Qt::transparent);
    }
    return Qt::transparent;
}

QColor ThemedButton::ink() const
{
    const Theme &theme = Theme::shared();
    if (m_ink)
        return theme.color(*m_ink);
    switch (m_kind) {
    case Kind::primary:
        return theme.color(Theme::Color::onAccent);
    case Kind::quiet:
        return theme.color(Theme::Color::text);
    case Kind::plain:
        return theme.color(underMouse() && isEnabled() ? Theme::Color::text : Theme::Color::secondary);
    }
    return theme.color(Theme::Color::text);
}

void ThemedButton::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    const Theme &theme = Theme::shared();
    const QRectF frame = ThemePainting::controlFrame(*this);
    const int radius = theme.scaled(Theme::buttonRadius);
    painter.setOpacity(isEnabled() || m_isBusy ? 1 : disabledOpacity);
    if (m_kind == Kind::quiet)
        ThemePainting::fillSunken(painter, frame, radius);
    else
        ThemePainting::fillRounded(painter, frame, radius, background());
    if (m_kind == Kind::quiet && underMouse() && isEnabled())
        ThemePainting::fillRounded(painter, frame, radius, theme.color(Theme::Color::hover));
    paintContent(painter, frame, ink());
    if (hasFocus() && m_kind == Kind::primary)
        ThemePainting::focusRingAround(painter, frame, radius);
    else if (hasFocus())
        ThemePainting::focusRing(painter, frame, radius);
}

void ThemedButton::paintContent(QPainter &painter, const QRectF &frame, const QColor &ink) const
{
    const Theme &theme = Theme::shared();
    const int size = symbolSize();
    const int gap = theme.scaled(symbolGap);
    const auto paintSymbol = [&](const QString &name, const QRectF &area) {
        if (m_isBusy)
            ThemePainting::progressRing(painter, area, ink,
                                        static_cast<qreal>(m_turningSince.elapsed()) / millisecondsPerTurn);
        else
            Symbols::paint(painter, name, ink, area, size);
    };
    if (m_face == Face::symbolOnly) {
        QRectF area(0, 0, size, size);
        area.moveCenter(frame.center());
        paintSymbol(loneSymbol(), area);
        return;
    }
    const qreal fixed = (hasLeadingSymbol() ? size + gap : 0) + (m_trailingSymbol.isEmpty() ? 0 : size + gap);
    const qreal padding = theme.scaled(m_kind == Kind::plain ? plainPadding : textPadding);
    const int room = static_cast<int>(frame.width() - 2 * padding - fixed);
    const QString shown = fontMetrics().horizontalAdvance(text()) <= room
                              ? text()
                              : fontMetrics().elidedText(text(), Qt::ElideRight, room);
    const qreal textWidth = fontMetrics().horizontalAdvance(shown);
    qreal x = m_isLeading ? frame.left() + padding : frame.center().x() - (textWidth + fixed) / 2;
    if (hasLeadingSymbol()) {
        paintSymbol(m_symbol, QRectF(x, frame.top(), size, frame.height()));
        x += size + gap;
    }
    painter.setPen(ink);
    painter.drawText(QRectF(x, frame.top(), textWidth + 1, frame.height()),
                     Qt::AlignLeft | Qt::AlignVCenter | Qt::TextSingleLine, shown);
    if (!m_trailingSymbol.isEmpty())
        paintSymbol(m_trailingSymbol, QRectF(x + textWidth + gap, frame.top(), size, frame.height()));
}
