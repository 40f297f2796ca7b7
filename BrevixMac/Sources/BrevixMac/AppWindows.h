// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QObject>
#include <QPointer>

class AppState;
class MenuBarController;
class Workspace;

/// The application's windows beside the picker panel. Each is made on its first use and raised afterwards.
/// The picker closes when one of them opens, because it would lie over it. Main thread only.
class AppWindows final : public QObject
{
    Q_OBJECT

public:
    /// All must outlive this object. Joins the panel's requests for windows with the windows.
    AppWindows(AppState &appState, Workspace &workspace, MenuBarController &menuBar);
    ~AppWindows() override;

    void showSkillEditor();
    void showPromptEditor();
    void showSettings();
    void showPalette();

private:
    AppState &m_appState;
    Workspace &m_workspace;
    MenuBarController &m_menuBar;
};
