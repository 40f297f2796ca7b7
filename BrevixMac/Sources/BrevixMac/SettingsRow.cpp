// SPDX-License-Identifier: GPL-3.0-or-later
#include "SettingsRow.h"

#include "LayoutWatch.h"
#include "OneLine.h"
#include "StatusChip.h"
#include "TextLabel.h"

#include <QBoxLayout>

namespace {

constexpr int sidePadding = 14;
constexpr int verticalPadding = 10;
constexpr int leastHeight = 48;
constexpr int compactPadding = 6;
constexpr int leastCompactHeight = 32;
constexpr int controlGap = 6;
constexpr int columnGap = 12;
constexpr int leastTextWidth = 120;
constexpr int noteGap = 3;

void showText(TextLabel &label, const QString &text)
{
    label.setText(text);
    label.setVisible(!text.isEmpty());
}

} // namespace

SettingsRow::SettingsRow(const QString &title, const QString &subtitle, QWidget *parent)
    : QWidget(parent)
    , m_title(new TextLabel(Theme::Type::cardTitle, Theme::Color::text, TextLabel::Overflow::wrap, this))
    , m_subtitle(
          new TextLabel(Theme::Type::caption, Theme::Color::secondary, TextLabel::Overflow::wrap, this))
    , m_note(new TextLabel(Theme::Type::caption, Theme::Color::secondary, TextLabel::Overflow::wrap, this))
    , m_column(new QVBoxLayout(this))
    , m_row(new QBoxLayout(QBoxLayout::LeftToRight))
    , m_controls(new QBoxLayout(QBoxLayout::LeftToRight))
{
    auto *texts = new QVBoxLayout;
    texts->setSpacing(1);
    texts->addStretch();
    texts->addWidget(m_title);
    texts->addWidget(m_subtitle);
    texts->addStretch();
    m_row->addLayout(texts, 1);
    m_row->addLayout(m_controls);
    m_row->setContentsMargins(0, 0, 0, 0);
    m_column->addLayout(m_row, 1);
    m_column->addWidget(m_note);
    setTitle(title);
    setSubtitle(subtitle);
    setNote({}, Theme::Color::secondary);
    m_note->setContentsMargins(0, 0, Theme::haloWidth, 0);
    connect(&Theme::shared(), &Theme::changed, this, &SettingsRow::onThemeChanged);
    onThemeChanged();
    new LayoutWatch(this, [this] { arrange(); });
}

void SettingsRow::onThemeChanged()
{
    const Theme &theme = Theme::shared();
    const int vertical = theme.scaled(m_isCompact ? compactPadding : verticalPadding);
    m_column->setContentsMargins(theme.scaled(sidePadding), vertical,
                                 theme.scaled(sidePadding) - (m_isCompact ? 0 : Theme::haloWidth), vertical);
    m_column->setSpacing(theme.scaled(noteGap));
    m_row->setSpacing(theme.scaled(columnGap));
    m_controls->setSpacing(theme.scaled(controlGap));
    setMinimumHeight(theme.scaled(m_isCompact ? leastCompactHeight : leastHeight));
    arrange();
}

void SettingsRow::setTitle(const QString &title)
{
    showText(*m_title, title);
}

void SettingsRow::setSubtitle(const QString &subtitle)
{
    showText(*m_subtitle, subtitle);
}

void SettingsRow::setNote(const QString &note, Theme::Color ink)
{
    m_note->setInk(ink);
    // A note may be whatever a server answered, up to a whole page.
    showText(*m_note, OneLine::of(note));
}

void SettingsRow::addControl(QWidget *control)
{
    // Unlike buttons it has no room for a focus ring around it. Alone it belongs to the title.
    const bool isChip = qobject_cast<StatusChip *>(control);
    for (int index = 0; index < m_controls->count(); ++index)
        m_controls->itemAt(index)->setAlignment(Qt::AlignVCenter);
    m_controls->addWidget(control, 0, isChip && m_controls->isEmpty() ? Qt::AlignTop : Qt::AlignVCenter);
    m_controls->setContentsMargins(0, 0, isChip ? Theme::haloWidth : 0, 0);
}

void SettingsRow::addStretchingControl(QWidget *control)
{
    m_controls->addWidget(control, 1, Qt::AlignVCenter);
    m_row->setStretchFactor(m_controls, 1);
    m_isStretching = true;
}

void SettingsRow::setCompact(bool isCompact)
{
    m_isCompact = isCompact;
    onThemeChanged();
}

QString SettingsRow::title() const
{
    return m_title->text();
}

QString SettingsRow::subtitle() const
{
    return m_subtitle->text();
}

QString SettingsRow::note() const
{
    return m_note->isHidden() ? QString() : m_note->text();
}

void SettingsRow::arrange()
{
    if (m_isStretching)
        return;
    const Theme &theme = Theme::shared();
    const QMargins margins = m_column->contentsMargins();
    const int room =
        width() - margins.left() - margins.right() - m_row->spacing() - m_controls->sizeHint().width();
    const auto direction =
        room < theme.scaled(leastTextWidth) ? QBoxLayout::TopToBottom : QBoxLayout::LeftToRight;
    if (direction == m_row->direction())
        return;
    m_row->setDirection(direction);
    m_row->setAlignment(m_controls, direction == QBoxLayout::TopToBottom ? Qt::AlignLeft : Qt::Alignment());
}
