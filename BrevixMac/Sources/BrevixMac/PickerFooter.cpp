// SPDX-License-Identifier: GPL-3.0-or-later
#include "PickerFooter.h"

#include "AppState.h"
#include "ThemedButton.h"

#include <QHBoxLayout>
#include <QPainter>

#include <array>

namespace {

constexpr int designHeight = 54;
// Plain buttons are wider than their text; this brings the texts back to the margin.
constexpr int sideMargin = Theme::margin - 11;

ThemedButton *plainButton(const QString &text, QWidget *parent)
{
    return new ThemedButton(ThemedButton::Kind::plain, text, parent);
}

} // namespace

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
    m_plus->setAccessibleDescription(QStringLiteral("Opens a menu"));
    m_library->setToolTip(m_library->text());

    auto *row = new QHBoxLayout(this);
    row->setContentsMargins(sideMargin, 5, sideMargin, 4);
    row->setSpacing(0);
    row->addWidget(m_plus);
    row->addSpacing(4);
    row->addWidget(m_library);
    row->addStretch(1);
    row->addWidget(m_settings);
    row->addWidget(m_signOut);
    row->addWidget(m_quit);
    row->addStrut(designHeight - 9);
    m_library->setFaceSymbol(QStringLiteral("square.grid.2x2"));
    m_settings->setFaceSymbol(QStringLiteral("gearshape"));
    m_signOut->setFaceSymbol(QStringLiteral("rectangle.portrait.and.arrow.right"));
    m_signOut->setToolTip(m_signOut->text());
    m_quit->setFaceSymbol(QStringLiteral("power"));
    m_quit->setToolTip(m_quit->text());

    connect(m_signOut, &QPushButton::clicked, this, [this] { m_appState.signOut(); });
    connect(m_quit, &QPushButton::clicked, this, &PickerFooter::quitRequested);
    connect(&appState.authService(), &AuthService::currentUserChanged, this, &PickerFooter::refresh);
    connect(&Theme::shared(), &Theme::changed, this, &PickerFooter::onThemeChanged);
    refresh();
}

void PickerFooter::refresh()
{
    m_signOut->setEnabled(m_appState.authService().currentUser().has_value());
}

void PickerFooter::onThemeChanged()
{
    fit();
    update();
}

void PickerFooter::resizeEvent(QResizeEvent *event)
{
    QWidget::resizeEvent(event);
    fit();
}

void PickerFooter::fit()
{
    using Face = ThemedButton::Face;
    const std::array buttons{m_library, m_settings, m_signOut, m_quit};
    int needed = 2 * sideMargin + m_plus->sizeFor(Face::symbolOnly).width();
    for (const ThemedButton *button : buttons)
        needed += button->sizeFor(Face::full).width();
    for (ThemedButton *button : buttons)
        button->setFace(needed <= width() ? Face::full : Face::symbolOnly);
}

void PickerFooter::paintEvent(QPaintEvent *)
{
    QPainter(this).fillRect(QRect(0, 0, width(), 1), Theme::shared().color(Theme::Color::line));
}
