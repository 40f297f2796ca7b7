// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Desktop/RunningApplication.h"
#include "Desktop/SessionProbe.h"
#include "Foundation/TaskScope.h"

class X11Connection;
class X11Workspace;

/// Looks at an X11 session: keyboard, window manager, clipboard owner and the programs on screen. Main thread
/// only; asks the X server, and of the clipboard's owner no more than which types it offers.
class X11Probe final
{
public:
    /// Both must outlive this object.
    X11Probe(X11Connection &connection, X11Workspace &workspace);

    /// Fills in what the X server knows.
    void look(SessionFacts &facts) const;

    /// Programs with a window that a user works in, this one left out.
    QList<RunningApplication> programs() const;

    struct Clipboard
    {
        SessionFacts::Clipboard state = SessionFacts::Clipboard::unreachable;
        QString owner;
    };

    /// Whether the clipboard's owner answers within half a second.
    QCoro::Task<Clipboard> clipboard();

private:
    X11Connection &m_connection;
    X11Workspace &m_workspace;
    TaskScope m_tasks; // keep last
};
