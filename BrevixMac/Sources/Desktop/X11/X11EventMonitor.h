// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Desktop/EventMonitor.h"
#include "Desktop/X11/X11Connection.h"
#include "Desktop/X11/X11Windows.h"

#include <memory>
#include <set>
#include <vector>

/// Input to other applications, from the X server's raw events: these come also while a menu holds the
/// keyboard or the pointer. They are asked for only as long as somebody listens, so an idle session does not
/// wake this process.
class X11EventMonitor final : public EventMonitor
{
    Q_OBJECT

public:
    /// @p connection must outlive this object.
    explicit X11EventMonitor(X11Connection &connection);
    ~X11EventMonitor() override;

    [[nodiscard]] std::unique_ptr<Subscription>
    addGlobalMonitor(MonitoredEvent::Types types,
                     std::function<void(const MonitoredEvent &)> handler) override;

private:
    struct Watcher
    {
        MonitoredEvent::Types types;
        std::function<void(const MonitoredEvent &)> handler;
    };

    void onEvent(const xcb_generic_event_t &event);
    void onButton(MonitoredEvent::Type type, quint32 button);
    void deliver(MonitoredEvent::Type type);
    void removeWatcher(const std::shared_ptr<Watcher> &watcher);
    void selectEvents();
    bool isPointerOverOwnWindow();
    QPoint pointerPosition();

    X11Connection &m_connection;
    X11Windows m_windows;
    quint8 m_opcode = 0; ///< of the input extension; 0 when the server has none
    quint32 m_selected = 0;
    std::vector<std::shared_ptr<Watcher>> m_watchers;
    std::set<quint32> m_ownButtons; ///< pressed over our own windows and not yet released
    std::unique_ptr<X11Connection::Subscription> m_events;
};
