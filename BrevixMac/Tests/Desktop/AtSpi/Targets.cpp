// SPDX-License-Identifier: GPL-3.0-or-later
#include "Targets.h"

#include "Support/Waiting.h"

#include <QFile>
#include <QJsonDocument>
#include <QStandardPaths>

#include <csignal>

namespace {

// Runs a helper program while the event loop goes on.
QByteArray outputOf(const QString &program, const QStringList &arguments)
{
    QProcess process;
    process.start(program, arguments);
    const bool isDone =
        waitUntil([&] { return process.state() == QProcess::NotRunning; }, std::chrono::seconds(10));
    if (!isDone)
        process.kill();
    process.waitForFinished();
    return process.readAllStandardOutput();
}

} // namespace

Target::Target(const QString &program, const QStringList &arguments)
{
    // Without a memory of earlier runs: an editor that was ended offers to restore what it held.
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(QStringLiteral("GSETTINGS_BACKEND"), QStringLiteral("memory"));
    m_process.setProcessEnvironment(environment);
    m_process.setStandardOutputFile(QProcess::nullDevice());
    m_process.setStandardErrorFile(QProcess::nullDevice());
    m_process.start(program, arguments);
    m_process.waitForStarted();
}

Target::~Target()
{
    if (!hasStarted())
        return;
    resume();
    m_process.terminate();
    if (!m_process.waitForFinished(500)) {
        m_process.kill();
        m_process.waitForFinished();
    }
}

void Target::stop()
{
    ::kill(static_cast<pid_t>(pid()), SIGSTOP);
}

bool Target::isStopped() const
{
    QFile status(QStringLiteral("/proc/%1/stat").arg(pid()));
    return status.open(QIODevice::ReadOnly) && status.readAll().contains(") T ");
}

void Target::resume()
{
    ::kill(static_cast<pid_t>(pid()), SIGCONT);
}

void Target::kill()
{
    m_process.kill();
    m_process.waitForFinished();
}

QJsonObject Target::witness(const QString &role) const
{
    QStringList arguments{QStringLiteral(READ_FIELD_SCRIPT), QString::number(pid())};
    if (!role.isEmpty())
        arguments.append(role);
    QJsonObject field;
    waitUntil(
        [&] {
            field = QJsonDocument::fromJson(outputOf(QStringLiteral("/usr/bin/python3"), arguments)).object();
            return !field.isEmpty();
        },
        std::chrono::seconds(20));
    return field;
}

QString Target::text(const QString &role) const
{
    return witness(role).value(QStringLiteral("text")).toString();
}

void bringToFront(qint64 pid)
{
    const QString xdotool = QStringLiteral("xdotool");
    const QByteArray windows = outputOf(xdotool, {QStringLiteral("search"), QStringLiteral("--onlyvisible"),
                                                  QStringLiteral("--pid"), QString::number(pid)});
    const QString window = QString::fromLatin1(windows.trimmed().split('\n').constLast());
    outputOf(xdotool, {QStringLiteral("windowactivate"), QStringLiteral("--sync"), window});
}

bool isInstalled(const QString &program)
{
    return !QStandardPaths::findExecutable(program).isEmpty();
}
