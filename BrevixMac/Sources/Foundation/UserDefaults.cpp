// SPDX-License-Identifier: GPL-3.0-or-later
#include "UserDefaults.h"

#include "FileWriter.h"
#include "PrivateFile.h"
#include "PropertyList.h"

#include <QDateTime>
#include <QFile>
#include <QFileInfo>
#include <QLoggingCategory>
#include <QStandardPaths>

#include <utility>

namespace {

Q_LOGGING_CATEGORY(lcDefaults, "brevix.defaults")

/// Value under @p key if it is a T, nothing otherwise: a stored text "false" is no boolean.
template <typename T>
std::optional<T> valueOfKind(const QVariantMap &values, const QString &key)
{
    const QVariant value = values.value(key);
    if (value.metaType() != QMetaType::fromType<T>())
        return std::nullopt;
    return value.value<T>();
}

/// Gives a name beside @p filePath that is not taken.
QString nameForDamagedFile(const QString &filePath)
{
    const QString time = QDateTime::currentDateTimeUtc().toString(u"yyyyMMdd'T'HHmmss'Z'");
    const QString base = QStringLiteral("%1.damaged-%2").arg(filePath, time);
    QString name = base;
    for (int attempt = 2; QFileInfo::exists(name); ++attempt)
        name = QStringLiteral("%1-%2").arg(base).arg(attempt);
    return name;
}

} // namespace

UserDefaults::UserDefaults(QString filePath)
    : m_filePath(std::move(filePath))
    , m_writer(std::make_unique<FileWriter>())
{
    load();
}

UserDefaults::~UserDefaults() = default;

QString UserDefaults::pathForDomain(const QString &domain)
{
    const QString folder = QStandardPaths::writableLocation(QStandardPaths::GenericConfigLocation);
    return QStringLiteral("%1/%2/defaults.plist").arg(folder, domain);
}

std::optional<QByteArray> UserDefaults::data(const QString &key) const
{
    return valueOfKind<QByteArray>(m_values, key);
}

std::optional<bool> UserDefaults::boolean(const QString &key) const
{
    return valueOfKind<bool>(m_values, key);
}

std::optional<QString> UserDefaults::text(const QString &key) const
{
    return valueOfKind<QString>(m_values, key);
}

void UserDefaults::setData(const QString &key, const QByteArray &value)
{
    m_values.insert(key, value);
    write();
}

void UserDefaults::setBoolean(const QString &key, bool value)
{
    m_values.insert(key, value);
    write();
}

void UserDefaults::setText(const QString &key, const QString &value)
{
    m_values.insert(key, value);
    write();
}

void UserDefaults::remove(const QString &key)
{
    if (m_values.remove(key) > 0)
        write();
}

void UserDefaults::load()
{
    const QFileInfo info(m_filePath);
    if (!info.exists() && !info.isSymLink())
        return;
    if (auto values = PropertyList::readDictionary(m_filePath)) {
        m_values = std::move(*values);
        return;
    }
    const QString asidePath = nameForDamagedFile(m_filePath);
    if (!QFile::rename(m_filePath, asidePath)) {
        qCWarning(lcDefaults, "%ls cannot be read, nor kept aside", qUtf16Printable(m_filePath));
        return;
    }
    m_damagedFilePath = asidePath;
    qCWarning(lcDefaults, "%ls cannot be read and is kept as %ls", qUtf16Printable(m_filePath),
              qUtf16Printable(asidePath));
}

void UserDefaults::waitForWrites()
{
    m_writer->waitForWrites();
}

void UserDefaults::write()
{
    // A map of the writer's own: whether one is shared, Qt asks in a way that orders nothing between threads.
    QVariantMap copy = m_values;
    copy.detach();
    m_writer->schedule(m_filePath, [path = m_filePath, values = std::move(copy)] {
        if (const auto problem = PrivateFile::write(path, PropertyList::serialize(values)))
            qCWarning(lcDefaults, "%ls cannot be written: %ls", qUtf16Printable(path),
                      qUtf16Printable(*problem));
    });
}
