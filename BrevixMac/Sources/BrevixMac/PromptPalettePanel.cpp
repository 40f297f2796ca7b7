// SPDX-License-Identifier: GPL-3.0-or-later
#include "PromptPalettePanel.h"

#include "PromptPaletteView.h"

#include <QMouseEvent>
#include <QVBoxLayout>
#include <QWindow>

PromptPalettePanel::PromptPalettePanel(AppState &appState)
    : RoundedPanel(Qt::Window, PromptPaletteView::cornerRadius)
    , m_view(new PromptPaletteView(appState, this))
{
    setWindowTitle(QStringLiteral("Prompt Picker"));
    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(m_view);
}

void PromptPalettePanel::mousePressEvent(QMouseEvent *event)
{
    // Presses that no control has taken arrive here.
    if (event->button() == Qt::LeftButton)
        m_grip = event->globalPosition().toPoint() - pos();
}

void PromptPalettePanel::mouseMoveEvent(QMouseEvent *event)
{
    // The window manager moves better (edges, work areas); without one the window moves itself.
    if (event->buttons().testFlag(Qt::LeftButton) && !windowHandle()->startSystemMove())
        move(event->globalPosition().toPoint() - m_grip);
}
