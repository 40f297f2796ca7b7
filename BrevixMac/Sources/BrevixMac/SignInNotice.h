// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QWidget>

class AppState;
class StatusCard;
class ThemedButton;

/// A sign-in under way: that the browser has the word now, or that none could be opened, with the link to
/// copy and a way out. Hidden without one.
class SignInNotice final : public QWidget
{
    Q_OBJECT

public:
    /// @p appState must outlive this widget.
    explicit SignInNotice(AppState &appState, QWidget *parent = nullptr);

    StatusCard &card() const { return *m_card; }
    ThemedButton &copyLinkButton() const { return *m_copyLink; }
    ThemedButton &cancelButton() const { return *m_cancel; }

private:
    void refresh();
    void describe();
    void onCopied();

    AppState &m_appState;
    StatusCard *m_card;
    ThemedButton *m_copyLink;
    ThemedButton *m_cancel;
};
