// SPDX-License-Identifier: GPL-3.0-or-later
#include "ChoiceRow.h"

#include "Symbols.h"
#include "ThemePainting.h"

#include <QPainter>

namespace {

constexpr int sidePadding = 14;
constexpr int verticalPadding = 10;
constexpr int markGap = 10;
constexpr int leastWidth = 160;
constexpr int someHeight = 10000;
constexpr int wrapped = Qt::AlignLeft | Qt::AlignTop | Qt::TextWordWrap;

} // namespace

ChoiceRow::ChoiceRow(const QString &title, const QString &description, QWidget *parent)
    : QRadioButton(parent)
    , m_title(title)
    , m_description(description)
{
    setAccessibleName(title);
    setAccessibleDescription(description);
    setFocusPolicy(Qt::TabFocus);
    setAttribute(Qt::WA_Hover);
    QSizePolicy policy(QSizePolicy::Preferred, QSizePolicy::Fixed);
    policy.setHeightForWidth(true);
    setSizePolicy(policy);
    connect(&Theme::shared(), &Theme::changed, this, &ChoiceRow::onThemeChanged);
}

void ChoiceRow::onThemeChanged()
{
    updateGeometry();
    update();
}

ChoiceRow::Frames ChoiceRow::frames(int width) const
{
    const Theme &theme = Theme::shared();
    const int side = theme.scaled(sidePadding);
    const int top = theme.scaled(verticalPadding);
    const int size = theme.scaled(Theme::symbolSize);
    const int left = side + size + theme.scaled(markGap);
    const int room = std::max(1, width - left - side);
    const QFontMetrics titleMetrics(theme.font(Theme::Type::cardTitle));
    const QFontMetrics captionMetrics(theme.font(Theme::Type::caption));
    Frames frames;
    frames.title = titleMetrics.boundingRect(QRect(left, top, room, someHeight), wrapped, m_title);
    frames.title.setWidth(room);
    frames.description = captionMetrics.boundingRect(QRect(left, frames.title.bottom() + 2, room, someHeight),
                                                     wrapped, m_description);
    frames.description.setWidth(room);
    frames.mark = QRect(side, top, size, titleMetrics.height());
    frames.height = frames.description.bottom() + 1 + top;
    return frames;
}

QSize ChoiceRow::sizeHint() const
{
    const int width = Theme::panelWidth - 2 * Theme::margin;
    return {width, heightForWidth(width)};
}

QSize ChoiceRow::minimumSizeHint() const
{
    return {Theme::shared().scaled(leastWidth), 0};
}

int ChoiceRow::heightForWidth(int width) const
{
    return frames(width).height;
}

void ChoiceRow::paintEvent(QPaintEvent *)
{
    const Theme &theme = Theme::shared();
    const Frames areas = frames(width());
    QPainter painter(this);
    const QRectF frame = QRectF(rect()).adjusted(4, 3, -4, -3);
    const qreal radius = theme.scaled(Theme::cardRadius) - 4;
    if (underMouse())
        ThemePainting::fillRounded(painter, frame, radius, theme.color(Theme::Color::hover));
    Symbols::paint(painter,
                   isChecked() ? QStringLiteral("largecircle.fill.circle") : QStringLiteral("circle"),
                   theme.color(isChecked() ? Theme::Color::accent : Theme::Color::tertiary), areas.mark,
                   theme.scaled(Theme::symbolSize));
    painter.setFont(theme.font(Theme::Type::cardTitle));
    painter.setPen(theme.color(Theme::Color::text));
    painter.drawText(areas.title, wrapped, m_title);
    painter.setFont(theme.font(Theme::Type::caption));
    painter.setPen(theme.color(Theme::Color::secondary));
    painter.drawText(areas.description, wrapped, m_description);
    if (hasFocus())
        ThemePainting::focusRing(painter, frame, radius);
}
