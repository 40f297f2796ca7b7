// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QWidget>

class AppState;
class StatusCard;
class ThemedButton;

/// The outcome of the last action, with the offer to copy instead after a failed insertion; a progress line
/// while an insertion runs; or a hint about a key that could not do its work. Takes no room when there is
/// nothing to say.
class ResultLine final : public QWidget
{
    Q_OBJECT

public:
    /// @p appState must outlive this widget.
    explicit ResultLine(AppState &appState, QWidget *parent = nullptr);

    /// Shows @p hint until the next refresh().
    void showHint(const QString &title, const QString &detail);
    void clearHint();

    void refresh();

    /// Free pixels left and right of the card.
    void setSideMargin(int margin);

    StatusCard &card() const { return *m_card; }
    ThemedButton &recoveryButton() const { return *m_recovery; }

private:
    void describe();
    void announce();

    AppState &m_appState;
    StatusCard *m_card;
    ThemedButton *m_recovery;
    bool m_showsHint = false;
    QString m_announced;
};
