// SPDX-License-Identifier: GPL-3.0-or-later
#include "Desktop/Freedesktop/BrowserOpener.h"

#include "Desktop/DisplayServer.h"
#include "Foundation/TerminationSignals.h"

#include <QProcess>
#include <QSet>
#include <QStandardPaths>

#include <unistd.h>

namespace {

/// Openers that run. They belong to nobody, because the end of a QProcess kills its process: a browser must
/// not end with the program that has opened it.
QSet<QProcess *> &runningOpeners()
{
    static auto *const processes = new QSet<QProcess *>; // outlives everything, as they do
    return *processes;
}

QProcess *makeProcess(const QString &program, const QStringList &arguments)
{
    auto *process = new QProcess;
    process->setProgram(program);
    process->setArguments(arguments);
    process->setProcessEnvironment(DisplayServer::environmentForPrograms());
    process->setStandardInputFile(QProcess::nullDevice());
    process->setStandardOutputFile(QProcess::nullDevice());
    process->setStandardErrorFile(QProcess::nullDevice());
    process->setChildProcessModifier([] {
        ::setsid(); // an interrupt typed in our terminal is not meant for the browser
        TerminationSignals::letThrough();
    });
    runningOpeners().insert(process);
    QObject::connect(process, &QObject::destroyed, process, [process] { runningOpeners().remove(process); });
    QObject::connect(process, &QProcess::finished, process, &QObject::deleteLater);
    QObject::connect(process, &QProcess::errorOccurred, process, [process](QProcess::ProcessError error) {
        if (error == QProcess::FailedToStart)
            process->deleteLater();
    });
    return process;
}

} // namespace

BrowserOpener::BrowserOpener(QList<QStringList> openers)
    : m_openers(std::move(openers))
{
    m_patience.setSingleShot(true);
    connect(&m_patience, &QTimer::timeout, this, [this] { ++m_attempt; });
}

QList<QStringList> BrowserOpener::standardOpeners()
{
    // Not one after the other: gio calls it a success when a browser was started and failed, and so would
    // hide that xdg-open has failed with the same one.
    const QString xdgOpen = QStringLiteral("xdg-open");
    if (!QStandardPaths::findExecutable(xdgOpen).isEmpty())
        return {{xdgOpen}};
    return {{QStringLiteral("gio"), QStringLiteral("open")}};
}

void BrowserOpener::open(const QUrl &url)
{
    m_url = url;
    m_remaining = m_openers;
    // From the event loop, so that a failure is not told before the caller has noted the attempt.
    QTimer::singleShot(0, this, [this, attempt = ++m_attempt] { tryNext(attempt); });
}

void BrowserOpener::tryNext(int attempt)
{
    if (attempt != m_attempt)
        return;
    ++m_attempt;
    m_patience.stop();
    while (!m_remaining.isEmpty()) {
        if (start(m_remaining.takeFirst()))
            return;
    }
    Q_EMIT failed();
}

bool BrowserOpener::start(const QStringList &command)
{
    const QString program = QStandardPaths::findExecutable(command.first());
    if (program.isEmpty())
        return false;
    QProcess *process = makeProcess(program, command.mid(1) << m_url.toString(QUrl::FullyEncoded));
    connect(process, &QProcess::finished, this,
            [this, attempt = m_attempt](int code, QProcess::ExitStatus status) {
                if (code != 0 || status != QProcess::NormalExit)
                    tryNext(attempt);
                else
                    m_patience.stop();
            });
    const auto onError = [this, attempt = m_attempt](QProcess::ProcessError error) {
        if (error == QProcess::FailedToStart)
            tryNext(attempt);
    };
    // It may fail from inside start().
    connect(process, &QProcess::errorOccurred, this, onError, Qt::QueuedConnection);
    m_patience.start(patience);
    process->start();
    return true;
}
