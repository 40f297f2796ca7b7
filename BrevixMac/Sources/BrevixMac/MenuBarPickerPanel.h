// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "RoundedPanel.h"

class AppState;
class MenuBarPickerView;

/// The floating window around the picker: in no task list, with large rounded corners. Takes the focus only
/// when told to or when clicked into.
class MenuBarPickerPanel final : public RoundedPanel
{
    Q_OBJECT

public:
    /// @p appState must outlive this widget.
    explicit MenuBarPickerPanel(AppState &appState);

    MenuBarPickerView &view() const { return *m_view; }

    /// Never smaller than designed, even where the screen is.
    void fitInto(const QSize &available);

private:
    MenuBarPickerView *m_view;
};
