// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QElapsedTimer>
#include <QProcess>
#include <QString>
#include <QStringList>

#include <chrono>

/// Another program that a test runs. The event loop of the test goes on while it waits, because what is
/// tested has to answer that program. Killed at the end, whatever state it is in.
class Program
{
public:
    Program(const QString &executable, const QStringList &arguments);
    ~Program();
    Program(const Program &) = delete;
    Program &operator=(const Program &) = delete;

    /// Whether it says @p line, now or within @p deadline.
    bool says(const QString &line, std::chrono::milliseconds deadline = std::chrono::seconds(20));
    bool ends(std::chrono::milliseconds deadline = std::chrono::seconds(20));
    /// Everything it has written to standard output so far, line by line.
    QStringList lines();
    QByteArray output();
    void write(const QByteArray &input);

    void suspend();
    void resume();
    void kill();

private:
    QProcess m_process;
    QByteArray m_output;
};

/// The standard output of a program that has run to its end; an empty array when it did not end.
QByteArray outputOf(const QString &executable, const QStringList &arguments);
