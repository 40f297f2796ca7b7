// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QHash>
#include <QList>
#include <QString>
#include <QStringList>

#include <memory>
#include <optional>

/// One installed application, from its desktop entry file.
struct DesktopEntry
{
    QString id;             ///< without ".desktop"
    QString name;           ///< in the user's language
    QString startupWMClass; ///< empty when the entry does not tell
    QString program;        ///< file name of what it starts; empty for programs that only start others
    QStringList categories;
    bool isShownInMenus = true;

    bool operator==(const DesktopEntry &) const = default;

    bool isTerminalEmulator() const { return categories.contains(QStringLiteral("TerminalEmulator")); }
};

/// What is known of a running application, to find its entry by.
struct ApplicationTraits
{
    QString desktopFileHint; ///< the entry a window names itself
    QString windowInstance;
    QString windowClass;
    QString program; ///< file name of the executable
};

/// The installed applications by their desktop entries. Main thread only; reads the files on a worker and
/// reads them again when a folder has changed. Files that cannot be read or make no sense are left out.
class DesktopEntries
{
public:
    /// Starts to read @p folders; an entry in an earlier one hides those of the same id in later ones.
    explicit DesktopEntries(QStringList folders = standardFolders());
    ~DesktopEntries();

    /// $XDG_DATA_HOME/applications, then $XDG_DATA_DIRS.
    static QStringList standardFolders();

    /// Whether the first reading is over.
    bool isReady() const;

    /// The entry of the application with @p traits; nothing also while the files are still being read.
    std::optional<DesktopEntry> find(const ApplicationTraits &traits);

    /// One entry file's content; nothing when it describes no application or is marked as deleted.
    static std::optional<DesktopEntry> parse(const QString &id, const QByteArray &content,
                                             const QString &locale);

private:
    struct Index;
    struct Reading;

    void takeReading();
    void read();

    QStringList m_folders;
    std::shared_ptr<Reading> m_reading; ///< under way
    std::shared_ptr<const Index> m_index;
};
