// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "RoundedPanel.h"

class AppState;
class PromptPaletteView;

/// The floating window around the palette. Follows the pointer that drags its background.
class PromptPalettePanel final : public RoundedPanel
{
    Q_OBJECT

public:
    /// @p appState must outlive this widget.
    explicit PromptPalettePanel(AppState &appState);

    PromptPaletteView &view() const { return *m_view; }

protected:
    void mousePressEvent(QMouseEvent *event) override;
    void mouseMoveEvent(QMouseEvent *event) override;

private:
    PromptPaletteView *m_view;
    QPoint m_grip; ///< where the window was taken hold of, from its upper left corner
};
