// SPDX-License-Identifier: GPL-3.0-or-later
#include "Desktop/Freedesktop/SchemeHandler.h"

#include "Foundation/TerminationSignals.h"

#include <QDir>
#include <QFile>
#include <QLoggingCategory>
#include <QProcess>
#include <QRegularExpression>
#include <QSaveFile>
#include <QStandardPaths>

#include <optional>

namespace {

Q_LOGGING_CATEGORY(log, "brevix.desktop", QtInfoMsg)

const QByteArray defaultsHeader = QByteArrayLiteral("[Default Applications]");

/// What the file holds: nothing in one that is missing. No value when it is there and cannot be read.
std::optional<QByteArray> contentOf(const QString &path)
{
    QFile file(path);
    if (!file.exists())
        return QByteArray();
    if (!file.open(QIODevice::ReadOnly))
        return std::nullopt;
    const QByteArray content = file.readAll();
    return file.error() == QFileDevice::NoError ? std::optional(content) : std::nullopt;
}

/// Writes only a change, so that a desktop that watches the folder is left in peace.
bool replaceFile(const QString &path, const QByteArray &content)
{
    if (QFile::exists(path) && contentOf(path) == content)
        return true;
    QDir().mkpath(QFileInfo(path).path()); // opening says what was wrong
    QSaveFile file(path);
    const bool isWritten =
        file.open(QIODevice::WriteOnly) && file.write(content) == content.size() && file.commit();
    if (!isWritten)
        qCWarning(log).noquote() << "cannot write" << path + u':' << file.errorString();
    return isWritten;
}

/// A program as the first word of an Exec line. Quoted only when it must be: the xdg-open of a bare window
/// manager does not understand quotes.
QString execProgram(QString program)
{
    static const QRegularExpression plain(QStringLiteral("^[A-Za-z0-9_./+,:@-]+$"));
    if (plain.match(program).hasMatch())
        return program;
    static const QRegularExpression special(QStringLiteral("([\"`$\\\\])"));
    program.replace(special, QStringLiteral("\\\\1"));
    program.replace(u'%', QStringLiteral("%%"));
    // The value of any key is unescaped once before the quoting is looked at.
    program.replace(u'\\', QStringLiteral("\\\\"));
    return u'"' + program + u'"';
}

/// The first word of an Exec line: execProgram() backwards.
QString firstWord(const QString &exec)
{
    if (!exec.startsWith(u'"'))
        return exec.section(u' ', 0, 0);
    QString unescaped = exec;
    unescaped.replace(QStringLiteral("\\\\"), QStringLiteral("\\"));
    QString program;
    for (qsizetype at = 1; at < unescaped.size() && unescaped.at(at) != u'"'; ++at) {
        if (unescaped.at(at) == u'\\' && at + 1 < unescaped.size())
            ++at;
        program.append(unescaped.at(at));
    }
    return program.replace(QStringLiteral("%%"), QStringLiteral("%"));
}

/// Programs that keep an index of the entries read only that.
void updateIndex(const QString &applications)
{
    const QString tool = QStandardPaths::findExecutable(QStringLiteral("update-desktop-database"));
    if (tool.isEmpty())
        return;
    QProcess process;
    process.setProgram(tool);
    process.setArguments({QStringLiteral("-q"), applications});
    process.setStandardOutputFile(QProcess::nullDevice());
    process.setStandardErrorFile(QProcess::nullDevice());
    process.setChildProcessModifier(&TerminationSignals::letThrough);
    process.startDetached();
}

QByteArray lineEnding(const QByteArray &line)
{
    return line.endsWith('\r') ? QByteArrayLiteral("\r") : QByteArray();
}

/// @p line ("type=one;two;") with @p entry in front.
QByteArray withEntryInFront(const QByteArray &line, const QByteArray &entry)
{
    const qsizetype at = line.indexOf('=');
    QByteArray result = line.first(at + 1) + entry + ';';
    for (const QByteArray &other : line.sliced(at + 1).trimmed().split(';')) {
        const QByteArray name = other.trimmed();
        if (!name.isEmpty() && name != entry)
            result += name + ';';
    }
    return result + lineEnding(line);
}

bool isKey(const QByteArray &line, const QByteArray &key)
{
    const qsizetype at = line.indexOf('=');
    return at >= 0 && line.first(at).trimmed() == key;
}

} // namespace

namespace SchemeHandler {

Folders Folders::standard()
{
    return {QStandardPaths::writableLocation(QStandardPaths::GenericDataLocation) +
                QStringLiteral("/applications"),
            QStandardPaths::writableLocation(QStandardPaths::GenericConfigLocation)};
}

bool isPrivateScheme(const QString &scheme)
{
    static const QRegularExpression form(
        QRegularExpression::anchoredPattern(QStringLiteral("[A-Za-z][A-Za-z0-9+-]*(\\.[A-Za-z0-9+-]+)+")));
    return form.match(scheme).hasMatch();
}

QString entryFileName(const QString &scheme)
{
    return u"app.brevix.Brevix.open-" + scheme.toLower() + u".desktop";
}

QByteArray entryContent(const QString &scheme, const QString &program)
{
    return QByteArrayLiteral("[Desktop Entry]\n"
                             "Type=Application\n"
                             "Name=Brevix\n"
                             "Comment=Takes the answer of the sign-in page\n"
                             "Icon=app.brevix.Brevix\n"
                             "Terminal=false\n"
                             "NoDisplay=true\n"
                             "StartupNotify=false\n"
                             "Exec=") +
           execProgram(program).toUtf8() + " open-url %u\nMimeType=x-scheme-handler/" +
           scheme.toLower().toUtf8() + ";\n";
}

QString programOf(const QByteArray &entryContent)
{
    for (const QByteArray &line : entryContent.split('\n')) {
        if (isKey(line, "Exec"))
            return firstWord(QString::fromUtf8(line.sliced(line.indexOf('=') + 1)).trimmed());
    }
    return {};
}

QByteArray defaultOf(const QByteArray &mimeApps, const QByteArray &type)
{
    bool isInDefaults = false;
    for (const QByteArray &rawLine : mimeApps.split('\n')) {
        const QByteArray line = rawLine.trimmed();
        if (line.startsWith('['))
            isInDefaults = line == defaultsHeader;
        else if (isInDefaults && isKey(line, type))
            return line.sliced(line.indexOf('=') + 1).split(';').first().trimmed();
    }
    return {};
}

QByteArray withDefault(const QByteArray &mimeApps, const QByteArray &type, const QByteArray &entry)
{
    QList<QByteArray> lines = mimeApps.split('\n');
    while (!lines.isEmpty() && lines.last().trimmed().isEmpty())
        lines.removeLast();
    qsizetype insertAt = -1;
    bool isInDefaults = false;
    for (qsizetype i = 0; i < lines.size(); ++i) {
        const QByteArray line = lines.at(i).trimmed();
        if (line.startsWith('['))
            isInDefaults = line == defaultsHeader;
        if (!isInDefaults || line.isEmpty())
            continue;
        if (isKey(line, type)) {
            lines[i] = withEntryInFront(lines.at(i), entry);
            return lines.join('\n') + '\n';
        }
        if (insertAt < 0 || !line.startsWith('#'))
            insertAt = i + 1;
    }
    const QByteArray added = type + '=' + entry + ';';
    if (insertAt < 0) {
        if (!lines.isEmpty())
            lines.append(QByteArray());
        lines.append({defaultsHeader, added});
    } else {
        lines.insert(insertAt, added + lineEnding(lines.at(insertAt - 1)));
    }
    return lines.join('\n') + '\n';
}

bool registerScheme(const QString &scheme, const QString &program, const Folders &folders)
{
    if (!isPrivateScheme(scheme)) {
        qCWarning(log) << "the scheme" << scheme << "is not one that an application may claim";
        return false;
    }
    const QString fileName = entryFileName(scheme);
    if (!replaceFile(folders.applications + u'/' + fileName, entryContent(scheme, program)))
        return false;
    const QString mimeApps = folders.configuration + QStringLiteral("/mimeapps.list");
    const QByteArray type = "x-scheme-handler/" + scheme.toLower().toUtf8();
    // Without this the entry is still found where no other program claims the scheme.
    if (const auto present = contentOf(mimeApps))
        replaceFile(mimeApps, withDefault(*present, type, fileName.toUtf8()));
    else
        qCWarning(log).noquote() << "cannot read" << mimeApps + u", so it stays as it is";
    updateIndex(folders.applications);
    return true;
}

} // namespace SchemeHandler
