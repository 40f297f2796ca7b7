// SPDX-License-Identifier: GPL-3.0-or-later
#include "Console.h"

#include <QCoreApplication>
#include <QFile>

#include <cstdio>
#include <termios.h>
#include <unistd.h>

namespace {

constexpr qint64 longestLine = 4096;

/// Keeps what is typed off the screen while it lives.
class HiddenTyping
{
public:
    HiddenTyping()
        : m_isActive(::tcgetattr(STDIN_FILENO, &m_before) == 0)
    {
        termios hidden = m_before;
        hidden.c_lflag &= ~tcflag_t(ECHO);
        if (m_isActive)
            ::tcsetattr(STDIN_FILENO, TCSAFLUSH, &hidden);
    }

    ~HiddenTyping()
    {
        if (m_isActive)
            ::tcsetattr(STDIN_FILENO, TCSAFLUSH, &m_before);
    }

    HiddenTyping(const HiddenTyping &) = delete;
    HiddenTyping &operator=(const HiddenTyping &) = delete;

private:
    termios m_before{};
    bool m_isActive;
};

QString readLine()
{
    static QFile input;
    if (!input.isOpen() && !input.open(STDIN_FILENO, QIODevice::ReadOnly | QIODevice::Unbuffered))
        return {};
    QString line = QString::fromUtf8(input.readLine(longestLine));
    while (line.endsWith(u'\n') || line.endsWith(u'\r'))
        line.chop(1);
    return line;
}

} // namespace

int Console::say(const QString &text)
{
    std::printf("%s\n", qUtf8Printable(text));
    std::fflush(stdout);
    return 0;
}

int Console::fail(const QString &problem, int exitCode)
{
    std::fprintf(stderr, "%s: %s\n", qUtf8Printable(QCoreApplication::applicationName()),
                 qUtf8Printable(problem));
    return exitCode;
}

bool Console::isInteractive()
{
    return ::isatty(STDIN_FILENO) == 1;
}

QString Console::askPassword(const QString &question)
{
    if (!isInteractive())
        return readLine();
    std::fprintf(stderr, "%s", qUtf8Printable(question));
    QString line;
    {
        const HiddenTyping hidden;
        line = readLine();
    }
    std::fputc('\n', stderr);
    return line;
}
