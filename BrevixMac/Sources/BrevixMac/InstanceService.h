// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QObject>

/// The one running instance of a session, as other processes reach it over D-Bus. Main thread only.
class InstanceService : public QObject
{
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "app.brevix.Brevix")

public:
    /// What asking the running instance came to.
    enum class Answer { done, notRunning, noBus, failed };

    using QObject::QObject;

    /// Makes this process the session's instance. False when another one is; true without a session bus,
    /// where nobody can tell.
    bool claim();

    /// Asks the running instance for @p method, within two seconds. Blocks: for a process that does nothing
    /// else.
    static Answer ask(const QString &method);

public Q_SLOTS:
    // Reached over D-Bus by these names.
    void Toggle() { Q_EMIT toggleRequested(); }
    void Show() { Q_EMIT showRequested(); }

Q_SIGNALS:
    void toggleRequested();
    void showRequested();
};
