// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QList>

class QWidget;

/// In which order the key Tab visits controls.
namespace TabOrder {

/// Makes it lead from each of @p controls to the next. They must be in one window.
void set(const QList<QWidget *> &controls);

} // namespace TabOrder
