// SPDX-License-Identifier: GPL-3.0-or-later
#include "FloatingPanelController.h"

#include "AppState.h"
#include "ProgrammingError.h"
#include "PromptPalettePanel.h"
#include "PromptPaletteView.h"
#include "Theme.h"

#include "Desktop/Workspace.h"

#include <QCursor>
#include <QGuiApplication>
#include <QScreen>
#include <QTimer>

namespace {

constexpr QSize designedSize(980, 620);
constexpr QSize leastSize(640, 420);

} // namespace

FloatingPanelController::FloatingPanelController(AppState &appState, Workspace &workspace)
    : m_appState(&appState)
    , m_workspace(&workspace)
    , m_panel(std::make_unique<PromptPalettePanel>(appState))
{
    PromptPaletteView &view = m_panel->view();
    connect(&view, &PromptPaletteView::closeRequested, this, &FloatingPanelController::hide);
    connect(&view, &PromptPaletteView::browseLibraryRequested, this,
            &FloatingPanelController::browseLibraryRequested);
    connect(&appState, &AppState::insertionFinished, this, &FloatingPanelController::hide);
    connect(&appState, &AppState::insertionFailed, this, [this] {
        // As in the picker: a paste gives the focus to its target.
        if (isVisible() && m_appState->isTargetInFront())
            m_workspace->activateOwnWindow(m_panel->windowHandle());
    });
    // The picker works on the same state: one of the two at a time.
    connect(&appState, &AppState::palettePresentedChanged, this, [this] {
        if (m_appState->palettePresented())
            hide();
    });
    connect(&Theme::shared(), &Theme::changed, this, [this] {
        if (isVisible())
            placeInTheMiddle();
    });
}

FloatingPanelController::FloatingPanelController(QDataStream &)
{
    stopOnArchive();
}

FloatingPanelController::~FloatingPanelController() = default;

void FloatingPanelController::show()
{
    if (!isVisible()) {
        m_panel->setCompositing(m_workspace->isCompositing());
        placeInTheMiddle();
        m_panel->view().appear();
        m_panel->show();
        m_workspace->joinAllDesktops(m_panel->windowHandle());
    }
    m_panel->raise();
    m_workspace->activateOwnWindow(m_panel->windowHandle());
    // After the palette has become the active window.
    QTimer::singleShot(0, this, [this] {
        if (!m_appState->activeVariablePrompt())
            m_panel->view().focusSearch();
    });
}

void FloatingPanelController::hide()
{
    m_panel->hide();
}

bool FloatingPanelController::isVisible() const
{
    return m_panel->isVisible();
}

void FloatingPanelController::placeInTheMiddle()
{
    const QScreen *screen = QGuiApplication::screenAt(QCursor::pos());
    if (!screen)
        screen = QGuiApplication::primaryScreen();
    if (!screen)
        return;
    const QRect available = screen->availableGeometry();
    m_panel->fitInto(available.size(), designedSize, leastSize);
    m_panel->move(available.center() - m_panel->rect().center());
}
