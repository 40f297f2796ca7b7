// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QWidget>

class SettingsRow;
class ThemedButton;
class UpdateService;
class WebBrowser;

/// The settings' line about updates: what was found, a check, and the way to the release.
class UpdateRow final : public QWidget
{
    Q_OBJECT

public:
    /// Both must outlive this widget.
    UpdateRow(UpdateService &updates, WebBrowser &browser, QWidget *parent = nullptr);

    SettingsRow &row() const { return *m_row; }
    ThemedButton &checkButton() const { return *m_check; }
    ThemedButton &releaseButton() const { return *m_release; }

private:
    void refresh();
    void openRelease();
    void onBrowserFailed();

    UpdateService &m_updates;
    WebBrowser &m_browser;
    bool m_isOpening = false; ///< since this row has asked for a page
    SettingsRow *m_row;
    ThemedButton *m_check;
    ThemedButton *m_release;
};
