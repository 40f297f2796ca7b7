// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "InsertionOutcome.h"

#include <QWidget>

#include <map>

class AppState;
class ChoiceRow;
class DiagnosticsRows;
class DoctorRows;
class QVBoxLayout;
class SettingsCard;
class SettingsRow;
class ShortcutRecorderView;
class StatusChip;
class ThemedButton;
class ThemedSwitch;
class UpdateRow;

/// The settings: seven cards in a scrolling column. Holds no state of its own but whether the diagnostics are
/// open; everything else is read from AppState and written to it. Main thread only.
class SettingsView final : public QWidget
{
    Q_OBJECT

public:
    /// @p appState must outlive this widget.
    explicit SettingsView(AppState &appState, QWidget *parent = nullptr);

    /// Reads everything again, also what other programs may have changed.
    void refresh();

    /// Puts the keyboard at the first control.
    void focusFirst();

    const QList<SettingsCard *> &cards() const { return m_cards; }
    SettingsRow &accountRow() const { return *m_account; }
    ThemedButton &signInButton() const { return *m_signIn; }
    ThemedButton &signOutButton() const { return *m_signOut; }
    ThemedButton &cancelSignInButton() const { return *m_cancelSignIn; }
    ThemedButton &copyLinkButton() const { return *m_copyLink; }
    ThemedSwitch &loginSwitch() const { return *m_login; }
    SettingsRow &loginRow() const { return *m_loginRow; }
    ThemedSwitch &iconSwitch() const { return *m_icon; }
    SettingsRow &shortcutRow() const { return *m_shortcutRow; }
    ShortcutRecorderView &recorder() const { return *m_recorder; }
    ChoiceRow &methodRow(InsertionMethod method) const { return *m_methods.at(method); }
    StatusChip &accessibilityChip() const { return *m_accessibility.chip; }
    SettingsRow &accessibilityRow() const { return *m_accessibility.row; }
    SettingsRow &postEventRow() const { return *m_postEvent.row; }
    ThemedButton &accessibilityButton() const { return *m_accessibility.button; }
    StatusChip &postEventChip() const { return *m_postEvent.chip; }
    ThemedButton &postEventButton() const { return *m_postEvent.button; }
    ThemedButton &recheckButton() const { return *m_recheck; }
    DoctorRows &doctor() const { return *m_doctor; }
    UpdateRow &updates() const { return *m_updates; }
    DiagnosticsRows &diagnostics() const { return *m_diagnostics; }

protected:
    void showEvent(QShowEvent *event) override;
    void hideEvent(QHideEvent *event) override;

private:
    struct Permission
    {
        SettingsRow *row = nullptr;
        StatusChip *chip = nullptr;
        ThemedButton *button = nullptr;
    };

    void makeScrollArea();
    QList<ThemedButton *> buttonsWithoutUser() const;
    void showAccountButtons(const QList<ThemedButton *> &shown);
    void forgetNotes();
    SettingsCard *addCard(const QString &title);
    void addAccount();
    void addGeneral();
    void addShortcut();
    void addInsertion();
    void addSystemAccess();
    void addUpdates();
    void addAdvanced();
    Permission addPermission(SettingsCard *card, const QString &title, const QString &subtitle);
    void observe();
    void refreshAccount();
    void refreshGeneral();
    void refreshShortcut();
    void refreshMethods();
    void refreshPermissions();
    void onRefused(const QString &reason);

    AppState &m_appState;
    QWidget *m_content;
    QVBoxLayout *m_column;
    QList<SettingsCard *> m_cards;
    SettingsRow *m_account = nullptr;
    ThemedButton *m_signIn = nullptr;
    ThemedButton *m_signOut = nullptr;
    ThemedButton *m_cancelSignIn = nullptr;
    ThemedButton *m_copyLink = nullptr;
    ThemedSwitch *m_login = nullptr;
    SettingsRow *m_loginRow = nullptr;
    ThemedSwitch *m_icon = nullptr;
    SettingsRow *m_shortcutRow = nullptr;
    ShortcutRecorderView *m_recorder = nullptr;
    std::map<InsertionMethod, ChoiceRow *> m_methods;
    Permission m_accessibility;
    Permission m_postEvent;
    ThemedButton *m_recheck = nullptr;
    UpdateRow *m_updates = nullptr;
    DoctorRows *m_doctor = nullptr;
    DiagnosticsRows *m_diagnostics = nullptr;
    QString m_loginProblem;
};
