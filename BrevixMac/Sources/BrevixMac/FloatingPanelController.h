// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QObject>

#include <memory>

class AppState;
class PromptPalettePanel;
class QDataStream;
class Workspace;

/// Owns the window of the prompt palette: frameless, above other windows, moved by its background, centred on
/// the screen each time it opens. Closing only hides it. Main thread only.
class FloatingPanelController final : public QObject
{
    Q_OBJECT

public:
    /// Both must outlive this object.
    FloatingPanelController(AppState &appState, Workspace &workspace);

    /// A panel cannot be created from an archive: stops the program.
    [[noreturn]] explicit FloatingPanelController(QDataStream &coder);

    ~FloatingPanelController() override;

    /// Shows the palette with the focus in its search field, or raises it.
    void show();
    void hide();
    bool isVisible() const;

    PromptPalettePanel &panel() const { return *m_panel; }

Q_SIGNALS:
    void browseLibraryRequested();

private:
    void placeInTheMiddle();

    AppState *m_appState = nullptr;
    Workspace *m_workspace = nullptr;
    std::unique_ptr<PromptPalettePanel> m_panel;
};
