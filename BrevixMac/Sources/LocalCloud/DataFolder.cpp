// SPDX-License-Identifier: GPL-3.0-or-later
#include "DataFolder.h"

#include "SecureRandom.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QLoggingCategory>
#include <QSaveFile>

#include <utility>

namespace Cloud {

namespace {

Q_LOGGING_CATEGORY(logFolder, "brevix.localcloud.folder")

constexpr QFileDevice::Permissions ownerOnlyFile = QFileDevice::ReadOwner | QFileDevice::WriteOwner;
constexpr QFileDevice::Permissions ownerOnlyFolder = ownerOnlyFile | QFileDevice::ExeOwner;

} // namespace

DataFolder::DataFolder(QString path)
    : m_path(std::move(path))
{
}

bool DataFolder::prepare()
{
    return createFolder() && (readSigningKey() || createSigningKey());
}

QString DataFolder::databasePath() const
{
    return m_path + QStringLiteral("/library.sqlite");
}

QString DataFolder::signingKeyPath() const
{
    return m_path + QStringLiteral("/signing.key");
}

bool DataFolder::createFolder()
{
    if (m_path.isEmpty())
        return fail(QStringLiteral("no folder was given"));
    constexpr QDir::Filters anything = QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot;
    const QDir present(m_path);
    if (present.exists() && !present.isEmpty(anything) && !QFileInfo::exists(signingKeyPath()) &&
        !QFileInfo::exists(databasePath()))
        return fail(
            QStringLiteral("it holds something else; give an empty folder, or one that does not exist"));
    if (!present.exists() && !QDir().mkpath(m_path))
        return fail(QStringLiteral("it cannot be created"));
    if (!QFile::setPermissions(m_path, ownerOnlyFolder))
        return fail(QStringLiteral("it belongs to somebody else"));
    if (!QFileInfo(m_path).isWritable())
        return fail(QStringLiteral("it is not writable"));
    return true;
}

bool DataFolder::readSigningKey()
{
    QFile file(signingKeyPath());
    if (!file.open(QIODevice::ReadOnly))
        return false;
    const QByteArray key = file.read(signingKeySize + 1);
    if (key.size() != signingKeySize || !file.setPermissions(ownerOnlyFile)) {
        qCWarning(logFolder) << "The signing key cannot be used and is replaced; everybody signs in again.";
        return false;
    }
    m_signingKey = key;
    return true;
}

bool DataFolder::createSigningKey()
{
    const QByteArray key = secureRandomBytes(signingKeySize);
    QSaveFile file(signingKeyPath());
    if (!file.open(QIODevice::WriteOnly) || !file.setPermissions(ownerOnlyFile) ||
        file.write(key) != key.size() || !file.commit())
        return fail(file.errorString());
    m_signingKey = key;
    return true;
}

bool DataFolder::fail(const QString &reason)
{
    m_errorString = QStringLiteral("The data folder \"%1\" cannot be used: %2.").arg(m_path, reason);
    return false;
}

} // namespace Cloud
