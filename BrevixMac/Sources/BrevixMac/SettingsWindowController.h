// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QObject>
#include <QPointer>

#include <memory>

class AppState;
class QDataStream;
class QWidget;
class SettingsView;

/// The settings in a window of their own. The window's content lives from its opening to its closing. Main
/// thread only.
class SettingsWindowController final : public QObject
{
    Q_OBJECT

public:
    static constexpr int leastWidth = 720;
    static constexpr int leastHeight = 540;

    /// @p appState must outlive this object.
    explicit SettingsWindowController(AppState &appState);

    /// A window cannot be created from an archive: stops the program.
    [[noreturn]] explicit SettingsWindowController(QDataStream &coder);

    ~SettingsWindowController() override;

    /// Opens the window, or only makes sure that it is on screen.
    void show();

    QWidget &window() const { return *m_window; }
    /// Null while the window is closed.
    SettingsView *view() const;

    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    void windowWillClose();

    AppState *m_appState = nullptr;
    std::unique_ptr<QWidget> m_window;
    QPointer<SettingsView> m_view;
};
