// SPDX-License-Identifier: GPL-3.0-or-later
#include "TabOrder.h"

#include <QWidget>

void TabOrder::set(const QList<QWidget *> &controls)
{
    for (qsizetype index = 1; index < controls.size(); ++index)
        QWidget::setTabOrder(controls.at(index - 1), controls.at(index));
}
