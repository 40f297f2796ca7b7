// SPDX-License-Identifier: GPL-3.0-or-later
#include "PickerRowDelegate.h"

#include "PickerListModel.h"
#include "Symbols.h"
#include "ThemePainting.h"

#include <QPainter>

#include <algorithm>
#include <cmath>

namespace {

constexpr int headingHeight = 32;
constexpr int headingInset = 2;
constexpr int rowHeight = 52;
constexpr int rowPadding = 12;
constexpr int dotSize = 8;
constexpr int dotGap = 12;
constexpr int lineGap = 1;
constexpr int markGap = 8;
constexpr int markSize = 13;
constexpr int chipPadding = 6;

constexpr int singleLine = Qt::AlignLeft | Qt::AlignVCenter | Qt::AlignAbsolute | Qt::TextSingleLine;

int lineHeight(Theme::Type type)
{
    return QFontMetrics(Theme::shared().font(type)).height();
}

void drawChip(QPainter &painter, const QPoint &left, const QString &label)
{
    const Theme &theme = Theme::shared();
    const QFont font = theme.font(Theme::Type::chip);
    const QFontMetrics metrics(font);
    const int height = metrics.height() + theme.scaled(3);
    const QRect frame(left.x(), left.y() - height / 2,
                      metrics.horizontalAdvance(label) + 2 * theme.scaled(chipPadding), height);
    ThemePainting::fillSunken(painter, frame, std::min<qreal>(theme.scaled(6), frame.height() / 2.0));
    painter.setFont(font);
    painter.setPen(theme.color(Theme::Color::secondary));
    painter.drawText(frame, Qt::AlignCenter | Qt::TextSingleLine, label);
}

int chipWidth(const QString &label)
{
    const Theme &theme = Theme::shared();
    return label.isEmpty() ? 0
                           : QFontMetrics(theme.font(Theme::Type::chip)).horizontalAdvance(label) +
                                 2 * theme.scaled(chipPadding) + theme.scaled(markGap);
}

} // namespace

int PickerRowDelegate::drawText(QPainter &painter, const QRect &line, Theme::Type type, Theme::Color ink,
                                const QString &text)
{
    const Theme &theme = Theme::shared();
    const QFont font = theme.font(type);
    const QFontMetricsF metrics(font);
    const QString shown = metrics.elidedText(text, Qt::ElideRight, line.width());
    painter.setFont(font);
    painter.setPen(theme.color(ink));
    painter.drawText(line, singleLine, shown);
    return std::min(static_cast<int>(std::ceil(metrics.horizontalAdvance(shown))), line.width());
}

int PickerRowDelegate::textLeft()
{
    return Theme::shared().scaled(rowPadding + dotSize + dotGap);
}

QSize PickerRowDelegate::sizeHint(const QStyleOptionViewItem &option, const QModelIndex &index) const
{
    const Theme &theme = Theme::shared();
    const bool isHeading = index.data(PickerListModel::isHeadingRole).toBool();
    return {option.rect.width(), theme.scaled(isHeading ? headingHeight : rowHeight)};
}

void PickerRowDelegate::paint(QPainter *painter, const QStyleOptionViewItem &option,
                              const QModelIndex &index) const
{
    painter->save();
    painter->setLayoutDirection(Qt::LayoutDirectionAuto);
    if (index.data(PickerListModel::isHeadingRole).toBool())
        paintHeading(*painter, option.rect, index);
    else
        paintItem(*painter, option, index);
    painter->restore();
}

void PickerRowDelegate::paintHeading(QPainter &painter, const QRect &frame, const QModelIndex &index)
{
    const Theme &theme = Theme::shared();
    const int inset = theme.scaled(headingInset);
    // The text stands a little below the middle: nearer to its rows than to what is above.
    const QRect line = frame.adjusted(inset, theme.scaled(9), -inset, 0);
    const int titleWidth = drawText(painter, line, Theme::Type::sectionTitle, Theme::Color::secondary,
                                    index.data(Qt::DisplayRole).toString());
    const QString subtitle = index.data(PickerListModel::subtitleRole).toString();
    const QFontMetricsF metrics(theme.font(Theme::Type::count));
    const int room = line.width() - titleWidth - theme.scaled(12);
    const int width = std::min(static_cast<int>(std::ceil(metrics.horizontalAdvance(subtitle))) + 1, room);
    drawText(painter, QRect(line.right() + 1 - width, line.top(), width, line.height()), Theme::Type::count,
             Theme::Color::tertiary, subtitle);
}

void PickerRowDelegate::paintItem(QPainter &painter, const QStyleOptionViewItem &option,
                                  const QModelIndex &index) const
{
    const Theme &theme = Theme::shared();
    const QRect frame = option.rect;
    const bool isSelected = option.state.testFlag(QStyle::State_Selected);
    if (isSelected || option.state.testFlag(QStyle::State_MouseOver))
        ThemePainting::fillRounded(painter, frame, theme.scaled(Theme::fieldRadius),
                                   theme.color(isSelected ? Theme::Color::accentSoft : Theme::Color::hover));

    const int dot = theme.scaled(dotSize);
    const QColor color = index.data(PickerListModel::dotColorRole).value<QColor>();
    ThemePainting::fillRounded(
        painter, QRect(frame.left() + theme.scaled(rowPadding), frame.center().y() - dot / 2 + 1, dot, dot),
        dot / 2.0, color.isValid() ? color : theme.color(Theme::Color::tertiary));

    const int right = isSelected ? m_actionsWidth : theme.scaled(rowPadding);
    const QRect text = frame.adjusted(textLeft(), 0, -right, 0);
    const int titleHeight = lineHeight(Theme::Type::rowTitle);
    const int previewHeight = lineHeight(Theme::Type::preview);
    const int gap = theme.scaled(lineGap);
    const int top = text.top() + (text.height() - titleHeight - gap - previewHeight) / 2;
    paintTitle(painter, QRect(text.left(), top, text.width(), titleHeight), index);
    paintDetail(painter, QRect(text.left(), top + titleHeight + gap, text.width(), previewHeight), index);
}

void PickerRowDelegate::paintDetail(QPainter &painter, const QRect &line, const QModelIndex &index) const
{
    drawText(painter, line, Theme::Type::preview, Theme::Color::secondary,
             index.data(PickerListModel::previewRole).toString());
}

void PickerRowDelegate::paintTitle(QPainter &painter, const QRect &line, const QModelIndex &index) const
{
    const Theme &theme = Theme::shared();
    const bool hasVariables = index.data(PickerListModel::hasVariablesRole).toBool();
    const QString chip = hasVariables ? variablesLabel() : index.data(PickerListModel::chipRole).toString();
    const int mark = theme.scaled(markSize);
    const int gap = theme.scaled(markGap);
    const int marked = hasVariables ? mark + gap : 0;
    const QString title = index.data(Qt::DisplayRole).toString();
    const int wholeTitle = QFontMetrics(theme.font(Theme::Type::rowTitle)).horizontalAdvance(title);
    // A chip that would leave the title less than half of the line, and not all it needs, gives way.
    const bool showsChip = !chip.isEmpty() && (chipWidth(chip) * 2 <= line.width() ||
                                               wholeTitle + gap + marked + chipWidth(chip) <= line.width());
    const int reserved = marked + (showsChip ? chipWidth(chip) : 0);
    const int titleWidth = drawText(painter, line.adjusted(0, 0, -reserved, 0), Theme::Type::rowTitle,
                                    Theme::Color::text, title);
    int after = line.left() + titleWidth + gap;
    if (hasVariables) {
        Symbols::paint(painter, QStringLiteral("slider.horizontal.3"), theme.color(Theme::Color::tertiary),
                       QRectF(after, line.top(), mark, line.height()), mark);
        after += mark + gap;
    }
    if (showsChip)
        drawChip(painter, QPoint(after, line.center().y() + 1), chip);
}
