// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QWidget>

class SettingsRow;
class ThemedButton;
class UpdateService;

/// The settings' line about updates: what was found, a check, and the way to the release.
class UpdateRow final : public QWidget
{
    Q_OBJECT

public:
    /// @p updates must outlive this widget.
    explicit UpdateRow(UpdateService &updates, QWidget *parent = nullptr);

    SettingsRow &row() const { return *m_row; }
    ThemedButton &checkButton() const { return *m_check; }
    ThemedButton &releaseButton() const { return *m_release; }

private:
    void refresh();
    void openRelease();

    UpdateService &m_updates;
    SettingsRow *m_row;
    ThemedButton *m_check;
    ThemedButton *m_release;
};
