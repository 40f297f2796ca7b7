// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Desktop/EventMonitor.h"

#include <QElapsedTimer>
#include <QIcon>
#include <QObject>
#include <QPointer>
#include <QRect>

#include <memory>
#include <optional>

class AppState;
class MenuBarPickerPanel;
class StatusItem;
class Workspace;

/// Owns the status item and the floating picker panel: places the panel, shows it with or without the
/// keyboard focus, closes it on a click elsewhere, and keeps AppState::palettePresented() in step. Never
/// keeps AppState alive. Main thread only. A missing piece makes an operation do nothing.
class MenuBarController final : public QObject
{
    Q_OBJECT

public:
    /// All must outlive this object, save AppState.
    MenuBarController(StatusItem &statusItem, Workspace &workspace, EventMonitor &eventMonitor);
    ~MenuBarController() override;

    /// The application's own instance; null before it is made.
    static MenuBarController *shared();

    /// Once at start: status item, panel, and AppState's present and dismiss actions.
    void install(AppState &appState);

    void showPicker();
    void closePicker();

    /// The status item's action: closes a visible picker, else opens one that leaves the focus where it is.
    void togglePicker();

    /// The same from the keyboard or the command line: opens one that takes the focus.
    void togglePickerWithFocus();

    bool isPickerVisible() const;
    MenuBarPickerPanel *panel() const { return m_panel.get(); }

    /// Top left of a panel of @p panelSize: centred below @p button, above it when there is no room, kept 8
    /// px inside
    /// @p visibleFrame. Qt's desktop coordinates (y grows downwards).
    static QPoint panelPosition(const QRect &button, const QSize &panelSize, const QRect &visibleFrame);

    /// The product's initial in bold, black on transparent, to be tinted. Square, @p size logical pixels.
    static QIcon brevixTemplateGlyph(int size);

Q_SIGNALS:
    /// The user asked in the picker to end the application.
    void quitRequested();

private:
    void prepareFirstShow();
    void position();
    void onStatusItemPressed(QPoint near);
    void onPressElsewhere(QPoint where);
    void startOutsideClickMonitor();
    void stopOutsideClickMonitor();
    void panelDidHide();
    void updateStatusItem();

    StatusItem &m_statusItem;
    Workspace &m_workspace;
    EventMonitor &m_eventMonitor;
    QPointer<AppState> m_appState;
    std::unique_ptr<MenuBarPickerPanel> m_panel;
    std::unique_ptr<EventMonitor::Subscription> m_outsideClickMonitor;
    QPoint m_closingPress;
    QElapsedTimer m_closedByPress; ///< runs since a press outside has closed the panel
    std::optional<QPoint>
        m_pressedNear; ///< where the status item was pressed last, for hosts that tell no geometry
};
