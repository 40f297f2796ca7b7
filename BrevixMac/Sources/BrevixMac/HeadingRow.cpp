// SPDX-License-Identifier: GPL-3.0-or-later
#include "HeadingRow.h"

#include "FormParts.h"
#include "LayoutWatch.h"
#include "TextLabel.h"
#include "ThemedButton.h"

#include <QBoxLayout>

HeadingRow::HeadingRow(const QString &heading, const QList<ThemedButton *> &buttons, QWidget *parent)
    : QWidget(parent)
    , m_heading(FormParts::heading(heading, this))
    , m_buttons(buttons)
    , m_row(new QBoxLayout(QBoxLayout::LeftToRight, this))
    , m_end(new QBoxLayout(QBoxLayout::LeftToRight))
{
    m_row->setContentsMargins(0, 0, 0, 0);
    m_row->setSpacing(0);
    m_row->addWidget(m_heading, 1);
    m_row->addLayout(m_end);
    for (ThemedButton *button : buttons)
        m_end->addWidget(button);
    new LayoutWatch(this, [this] { arrange(); });
}

void HeadingRow::arrange()
{
    int needed = 0;
    for (const ThemedButton *button : std::as_const(m_buttons))
        needed += button->isHidden() ? 0 : button->sizeHint().width();
    const bool isOneLine = m_heading->sizeHint().width() + needed <= width();
    m_row->setDirection(isOneLine ? QBoxLayout::LeftToRight : QBoxLayout::TopToBottom);
    m_row->setAlignment(m_end, isOneLine ? Qt::Alignment() : Qt::AlignLeft);
    m_end->setDirection(needed <= width() ? QBoxLayout::LeftToRight : QBoxLayout::TopToBottom);
}
