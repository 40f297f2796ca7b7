// SPDX-License-Identifier: GPL-3.0-or-later
#include "SignInNotice.h"

#include "AppState.h"
#include "StatusCard.h"
#include "ThemedButton.h"

#include <QVBoxLayout>

namespace {

const QString warningSymbol = QStringLiteral("exclamationmark.triangle");

} // namespace

SignInNotice::SignInNotice(AppState &appState, QWidget *parent)
    : QWidget(parent)
    , m_appState(appState)
    , m_card(new StatusCard(this))
    , m_copyLink(new ThemedButton(ThemedButton::Kind::quiet, QStringLiteral("Copy Link"), this))
    , m_cancel(new ThemedButton(ThemedButton::Kind::plain, QStringLiteral("Cancel"), this))
{
    m_card->addButton(m_copyLink);
    m_card->addButton(m_cancel);
    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(m_card);

    connect(m_copyLink, &QPushButton::clicked, this, &SignInNotice::onCopied);
    connect(m_cancel, &QPushButton::clicked, this, [this] { m_appState.cancelSignIn(); });
    AuthService &auth = appState.authService();
    connect(&auth, &AuthService::isAuthenticatingChanged, this, &SignInNotice::refresh);
    connect(&auth, &AuthService::pendingAuthorizationChanged, this, &SignInNotice::refresh);
    refresh();
}

void SignInNotice::refresh()
{
    setVisible(m_appState.authService().isAuthenticating());
    describe();
}

void SignInNotice::describe()
{
    const auto &pending = m_appState.authService().pendingAuthorization();
    m_copyLink->setVisible(pending.has_value());
    m_card->setBusy(!(pending && pending->isBrowserMissing));
    if (!pending)
        m_card->describe(StatusCard::Tint::neutral, {}, QStringLiteral("Signing In..."), {});
    else if (pending->isBrowserMissing)
        m_card->describe(StatusCard::Tint::warning, warningSymbol,
                         QStringLiteral("No browser could be opened"),
                         QStringLiteral("Copy the link and open it in a browser on this computer."));
    else
        m_card->describe(StatusCard::Tint::neutral, {}, QStringLiteral("Continue in your browser"),
                         QStringLiteral("Brevix waits for you to sign in there."));
}

void SignInNotice::onCopied()
{
    if (m_appState.copyAuthorizationLink())
        m_card->describe(StatusCard::Tint::neutral, {}, QStringLiteral("Link copied"),
                         QStringLiteral("Open it in a browser on this computer."));
    else
        m_card->describe(StatusCard::Tint::danger, warningSymbol,
                         QStringLiteral("The link could not be copied"),
                         QStringLiteral("The clipboard did not take it. Please try again."));
}
