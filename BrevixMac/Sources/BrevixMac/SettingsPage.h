// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QWidget>

class AppState;
class PageHeader;
class SettingsView;

/// The settings as a screen of the picker panel, with the way back.
class SettingsPage final : public QWidget
{
    Q_OBJECT

public:
    /// @p appState must outlive this widget.
    explicit SettingsPage(AppState &appState, QWidget *parent = nullptr);

    PageHeader &header() const { return *m_header; }
    SettingsView &view() const { return *m_view; }

    void focusFirst();

Q_SIGNALS:
    void backRequested();

private:
    PageHeader *m_header;
    SettingsView *m_view;
};
