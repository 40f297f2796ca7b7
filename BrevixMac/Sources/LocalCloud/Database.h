// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QSqlDatabase>
#include <QString>
#include <QVariantList>

#include <stdexcept>

class QSqlQuery;

namespace Cloud {

/// The database could not do what was asked (disk full, locked by another process, damaged while in use).
/// Stays inside the server, which answers it with an error status.
class StorageError : public std::runtime_error
{
public:
    explicit StorageError(const QString &message)
        : std::runtime_error(message.toStdString())
    {
    }
};

/// One SQLite file in WAL mode and its tables. Belongs to the thread that opened it.
class Database
{
public:
    explicit Database(QString path);
    ~Database();

    Database(const Database &) = delete;
    Database &operator=(const Database &) = delete;

    /// Opens the file, creating it (0600) and its tables when missing. A damaged file is kept aside under
    /// another name, and a fresh one takes its place; damageReport() then says so. False when there is no
    /// usable database; errorString() says why.
    bool open();

    const QString &errorString() const { return m_errorString; }
    const QString &damageReport() const { return m_damageReport; }

    /// Runs one statement. Throws StorageError.
    QSqlQuery run(const QString &statement, const QVariantList &values = {});

private:
    enum class Health { sound, damaged, unusable };

    Health tryOpen();
    Health check();
    Health failure(const QString &what, const QString &nativeCode);
    bool createFile();
    void close();
    bool keepDamagedFileAside();
    void migrate();

    QString m_path;
    QString m_connectionName;
    QSqlDatabase m_connection;
    QString m_errorString;
    QString m_damageReport;
};

/// A write transaction; rolled back unless commit() was called.
class Transaction
{
public:
    /// Waits for other writers. Throws StorageError.
    explicit Transaction(Database &database);
    ~Transaction();

    Transaction(const Transaction &) = delete;
    Transaction &operator=(const Transaction &) = delete;

    /// Throws StorageError.
    void commit();

private:
    Database &m_database;
    bool m_isOpen = true;
};

} // namespace Cloud
