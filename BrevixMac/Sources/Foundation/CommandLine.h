// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QCommandLineParser>

#include <optional>

/// A program's command line with the two options that every program has, --help and --version. Programs
/// derive from it and add their own. Needs no application object.
class CommandLine
{
public:
    /// Reads @p arguments, the program's own name first. The program's exit code when that was all there is
    /// to do: help or version are shown, or the mistake is told. The program's name is the application's.
    std::optional<int> read(const QStringList &arguments);

    /// Tells @p problem and where the help is; gives the exit code of a wrong use.
    static int misused(const QString &problem);

    bool isSet(const QCommandLineOption &option) const { return m_parser.isSet(option); }
    QString value(const QCommandLineOption &option) const { return m_parser.value(option); }
    QStringList words() const { return m_parser.positionalArguments(); }

protected:
    CommandLine() = default;
    ~CommandLine() = default;

    /// @p words and @p wordsHelp describe what is not an option.
    void describe(const QString &purpose, const QList<QCommandLineOption> &options, const QString &words,
                  const QString &wordsHelp);

private:
    QCommandLineParser m_parser;
    QCommandLineOption m_help{{QStringLiteral("h"), QStringLiteral("help")},
                              QStringLiteral("Show this help and exit.")};
    QCommandLineOption m_version{{QStringLiteral("v"), QStringLiteral("version")},
                                 QStringLiteral("Show the version and exit.")};
};
