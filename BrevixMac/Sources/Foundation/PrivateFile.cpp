// SPDX-License-Identifier: GPL-3.0-or-later
#include "PrivateFile.h"

#include <QDir>
#include <QFileInfo>
#include <QSaveFile>

namespace {

constexpr QFileDevice::Permissions ownerReadWrite = QFileDevice::ReadOwner | QFileDevice::WriteOwner;

/// Creates the missing folders of @p path, open to the owner alone.
bool makePrivateFolder(const QString &path)
{
    if (QFileInfo(path).isDir())
        return true;
    const QString parent = QFileInfo(path).path();
    if (parent == path || !makePrivateFolder(parent))
        return false;
    return QDir().mkdir(path, ownerReadWrite | QFileDevice::ExeOwner) || QFileInfo(path).isDir();
}

/// QSaveFile writes a temporary file beside the old one, syncs it to the disk and renames it over the old
/// one.
bool writeAtomically(QSaveFile &file, const QByteArray &bytes)
{
    return file.open(QIODevice::WriteOnly) && file.setPermissions(ownerReadWrite) &&
           file.write(bytes) == bytes.size() && file.commit();
}

} // namespace

std::optional<QString> PrivateFile::write(const QString &path, const QByteArray &bytes)
{
    if (!makePrivateFolder(QFileInfo(path).absolutePath()))
        return QStringLiteral("its folder cannot be made");
    QSaveFile file(path);
    if (!writeAtomically(file, bytes))
        return file.errorString();
    return std::nullopt;
}
