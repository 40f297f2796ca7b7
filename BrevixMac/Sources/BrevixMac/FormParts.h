// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QColor>
#include <QString>

class QBoxLayout;
class QWidget;
class TextLabel;
struct PromptCategory;

/// Small parts that the forms share.
namespace FormParts {

/// The heading over a field, level with the drawn edge of the field below it.
TextLabel *heading(const QString &text, QWidget *parent);

/// The sunken box around @p text, which takes all the height it can get.
QWidget *growingBox(QWidget *text, QWidget *parent);

/// The colour of a category's dot; a quiet one for a category without a colour.
QColor dotColor(const PromptCategory &category);

/// Puts two columns side by side, or one over the other where there is no room.
void turnColumns(QBoxLayout &columns, bool areSideBySide);

/// A small word on a sunken ground that says what kind of thing stands beside it.
QWidget *tag(const QString &text, QWidget *parent);

} // namespace FormParts
