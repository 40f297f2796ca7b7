// SPDX-License-Identifier: GPL-3.0-or-later
#include "Processes.h"

#include <QFile>
#include <QFileInfo>
#include <QRegularExpression>

namespace {

QByteArray readProcessFile(qint64 processIdentifier, const char *name)
{
    if (processIdentifier <= 0)
        return {};
    QFile file(QStringLiteral("/proc/%1/%2").arg(processIdentifier).arg(QLatin1String(name)));
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

QString fileName(const QString &path)
{
    return path.section(u'/', -1);
}

bool isInterpreter(const QString &program)
{
    static const QRegularExpression pattern(
        QStringLiteral("^(python|perl|ruby|node|gjs|bash|dash|sh|zsh)[0-9.]*(-console)?$"));
    return pattern.match(program).hasMatch();
}

// First argument that is no option.
QString scriptName(qint64 processIdentifier)
{
    const QList<QByteArray> arguments = readProcessFile(processIdentifier, "cmdline").split('\0').mid(1);
    for (const QByteArray &argument : arguments) {
        if (!argument.isEmpty() && !argument.startsWith('-'))
            return fileName(QString::fromLocal8Bit(argument));
    }
    return {};
}

} // namespace

quint64 Processes::startTime(qint64 processIdentifier)
{
    const QByteArray status = readProcessFile(processIdentifier, "stat");
    // The name in parentheses may itself hold spaces and parentheses; what follows the last one never does.
    const QList<QByteArray> fields = status.mid(status.lastIndexOf(')') + 2).split(' ');
    constexpr int stateField = 0;
    constexpr int startTimeField = 19;
    if (fields.size() <= startTimeField || fields[stateField] == "Z" || fields[stateField] == "X")
        return 0;
    return fields[startTimeField].toULongLong();
}

bool Processes::isRunning(qint64 processIdentifier, quint64 startTime)
{
    const quint64 present = Processes::startTime(processIdentifier);
    return present != 0 && (startTime == 0 || present == startTime);
}

QString Processes::programName(qint64 processIdentifier)
{
    QString program = QFile::symLinkTarget(QStringLiteral("/proc/%1/exe").arg(processIdentifier));
    program = fileName(program.remove(QStringLiteral(" (deleted)"))); // replaced by an upgrade while it runs
    if (program.isEmpty())
        return QString::fromLocal8Bit(readProcessFile(processIdentifier, "comm")).trimmed();
    if (!isInterpreter(program))
        return program;
    const QString script = scriptName(processIdentifier);
    return script.isEmpty() ? program : script;
}
