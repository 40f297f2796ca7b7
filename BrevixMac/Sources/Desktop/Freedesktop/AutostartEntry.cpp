// SPDX-License-Identifier: GPL-3.0-or-later
#include "AutostartEntry.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QHash>
#include <QSaveFile>
#include <QStandardPaths>

#include <algorithm>

namespace {

using Fields = QHash<QByteArray, QByteArray>;

constexpr qint64 largestEntry = 64LL * 1024;

// The characters that have a meaning in an Exec line, by the Desktop Entry Specification.
const QString reserved = QStringLiteral(" \t\n\"'\\><~|&;$*?#()`");
const QString escapedInQuotes = QStringLiteral("\"`$\\");

QString autostart(const QString &folder)
{
    return folder + QStringLiteral("/autostart");
}

QStringList systemAutostartFolders()
{
    QStringList folders = QStandardPaths::standardLocations(QStandardPaths::GenericConfigLocation);
    folders.removeFirst();
    std::ranges::transform(folders, folders.begin(), &autostart);
    return folders;
}

/// A value of type string, as the file has it.
QString escapedValue(QString text)
{
    return text.replace(u'\\', QStringLiteral("\\\\"))
        .replace(u'\n', QStringLiteral("\\n"))
        .replace(u'\t', QStringLiteral("\\t"))
        .replace(u'\r', QStringLiteral("\\r"));
}

QString unescapedValue(const QString &value)
{
    static const QHash<QChar, QChar> meanings{{u's', u' '}, {u'n', u'\n'}, {u't', u'\t'}, {u'r', u'\r'}};
    QString text;
    for (qsizetype index = 0; index < value.size(); ++index) {
        const bool isEscape = value[index] == u'\\' && index + 1 < value.size();
        if (isEscape)
            ++index;
        text += isEscape ? meanings.value(value[index], value[index]) : value[index];
    }
    return text;
}

/// The program of an Exec line.
QString firstWord(const QString &command)
{
    QString word;
    bool isQuoted = false;
    for (qsizetype index = 0; index < command.size(); ++index) {
        const QChar character = command[index];
        if (character == u'"')
            isQuoted = !isQuoted;
        else if (character == u'\\' && isQuoted && index + 1 < command.size())
            word += command[++index];
        else if (character == u' ' && !isQuoted && !word.isEmpty())
            break;
        else if (character != u' ' || isQuoted)
            word += character;
    }
    return word.replace(QStringLiteral("%%"), QStringLiteral("%"));
}

std::optional<Fields> readEntry(const QString &path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return std::nullopt;
    Fields fields;
    bool isInGroup = false;
    for (const QByteArray &rawLine : file.read(largestEntry).split('\n')) {
        const QByteArray line = rawLine.trimmed();
        if (line.startsWith('['))
            isInGroup = line == "[Desktop Entry]";
        const qsizetype equals = line.indexOf('=');
        if (isInGroup && equals > 0 && !line.startsWith('#'))
            fields.insert(line.left(equals).trimmed(), line.mid(equals + 1).trimmed());
    }
    return fields;
}

bool namesThisDesktop(const QByteArray &list)
{
    const QList<QByteArray> desktops = qgetenv("XDG_CURRENT_DESKTOP").split(':');
    const QList<QByteArray> named = list.split(';');
    return std::ranges::any_of(
        desktops, [&](const QByteArray &desktop) { return !desktop.isEmpty() && named.contains(desktop); });
}

bool canRun(const QString &program)
{
    return !program.isEmpty() && !QStandardPaths::findExecutable(program).isEmpty();
}

/// Whether a session would start what @p fields describe.
bool starts(const Fields &fields)
{
    if (fields.value("Hidden") == "true" || fields.value("X-GNOME-Autostart-enabled") == "false")
        return false;
    if (fields.contains("OnlyShowIn") && !namesThisDesktop(fields.value("OnlyShowIn")))
        return false;
    if (namesThisDesktop(fields.value("NotShowIn")))
        return false;
    if (fields.contains("TryExec") && !canRun(unescapedValue(QString::fromUtf8(fields.value("TryExec")))))
        return false;
    return canRun(firstWord(unescapedValue(QString::fromUtf8(fields.value("Exec")))));
}

QString failure(const QString &path, const QString &reason)
{
    return QStringLiteral("The login item %1 could not be written: %2.")
        .arg(QDir::toNativeSeparators(path), reason);
}

} // namespace

AutostartEntry::AutostartEntry(Application application)
    : AutostartEntry(std::move(application),
                     autostart(QStandardPaths::writableLocation(QStandardPaths::GenericConfigLocation)),
                     systemAutostartFolders())
{
}

AutostartEntry::AutostartEntry(Application application, const QString &userFolder,
                               const QStringList &systemFolders)
    : m_application(std::move(application))
{
    const QString name = u'/' + m_application.id + u".desktop";
    m_userFile = userFolder + name;
    for (const QString &folder : systemFolders)
        m_systemFiles.append(folder + name);
}

bool AutostartEntry::isEnabled() const
{
    for (const QString &path : QStringList(m_userFile) + m_systemFiles) {
        if (const auto fields = readEntry(path))
            return starts(*fields);
    }
    return false;
}

bool AutostartEntry::hasSystemEntry() const
{
    return std::ranges::any_of(m_systemFiles, [](const QString &path) { return QFileInfo::exists(path); });
}

std::optional<QString> AutostartEntry::setEnabled(bool enabled)
{
    return enabled ? write(content()) : disable();
}

std::optional<QString> AutostartEntry::disable() const
{
    // Only an entry of the user's own hides one of the system's.
    if (hasSystemEntry())
        return write(content() + "Hidden=true\n");
    QFile file(m_userFile);
    if (file.remove() || !QFileInfo::exists(m_userFile))
        return std::nullopt;
    return failure(m_userFile, file.errorString());
}

std::optional<QString> AutostartEntry::write(const QByteArray &content) const
{
    const QString folder = QFileInfo(m_userFile).absolutePath();
    if (!QDir().mkpath(folder))
        return failure(m_userFile, QStringLiteral("the folder cannot be made"));
    QSaveFile file(m_userFile);
    if (!file.open(QIODevice::WriteOnly) || file.write(content) != content.size() || !file.commit())
        return failure(m_userFile, file.errorString());
    return std::nullopt;
}

QByteArray AutostartEntry::content() const
{
    QStringList command{quoted(m_application.program)};
    for (const QString &argument : m_application.arguments)
        command.append(quoted(argument));
    const QStringList lines{QStringLiteral("[Desktop Entry]"),
                            QStringLiteral("Type=Application"),
                            u"Name=" + escapedValue(m_application.name),
                            u"Comment=" + escapedValue(m_application.comment),
                            u"Exec=" + escapedValue(command.join(u' ')),
                            u"Icon=" + escapedValue(m_application.id),
                            QStringLiteral("Terminal=false"),
                            QStringLiteral("StartupNotify=false"),
                            QStringLiteral("X-GNOME-Autostart-enabled=true")};
    return lines.join(u'\n').toUtf8() + '\n';
}

QString AutostartEntry::quoted(const QString &argument)
{
    QString text = argument;
    text.replace(u'%', QStringLiteral("%%"));
    const bool needsQuotes = text.isEmpty() || std::ranges::any_of(text, [](QChar character) {
                                 return reserved.contains(character);
                             });
    if (!needsQuotes)
        return text;
    QString result = QStringLiteral("\"");
    for (const QChar character : text) {
        if (escapedInQuotes.contains(character))
            result += u'\\';
        result += character;
    }
    return result + u'"';
}
