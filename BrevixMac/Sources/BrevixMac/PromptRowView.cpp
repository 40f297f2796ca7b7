// SPDX-License-Identifier: GPL-3.0-or-later
#include "PromptRowView.h"

#include "PickerListModel.h"

namespace {

constexpr int categoryGap = 8;
constexpr int largestCategoryShare = 2; // of the line: a half

} // namespace

QString PromptRowView::variablesLabel() const
{
    return QStringLiteral("Contains variables");
}

void PromptRowView::paintDetail(QPainter &painter, const QRect &line, const QModelIndex &index) const
{
    const QString category = index.data(PickerListModel::categoryRole).toString();
    if (category.isEmpty()) {
        PickerRowDelegate::paintDetail(painter, line, index);
        return;
    }
    QRect name = line;
    name.setWidth(line.width() / largestCategoryShare);
    const int width = drawText(painter, name, Theme::Type::sectionTitle, Theme::Color::secondary, category);
    PickerRowDelegate::paintDetail(
        painter, line.adjusted(width + Theme::shared().scaled(categoryGap), 0, 0, 0), index);
}
