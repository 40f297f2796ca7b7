// SPDX-License-Identifier: GPL-3.0-or-later
#include "DiagnosticsRows.h"

#include "AppState.h"
#include "CopyFeedback.h"
#include "Diagnostics.h"
#include "OneLine.h"
#include "SettingsCard.h"
#include "SettingsRow.h"
#include "TextLabel.h"
#include "ThemedButton.h"

#include <QVBoxLayout>

namespace {

constexpr qsizetype longestValue = 200; // UTF-16 units

constexpr int sidePadding = 14;
constexpr int verticalPadding = 10;

ThemedButton *makeButton(const QString &text)
{
    auto *button = new ThemedButton(ThemedButton::Kind::quiet, text);
    button->setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
    return button;
}

TextLabel *makeValue()
{
    auto *value =
        new TextLabel(Theme::Type::caption, Theme::Color::secondary, TextLabel::Overflow::wrap, nullptr);
    value->setTextInteractionFlags(Qt::TextSelectableByMouse);
    return value;
}

} // namespace

DiagnosticsRows::DiagnosticsRows(AppState &appState, SettingsCard &card, QObject *parent)
    : QObject(parent)
    , m_appState(appState)
{
    addValueRows(card);
    addTextRows(card);
    connect(&appState, &AppState::libraryChanged, this, &DiagnosticsRows::refresh);
    connect(&appState, &AppState::focusedTargetChanged, this, &DiagnosticsRows::refresh);
    connect(&appState, &AppState::lastInsertionResultChanged, this, &DiagnosticsRows::refresh);
    connect(&appState, &AppState::configurationIssueChanged, this, &DiagnosticsRows::refresh);
    refresh();
}

void DiagnosticsRows::addValueRows(SettingsCard &card)
{
    for (const auto &[label, value] : Diagnostics::rows(m_appState)) {
        auto *row = new SettingsRow(label);
        row->setCompact(true);
        TextLabel *shown = makeValue();
        shown->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
        row->addStretchingControl(shown);
        m_values.insert(label, shown);
        card.addRow(row);
    }
}

void DiagnosticsRows::addTextRows(SettingsCard &card)
{
    auto *row = new SettingsRow(QStringLiteral("Diagnostics"));
    m_copy = makeButton(QStringLiteral("Copy Diagnostics"));
    m_show = makeButton(QStringLiteral("Show"));
    m_show->setAccessibleDescription(QStringLiteral("Diagnostics, closed"));
    row->addControl(m_copy);
    row->addControl(m_show);
    card.addRow(row);
    m_text = makeValue();
    m_text->setAccessibleName(QStringLiteral("Diagnostics"));
    m_text->hide();
    card.addRow(m_text);
    const auto pad = [this] {
        const Theme &theme = Theme::shared();
        m_text->setContentsMargins(theme.scaled(sidePadding), theme.scaled(verticalPadding),
                                   theme.scaled(sidePadding), theme.scaled(verticalPadding));
    };
    connect(&Theme::shared(), &Theme::changed, this, pad);
    pad();
    tellWhetherCopied(*m_copy, [this] { return m_appState.copyText(Diagnostics::text(m_appState)); });
    connect(m_show, &QPushButton::clicked, this, [this] { setOpen(m_text->isHidden()); });
}

void DiagnosticsRows::setOpen(bool isOpen)
{
    m_text->setVisible(isOpen);
    m_show->setLabel(isOpen ? QStringLiteral("Hide") : QStringLiteral("Show"));
    m_show->setAccessibleDescription(isOpen ? QStringLiteral("Diagnostics, open")
                                            : QStringLiteral("Diagnostics, closed"));
}

void DiagnosticsRows::refresh()
{
    for (const auto &[label, value] : Diagnostics::rows(m_appState)) {
        TextLabel *shown = m_values.value(label);
        const QString excerpt = OneLine::of(value, longestValue); // the text below it has the whole
        shown->setText(excerpt);
        shown->setAccessibleName(label + u": " + excerpt);
    }
    m_text->setText(Diagnostics::text(m_appState));
}

QString DiagnosticsRows::value(const QString &label) const
{
    const TextLabel *shown = m_values.value(label);
    return shown ? shown->text() : QString();
}

QString DiagnosticsRows::shownText() const
{
    return m_text->isHidden() ? QString() : m_text->text();
}
