// SPDX-License-Identifier: GPL-3.0-or-later
#include "AppWindows.h"

#include "AppState.h"
#include "MenuBarController.h"
#include "MenuBarPickerPanel.h"
#include "MenuBarPickerView.h"

#include "Desktop/Workspace.h"

AppWindows::AppWindows(AppState &appState, Workspace &workspace, MenuBarController &menuBar)
    : m_appState(appState)
    , m_workspace(workspace)
    , m_menuBar(menuBar)
{
    const MenuBarPickerView &view = menuBar.panel()->view();
    connect(&view, &MenuBarPickerView::newSkillRequested, this, &AppWindows::showSkillEditor);
    connect(&view, &MenuBarPickerView::paletteRequested, this, &AppWindows::showPalette);
}

AppWindows::~AppWindows() = default;

// The bodies arrive with their windows; until then no enabled control leads here.

void AppWindows::showSkillEditor()
{
}

void AppWindows::showPromptEditor()
{
}

void AppWindows::showSettings()
{
}

void AppWindows::showPalette()
{
}
