// SPDX-License-Identifier: GPL-3.0-or-later
#include "PickerHeader.h"

#include "AppState.h"
#include "BrandGlyph.h"
#include "TextLabel.h"
#include "ThemedButton.h"

#include <QHBoxLayout>

namespace {

constexpr int brandGap = 10;

}

PickerHeader::PickerHeader(AppState &appState, QWidget *parent)
    : QWidget(parent)
    , m_appState(appState)
    , m_status(new TextLabel(Theme::Type::preview, Theme::Color::secondary, TextLabel::Overflow::elide, this))
    , m_signIn(new ThemedButton(ThemedButton::Kind::quiet, QStringLiteral("Sign In"), this))
    , m_settings(new ThemedButton(ThemedButton::Kind::plain, QStringLiteral("Settings"), this))
{
    auto *title =
        new TextLabel(Theme::Type::screenTitle, Theme::Color::text, TextLabel::Overflow::elide, this);
    title->setText(QStringLiteral("Brevix"));
    m_status->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
    m_settings->setFaceSymbol(QStringLiteral("gearshape"));
    m_settings->setFace(ThemedButton::Face::symbolOnly);
    m_settings->setToolTip(m_settings->text());

    auto *row = new QHBoxLayout(this);
    row->setContentsMargins(0, 0, 0, 0);
    row->setSpacing(0);
    row->addWidget(new BrandGlyph(this));
    row->addSpacing(brandGap);
    row->addWidget(title);
    row->addSpacing(brandGap);
    row->addWidget(m_status, 1);
    row->addSpacing(6);
    row->addWidget(m_signIn);
    row->addWidget(m_settings);

    AuthService &auth = appState.authService();
    connect(m_signIn, &QPushButton::clicked, this, [this] { m_appState.signIn(window()->isVisible()); });
    connect(&auth, &AuthService::currentUserChanged, this, &PickerHeader::refresh);
    connect(&auth, &AuthService::isAuthenticatingChanged, this, &PickerHeader::refresh);
    refresh();
}

QString PickerHeader::statusText() const
{
    const auto &user = m_appState.authService().currentUser();
    if (!user)
        return QStringLiteral("Sign in to sync your library");
    if (user->email && !user->email->isEmpty())
        return *user->email;
    if (user->displayName && !user->displayName->isEmpty())
        return *user->displayName;
    return QStringLiteral("Signed in");
}

void PickerHeader::refresh()
{
    const bool isAuthenticating = m_appState.authService().isAuthenticating();
    const bool isSignedIn = m_appState.authService().currentUser().has_value();
    m_status->setOverflow(isSignedIn ? TextLabel::Overflow::elide : TextLabel::Overflow::wrap);
    m_status->setText(statusText());
    m_signIn->setVisible(!isSignedIn);
    m_signIn->setBusy(isAuthenticating);
    m_signIn->setEnabled(!isAuthenticating);
    m_signIn->setLabel(isAuthenticating ? QStringLiteral("Signing In...") : QStringLiteral("Sign In"));
}
