// SPDX-License-Identifier: GPL-3.0-or-later
#include "DesktopSession.h"

#include "Desktop/AtSpi/AtSpiAccessibilityTree.h"
#include "Desktop/DesktopSessionProbe.h"
#include "Desktop/Freedesktop/BrowserAuthenticationSession.h"
#include "Desktop/Freedesktop/BrowserOpener.h"
#include "Desktop/Freedesktop/TrayStatusItem.h"
#include "Desktop/NullDesktop.h"
#include "Desktop/X11/X11EventMonitor.h"
#include "Desktop/X11/X11HotKeys.h"
#include "Desktop/X11/X11KeyCapture.h"
#include "Desktop/X11/X11KeyEvents.h"
#include "Desktop/X11/X11Pasteboard.h"
#include "Desktop/X11/X11SelectionOwner.h"
#include "Desktop/X11/X11Workspace.h"

#include <QGuiApplication>

namespace {

// Not by the native interface: the platform without a screen has one too where it finds an X server.
bool isX11Session()
{
    return QGuiApplication::platformName() == u"xcb";
}

bool hasScreenOfItsOwn()
{
    const QString platform = QGuiApplication::platformName();
    return platform != u"offscreen" && platform != u"minimal";
}

template <typename Seam, typename Mechanism>
void fill(std::unique_ptr<Seam> &seam)
{
    if (!seam)
        seam = std::make_unique<Mechanism>();
}

} // namespace

DesktopSession::DesktopSession()
{
    if (isX11Session())
        useX11();
    else if (hasScreenOfItsOwn())
        useBusOnly();
    useNothing();
}

DesktopSession::~DesktopSession() = default;

void DesktopSession::useX11()
{
    m_x11 = std::make_unique<X11Connection>();
    m_xembedHost = std::make_unique<X11SelectionOwner>(*m_x11, QByteArrayLiteral("_NET_SYSTEM_TRAY_S"));
    auto tree = std::make_unique<AtSpiAccessibilityTree>();
    auto workspace = std::make_unique<X11Workspace>(*m_x11);
    auto keyEvents = std::make_unique<X11KeyEvents>(*m_x11);
    auto hotKeys = std::make_unique<X11HotKeys>(*m_x11);

    // The accessibility bus does not tell of every application that comes to the front; the window manager
    // does.
    const auto tellTree = [tree = tree.get(), workspace = workspace.get()] {
        const auto front = workspace->frontmostApplication();
        tree->applicationActivated(front ? front->processIdentifier : 0);
    };
    QObject::connect(workspace.get(), &Workspace::didActivateApplication, tree.get(), tellTree);
    tellTree();
    // Qt does not see the hotkey, so it cannot know that the user has just asked for our window.
    QObject::connect(hotKeys.get(), &X11HotKeys::pressedAt, workspace.get(), &X11Workspace::noteUserAction);

    m_probe = std::make_unique<DesktopSessionProbe>(
        DesktopSessionProbe::Mechanisms{.x11 = m_x11.get(),
                                        .workspace = workspace.get(),
                                        .xembedHost = m_xembedHost.get(),
                                        .accessibilityTree = tree.get()});
    m_pasteboard = std::make_unique<X11Pasteboard>(*m_x11, keyEvents.get());
    m_eventMonitor = std::make_unique<X11EventMonitor>(*m_x11);
    m_keyCapture = std::make_unique<X11KeyCapture>(*m_x11);
    m_statusItem = std::make_unique<TrayStatusItem>(m_xembedHost.get());
    m_webAuthenticationSession = std::make_unique<BrowserAuthenticationSession>();
    m_webBrowser = std::make_unique<BrowserOpener>();
    m_accessibilityTree = std::move(tree);
    m_workspace = std::move(workspace);
    m_keyEvents = std::move(keyEvents);
    m_hotKeys = std::move(hotKeys);
}

// Another display server: what goes over the session bus works there as well.
void DesktopSession::useBusOnly()
{
    auto tree = std::make_unique<AtSpiAccessibilityTree>();
    m_probe = std::make_unique<DesktopSessionProbe>(
        DesktopSessionProbe::Mechanisms{.accessibilityTree = tree.get()});
    m_accessibilityTree = std::move(tree);
    m_statusItem = std::make_unique<TrayStatusItem>(nullptr);
    m_webAuthenticationSession = std::make_unique<BrowserAuthenticationSession>();
    m_webBrowser = std::make_unique<BrowserOpener>();
}

void DesktopSession::useNothing()
{
    fill<AccessibilityTree, NullAccessibilityTree>(m_accessibilityTree);
    fill<Workspace, NullWorkspace>(m_workspace);
    fill<KeyEvents, NullKeyEvents>(m_keyEvents);
    fill<Pasteboard, NullPasteboard>(m_pasteboard);
    fill<EventMonitor, NullEventMonitor>(m_eventMonitor);
    fill<HotKeys, NullHotKeys>(m_hotKeys);
    fill<KeyCapture, NullKeyCapture>(m_keyCapture);
    fill<StatusItem, NullStatusItem>(m_statusItem);
    fill<WebAuthenticationSession, NullWebAuthenticationSession>(m_webAuthenticationSession);
    fill<WebBrowser, NullWebBrowser>(m_webBrowser);
    if (!m_probe)
        m_probe = std::make_unique<DesktopSessionProbe>(DesktopSessionProbe::Mechanisms{});
}
