// SPDX-License-Identifier: GPL-3.0-or-later
#include "X11Windows.h"

#include "X11Connection.h"

#include "Desktop/Freedesktop/Processes.h"

#include <QSysInfo>

#include <xcb/res.h>

#include <algorithm>
#include <cstring>

namespace {

constexpr quint32 longestProperty = 1024 * 1024; // in 32-bit words
constexpr int deepestNesting = 64;
constexpr xcb_window_t noWindow = XCB_WINDOW_NONE;

xcb_get_property_cookie_t askProperty(xcb_connection_t *connection, xcb_window_t window, xcb_atom_t name,
                                      xcb_atom_t type)
{
    return xcb_get_property(connection, false, window, name, type, 0, longestProperty);
}

QByteArray takeProperty(xcb_connection_t *connection, xcb_get_property_cookie_t cookie)
{
    xcb_generic_error_t *rawError = nullptr;
    const XcbPointer<xcb_get_property_reply_t> reply(xcb_get_property_reply(connection, cookie, &rawError));
    const XcbPointer<xcb_generic_error_t> error(rawError);
    if (!reply)
        return {};
    return {static_cast<const char *>(xcb_get_property_value(reply.get())),
            xcb_get_property_value_length(reply.get())};
}

std::vector<quint32> numbers(const QByteArray &data)
{
    std::vector<quint32> values(size_t(data.size()) / sizeof(quint32));
    if (!values.empty())
        std::memcpy(values.data(), data.constData(), values.size() * sizeof(quint32));
    return values;
}

quint32 firstNumber(const QByteArray &data)
{
    const auto values = numbers(data);
    return values.empty() ? 0 : values.front();
}

xcb_res_query_client_ids_cookie_t askClient(xcb_connection_t *connection, xcb_window_t window)
{
    const xcb_res_client_id_spec_t wanted{.client = window, .mask = XCB_RES_CLIENT_ID_MASK_LOCAL_CLIENT_PID};
    return xcb_res_query_client_ids(connection, 1, &wanted);
}

qint64 takeClient(xcb_connection_t *connection, xcb_res_query_client_ids_cookie_t cookie)
{
    xcb_generic_error_t *rawError = nullptr;
    const XcbPointer<xcb_res_query_client_ids_reply_t> reply(
        xcb_res_query_client_ids_reply(connection, cookie, &rawError));
    const XcbPointer<xcb_generic_error_t> error(rawError);
    if (!reply)
        return 0;
    for (auto values = xcb_res_query_client_ids_ids_iterator(reply.get()); values.rem > 0;
         xcb_res_client_id_value_next(&values)) {
        if (values.data->spec.mask == XCB_RES_CLIENT_ID_MASK_LOCAL_CLIENT_PID &&
            xcb_res_client_id_value_value_length(values.data) > 0)
            return xcb_res_client_id_value_value(values.data)[0];
    }
    return 0;
}

// The server knows who has really connected: that holds for sandboxed programs too, which name themselves by
// a number that means nothing out here. A program that connects and then forks leaves a dead parent there;
// then its own word counts, unless it runs on another machine.
qint64 believableProcess(qint64 connected, qint64 claimed, bool isLocal)
{
    if (connected == claimed || (connected > 0 && Processes::isRunning(connected, 0)))
        return connected;
    return isLocal && Processes::isRunning(claimed, 0) ? claimed : 0;
}

} // namespace

X11Windows::X11Windows(X11Connection &connection)
    : m_connection(connection)
    , m_hostName(QSysInfo::machineHostName())
{
    m_connection.internAtoms({"_NET_ACTIVE_WINDOW", "_NET_SUPPORTING_WM_CHECK", "_NET_CLIENT_LIST_STACKING",
                              "_NET_WM_PID", "WM_CLIENT_MACHINE", "_GTK_APPLICATION_ID",
                              "_KDE_NET_WM_DESKTOP_FILE"});
    const auto *extension = xcb_get_extension_data(m_connection.connection(), &xcb_res_id);
    if (!extension || !extension->present)
        return;
    const auto cookie = xcb_res_query_version(m_connection.connection(), 1, 2);
    const XcbPointer<xcb_res_query_version_reply_t> version(
        xcb_res_query_version_reply(m_connection.connection(), cookie, nullptr));
    m_hasClientIDs = version && (version->server_major > 1 || version->server_minor >= 2);
}

QByteArray X11Windows::property(xcb_window_t window, const QByteArray &name, xcb_atom_t type)
{
    auto *xcb = m_connection.connection();
    return takeProperty(xcb, askProperty(xcb, window, m_connection.atom(name), type));
}

xcb_window_t X11Windows::windowProperty(xcb_window_t window, const QByteArray &name)
{
    return firstNumber(property(window, name, XCB_ATOM_WINDOW));
}

std::vector<xcb_window_t> X11Windows::windowListProperty(xcb_window_t window, const QByteArray &name)
{
    return numbers(property(window, name, XCB_ATOM_WINDOW));
}

xcb_window_t X11Windows::windowManagerWindow()
{
    const QByteArray name = QByteArrayLiteral("_NET_SUPPORTING_WM_CHECK");
    const xcb_window_t window = windowProperty(m_connection.root(), name);
    // A window manager that was killed leaves the root's property behind, but not its window.
    return window != noWindow && windowProperty(window, name) == window ? window : noWindow;
}

xcb_window_t X11Windows::activeWindow()
{
    return windowProperty(m_connection.root(), QByteArrayLiteral("_NET_ACTIVE_WINDOW"));
}

std::vector<xcb_window_t> X11Windows::windowsUnderPointer()
{
    std::vector<xcb_window_t> windows;
    auto *xcb = m_connection.connection();
    xcb_window_t window = m_connection.root();
    for (int depth = 0; depth < deepestNesting && window != noWindow; ++depth) {
        xcb_generic_error_t *rawError = nullptr;
        const XcbPointer<xcb_query_pointer_reply_t> reply(
            xcb_query_pointer_reply(xcb, xcb_query_pointer(xcb, window), &rawError));
        const XcbPointer<xcb_generic_error_t> error(rawError);
        window = reply ? reply->child : noWindow;
        if (window != noWindow)
            windows.push_back(window);
    }
    return windows;
}

xcb_window_t X11Windows::focusedTopLevel()
{
    auto *xcb = m_connection.connection();
    const XcbPointer<xcb_get_input_focus_reply_t> focus(
        xcb_get_input_focus_reply(xcb, xcb_get_input_focus(xcb), nullptr));
    xcb_window_t window = focus ? focus->focus : xcb_window_t(noWindow);
    if (window == XCB_INPUT_FOCUS_POINTER_ROOT || window == m_connection.root()) {
        const auto underPointer = windowsUnderPointer();
        return underPointer.empty() ? noWindow : underPointer.front();
    }
    for (int depth = 0; depth < deepestNesting && window != noWindow; ++depth) {
        xcb_generic_error_t *rawError = nullptr;
        const XcbPointer<xcb_query_tree_reply_t> tree(
            xcb_query_tree_reply(xcb, xcb_query_tree(xcb, window), &rawError));
        const XcbPointer<xcb_generic_error_t> error(rawError);
        if (!tree)
            return noWindow;
        if (tree->parent == m_connection.root())
            return window;
        window = tree->parent;
    }
    return noWindow;
}

bool X11Windows::hasInputFocus(xcb_window_t window)
{
    auto *xcb = m_connection.connection();
    const XcbPointer<xcb_get_input_focus_reply_t> focus(
        xcb_get_input_focus_reply(xcb, xcb_get_input_focus(xcb), nullptr));
    if (!focus)
        return false;
    xcb_window_t each = focus->focus;
    for (int depth = 0; depth < deepestNesting && each > XCB_INPUT_FOCUS_POINTER_ROOT; ++depth) {
        if (each == window)
            return true;
        xcb_generic_error_t *rawError = nullptr;
        const XcbPointer<xcb_query_tree_reply_t> tree(
            xcb_query_tree_reply(xcb, xcb_query_tree(xcb, each), &rawError));
        const XcbPointer<xcb_generic_error_t> error(rawError);
        each = tree ? tree->parent : xcb_window_t(noWindow);
    }
    // Some programs keep the focus in a window of their own that nobody manages.
    const auto managed = stackingList();
    return m_connection.isSameClient(focus->focus, window) &&
           std::find(managed.begin(), managed.end(), focus->focus) == managed.end();
}

std::vector<xcb_window_t> X11Windows::children(xcb_window_t window)
{
    auto *xcb = m_connection.connection();
    const XcbPointer<xcb_query_tree_reply_t> tree(
        xcb_query_tree_reply(xcb, xcb_query_tree(xcb, window), nullptr));
    if (!tree)
        return {};
    const xcb_window_t *first = xcb_query_tree_children(tree.get());
    return {first, first + xcb_query_tree_children_length(tree.get())};
}

std::vector<xcb_window_t> X11Windows::stackingList()
{
    if (windowManagerWindow() != noWindow)
        return windowListProperty(m_connection.root(), QByteArrayLiteral("_NET_CLIENT_LIST_STACKING"));
    std::vector<xcb_window_t> clients;
    for (const xcb_window_t window : children(m_connection.root())) {
        if (mapState(window) == XCB_MAP_STATE_VIEWABLE &&
            !property(window, QByteArrayLiteral("WM_CLASS"), XCB_ATOM_STRING).isEmpty())
            clients.push_back(window);
    }
    return clients;
}

bool X11Windows::isForWork(xcb_window_t window)
{
    const QByteArray types = property(window, QByteArrayLiteral("_NET_WM_WINDOW_TYPE"), XCB_ATOM_ATOM);
    const auto *atoms = reinterpret_cast<const xcb_atom_t *>(types.constData());
    const auto *end = atoms + types.size() / qsizetype(sizeof(xcb_atom_t));
    const QList<xcb_atom_t> others{m_connection.atom(QByteArrayLiteral("_NET_WM_WINDOW_TYPE_DOCK")),
                                   m_connection.atom(QByteArrayLiteral("_NET_WM_WINDOW_TYPE_DESKTOP"))};
    return std::none_of(atoms, end, [&](xcb_atom_t type) { return others.contains(type); });
}

std::optional<quint8> X11Windows::mapState(xcb_window_t window)
{
    if (window == noWindow)
        return std::nullopt;
    auto *xcb = m_connection.connection();
    xcb_generic_error_t *rawError = nullptr;
    const XcbPointer<xcb_get_window_attributes_reply_t> reply(
        xcb_get_window_attributes_reply(xcb, xcb_get_window_attributes(xcb, window), &rawError));
    const XcbPointer<xcb_generic_error_t> error(rawError);
    return reply ? std::optional(reply->map_state) : std::nullopt;
}

bool X11Windows::exists(xcb_window_t window)
{
    return mapState(window).has_value();
}

std::optional<X11WindowFacts> X11Windows::facts(xcb_window_t window)
{
    if (!exists(window))
        return std::nullopt;
    const QList<QByteArray> classNames =
        property(window, QByteArrayLiteral("WM_CLASS"), XCB_ATOM_STRING).split('\0');
    QByteArray hint = property(window, QByteArrayLiteral("_KDE_NET_WM_DESKTOP_FILE"), XCB_ATOM_ANY);
    if (hint.isEmpty())
        hint = property(window, QByteArrayLiteral("_GTK_APPLICATION_ID"), XCB_ATOM_ANY);
    return X11WindowFacts{.window = window,
                          .processIdentifier = processIdentifier(window),
                          .instance = QString::fromLatin1(classNames.value(0)),
                          .className = QString::fromLatin1(classNames.value(1)),
                          .desktopFileHint = QString::fromUtf8(hint)};
}

// All questions first, then all answers: one round trip for any number of windows.
std::vector<qint64> X11Windows::processIdentifiers(const std::vector<xcb_window_t> &windows)
{
    struct Question
    {
        xcb_get_property_cookie_t claimed;
        xcb_get_property_cookie_t machine;
        xcb_res_query_client_ids_cookie_t client;
    };
    auto *xcb = m_connection.connection();
    const xcb_atom_t pidAtom = m_connection.atom(QByteArrayLiteral("_NET_WM_PID"));
    const xcb_atom_t machineAtom = m_connection.atom(QByteArrayLiteral("WM_CLIENT_MACHINE"));
    std::vector<Question> questions;
    questions.reserve(windows.size());
    for (const xcb_window_t window : windows) {
        questions.push_back(
            {.claimed = askProperty(xcb, window, pidAtom, XCB_ATOM_CARDINAL),
             .machine = askProperty(xcb, window, machineAtom, XCB_ATOM_ANY),
             .client = m_hasClientIDs ? askClient(xcb, window) : xcb_res_query_client_ids_cookie_t{}});
    }
    std::vector<qint64> processes;
    for (const Question &question : questions) {
        const qint64 claimed = firstNumber(takeProperty(xcb, question.claimed));
        const QString machine = QString::fromLocal8Bit(takeProperty(xcb, question.machine));
        const qint64 connected = m_hasClientIDs ? takeClient(xcb, question.client) : 0;
        processes.push_back(
            believableProcess(connected, claimed, machine.isEmpty() || machine == m_hostName));
    }
    return processes;
}

qint64 X11Windows::processIdentifier(xcb_window_t window)
{
    return window == noWindow ? 0 : processIdentifiers({window}).front();
}

xcb_window_t X11Windows::topmostWindow(qint64 processIdentifier)
{
    const auto windows = stackingList();
    const auto processes = processIdentifiers(windows);
    for (size_t index = windows.size(); index-- > 0;) {
        if (processes[index] == processIdentifier)
            return windows[index];
    }
    return noWindow;
}

xcb_window_t X11Windows::transientFor(xcb_window_t window)
{
    return window == noWindow ? noWindow : windowProperty(window, QByteArrayLiteral("WM_TRANSIENT_FOR"));
}
