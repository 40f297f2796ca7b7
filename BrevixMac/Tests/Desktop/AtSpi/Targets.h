// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QJsonObject>
#include <QProcess>
#include <QString>
#include <QStringList>
#include <QTemporaryDir>

#include <optional>

/// A real program that a test writes into. Ends with the object.
class Target
{
public:
    Target(const QString &program, const QStringList &arguments);
    ~Target();

    Target(const Target &) = delete;
    Target &operator=(const Target &) = delete;

    bool hasStarted() const { return m_process.state() == QProcess::Running; }
    qint64 pid() const { return m_process.processId(); }
    void stop();
    bool isStopped() const;
    void resume();
    void kill();

    /// What an independent program reads from the target's text field: role, text, caret, isFocused. Waits
    /// until there is one.
    QJsonObject witness(const QString &role = {}) const;
    QString text(const QString &role = {}) const;

private:
    QProcess m_process;
};

/// Brings the window of @p pid to the front by the window manager.
void bringToFront(qint64 pid);

/// Whether @p program is installed; a test of one that is not skips by its name.
bool isInstalled(const QString &program);
