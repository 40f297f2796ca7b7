// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>
#include <QList>
#include <QString>

#include <xcb/xcb.h>

#include <optional>
#include <vector>

class X11Connection;

/// What a client window tells of the application it belongs to.
struct X11WindowFacts
{
    xcb_window_t window = XCB_WINDOW_NONE;
    qint64 processIdentifier = 0; ///< 0 when nobody tells
    QString instance;             ///< of its WM_CLASS
    QString className;            ///< of its WM_CLASS
    QString desktopFileHint;      ///< the desktop entry it names itself
};

/// Questions about other clients' windows. Each costs one or a few round trips to the X server and waits for
/// no other client; a window that is gone gives empty answers. Main thread only.
class X11Windows
{
public:
    /// @p connection must outlive this object.
    explicit X11Windows(X11Connection &connection);

    /// The window that proves the presence of an EWMH window manager, or none.
    xcb_window_t windowManagerWindow();

    /// The client window a window manager says is active, or none.
    xcb_window_t activeWindow();

    /// The top-level window that gets what is typed, as the server has it: for displays without a window
    /// manager.
    xcb_window_t focusedTopLevel();

    /// Whether what is typed arrives in @p window, as the server has it: window managers tell of a change
    /// later than they carry it out.
    bool hasInputFocus(xcb_window_t window);

    /// The windows under the pointer, the outermost first.
    std::vector<xcb_window_t> windowsUnderPointer();

    /// Client windows from the lowest to the topmost; those of the root when no window manager keeps a list.
    std::vector<xcb_window_t> stackingList();

    /// Whether @p window is neither a panel nor the desktop itself.
    bool isForWork(xcb_window_t window);

    bool exists(xcb_window_t window);
    std::optional<X11WindowFacts> facts(xcb_window_t window);
    qint64 processIdentifier(xcb_window_t window);

    /// Topmost window of process @p processIdentifier, or none.
    xcb_window_t topmostWindow(qint64 processIdentifier);

    /// The window that @p window is a dialog of, or none.
    xcb_window_t transientFor(xcb_window_t window);

private:
    std::optional<quint8> mapState(xcb_window_t window);
    QByteArray property(xcb_window_t window, const QByteArray &name, xcb_atom_t type);
    xcb_window_t windowProperty(xcb_window_t window, const QByteArray &name);
    std::vector<xcb_window_t> windowListProperty(xcb_window_t window, const QByteArray &name);
    std::vector<xcb_window_t> children(xcb_window_t window);
    std::vector<qint64> processIdentifiers(const std::vector<xcb_window_t> &windows);

    X11Connection &m_connection;
    QString m_hostName;
    bool m_hasClientIDs = false; ///< whether the server tells the process behind a client
};
