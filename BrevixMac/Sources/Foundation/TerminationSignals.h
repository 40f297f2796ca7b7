// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QObject>

#include <memory>

class QSocketNotifier;

/// Delivers SIGTERM, SIGINT and SIGHUP in the event loop, so that the process ends in good order. Main thread
/// only, one at a time, made before other threads start. Uses signalfd(2).
class TerminationSignals : public QObject
{
    Q_OBJECT

public:
    /// Holds the signals back until there is an object to deliver them. To be called before any thread
    /// starts: a thread that does not hold them back would end the process.
    static void holdBack();

    /// In a child process, before it becomes another program: that one gets its signals, these and all
    /// others. A program inherits what is held back, and could not be ended then.
    static void letThrough();

    TerminationSignals();
    ~TerminationSignals() override;

Q_SIGNALS:
    void received() const;

private:
    int m_descriptor = -1;
    std::unique_ptr<QSocketNotifier> m_notifier;
};
