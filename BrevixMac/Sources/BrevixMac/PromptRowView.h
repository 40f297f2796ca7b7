// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "PickerRowDelegate.h"

/// Draws one prompt of the palette's list: its title, marked where it contains variables, and under it its
/// category and the first part of its text.
class PromptRowView final : public PickerRowDelegate
{
    Q_OBJECT

public:
    using PickerRowDelegate::PickerRowDelegate;

protected:
    QString variablesLabel() const override;
    void paintDetail(QPainter &painter, const QRect &line, const QModelIndex &index) const override;
};
