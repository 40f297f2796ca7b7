// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QWidget>

class AppState;
class TextLabel;
class ThemedButton;

/// The head of the quick picker: brand glyph and name, who is signed in or the button to do so, and the gear.
class PickerHeader final : public QWidget
{
    Q_OBJECT

public:
    /// @p appState must outlive this widget.
    explicit PickerHeader(AppState &appState, QWidget *parent = nullptr);

    /// Reads the account.
    void refresh();

    /// What the status line says for the account that is shown.
    QString statusText() const;

    ThemedButton &signInButton() const { return *m_signIn; }
    ThemedButton &settingsButton() const { return *m_settings; }

private:
    AppState &m_appState;
    TextLabel *m_status;
    ThemedButton *m_signIn;
    ThemedButton *m_settings;
};
