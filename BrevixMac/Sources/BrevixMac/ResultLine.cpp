// SPDX-License-Identifier: GPL-3.0-or-later
#include "ResultLine.h"

#include "AppState.h"
#include "StatusCard.h"
#include "ThemedButton.h"

#include <QAccessible>
#include <QVBoxLayout>

ResultLine::ResultLine(AppState &appState, QWidget *parent)
    : QWidget(parent)
    , m_appState(appState)
    , m_card(new StatusCard(this))
    , m_recovery(new ThemedButton(ThemedButton::Kind::plain, {}, m_card))
{
    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins(Theme::margin, 6, Theme::margin, 10);
    layout->addWidget(m_card);
    m_recovery->setInk(Theme::Color::accent);
    m_card->addButton(m_recovery);
    connect(m_recovery, &QPushButton::clicked, this, [this] { m_appState.copyFailedInsertion(); });
    connect(&appState, &AppState::lastInsertionResultChanged, this, &ResultLine::refresh);
    connect(&appState, &AppState::insertionRecoveryChanged, this, &ResultLine::refresh);
    connect(&appState, &AppState::isInsertingChanged, this, &ResultLine::refresh);
    refresh();
}

void ResultLine::setSideMargin(int margin)
{
    layout()->setContentsMargins(margin, 6, margin, 10);
}

void ResultLine::showHint(const QString &title, const QString &detail)
{
    m_showsHint = true;
    m_recovery->hide();
    m_card->setBusy(false);
    m_card->describe(StatusCard::Tint::warning, QStringLiteral("exclamationmark.circle"), title, detail);
    show();
    announce();
}

/// Tells screen readers once what has come of an action; the focus is elsewhere.
void ResultLine::announce()
{
    const QString news = isVisible() ? m_card->title() : QString();
    if (news == m_announced)
        return;
    m_announced = news;
    if (news.isEmpty())
        return;
    QAccessibleEvent event(m_card, QAccessible::Alert);
    QAccessible::updateAccessibility(&event);
}

void ResultLine::clearHint()
{
    if (m_showsHint)
        refresh();
}

void ResultLine::refresh()
{
    describe();
    announce();
}

void ResultLine::describe()
{
    m_showsHint = false;
    const auto &result = m_appState.lastInsertionResult();
    const auto &recovery = m_appState.insertionRecovery();
    const bool isInserting = m_appState.isInserting();
    m_card->setBusy(isInserting);
    m_recovery->setVisible(recovery.has_value() && !isInserting);
    if (recovery)
        m_recovery->setLabel(recovery->actionTitle());
    if (isInserting) {
        m_card->describe(StatusCard::Tint::neutral, {}, {}, QStringLiteral("Inserting\u2026"));
    } else if (result) {
        const auto tint = result->succeeded ? StatusCard::Tint::success : StatusCard::Tint::danger;
        const QString symbol = result->succeeded ? QStringLiteral("checkmark.circle.fill")
                                                 : QStringLiteral("exclamationmark.circle");
        m_card->describe(tint, symbol, result->message, {});
    }
    setVisible(isInserting || result.has_value());
}
