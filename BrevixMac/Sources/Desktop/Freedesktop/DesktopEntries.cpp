// SPDX-License-Identifier: GPL-3.0-or-later
#include "DesktopEntries.h"

#include "Foundation/PoolJob.h"

#include <QDateTime>
#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QFileInfo>
#include <QLocale>
#include <QSet>
#include <QStandardPaths>

#include <algorithm>
#include <atomic>
#include <cstdlib>

namespace {

const QString suffix = QStringLiteral(".desktop");

// Programs that start somebody else's: being started by one says nothing about who runs.
const QSet<QString> launchers{
    QStringLiteral("env"),     QStringLiteral("sh"),     QStringLiteral("bash"),
    QStringLiteral("flatpak"), QStringLiteral("snap"),   QStringLiteral("gapplication"),
    QStringLiteral("sudo"),    QStringLiteral("pkexec"), QStringLiteral("gtk-launch")};

using Fields = QHash<QString, QString>;
using FolderTimes = QList<QPair<QString, QDateTime>>;

// File systems count time in steps, the coarsest in use in steps of two seconds.
constexpr qint64 coarsestTimeStepMs = 2000;

// Key and value lines of the entry's main group.
Fields mainGroup(const QByteArray &content)
{
    Fields fields;
    bool isInGroup = false;
    for (const QByteArray &rawLine : content.split('\n')) {
        const QByteArray line = rawLine.trimmed();
        if (line.startsWith('['))
            isInGroup = line == "[Desktop Entry]";
        const qsizetype equals = line.indexOf('=');
        if (!isInGroup || equals <= 0 || line.startsWith('#'))
            continue;
        fields.insert(QString::fromUtf8(line.left(equals).trimmed()),
                      QString::fromUtf8(line.mid(equals + 1).trimmed()));
    }
    return fields;
}

QString unescaped(const QString &value)
{
    QString text;
    for (qsizetype index = 0; index < value.size(); ++index) {
        if (value[index] != u'\\' || index + 1 == value.size()) {
            text += value[index];
            continue;
        }
        switch (value[++index].unicode()) {
        case 's':
            text += u' ';
            break;
        case 'n':
            text += u'\n';
            break;
        case 't':
            text += u'\t';
            break;
        case 'r':
            text += u'\r';
            break;
        default:
            text += value[index];
        }
    }
    return text;
}

QString localized(const Fields &fields, const QString &key, const QString &locale)
{
    for (const QString &language : {locale, locale.section(u'_', 0, 0)}) {
        const auto found = fields.constFind(QStringLiteral("%1[%2]").arg(key, language));
        if (found != fields.constEnd())
            return unescaped(*found);
    }
    return unescaped(fields.value(key));
}

// The command's words; quoted ones may hold spaces.
QStringList words(const QString &command)
{
    QStringList words;
    QString word;
    bool isQuoted = false;
    for (const QChar character : command) {
        if (character == u'"') {
            isQuoted = !isQuoted;
        } else if (character == u' ' && !isQuoted) {
            words.append(word);
            word.clear();
        } else {
            word += character;
        }
    }
    words.append(word);
    words.removeAll(QString());
    return words;
}

QString programOf(const QString &command)
{
    for (const QString &word : words(command)) {
        const QString program = word.section(u'/', -1);
        if (program == u"env" || word.contains(u'='))
            continue;
        return launchers.contains(program) ? QString() : program;
    }
    return {};
}

QString entryID(const QString &folder, const QString &path)
{
    return QDir(folder).relativeFilePath(path).chopped(suffix.size()).replace(u'/', u'-');
}

FolderTimes folderTimes(const QStringList &folders)
{
    FolderTimes times;
    for (const QString &folder : folders) {
        times.append({folder, QFileInfo(folder).lastModified()});
        QDirIterator inner(folder, QDir::Dirs | QDir::NoDotAndDotDot, QDirIterator::Subdirectories);
        while (inner.hasNext()) {
            const QString path = inner.next();
            times.append({path, inner.fileInfo().lastModified()});
        }
    }
    return times;
}

// A change within the same step as the one before leaves the folder's time as it was, so a time that was
// young when the reading began proves nothing yet.
bool provesNothing(const QDateTime &folderTime, const QDateTime &readingBegan)
{
    return folderTime.isValid() && std::abs(folderTime.msecsTo(readingBegan)) <= coarsestTimeStepMs;
}

bool haveChanged(const FolderTimes &times, const QDateTime &readingBegan)
{
    return std::ranges::any_of(times, [&](const auto &folder) {
        const auto &[path, time] = folder;
        return provesNothing(time, readingBegan) || QFileInfo(path).lastModified() != time;
    });
}

bool isSame(const QString &first, const QString &second)
{
    return !first.isEmpty() && first.compare(second, Qt::CaseInsensitive) == 0;
}

QString lastComponent(const QString &id)
{
    return id.section(u'.', -1);
}

} // namespace

struct DesktopEntries::Index
{
    QList<DesktopEntry> entries;
    FolderTimes times;
    QDateTime readingBegan;

    static std::shared_ptr<const Index> read(const QStringList &folders);

    template <typename Predicate>
    const DesktopEntry *best(Predicate predicate) const
    {
        const DesktopEntry *found = nullptr;
        for (const DesktopEntry &entry : entries) {
            if (predicate(entry) && (!found || (entry.isShownInMenus && !found->isShownInMenus)))
                found = &entry;
        }
        return found;
    }
};

struct DesktopEntries::Reading
{
    std::atomic<bool> isOver = false;
    std::shared_ptr<const Index> index;
};

std::shared_ptr<const DesktopEntries::Index> DesktopEntries::Index::read(const QStringList &folders)
{
    auto index = std::make_shared<Index>();
    index->readingBegan = QDateTime::currentDateTimeUtc();
    index->times = folderTimes(folders);
    const QString locale = QLocale().name();
    QSet<QString> seen;
    for (const QString &folder : folders) {
        QDirIterator files(folder, {u'*' + suffix}, QDir::Files, QDirIterator::Subdirectories);
        while (files.hasNext()) {
            const QString path = files.next();
            const QString id = entryID(folder, path);
            QFile file(path);
            if (seen.contains(id) || !file.open(QIODevice::ReadOnly))
                continue;
            seen.insert(id);
            if (auto entry = parse(id, file.readAll(), locale))
                index->entries.append(*std::move(entry));
        }
    }
    std::ranges::sort(index->entries, {}, &DesktopEntry::id);
    return index;
}

DesktopEntries::DesktopEntries(QStringList folders)
    : m_folders(std::move(folders))
{
    read();
}

DesktopEntries::~DesktopEntries() = default;

QStringList DesktopEntries::standardFolders()
{
    return QStandardPaths::standardLocations(QStandardPaths::ApplicationsLocation);
}

bool DesktopEntries::isReady() const
{
    return m_index || (m_reading && m_reading->isOver);
}

void DesktopEntries::read()
{
    m_reading = std::make_shared<Reading>();
    startOn(*QThreadPool::globalInstance(), [reading = m_reading, folders = m_folders] {
        reading->index = Index::read(folders);
        reading->isOver = true;
    });
}

void DesktopEntries::takeReading()
{
    if (!m_reading || !m_reading->isOver)
        return;
    m_index = m_reading->index;
    m_reading.reset();
}

std::optional<DesktopEntry> DesktopEntries::find(const ApplicationTraits &traits)
{
    takeReading();
    if (!m_index)
        return std::nullopt;
    if (!m_reading && haveChanged(m_index->times, m_index->readingBegan))
        read();

    // From what an application says of itself to what merely fits.
    const QString hint = traits.desktopFileHint.section(u'/', -1);
    const auto isHinted = [&](const DesktopEntry &entry) {
        return !hint.isEmpty() && (entry.id == hint || entry.id + suffix == hint);
    };
    const auto hasWindowClass = [&](const DesktopEntry &entry) {
        return isSame(entry.startupWMClass, traits.windowInstance) ||
               isSame(entry.startupWMClass, traits.windowClass);
    };
    const auto isNamedLikeClass = [&](const DesktopEntry &entry) {
        return isSame(entry.id, traits.windowClass) || isSame(entry.id, traits.windowInstance);
    };
    const auto endsLikeClass = [&](const DesktopEntry &entry) {
        return isSame(lastComponent(entry.id), traits.windowClass) ||
               isSame(lastComponent(entry.id), traits.windowInstance);
    };
    const auto startsProgram = [&](const DesktopEntry &entry) {
        return !entry.program.isEmpty() &&
               (entry.program == traits.program || entry.program == traits.windowInstance);
    };
    const DesktopEntry *found = m_index->best(isHinted);
    if (!found)
        found = m_index->best([&](const DesktopEntry &entry) {
            return !traits.windowInstance.isEmpty() && entry.startupWMClass == traits.windowInstance;
        });
    if (!found)
        found = m_index->best(hasWindowClass);
    if (!found)
        found = m_index->best(isNamedLikeClass);
    if (!found)
        found = m_index->best(endsLikeClass);
    if (!found)
        found = m_index->best(startsProgram);
    return found ? std::optional(*found) : std::nullopt;
}

std::optional<DesktopEntry> DesktopEntries::parse(const QString &id, const QByteArray &content,
                                                  const QString &locale)
{
    const Fields fields = mainGroup(content);
    const QString yes = QStringLiteral("true");
    const QString name = localized(fields, QStringLiteral("Name"), locale);
    if (fields.value(QStringLiteral("Type")) != u"Application" ||
        fields.value(QStringLiteral("Hidden")) == yes || name.isEmpty())
        return std::nullopt;
    return DesktopEntry{.id = id,
                        .name = name,
                        .startupWMClass = fields.value(QStringLiteral("StartupWMClass")),
                        .program = programOf(fields.value(QStringLiteral("Exec"))),
                        .categories =
                            fields.value(QStringLiteral("Categories")).split(u';', Qt::SkipEmptyParts),
                        .isShownInMenus = fields.value(QStringLiteral("NoDisplay")) != yes};
}
