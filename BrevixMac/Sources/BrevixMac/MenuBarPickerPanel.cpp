// SPDX-License-Identifier: GPL-3.0-or-later
#include "MenuBarPickerPanel.h"

#include "MenuBarPickerView.h"
#include "Theme.h"

#include <QVBoxLayout>

namespace {

constexpr QSize designedSize(Theme::panelWidth, Theme::panelHeight);

}

MenuBarPickerPanel::MenuBarPickerPanel(AppState &appState)
    : RoundedPanel(Qt::Tool, Theme::panelRadius)
    , m_view(new MenuBarPickerView(appState, this))
{
    setAttribute(Qt::WA_ShowWithoutActivating);
    setWindowTitle(QStringLiteral("Brevix"));
    setFixedSize(designedSize);
    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(m_view);
    connect(m_view, &MenuBarPickerView::closeRequested, this, &QWidget::hide);
}

void MenuBarPickerPanel::fitInto(const QSize &available)
{
    RoundedPanel::fitInto(available, designedSize, designedSize);
}
