// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "InsertionOutcome.h"
#include "KeyboardShortcut.h"

#include <QObject>

#include <optional>

class UserDefaults;

/// The user's settings, kept across launches. Main thread only. Read once at construction; each assignment
/// notifies and then writes through at once. Missing or mistyped stored values read as their defaults.
class PreferenceStore : public QObject
{
    Q_OBJECT

public:
    /// @p defaults must outlive this object.
    explicit PreferenceStore(UserDefaults &defaults);
    ~PreferenceStore() override;

    /// The application's own instance: the first one made, while it lives.
    static PreferenceStore *shared();

    KeyboardShortcut preferredShortcut() const { return m_preferredShortcut; }
    bool launchAtLoginEnabled() const { return m_launchAtLoginEnabled; }
    bool showMenuBarIcon() const { return m_showMenuBarIcon; }
    std::optional<QString> lastSignedInUserID() const { return m_lastSignedInUserID; }
    bool onboardingCompleted() const { return m_onboardingCompleted; }
    InsertionMethod preferredInsertionMethod() const { return m_preferredInsertionMethod; }
    bool hotkeyTipDismissed() const { return m_hotkeyTipDismissed; }

    void setPreferredShortcut(const KeyboardShortcut &shortcut);
    void setLaunchAtLoginEnabled(bool enabled);
    void setShowMenuBarIcon(bool shown);
    void setLastSignedInUserID(const std::optional<QString> &userID);
    void setOnboardingCompleted(bool completed);
    void setPreferredInsertionMethod(InsertionMethod method);
    void setHotkeyTipDismissed(bool dismissed);

Q_SIGNALS:
    void preferredShortcutChanged();
    void launchAtLoginEnabledChanged();
    void showMenuBarIconChanged();
    void lastSignedInUserIDChanged();
    void onboardingCompletedChanged();
    void preferredInsertionMethodChanged();
    void hotkeyTipDismissedChanged();

private:
    void saveBoolean(const QString &key, bool value);

    UserDefaults &m_defaults;
    KeyboardShortcut m_preferredShortcut;
    bool m_launchAtLoginEnabled = false;
    bool m_showMenuBarIcon = true;
    std::optional<QString> m_lastSignedInUserID;
    bool m_onboardingCompleted = false;
    InsertionMethod m_preferredInsertionMethod = InsertionMethod::hybrid;
    bool m_hotkeyTipDismissed = false;
};
