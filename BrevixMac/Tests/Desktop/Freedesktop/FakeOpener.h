// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QFile>
#include <QStringList>
#include <QTemporaryDir>

/// Shell scripts in place of a desktop's openers; what they were called with is kept.
class FakeOpeners
{
public:
    /// The command line of an opener that notes its arguments and then runs @p script.
    QStringList add(const QString &name, const QByteArray &script)
    {
        const QString path = m_folder.filePath(name);
        QFile file(path);
        const bool isOpen = file.open(QIODevice::WriteOnly);
        Q_ASSERT(isOpen);
        file.write("#!/bin/sh\nprintf '%s\\n' \"$*\" >>\"$0.calls\"\n" + script + "\n");
        file.setPermissions(QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
        return {path};
    }

    /// What the opener @p name was called with, a line each.
    QByteArray calls(const QString &name) const { return read(name + u".calls"); }

    /// A file that a script has written.
    QByteArray read(const QString &name) const
    {
        QFile file(m_folder.filePath(name));
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    }

    QString path(const QString &name) const { return m_folder.filePath(name); }

private:
    QTemporaryDir m_folder;
};
