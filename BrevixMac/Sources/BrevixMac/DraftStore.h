// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "EditorDraft.h"

#include "Foundation/FileWriter.h"

#include <QHash>

/// Keeps the unsaved texts of the editors on disk, one file for each form and account, 0600 and replaced
/// atomically. Main thread only; files are written on a thread of its own, so that storing costs a keystroke
/// nothing. A file that cannot be read is set aside as "<name>.damaged" and counts as no draft; a failed
/// write is logged and the draft stays in memory. The destructor waits until everything is written.
class DraftStore
{
public:
    enum class Form { menuBarPrompt, promptWindow, skill };

    enum class Place {
        current,   ///< what the open form holds
        cancelled, ///< what the last cancel threw away
    };

    struct Key
    {
        Form form;
        Place place;
        QString userID; ///< empty while signed out

        bool operator==(const Key &) const = default;
    };

    /// The longest draft that is kept, in UTF-16 units: four times what a saved item can hold.
    static constexpr qsizetype maximumLength = 4LL * 1024 * 1024;

    explicit DraftStore(QString folder);

    DraftStore(const DraftStore &) = delete;
    DraftStore &operator=(const DraftStore &) = delete;

    /// The draft under @p key; nothing when there is none.
    std::optional<EditorDraft> draft(const Key &key);

    /// Keeps @p draft under @p key; a blank one removes what is there. False, and the older draft stays, when
    /// it is longer than maximumLength.
    bool store(const Key &key, const EditorDraft &draft);

    void remove(const Key &key);

    /// Waits until everything is on disk; for tests.
    void waitForWrites();

    QString filePath(const Key &key) const;

private:
    using Content = std::optional<EditorDraft>;

    Content read(const QString &path) const;
    void keep(const Key &key, const Content &content);

    QString m_folder;
    QHash<QString, Content> m_known; ///< by path; what disk has or will have
    FileWriter m_writer;
};
