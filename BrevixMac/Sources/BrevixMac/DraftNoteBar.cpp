// SPDX-License-Identifier: GPL-3.0-or-later
#include "DraftNoteBar.h"

#include "EditorModel.h"
#include "TextLabel.h"
#include "ThemePainting.h"
#include "ThemedButton.h"

#include <QHBoxLayout>
#include <QPainter>

namespace {

using Note = EditorModel::DraftNote;

constexpr int topGap = 10;
constexpr int sidePadding = 12;

QString sentence(Note note)
{
    switch (note) {
    case Note::restored:
        return QStringLiteral("Draft restored");
    case Note::cancelled:
        return QStringLiteral("Your last draft was cancelled.");
    case Note::discarded:
        return QStringLiteral("Draft discarded");
    case Note::tooLong:
        return QStringLiteral("This text is too long to be kept as a draft.");
    case Note::none:
        break;
    }
    return {};
}

QString actionOn(Note note)
{
    switch (note) {
    case Note::restored:
        return QStringLiteral("Discard");
    case Note::cancelled:
        return QStringLiteral("Restore");
    case Note::discarded:
        return QStringLiteral("Undo");
    case Note::tooLong:
    case Note::none:
        break;
    }
    return {};
}

} // namespace

DraftNoteBar::DraftNoteBar(EditorModel &model, int margin, QWidget *parent)
    : QWidget(parent)
    , m_model(model)
    , m_margin(margin)
    , m_text(new TextLabel(Theme::Type::caption, Theme::Color::secondary, TextLabel::Overflow::elide, this))
    , m_button(new ThemedButton(ThemedButton::Kind::plain, {}, this))
{
    m_button->setInk(Theme::Color::accent);
    m_button->setDesignHeight(28);
    auto *row = new QHBoxLayout(this);
    row->setSpacing(4);
    row->addWidget(m_text, 1);
    row->addWidget(m_button);
    connect(m_button, &QPushButton::clicked, this, &DraftNoteBar::act);
    connect(&model, &EditorModel::draftNoteChanged, this, &DraftNoteBar::refresh);
    connect(&Theme::shared(), &Theme::changed, this, &DraftNoteBar::onThemeChanged);
    onThemeChanged();
    refresh();
}

void DraftNoteBar::onThemeChanged()
{
    layout()->setContentsMargins(m_margin + Theme::shared().scaled(sidePadding), topGap, m_margin + 1, 0);
    update();
}

QString DraftNoteBar::text() const
{
    return m_text->text();
}

void DraftNoteBar::refresh()
{
    const Note note = m_model.draftNote();
    m_text->setText(sentence(note));
    m_button->setLabel(actionOn(note));
    m_button->setVisible(!actionOn(note).isEmpty());
    setVisible(note != Note::none);
}

void DraftNoteBar::act()
{
    if (m_model.draftNote() == Note::restored)
        m_model.discardDraft();
    else
        m_model.restoreCancelled();
}

void DraftNoteBar::paintEvent(QPaintEvent *)
{
    const Theme &theme = Theme::shared();
    QPainter painter(this);
    const QRectF frame = QRectF(rect()).adjusted(m_margin, topGap, -m_margin, 0);
    ThemePainting::fillRounded(painter, frame, theme.scaled(Theme::buttonRadius),
                               theme.color(Theme::Color::accentSoft));
}
