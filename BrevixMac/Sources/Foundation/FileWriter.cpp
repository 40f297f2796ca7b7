// SPDX-License-Identifier: GPL-3.0-or-later
#include "FileWriter.h"

#include "PoolJob.h"

#include <utility>

FileWriter::FileWriter()
{
    m_thread.setMaxThreadCount(1);
}

FileWriter::~FileWriter()
{
    waitForWrites();
}

void FileWriter::schedule(const QString &path, const Write &write)
{
    const std::lock_guard lock(m_mutex);
    m_pending.insert(path, write);
    if (!std::exchange(m_isWriting, true))
        startOn(m_thread, [this] { writePending(); });
}

void FileWriter::waitForWrites()
{
    waitForAll(m_thread);
}

void FileWriter::writePending()
{
    while (true) {
        QHash<QString, Write> batch;
        {
            const std::lock_guard lock(m_mutex);
            batch.swap(m_pending);
            m_isWriting = !batch.isEmpty();
        }
        if (batch.isEmpty())
            return;
        for (const Write &write : std::as_const(batch))
            write();
    }
}
