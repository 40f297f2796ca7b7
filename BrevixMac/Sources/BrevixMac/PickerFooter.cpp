// SPDX-License-Identifier: GPL-3.0-or-later
#include "PickerFooter.h"

#include "AppState.h"
#include "ScreenTexts.h"
#include "ThemedButton.h"

#include <QHBoxLayout>
#include <QPainter>

namespace {

constexpr int designHeight = 54;
// Plain buttons are wider than their text; this brings the texts back to the margin.
constexpr int sideMargin = Theme::margin - 11;

ThemedButton *plainButton(const QString &text, QWidget *parent)
{
    return new ThemedButton(ThemedButton::Kind::plain, text, parent);
}

void markUnavailable(ThemedButton *button)
{
    button->setEnabled(false);
    button->setToolTip(button->text() + u": " + ScreenTexts::notAvailableYet());
    button->setAccessibleDescription(ScreenTexts::notAvailableYet());
}

}

PickerFooter::PickerFooter(AppState &appState, QWidget *parent)
    : QWidget(parent)
    , m_appState(appState)
    , m_plus(plainButton(QStringLiteral("New"), this))
    , m_library(plainButton(QStringLiteral("View Library"), this))
    , m_settings(plainButton(QStringLiteral("Settings..."), this))
    , m_signOut(plainButton(QStringLiteral("Sign Out"), this))
    , m_quit(plainButton(QStringLiteral("Quit"), this))
{
    m_plus->setFaceSymbol(QStringLiteral("plus"));
    m_plus->setFace(ThemedButton::Face::symbolOnly);
    m_plus->setToolTip(QStringLiteral("New prompt or skill"));
    markUnavailable(m_library);
    markUnavailable(m_settings);

    auto *row = new QHBoxLayout(this);
    row->setContentsMargins(sideMargin, 1, sideMargin, 0);
    row->setSpacing(0);
    row->addWidget(m_plus);
    row->addSpacing(4);
    row->addWidget(m_library);
    row->addStretch(1);
    row->addWidget(m_settings);
    row->addWidget(m_signOut);
    row->addWidget(m_quit);
    row->addStrut(designHeight);

    connect(m_signOut, &QPushButton::clicked, this, [this] { m_appState.signOut(); });
    connect(m_quit, &QPushButton::clicked, this, &PickerFooter::quitRequested);
    connect(&appState.authService(), &AuthService::currentUserChanged, this, &PickerFooter::refresh);
    connect(&Theme::shared(), &Theme::changed, this, qOverload<>(&PickerFooter::update));
    refresh();
}

void PickerFooter::refresh() { m_signOut->setEnabled(m_appState.authService().currentUser().has_value()); }

void PickerFooter::paintEvent(QPaintEvent *)
{
    QPainter(this).fillRect(QRect(0, 0, width(), 1), Theme::shared().color(Theme::Color::line));
}
