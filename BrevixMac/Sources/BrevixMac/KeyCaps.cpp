// SPDX-License-Identifier: GPL-3.0-or-later
#include "KeyCaps.h"

#include "ThemePainting.h"

#include <QPainter>

namespace {

constexpr int leastSide = 26;
constexpr int padding = 7;
constexpr int gap = 4;
constexpr int radius = 7;

QStringList legendsOf(const KeyboardShortcut &shortcut)
{
    const QString key = KeyboardShortcut::displayString(shortcut.keyCode);
    const QString label = shortcut.displayLabel();
    QStringList legends;
    for (const QChar modifier : label.first(label.size() - key.size()))
        legends.append(modifier);
    return legends << key;
}

} // namespace

KeyCaps::KeyCaps(QWidget *parent)
    : QWidget(parent)
{
    setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
    connect(&Theme::shared(), &Theme::changed, this, &KeyCaps::onThemeChanged);
    onThemeChanged();
}

void KeyCaps::onThemeChanged()
{
    setFont(Theme::shared().font(Theme::Type::button));
    updateGeometry();
    update();
}

void KeyCaps::setShortcut(const KeyboardShortcut &shortcut)
{
    m_legends = legendsOf(shortcut);
    setAccessibleName(shortcut.displayLabel());
    updateGeometry();
    update();
}

int KeyCaps::capHeight() const
{
    const Theme &theme = Theme::shared();
    return std::max(theme.scaled(leastSide), fontMetrics().height() + theme.scaled(8));
}

int KeyCaps::capWidth(const QString &legend) const
{
    return std::max(capHeight(),
                    fontMetrics().horizontalAdvance(legend) + 2 * Theme::shared().scaled(padding));
}

QSize KeyCaps::sizeHint() const
{
    int width = 0;
    for (const QString &legend : m_legends)
        width += capWidth(legend) + (width > 0 ? Theme::shared().scaled(gap) : 0);
    return {width, capHeight()};
}

void KeyCaps::paintEvent(QPaintEvent *)
{
    const Theme &theme = Theme::shared();
    QPainter painter(this);
    int x = 0;
    for (const QString &legend : m_legends) {
        const QRectF cap(x, (height() - capHeight()) / 2.0, capWidth(legend), capHeight());
        ThemePainting::fillRounded(painter, cap, theme.scaled(radius), theme.color(Theme::Color::sunken));
        ThemePainting::strokeRounded(painter, cap, theme.scaled(radius), theme.color(Theme::Color::line));
        painter.setPen(theme.color(Theme::Color::text));
        painter.drawText(cap, Qt::AlignCenter | Qt::TextSingleLine, legend);
        x += capWidth(legend) + theme.scaled(gap);
    }
}
