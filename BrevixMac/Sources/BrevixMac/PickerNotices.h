// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "ContentScrollArea.h"

class AppState;
class PermissionList;
class SignInNotice;
class StatusCard;
class ThemedButton;

/// What the picker has to say above its search field: a sign-in under way or failed, where text would go,
/// missing permissions, a refused hotkey, and the tip about the hotkey. Takes the height it needs; scrolls
/// when the panel cannot give it.
class PickerNotices final : public ContentScrollArea
{
    Q_OBJECT

public:
    /// @p appState must outlive this widget.
    explicit PickerNotices(AppState &appState, QWidget *parent = nullptr);

    /// Reads everything again.
    void refresh();

    StatusCard &targetCard() const { return *m_target; }
    StatusCard &hotkeyWarning() const { return *m_hotkeyWarning; }
    StatusCard &configurationCard() const { return *m_configuration; }
    StatusCard &authErrorCard() const { return *m_authError; }
    SignInNotice &signInNotice() const { return *m_signIn; }
    StatusCard &tipCard() const { return *m_tip; }
    ThemedButton &hideTipButton() const { return *m_hideTip; }
    PermissionList &permissionList() const { return *m_permissions; }

private:
    void observe();
    void refreshTarget();
    void refreshHotkey();
    void refreshAccount();
    void refreshConfiguration();

    AppState &m_appState;
    StatusCard *m_target;
    SignInNotice *m_signIn;
    StatusCard *m_configuration;
    StatusCard *m_authError;
    StatusCard *m_hotkeyWarning;
    StatusCard *m_tip;
    ThemedButton *m_hideTip;
    PermissionList *m_permissions;
};
