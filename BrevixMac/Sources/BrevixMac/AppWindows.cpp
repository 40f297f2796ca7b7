// SPDX-License-Identifier: GPL-3.0-or-later
#include "AppWindows.h"

#include "AppState.h"
#include "FloatingPanelController.h"
#include "MenuBarController.h"
#include "MenuBarPickerPanel.h"
#include "MenuBarPickerView.h"
#include "MenuBarPromptEditorView.h"
#include "PromptEditorController.h"
#include "PromptEditorModel.h"
#include "PromptEditorView.h"
#include "SettingsWindowController.h"
#include "SkillEditorController.h"

#include "Desktop/Workspace.h"

#include <QPointer>

AppWindows::AppWindows(AppState &appState, Workspace &workspace, MenuBarController &menuBar)
    : m_appState(appState)
    , m_workspace(workspace)
    , m_menuBar(menuBar)
    , m_promptEditor(std::make_unique<PromptEditorController>(appState))
    , m_skillEditor(std::make_unique<SkillEditorController>(appState))
{
    const MenuBarPickerView &view = menuBar.panel()->view();
    connect(&view, &MenuBarPickerView::newSkillRequested, this, &AppWindows::showSkillEditor);
    connect(&view, &MenuBarPickerView::promptWindowRequested, this, &AppWindows::showPromptEditor);
    connect(&view, &MenuBarPickerView::paletteRequested, this, &AppWindows::showPalette);
}

AppWindows::~AppWindows() = default;

void AppWindows::showSkillEditor()
{
    m_menuBar.closePicker();
    m_skillEditor->show();
}

void AppWindows::showPromptEditor()
{
    m_menuBar.closePicker();
    m_promptEditor->show();
    m_menuBar.panel()->view().promptEditor().model().handOver(m_promptEditor->view()->model());
}

void AppWindows::showSettings()
{
    m_menuBar.closePicker();
    if (!m_settings)
        m_settings = std::make_unique<SettingsWindowController>(m_appState);
    m_settings->show();
    m_workspace.activateOwnWindow(m_settings->window().windowHandle());
}

FloatingPanelController &AppWindows::makePalette()
{
    if (!m_palette) {
        m_palette = std::make_unique<FloatingPanelController>(m_appState, m_workspace);
        connect(m_palette.get(), &FloatingPanelController::browseLibraryRequested, this,
                &AppWindows::browseLibrary);
    }
    return *m_palette;
}

void AppWindows::showPalette()
{
    FloatingPanelController &palette = makePalette();
    if (palette.isVisible()) {
        palette.show();
        return;
    }
    if (m_menuBar.isPickerVisible()) {
        // The picker has the target already, and by now the focus is in the picker.
        m_menuBar.closePicker();
        palette.show();
        return;
    }
    m_appState.handleWindowInvocation([self = QPointer<AppWindows>(this)] {
        if (self)
            self->makePalette().show();
    });
}

void AppWindows::browseLibrary()
{
    m_palette->hide();
    m_menuBar.panel()->view().setRoute(PickerPanelRoute::library);
    m_appState.handleHotkey();
}
