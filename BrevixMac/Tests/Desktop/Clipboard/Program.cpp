// SPDX-License-Identifier: GPL-3.0-or-later
#include "Program.h"

#include "Support/Waiting.h"

#include <csignal>

Program::Program(const QString &executable, const QStringList &arguments)
{
    m_process.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    m_process.start(executable, arguments);
    waitUntil([this] { return m_process.state() != QProcess::Starting; });
}

Program::~Program()
{
    m_process.kill();
    m_process.waitForFinished();
}

bool Program::says(const QString &line, std::chrono::milliseconds deadline)
{
    return waitUntil([&] { return lines().contains(line); }, deadline);
}

bool Program::ends(std::chrono::milliseconds deadline)
{
    return waitUntil([this] { return m_process.state() == QProcess::NotRunning; }, deadline);
}

QStringList Program::lines()
{
    return QString::fromUtf8(output()).split(u'\n', Qt::SkipEmptyParts);
}

QByteArray Program::output()
{
    m_output += m_process.readAllStandardOutput();
    return m_output;
}

void Program::write(const QByteArray &input)
{
    m_process.write(input);
    m_process.closeWriteChannel();
}

void Program::suspend()
{
    ::kill(pid_t(m_process.processId()), SIGSTOP);
}

void Program::resume()
{
    ::kill(pid_t(m_process.processId()), SIGCONT);
}

void Program::kill()
{
    m_process.kill();
}

QByteArray outputOf(const QString &executable, const QStringList &arguments)
{
    Program program(executable, arguments);
    return program.ends() ? program.output() : QByteArray();
}
