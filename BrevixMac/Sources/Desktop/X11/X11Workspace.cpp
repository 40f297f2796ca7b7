// SPDX-License-Identifier: GPL-3.0-or-later
#include "X11Workspace.h"

#include "Desktop/Freedesktop/Processes.h"

#include <QDeadlineTimer>
#include <QGuiApplication>
#include <QSet>
#include <QWindow>

#include <algorithm>
#include <array>

namespace {

using namespace std::chrono_literals;

constexpr auto activationDeadline = 500ms;
constexpr std::chrono::milliseconds userTimeValidity = 5s;
constexpr xcb_window_t noWindow = XCB_WINDOW_NONE;

// EWMH: who asks for the activation. A direct wish of the user gets past focus-stealing prevention.
constexpr quint32 sourceUserAction = 2;

// xterm and its kin paste the PRIMARY selection with Shift-Insert and have no chord for the clipboard.
const QSet<QString> primarySelectionClasses{
    QStringLiteral("xterm"), QStringLiteral("uxterm"), QStringLiteral("koi8rxterm"),  QStringLiteral("urxvt"),
    QStringLiteral("rxvt"),  QStringLiteral("st"),     QStringLiteral("st-256color"), QStringLiteral("eterm"),
    QStringLiteral("aterm"), QStringLiteral("mrxvt"),  QStringLiteral("mlterm")};

// Terminals that are often built by hand and then have no desktop entry.
const QSet<QString> terminalClasses{QStringLiteral("kitty"), QStringLiteral("alacritty"),
                                    QStringLiteral("org.wezfurlong.wezterm"), QStringLiteral("ghostty")};

PasteConvention pasteConvention(const X11WindowFacts &facts, const std::optional<DesktopEntry> &entry)
{
    const QString className = facts.className.toLower();
    if (primarySelectionClasses.contains(className))
        return PasteConvention::primarySelection;
    if ((entry && entry->isTerminalEmulator()) || terminalClasses.contains(className))
        return PasteConvention::terminal;
    return PasteConvention::standard;
}

QString capitalized(const QString &name)
{
    return name.isEmpty() ? name : name.first(1).toUpper() + name.sliced(1);
}

std::optional<QString> nonEmpty(const QString &text)
{
    return text.isEmpty() ? std::nullopt : std::optional(text);
}

// Adds @p added to the events of @p window that are told to us and takes @p removed from them. Others of this
// process may watch the same window over the same connection: theirs stay. False when the window is gone.
bool changeEvents(xcb_connection_t *connection, xcb_window_t window, quint32 added, quint32 removed)
{
    xcb_generic_error_t *rawError = nullptr;
    const XcbPointer<xcb_get_window_attributes_reply_t> present(xcb_get_window_attributes_reply(
        connection, xcb_get_window_attributes(connection, window), &rawError));
    const XcbPointer<xcb_generic_error_t> error(rawError);
    if (!present)
        return false;
    const quint32 wanted = (present->your_event_mask | added) & ~removed;
    xcb_change_window_attributes(connection, window, XCB_CW_EVENT_MASK, &wanted);
    return true;
}

bool selectEvents(xcb_connection_t *connection, xcb_window_t window, quint32 mask)
{
    return changeEvents(connection, window, mask, 0);
}

/// Asks the window manager for something, as EWMH says: @p data is what @p atom's message takes.
void ask(xcb_connection_t *connection, xcb_window_t root, xcb_atom_t atom, xcb_window_t window,
         const std::array<uint32_t, 3> &data)
{
    xcb_client_message_event_t message{};
    message.response_type = XCB_CLIENT_MESSAGE;
    message.format = 32;
    message.window = window;
    message.type = atom;
    std::copy(data.begin(), data.end(), message.data.data32);
    xcb_send_event(connection, false, root,
                   XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY | XCB_EVENT_MASK_SUBSTRUCTURE_REDIRECT,
                   reinterpret_cast<const char *>(&message));
}

// For displays without a window manager. The window may not be viewable: that error says nothing new.
void takeFocus(xcb_connection_t *connection, xcb_window_t window)
{
    const quint32 above = XCB_STACK_MODE_ABOVE;
    const auto raised =
        xcb_configure_window_checked(connection, window, XCB_CONFIG_WINDOW_STACK_MODE, &above);
    const auto focused =
        xcb_set_input_focus_checked(connection, XCB_INPUT_FOCUS_POINTER_ROOT, window, XCB_CURRENT_TIME);
    xcb_discard_reply(connection, raised.sequence);
    xcb_discard_reply(connection, focused.sequence);
}

} // namespace

X11Workspace::X11Workspace(X11Connection &connection, QStringList entryFolders)
    : m_connection(connection)
    , m_windows(connection)
    , m_entries(std::move(entryFolders))
    , m_compositor(connection, QByteArrayLiteral("_NET_WM_CM_S"))
{
    if (!m_connection.isValid())
        return;
    m_events = m_connection.addEventHandler([this](const xcb_generic_event_t &event) { onEvent(event); });
    selectEvents(m_connection.connection(), m_connection.root(),
                 XCB_EVENT_MASK_PROPERTY_CHANGE | XCB_EVENT_MASK_FOCUS_CHANGE);
    findWindowManager();
    updateFront();
}

X11Workspace::~X11Workspace() = default;

void X11Workspace::onEvent(const xcb_generic_event_t &event)
{
    switch (eventKind(event)) {
    case XCB_PROPERTY_NOTIFY: {
        const auto &notify = reinterpret_cast<const xcb_property_notify_event_t &>(event);
        if (notify.window != m_connection.root())
            break;
        if (notify.atom == m_connection.atom(QByteArrayLiteral("_NET_SUPPORTING_WM_CHECK"))) {
            findWindowManager();
            updateFront();
        } else if (notify.atom == m_connection.atom(QByteArrayLiteral("_NET_ACTIVE_WINDOW"))) {
            updateFront();
        }
        break;
    }
    case XCB_DESTROY_NOTIFY:
        onDestroyed(reinterpret_cast<const xcb_destroy_notify_event_t &>(event).window);
        break;
    case XCB_FOCUS_IN:
    case XCB_FOCUS_OUT:
        if (m_managerWindow == noWindow)
            updateFront();
        break;
    }
}

void X11Workspace::onDestroyed(xcb_window_t window)
{
    if (window == m_managerWindow)
        findWindowManager();
    else if (window != m_frontWindow)
        return;
    updateFront();
}

void X11Workspace::findWindowManager()
{
    m_managerWindow = m_windows.windowManagerWindow();
    if (m_managerWindow != noWindow)
        selectEvents(m_connection.connection(), m_managerWindow, XCB_EVENT_MASK_STRUCTURE_NOTIFY);
}

xcb_window_t X11Workspace::readFront() const
{
    return m_managerWindow != noWindow ? m_windows.activeWindow() : m_windows.focusedTopLevel();
}

void X11Workspace::updateFront()
{
    auto *xcb = m_connection.connection();
    xcb_window_t window = readFront();
    if (m_managerWindow == noWindow)
        watchFocusOf(window);
    // Window managers may go on naming a window that is closed. Its number can come again with the next
    // program, so its end must be noticed.
    if (window != noWindow && !selectEvents(xcb, window, XCB_EVENT_MASK_STRUCTURE_NOTIFY))
        window = noWindow;
    if (window == m_frontWindow)
        return;
    if (m_frontWindow != noWindow && m_frontWindow != m_managerWindow)
        changeEvents(xcb, m_frontWindow, 0, XCB_EVENT_MASK_STRUCTURE_NOTIFY);
    m_frontWindow = window;
    m_front.reset();
    m_untilFrontChanges.restart();
    if (window != noWindow)
        Q_EMIT didActivateApplication();
}

// Nobody announces a change of the bare input focus but the windows that lose it.
void X11Workspace::watchFocusOf(xcb_window_t window)
{
    if (window == m_focusWatched || window == noWindow)
        return;
    m_focusWatched = window;
    selectEvents(m_connection.connection(), window, XCB_EVENT_MASK_FOCUS_CHANGE);
}

std::optional<RunningApplication> X11Workspace::frontmostApplication() const
{
    if (!m_connection.isValid())
        return std::nullopt;
    // With the pointer deciding on the focus there is nothing to follow, so ask.
    const xcb_window_t window = m_managerWindow != noWindow ? m_frontWindow : readFront();
    if (m_front && m_front->window == window)
        return m_front;
    auto front = describe(window);
    if (front && window == m_frontWindow && m_entries.isReady())
        m_front = front;
    return front;
}

std::optional<RunningApplication> X11Workspace::application(qint64 processIdentifier) const
{
    auto front = frontmostApplication();
    if (front && front->processIdentifier == processIdentifier)
        return front;
    if (!Processes::isRunning(processIdentifier, 0))
        return std::nullopt;
    const xcb_window_t window =
        m_connection.isValid() ? m_windows.topmostWindow(processIdentifier) : noWindow;
    if (auto shown = describe(window))
        return shown;
    X11WindowFacts windowless;
    windowless.processIdentifier = processIdentifier;
    return describe(windowless);
}

std::optional<RunningApplication> X11Workspace::describe(xcb_window_t window) const
{
    const auto facts = m_windows.facts(window);
    return facts && facts->processIdentifier > 0 ? std::optional(describe(*facts)) : std::nullopt;
}

RunningApplication X11Workspace::describe(const X11WindowFacts &facts) const
{
    const QString program = Processes::programName(facts.processIdentifier);
    const auto entry = m_entries.find({.desktopFileHint = facts.desktopFileHint,
                                       .windowInstance = facts.instance,
                                       .windowClass = facts.className,
                                       .program = program});
    const QString fallback = facts.className.isEmpty() ? program : facts.className;
    return {.processIdentifier = facts.processIdentifier,
            .bundleIdentifier = entry ? std::optional(entry->id) : nonEmpty(fallback),
            .localizedName = entry ? std::optional(entry->name) : nonEmpty(capitalized(fallback)),
            .pasteConvention = pasteConvention(facts, entry),
            .window = facts.window,
            .processStartTime = Processes::startTime(facts.processIdentifier)};
}

QList<RunningApplication> X11Workspace::applicationsOnScreen() const
{
    QList<RunningApplication> applications;
    QSet<qint64> known;
    if (!m_connection.isValid())
        return applications;
    for (const xcb_window_t window : m_windows.stackingList()) {
        const auto application = m_windows.isForWork(window) ? describe(window) : std::nullopt;
        if (!application || known.contains(application->processIdentifier))
            continue;
        known.insert(application->processIdentifier);
        applications.append(*application);
    }
    return applications;
}

bool X11Workspace::isInFront(const RunningApplication &application)
{
    if (!m_connection.isValid() || isTerminated(application))
        return false;
    updateFront(); // the notification may still be under way
    const auto front = frontmostApplication();
    const bool isTarget = front && front->processIdentifier == application.processIdentifier &&
                          (application.window == 0 || front->window == application.window);
    return isTarget && (m_managerWindow == noWindow || m_windows.hasInputFocus(m_frontWindow));
}

bool X11Workspace::isTerminated(const RunningApplication &application) const
{
    return !Processes::isRunning(application.processIdentifier, application.processStartTime);
}

bool X11Workspace::isInFront(xcb_window_t window) const
{
    // Window managers hand the focus to a window's modal dialog in its place.
    return m_frontWindow != noWindow &&
           (m_frontWindow == window || m_windows.transientFor(m_frontWindow) == window);
}

std::optional<xcb_window_t> X11Workspace::windowToActivate(const RunningApplication &application) const
{
    if (!m_connection.isValid())
        return std::nullopt;
    const auto captured = xcb_window_t(application.window);
    // The number of a closed window may by now be another application's.
    if (m_windows.exists(captured) && m_windows.processIdentifier(captured) == application.processIdentifier)
        return captured;
    if (isTerminated(application))
        return std::nullopt;
    if (m_frontWindow != noWindow &&
        m_windows.processIdentifier(m_frontWindow) == application.processIdentifier)
        return m_frontWindow;
    const xcb_window_t other = m_windows.topmostWindow(application.processIdentifier);
    return other != noWindow ? std::optional(other) : std::nullopt;
}

void X11Workspace::requestActivation(xcb_window_t window)
{
    auto *xcb = m_connection.connection();
    if (m_managerWindow == noWindow)
        takeFocus(xcb, window);
    else
        ask(xcb, m_connection.root(), m_connection.atom(QByteArrayLiteral("_NET_ACTIVE_WINDOW")), window,
            {sourceUserAction, m_connection.serverTime(), m_frontWindow});
    m_connection.flush();
}

QCoro::Task<bool> X11Workspace::activate(RunningApplication application)
{
    const std::stop_token stopped = m_tasks.token();
    const QDeadlineTimer deadline(activationDeadline);
    std::optional<xcb_window_t> requested;
    while (true) {
        if (m_connection.isValid())
            updateFront(); // the notification may still be under way
        const auto window = windowToActivate(application);
        if (!window)
            co_return false;
        if (isInFront(*window))
            co_return true;
        if (deadline.hasExpired())
            co_return false;
        if (requested != window) {
            requestActivation(*window);
            requested = window;
            continue; // without a window manager it is in front already
        }
        const std::stop_token frontChanged = m_untilFrontChanges.token();
        const auto remaining = std::chrono::milliseconds(deadline.remainingTime());
        co_await sleepFor(remaining, frontChanged);
        if (stopped.stop_requested())
            co_return false;
    }
}

void X11Workspace::noteUserAction(xcb_timestamp_t time)
{
    m_userTime = time;
    m_sinceUserAction.start();
}

xcb_timestamp_t X11Workspace::userTime() const
{
    const bool isFresh =
        m_sinceUserAction.isValid() && !m_sinceUserAction.hasExpired(userTimeValidity.count());
    return isFresh ? m_userTime : m_connection.serverTime();
}

void X11Workspace::activateOwnWindow(QWindow *window)
{
    const auto *x11 = qGuiApp->nativeInterface<QNativeInterface::QX11Application>();
    if (!window || !x11 || !m_connection.isValid())
        return;
    // Over Qt's connection, so that the wish cannot overtake the window's own appearance.
    auto *xcb = x11->connection();
    const auto identifier = xcb_window_t(window->winId());
    if (m_managerWindow == noWindow)
        takeFocus(xcb, identifier);
    else
        ask(xcb, m_connection.root(), m_connection.atom(QByteArrayLiteral("_NET_ACTIVE_WINDOW")), identifier,
            {sourceUserAction, userTime(), m_frontWindow});
    xcb_flush(xcb);
}

void X11Workspace::joinAllDesktops(QWindow *window)
{
    const auto *x11 = qGuiApp->nativeInterface<QNativeInterface::QX11Application>();
    if (!window || !x11 || !m_connection.isValid())
        return;
    // Over Qt's connection, behind the window's own appearance. A property that is set before would be lost
    // with a disappearance that the window manager has not dealt with yet.
    constexpr uint32_t everyDesktop = 0xFFFFFFFF;
    ask(x11->connection(), m_connection.root(), m_connection.atom(QByteArrayLiteral("_NET_WM_DESKTOP")),
        xcb_window_t(window->winId()), {everyDesktop, sourceUserAction, 0});
    xcb_flush(x11->connection());
}
