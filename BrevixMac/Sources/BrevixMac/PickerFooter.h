// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QWidget>

class AppState;
class ThemedButton;

/// The foot of the quick picker: the plus button, the library, and settings, account and quit.
class PickerFooter final : public QWidget
{
    Q_OBJECT

public:
    /// @p appState must outlive this widget.
    explicit PickerFooter(AppState &appState, QWidget *parent = nullptr);

    ThemedButton &plusButton() const { return *m_plus; }
    ThemedButton &libraryButton() const { return *m_library; }
    ThemedButton &settingsButton() const { return *m_settings; }
    ThemedButton &signOutButton() const { return *m_signOut; }
    ThemedButton &quitButton() const { return *m_quit; }

Q_SIGNALS:
    void quitRequested();

protected:
    void paintEvent(QPaintEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;

private:
    void onThemeChanged();
    /// Shows labels while they all have room, and symbols in their place after that.
    void fit();
    void refresh();

    AppState &m_appState;
    ThemedButton *m_plus;
    ThemedButton *m_library;
    ThemedButton *m_settings;
    ThemedButton *m_signOut;
    ThemedButton *m_quit;
};
