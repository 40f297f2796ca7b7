// SPDX-License-Identifier: GPL-3.0-or-later
#include "SettingsCard.h"

#include "TextLabel.h"
#include "ThemePainting.h"

#include <QPainter>
#include <QVBoxLayout>

namespace {

constexpr int titleIndent = 2;
constexpr int titleGap = 6;

} // namespace

SettingsCard::SettingsCard(const QString &title, QWidget *parent)
    : QWidget(parent)
    , m_column(new QVBoxLayout(this))
    , m_rows(new QVBoxLayout)
{
    auto *label =
        new TextLabel(Theme::Type::sectionTitle, Theme::Color::secondary, TextLabel::Overflow::wrap, this);
    label->setText(title);
    m_title = label;
    setAccessibleName(title);
    m_column->setContentsMargins(0, 0, 0, 0);
    m_column->addWidget(m_title);
    m_column->addLayout(m_rows);
    m_rows->setContentsMargins(0, 0, 0, 0);
    connect(&Theme::shared(), &Theme::changed, this, &SettingsCard::onThemeChanged);
    onThemeChanged();
}

void SettingsCard::onThemeChanged()
{
    const Theme &theme = Theme::shared();
    m_title->setContentsMargins(theme.scaled(titleIndent), 0, 0, 0);
    m_column->setSpacing(theme.scaled(titleGap));
    m_rows->setSpacing(1); // the hairline
    update();
}

void SettingsCard::addRow(QWidget *row)
{
    m_rows->addWidget(row);
}

void SettingsCard::paintEvent(QPaintEvent *)
{
    const Theme &theme = Theme::shared();
    QPainter painter(this);
    const QRectF card = m_rows->geometry();
    const int radius = theme.scaled(Theme::cardRadius);
    ThemePainting::fillRounded(painter, card, radius, theme.color(Theme::Color::raised));
    ThemePainting::strokeRounded(painter, card, radius, theme.color(Theme::Color::line));
    bool isFirst = true;
    for (int index = 0; index < m_rows->count(); ++index) {
        const QWidget *row = m_rows->itemAt(index)->widget();
        if (!row || row->isHidden())
            continue;
        if (!isFirst)
            painter.fillRect(QRectF(card.left() + 1, row->y() - 1, card.width() - 2, 1),
                             theme.color(Theme::Color::line));
        isFirst = false;
    }
}
