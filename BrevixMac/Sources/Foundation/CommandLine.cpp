// SPDX-License-Identifier: GPL-3.0-or-later
#include "CommandLine.h"

#include "Console.h"

#include <QCoreApplication>

std::optional<int> CommandLine::read(const QStringList &arguments)
{
    if (!m_parser.parse(arguments))
        return misused(m_parser.errorText());
    if (m_parser.isSet(m_help))
        return Console::say(m_parser.helpText().trimmed());
    if (m_parser.isSet(m_version))
        return Console::say(QCoreApplication::applicationName() + u' ' +
                            QCoreApplication::applicationVersion());
    return std::nullopt;
}

int CommandLine::misused(const QString &problem)
{
    return Console::fail(
        QStringLiteral("%1\nTry: %2 --help").arg(problem, QCoreApplication::applicationName()),
        Console::exitUsage);
}

void CommandLine::describe(const QString &purpose, const QList<QCommandLineOption> &options,
                           const QString &words, const QString &wordsHelp)
{
    m_parser.setApplicationDescription(purpose);
    m_parser.addOptions(options);
    m_parser.addOptions({m_help, m_version});
    m_parser.addPositionalArgument(QStringLiteral("command"), wordsHelp, words);
}
