// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QHash>
#include <QString>
#include <QThreadPool>

#include <functional>
#include <mutex>

/// Writes files on a thread of its own, so that a slow disk holds nobody up. Of several contents for one file
/// that are waiting, only the newest is written; what waitForWrites() or the destructor has waited for is on
/// disk. To be used by one thread.
class FileWriter
{
public:
    /// Puts a file's new content in place; called on the writer's thread, so it must own what it touches.
    using Write = std::function<void()>;

    FileWriter();
    ~FileWriter();

    FileWriter(const FileWriter &) = delete;
    FileWriter &operator=(const FileWriter &) = delete;

    /// Has @p write called, in place of an earlier one for @p path that has not begun.
    void schedule(const QString &path, const Write &write);

    /// Blocks until everything scheduled is done.
    void waitForWrites();

private:
    void writePending();

    std::mutex m_mutex;
    QHash<QString, Write> m_pending; ///< guarded by the mutex
    bool m_isWriting = false;        ///< guarded by the mutex
    QThreadPool m_thread;            ///< keep last: its thread uses the others
};
