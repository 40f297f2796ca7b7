// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QFlags>
#include <QObject>
#include <QPoint>

#include <functional>
#include <memory>

/// An input event seen in the session.
struct MonitoredEvent
{
    enum Type { pointerPress = 1, pointerRelease = 2, keyRelease = 4 };
    Q_DECLARE_FLAGS(Types, Type)

    Type type = pointerPress;
    QPoint position; ///< pointer position on the desktop in Qt's logical pixels
};
Q_DECLARE_OPERATORS_FOR_FLAGS(MonitoredEvent::Types)

/// Watches input that goes to other applications. Main thread only.
class EventMonitor : public QObject
{
    Q_OBJECT

public:
    /// Ends its subscription when destroyed. May outlive the monitor.
    class Subscription
    {
    public:
        explicit Subscription(std::function<void()> cancel)
            : m_cancel(std::move(cancel))
        {
        }
        ~Subscription() { m_cancel(); }
        Subscription(const Subscription &) = delete;
        Subscription &operator=(const Subscription &) = delete;

    private:
        std::function<void()> m_cancel;
    };

    using QObject::QObject;

    /// Calls @p handler from the event loop for each event of @p types that does not go to one of our own
    /// windows (left and right buttons, any key). Never changes or holds back the event.
    [[nodiscard]] virtual std::unique_ptr<Subscription>
    addGlobalMonitor(MonitoredEvent::Types types, std::function<void(const MonitoredEvent &)> handler) = 0;
};
