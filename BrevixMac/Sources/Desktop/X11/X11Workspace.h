// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Desktop/Freedesktop/DesktopEntries.h"
#include "Desktop/Workspace.h"
#include "Desktop/X11/X11Connection.h"
#include "Desktop/X11/X11SelectionOwner.h"
#include "Desktop/X11/X11Windows.h"
#include "Foundation/TaskScope.h"

#include <QElapsedTimer>

/// The workspace of an X11 session: the window manager's word (EWMH) on which window is active, the X
/// server's on which process that window belongs to, the desktop entries' on what the user calls it. Without
/// a window manager the server's input focus takes the place of the active window.
///
/// Asks the X server and the kernel only, never another application, so a hung one cannot hold it up.
/// didActivateApplication() also comes when another window of the same application comes to the front.
class X11Workspace final : public Workspace
{
    Q_OBJECT

public:
    /// @p connection must outlive this object.
    explicit X11Workspace(X11Connection &connection,
                          QStringList entryFolders = DesktopEntries::standardFolders());
    ~X11Workspace() override;

    std::optional<RunningApplication> frontmostApplication() const override;
    std::optional<RunningApplication> application(qint64 processIdentifier) const override;
    bool isInFront(const RunningApplication &application) override;
    bool isTerminated(const RunningApplication &application) const override;
    QCoro::Task<bool> activate(RunningApplication application) override;
    void activateOwnWindow(QWindow *window) override;
    void joinAllDesktops(QWindow *window) override;

    /// The applications whose windows a user works in: panels and desktops are left out. Each once.
    QList<RunningApplication> applicationsOnScreen() const;
    bool isCompositing() const override { return m_compositor.window() != XCB_WINDOW_NONE; }

    /// The user has just asked for something by an event of @p time that Qt has not seen: a hotkey.
    void noteUserAction(xcb_timestamp_t time);

private:
    void onEvent(const xcb_generic_event_t &event);
    void onDestroyed(xcb_window_t window);
    void findWindowManager();
    void updateFront();
    void watchFocusOf(xcb_window_t window);
    xcb_window_t readFront() const;
    bool isInFront(xcb_window_t window) const;
    std::optional<xcb_window_t> windowToActivate(const RunningApplication &application) const;
    void requestActivation(xcb_window_t window);
    std::optional<RunningApplication> describe(xcb_window_t window) const;
    RunningApplication describe(const X11WindowFacts &facts) const;
    xcb_timestamp_t userTime() const;

    X11Connection &m_connection;
    mutable X11Windows m_windows;
    mutable DesktopEntries m_entries;
    X11SelectionOwner m_compositor;
    mutable std::optional<RunningApplication>
        m_front; ///< described once, as long as its window stays in front
    xcb_window_t m_frontWindow = XCB_WINDOW_NONE;
    xcb_window_t m_managerWindow = XCB_WINDOW_NONE; ///< none: no window manager
    xcb_window_t m_focusWatched = XCB_WINDOW_NONE;
    xcb_timestamp_t m_userTime = XCB_CURRENT_TIME;
    QElapsedTimer m_sinceUserAction;
    std::unique_ptr<X11Connection::Subscription> m_events;
    TaskScope
        m_untilFrontChanges; ///< stops the wait of each activate() when another window comes to the front
    TaskScope m_tasks;       // keep last
};
