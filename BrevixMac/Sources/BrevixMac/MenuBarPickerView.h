// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "PickerResults.h"

#include <QWidget>

#include <memory>

class AppState;

/// The content of the picker panel. Holds no library data: it reads AppState and calls its actions. 520 × 640 logical
/// pixels. Main thread only.
class MenuBarPickerView : public QWidget
{
    Q_OBJECT

public:
    /// @p appState must outlive this widget.
    explicit MenuBarPickerView(AppState &appState, QWidget *parent = nullptr);
    ~MenuBarPickerView() override;

    /// Called each time the panel is shown: reads everything again, keeps a prompt selected, and moves the focus
    /// to the search field when AppState asks for it.
    void appear();

Q_SIGNALS:
    /// The user asked to close the panel (Escape with nothing to go back to).
    void closeRequested();
    void quitRequested();

private:
    struct Parts;
    std::unique_ptr<Parts> m_parts;
};
