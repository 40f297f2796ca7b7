// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>
#include <QString>
#include <QVariantMap>

#include <memory>
#include <optional>

class FileWriter;

/// A per-user key-value store that keeps data, booleans and text apart, in one XML property list.
///
/// Main thread only. The file is read once at construction. Every change is on its way to the disk at once,
/// on a thread of its own, and is written atomically (temporary file, fsync, rename, mode 0600), so a crash
/// leaves either the old or the new file. The destructor waits until everything is written. A file that
/// cannot be parsed is renamed to "<name>.damaged-<UTC time>" and the store starts empty. A failed write is
/// logged and keeps the values in memory; nothing is thrown.
class UserDefaults
{
public:
    explicit UserDefaults(QString filePath);
    ~UserDefaults();

    UserDefaults(const UserDefaults &) = delete;
    UserDefaults &operator=(const UserDefaults &) = delete;

    /// Path of the store named @p domain in the user's configuration folder (XDG Base Directory
    /// specification).
    static QString pathForDomain(const QString &domain);

    /// A value under @p key; nothing when it is missing or of another kind.
    std::optional<QByteArray> data(const QString &key) const;
    std::optional<bool> boolean(const QString &key) const;
    std::optional<QString> text(const QString &key) const;

    void setData(const QString &key, const QByteArray &value);
    void setBoolean(const QString &key, bool value);
    void setText(const QString &key, const QString &value);
    void remove(const QString &key);

    /// Blocks until every change so far is on the disk.
    void waitForWrites();

    QString filePath() const { return m_filePath; }

    /// Where a damaged file was kept aside at construction; empty when the file was sound or missing.
    QString damagedFilePath() const { return m_damagedFilePath; }

private:
    void load();
    void write();

    QString m_filePath;
    QString m_damagedFilePath;
    QVariantMap m_values;
    std::unique_ptr<FileWriter> m_writer;
};
