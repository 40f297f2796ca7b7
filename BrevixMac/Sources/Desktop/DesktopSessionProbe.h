// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Desktop/SessionProbe.h"
#include "Foundation/TaskScope.h"

#include <memory>

class AtSpiAccessibilityTree;
class X11Connection;
class X11Probe;
class X11SelectionOwner;
class X11Workspace;

/// Looks at the session with the mechanisms that DesktopSession has chosen. Main thread only.
class DesktopSessionProbe final : public SessionProbe
{
public:
    /// The mechanisms of the session; null where it has none. All must outlive this object.
    struct Mechanisms
    {
        X11Connection *x11 = nullptr;
        X11Workspace *workspace = nullptr;
        X11SelectionOwner *xembedHost = nullptr;
        AtSpiAccessibilityTree *accessibilityTree = nullptr;
    };

    explicit DesktopSessionProbe(Mechanisms mechanisms);
    ~DesktopSessionProbe() override;

    QCoro::Task<SessionFacts> examine(QString scheme) override;

    /// The same for a process without a display, which has no mechanisms.
    static QCoro::Task<SessionFacts> examineWithoutDisplay(QString scheme);

private:
    SessionFacts::Display display() const;

    const Mechanisms m_mechanisms;
    std::unique_ptr<X11Probe> m_x11;
    TaskScope m_tasks; // keep last
};
