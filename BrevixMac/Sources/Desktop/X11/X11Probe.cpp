// SPDX-License-Identifier: GPL-3.0-or-later
#include "X11Probe.h"

#include "X11Keyboard.h"
#include "X11Windows.h"
#include "X11Workspace.h"

#include <QCoreApplication>
#include <QDeadlineTimer>

#include <xcb/xtest.h>

namespace {

using namespace std::chrono_literals;

constexpr auto ownerPatience = 500ms; // as long as a paste waits for it
constexpr auto pollInterval = 5ms;

bool hasKeySynthesis(X11Connection &connection)
{
    auto *xcb = connection.connection();
    const auto *extension = xcb_get_extension_data(xcb, &xcb_test_id);
    if (!connection.isValid() || !extension || !extension->present)
        return false;
    const auto cookie = xcb_test_get_version(xcb, XCB_TEST_MAJOR_VERSION, XCB_TEST_MINOR_VERSION);
    return XcbPointer<xcb_test_get_version_reply_t>(xcb_test_get_version_reply(xcb, cookie, nullptr)) !=
           nullptr;
}

xcb_window_t selectionOwner(X11Connection &connection, xcb_atom_t selection)
{
    auto *xcb = connection.connection();
    const XcbPointer<xcb_get_selection_owner_reply_t> owner(
        xcb_get_selection_owner_reply(xcb, xcb_get_selection_owner(xcb, selection), nullptr));
    return owner ? owner->owner : xcb_window_t(XCB_WINDOW_NONE);
}

bool isAnswer(const xcb_generic_event_t &event, xcb_window_t window, xcb_atom_t selection)
{
    if ((event.response_type & 0x7f) != XCB_SELECTION_NOTIFY)
        return false;
    const auto &notify = reinterpret_cast<const xcb_selection_notify_event_t &>(event);
    return notify.requestor == window && notify.selection == selection;
}

} // namespace

X11Probe::X11Probe(X11Connection &connection, X11Workspace &workspace)
    : m_connection(connection)
    , m_workspace(workspace)
{
}

void X11Probe::look(SessionFacts &facts) const
{
    if (!m_connection.isValid())
        return;
    facts.hasWindowManager = X11Windows(m_connection).windowManagerWindow() != XCB_WINDOW_NONE;
    facts.hasKeySynthesis = hasKeySynthesis(m_connection);
    facts.hasPasteKeys = !X11Keyboard(m_connection).pasteChord(PasteConvention::standard).isEmpty();
}

QList<RunningApplication> X11Probe::programs() const
{
    QList<RunningApplication> others;
    for (const RunningApplication &application : m_workspace.applicationsOnScreen()) {
        if (application.processIdentifier != QCoreApplication::applicationPid())
            others.append(application);
    }
    return others;
}

QCoro::Task<X11Probe::Clipboard> X11Probe::clipboard()
{
    using State = SessionFacts::Clipboard;
    const std::stop_token token = m_tasks.token();
    if (!m_connection.isValid())
        co_return Clipboard{};
    const xcb_atom_t selection = m_connection.atom(QByteArrayLiteral("CLIPBOARD"));
    const xcb_window_t owner = selectionOwner(m_connection, selection);
    if (owner == XCB_WINDOW_NONE)
        co_return Clipboard{.state = State::empty, .owner = {}};
    if (m_connection.isOwnResource(owner))
        co_return Clipboard{.state = State::answering, .owner = {}};

    const auto application = m_workspace.application(X11Windows(m_connection).processIdentifier(owner));
    Clipboard result{.state = State::silent,
                     .owner = application ? application->localizedName.value_or(QString()) : QString()};
    X11Connection asker(m_connection.displayName());
    const xcb_window_t window = asker.helperWindow();
    const auto hasAnswered = std::make_shared<bool>(false);
    const auto events = asker.addEventHandler([=](const xcb_generic_event_t &event) {
        *hasAnswered = *hasAnswered || isAnswer(event, window, selection);
    });
    const xcb_atom_t property = asker.atom(QByteArrayLiteral("_BREVIX_OFFERED_TYPES"));
    const xcb_timestamp_t time = asker.serverTime();
    xcb_convert_selection(asker.connection(), window, selection, asker.atom(QByteArrayLiteral("TARGETS")),
                          property, time);
    // There are owners that end, and take the content with them, when they answer a window that is gone. So
    // one that has not answered finds it in place, also after the end of this process.
    xcb_set_close_down_mode(asker.connection(), XCB_CLOSE_DOWN_RETAIN_TEMPORARY);
    asker.flush();
    const QDeadlineTimer patience(ownerPatience);
    while (!*hasAnswered && !patience.hasExpired()) {
        const bool hasSlept = co_await sleepFor(pollInterval, token);
        if (!hasSlept)
            co_return result;
    }
    if (*hasAnswered)
        xcb_set_close_down_mode(asker.connection(), XCB_CLOSE_DOWN_DESTROY_ALL);
    asker.flush();
    if (*hasAnswered)
        result.state = State::answering;
    co_return result;
}
