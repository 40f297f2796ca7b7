// SPDX-License-Identifier: GPL-3.0-or-later
#include "PickerNotices.h"

#include "AppState.h"
#include "OneLine.h"
#include "PermissionList.h"
#include "SignInNotice.h"
#include "StatusCard.h"
#include "ThemedButton.h"

#include <QVBoxLayout>

namespace {

constexpr int cardGap = 8;
constexpr int leastHeight = 52;

StatusCard::Tint cardTint(const PickerTargetStatus &status)
{
    if (status.ready)
        return StatusCard::Tint::success;
    return status.tint == PickerTargetStatus::Tint::red ? StatusCard::Tint::danger
                                                        : StatusCard::Tint::warning;
}

} // namespace

PickerNotices::PickerNotices(AppState &appState, QWidget *parent)
    : ContentScrollArea(new QWidget, leastHeight, Theme::margin, parent)
    , m_appState(appState)
    , m_target(new StatusCard)
    , m_signIn(new SignInNotice(appState, widget()))
    , m_configuration(new StatusCard)
    , m_authError(new StatusCard)
    , m_hotkeyWarning(new StatusCard)
    , m_tip(new StatusCard)
    , m_hideTip(new ThemedButton(ThemedButton::Kind::plain, QStringLiteral("Hide tip")))
    , m_permissions(new PermissionList(appState))
{
    m_hideTip->setFaceSymbol(QStringLiteral("xmark"));
    m_hideTip->setFace(ThemedButton::Face::symbolOnly);
    m_hideTip->setDesignHeight(26);
    m_hideTip->setToolTip(m_hideTip->text());
    m_tip->addButton(m_hideTip);
    connect(m_hideTip, &QPushButton::clicked, this,
            [this] { m_appState.preferences().setHotkeyTipDismissed(true); });

    auto *cards = new QVBoxLayout(widget());
    cards->setContentsMargins(0, 0, 0, 0);
    cards->setSpacing(cardGap);
    for (QWidget *card : {static_cast<QWidget *>(m_configuration), static_cast<QWidget *>(m_authError),
                          static_cast<QWidget *>(m_signIn), static_cast<QWidget *>(m_target),
                          static_cast<QWidget *>(m_permissions), static_cast<QWidget *>(m_hotkeyWarning),
                          static_cast<QWidget *>(m_tip)})
        cards->addWidget(card);
    observe();
    refresh();
}

void PickerNotices::observe()
{
    connect(&m_appState, &AppState::focusedTargetChanged, this, &PickerNotices::refreshTarget);
    connect(&m_appState.permissions(), &PermissionsService::accessibilityGrantedChanged, this,
            &PickerNotices::refreshTarget);
    connect(&m_appState.permissions(), &PermissionsService::postEventGrantedChanged, this,
            &PickerNotices::refreshTarget);
    connect(&m_appState.preferences(), &PreferenceStore::preferredShortcutChanged, this,
            &PickerNotices::refresh);
    connect(&m_appState.preferences(), &PreferenceStore::hotkeyTipDismissedChanged, this,
            &PickerNotices::refreshHotkey);
    connect(&m_appState.hotkeyService(), &HotkeyService::registrationChanged, this,
            &PickerNotices::refreshHotkey);
    connect(&m_appState, &AppState::configurationIssueChanged, this, &PickerNotices::refreshConfiguration);
    connect(&m_appState.authService(), &AuthService::authErrorMessageChanged, this,
            &PickerNotices::refreshAccount);
}

void PickerNotices::refresh()
{
    refreshTarget();
    refreshHotkey();
    refreshAccount();
    refreshConfiguration();
}

void PickerNotices::refreshConfiguration()
{
    const auto &issue = m_appState.configurationIssue();
    m_configuration->setVisible(issue.has_value());
    if (issue)
        m_configuration->describe(StatusCard::Tint::warning, QStringLiteral("exclamationmark.triangle"), {},
                                  *issue);
}

void PickerNotices::refreshTarget()
{
    const PickerTargetStatus status = m_appState.targetStatus();
    if (status.ready)
        m_target->describe(
            cardTint(status), QStringLiteral("checkmark.circle.fill"),
            u"Ready to insert into " + OneLine::of(status.appName),
            QStringLiteral("Brevix will preserve your clipboard when paste fallback is needed."));
    else
        m_target->describe(cardTint(status), status.icon, status.title, status.detail);
    m_permissions->refresh();
}

void PickerNotices::refreshHotkey()
{
    const QString label = m_appState.hotkeyLabel();
    const std::optional<HotkeyProblem> problem = m_appState.hotkeyProblem();
    if (problem)
        m_hotkeyWarning->describe(StatusCard::Tint::warning, QStringLiteral("exclamationmark.triangle"),
                                  problem->reason, problem->advice + u'.');
    m_hotkeyWarning->setVisible(problem.has_value());
    m_tip->describe(StatusCard::Tint::neutral, QStringLiteral("keyboard"), {},
                    u"Best experience: click into any text field, then press " + label + u" to insert.");
    // A tip about a key that does not work would be a lie.
    m_tip->setVisible(!problem && !m_appState.preferences().hotkeyTipDismissed());
}

void PickerNotices::refreshAccount()
{
    const auto &message = m_appState.authService().authErrorMessage();
    m_authError->setVisible(message.has_value());
    if (message)
        m_authError->describe(StatusCard::Tint::danger, QStringLiteral("exclamationmark.circle"), {},
                              *message);
}
