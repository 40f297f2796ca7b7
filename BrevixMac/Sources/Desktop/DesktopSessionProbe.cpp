// SPDX-License-Identifier: GPL-3.0-or-later
#include "Desktop/DesktopSessionProbe.h"

#include "Desktop/AtSpi/AtSpiAccessibilityTree.h"
#include "Desktop/DisplayServer.h"
#include "Desktop/Freedesktop/Processes.h"
#include "Desktop/Freedesktop/SchemeProbe.h"
#include "Desktop/Freedesktop/StatusNotifierWatcher.h"
#include "Desktop/X11/X11Probe.h"
#include "Desktop/X11/X11SelectionOwner.h"

#include <QCoreApplication>
#include <QDBusConnection>
#include <QGuiApplication>

namespace {

/// Processes of Brevix other than this one, a command that asks it for instance, tell nobody's fields.
bool isOtherProgram(qint64 process)
{
    const qint64 own = QCoreApplication::applicationPid();
    return process != own && Processes::programName(process) != Processes::programName(own);
}

SessionFacts::Tray trayOf(StatusNotifierWatcher::Presence presence, const X11SelectionOwner *xembedHost)
{
    if (presence == StatusNotifierWatcher::Presence::withHost)
        return SessionFacts::Tray::notifier;
    if (xembedHost && xembedHost->window() != XCB_WINDOW_NONE)
        return SessionFacts::Tray::embedding;
    return presence == StatusNotifierWatcher::Presence::absent ? SessionFacts::Tray::none
                                                               : SessionFacts::Tray::watcherWithoutHost;
}

SessionFacts environmentFacts()
{
    SessionFacts facts;
    facts.desktopName = qEnvironmentVariable("XDG_CURRENT_DESKTOP");
    facts.hasSessionBus = QDBusConnection::sessionBus().isConnected();
    return facts;
}

SchemeProbe::Options schemeOptions()
{
    SchemeProbe::Options options;
    options.environment = DisplayServer::environmentForPrograms();
    return options;
}

} // namespace

DesktopSessionProbe::DesktopSessionProbe(Mechanisms mechanisms)
    : m_mechanisms(mechanisms)
    , m_x11(mechanisms.x11 ? std::make_unique<X11Probe>(*mechanisms.x11, *mechanisms.workspace) : nullptr)
{
}

DesktopSessionProbe::~DesktopSessionProbe() = default;

SessionFacts::Display DesktopSessionProbe::display() const
{
    const bool isInWayland = !qEnvironmentVariableIsEmpty("WAYLAND_DISPLAY") ||
                             qEnvironmentVariable("XDG_SESSION_TYPE") == u"wayland";
    if (m_x11)
        return isInWayland ? SessionFacts::Display::xwayland : SessionFacts::Display::x11;
    return QGuiApplication::platformName().startsWith(u"wayland") ? SessionFacts::Display::wayland
                                                                  : SessionFacts::Display::none;
}

QCoro::Task<SessionFacts> DesktopSessionProbe::examine(QString scheme)
{
    const std::stop_token token = m_tasks.token();
    SessionFacts facts = environmentFacts();
    facts.display = display();
    // Everybody is asked at once.
    const SchemeProbe::Options options = schemeOptions();
    const QDBusConnection bus = QDBusConnection::sessionBus();
    auto schemeQuestion = SchemeProbe::examine(scheme, options);
    auto trayQuestion = StatusNotifierWatcher::presence(bus);
    std::optional<QCoro::Task<AtSpiAccessibilityTree::Examination>> accessibilityQuestion;
    if (m_mechanisms.accessibilityTree && facts.hasSessionBus)
        accessibilityQuestion.emplace(m_mechanisms.accessibilityTree->examine());
    std::optional<QCoro::Task<X11Probe::Clipboard>> clipboardQuestion;
    if (m_x11)
        clipboardQuestion.emplace(m_x11->clipboard());

    facts.scheme = co_await schemeQuestion;
    const auto presence = co_await trayQuestion;
    AtSpiAccessibilityTree::Examination accessibility;
    if (accessibilityQuestion)
        accessibility = co_await *accessibilityQuestion;
    X11Probe::Clipboard clipboard;
    if (clipboardQuestion)
        clipboard = co_await *clipboardQuestion;
    if (token.stop_requested())
        co_return facts;

    facts.tray = trayOf(presence, m_mechanisms.xembedHost);
    facts.clipboard = clipboard.state;
    facts.clipboardOwner = clipboard.owner;
    facts.accessibility = accessibility.state;
    facts.accessiblePrograms = static_cast<int>(
        std::count_if(accessibility.processes.begin(), accessibility.processes.end(), isOtherProgram));
    if (!m_x11)
        co_return facts;
    m_x11->look(facts);
    for (const RunningApplication &program : m_x11->programs()) {
        const bool isMute = !accessibility.processes.contains(program.processIdentifier) &&
                            program.pasteConvention == PasteConvention::standard;
        if (isMute)
            facts.mutePrograms.append(program.localizedName.value_or(QStringLiteral("a program")));
    }
    facts.mutePrograms.removeDuplicates();
    co_return facts;
}

QCoro::Task<SessionFacts> DesktopSessionProbe::examineWithoutDisplay(QString scheme)
{
    SessionFacts facts = environmentFacts();
    const SchemeProbe::Options options = schemeOptions();
    facts.scheme = co_await SchemeProbe::examine(scheme, options);
    co_return facts;
}
