// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QObject>

#include <memory>

class AppState;
class FloatingPanelController;
class MenuBarController;
class PromptEditorController;
class SkillEditorController;
class SettingsWindowController;
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
    /// Takes over what the panel's prompt editor holds, unless the window has a text of its own already.
    void showPromptEditor();
    void showSettings();
    /// Captures the field the user is in first, unless the picker has just done so.
    void showPalette();

    /// Null before its first use.
    FloatingPanelController *palette() const { return m_palette.get(); }
    PromptEditorController &promptEditor() const { return *m_promptEditor; }

private:
    FloatingPanelController &makePalette();
    void browseLibrary();

    AppState &m_appState;
    Workspace &m_workspace;
    MenuBarController &m_menuBar;
    std::unique_ptr<FloatingPanelController> m_palette;
    std::unique_ptr<PromptEditorController> m_promptEditor;
    std::unique_ptr<SkillEditorController> m_skillEditor;
    std::unique_ptr<SettingsWindowController> m_settings;
};
