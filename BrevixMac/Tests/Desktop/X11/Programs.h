// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Support/Waiting.h"

#include <QProcess>
#include <QStandardPaths>
#include <QStringList>

#include <gtest/gtest.h>

#include <csignal>
#include <memory>

/// Another program on the test's desktop; ended with the object.
class Program
{
public:
    explicit Program(const QString &name, const QStringList &arguments = {})
    {
        m_process.setStandardOutputFile(QProcess::nullDevice());
        m_process.setStandardErrorFile(QProcess::nullDevice());
        m_process.start(name, arguments);
        m_process.waitForStarted();
    }

    ~Program() { end(); }

    Program(const Program &) = delete;
    Program &operator=(const Program &) = delete;

    qint64 pid() const { return m_process.processId(); }

    /// Kills it and waits until it is gone.
    void end()
    {
        if (m_process.state() == QProcess::NotRunning)
            return;
        m_process.kill();
        m_process.waitForFinished();
    }

    void stop() { ::kill(pid_t(pid()), SIGSTOP); }
    void resume() { ::kill(pid_t(pid()), SIGCONT); }

private:
    QProcess m_process;
};

inline bool isInstalled(const QString &program)
{
    return !QStandardPaths::findExecutable(program).isEmpty();
}

#define SKIP_WITHOUT(program)                                                                                \
    if (!isInstalled(program))                                                                               \
    GTEST_SKIP() << qPrintable(program) << " is not installed"

/// Runs a short command to its end.
inline void run(const QString &command, const QStringList &arguments)
{
    QProcess process;
    process.start(command, arguments);
    EXPECT_TRUE(process.waitForFinished() && process.exitCode() == 0)
        << qPrintable(command) << " failed: " << process.readAllStandardError().constData();
}

/// The X input of somebody at the keyboard and the mouse.
inline void xdotool(const QStringList &arguments)
{
    run(QStringLiteral("xdotool"), arguments);
}

/// Lets everything that is under way arrive: for checks that something does not happen.
inline void settle(std::chrono::milliseconds duration = std::chrono::milliseconds(150))
{
    waitUntil([] { return false; }, duration);
}
