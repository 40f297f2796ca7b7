// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <memory>

class AccessibilityTree;
class EventMonitor;
class HotKeys;
class KeyCapture;
class KeyEvents;
class Pasteboard;
class SessionProbe;
class StatusItem;
class WebAuthenticationSession;
class WebBrowser;
class Workspace;
class X11Connection;
class X11SelectionOwner;

/// Every desktop seam with the mechanism that fits the session this process runs in. Main thread only; needs
/// a QApplication. The single place that chooses mechanisms. A session without a mechanism for something gets
/// one that refuses everything.
class DesktopSession
{
public:
    DesktopSession();
    ~DesktopSession();

    DesktopSession(const DesktopSession &) = delete;
    DesktopSession &operator=(const DesktopSession &) = delete;

    AccessibilityTree &accessibilityTree() { return *m_accessibilityTree; }
    Pasteboard &pasteboard() { return *m_pasteboard; }
    Workspace &workspace() { return *m_workspace; }
    KeyEvents &keyEvents() { return *m_keyEvents; }
    EventMonitor &eventMonitor() { return *m_eventMonitor; }
    HotKeys &hotKeys() { return *m_hotKeys; }
    KeyCapture &keyCapture() { return *m_keyCapture; }
    StatusItem &statusItem() { return *m_statusItem; }
    WebAuthenticationSession &webAuthenticationSession() { return *m_webAuthenticationSession; }
    WebBrowser &webBrowser() { return *m_webBrowser; }
    SessionProbe &probe() { return *m_probe; }

private:
    void useX11();
    void useBusOnly();
    void useNothing();

    // In the order in which they need each other.
    std::unique_ptr<X11Connection> m_x11;
    std::unique_ptr<X11SelectionOwner> m_xembedHost;
    std::unique_ptr<AccessibilityTree> m_accessibilityTree;
    std::unique_ptr<Workspace> m_workspace;
    std::unique_ptr<KeyEvents> m_keyEvents;
    std::unique_ptr<Pasteboard> m_pasteboard;
    std::unique_ptr<EventMonitor> m_eventMonitor;
    std::unique_ptr<HotKeys> m_hotKeys;
    std::unique_ptr<KeyCapture> m_keyCapture;
    std::unique_ptr<StatusItem> m_statusItem;
    std::unique_ptr<WebAuthenticationSession> m_webAuthenticationSession;
    std::unique_ptr<WebBrowser> m_webBrowser;
    std::unique_ptr<SessionProbe> m_probe;
};
