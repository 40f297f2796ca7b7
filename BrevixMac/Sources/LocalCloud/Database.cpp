// SPDX-License-Identifier: GPL-3.0-or-later
#include "Database.h"

#include <QDateTime>
#include <QFile>
#include <QLoggingCategory>
#include <QSqlError>
#include <QSqlQuery>
#include <QUuid>

#include <utility>

namespace Cloud {

namespace {

Q_LOGGING_CATEGORY(logDatabase, "brevix.localcloud.database")

/// Small caches: the whole library is a few hundred kilobytes and is read every 45 seconds.
const QStringList settings{
    QStringLiteral("PRAGMA journal_mode=WAL"),       QStringLiteral("PRAGMA synchronous=NORMAL"),
    QStringLiteral("PRAGMA foreign_keys=ON"),        QStringLiteral("PRAGMA cache_size=-256"),
    QStringLiteral("PRAGMA wal_autocheckpoint=128"), QStringLiteral("PRAGMA journal_size_limit=1048576"),
    QStringLiteral("PRAGMA cell_size_check=ON"),
};

/// What turns each version of the tables into the next; the first makes them.
const QList<QStringList> migrations{
    {
        QStringLiteral("CREATE TABLE settings(key TEXT PRIMARY KEY, value TEXT NOT NULL)"),
        QStringLiteral(
            "CREATE TABLE documents(collection TEXT NOT NULL, id TEXT NOT NULL, fields BLOB NOT NULL,"
            " created INTEGER NOT NULL, updated INTEGER NOT NULL, PRIMARY KEY(collection, id))"),
        QStringLiteral(
            "CREATE TABLE users(uid TEXT PRIMARY KEY, email TEXT NOT NULL, display_name TEXT NOT NULL,"
            " created INTEGER NOT NULL)"),
        QStringLiteral("CREATE TABLE refresh_tokens(hash BLOB PRIMARY KEY,"
                       " uid TEXT NOT NULL REFERENCES users(uid) ON DELETE CASCADE, family TEXT NOT NULL,"
                       " created INTEGER NOT NULL, replaced INTEGER)"),
    },
    {
        QStringLiteral("ALTER TABLE users ADD COLUMN password TEXT"),
        QStringLiteral("ALTER TABLE users ADD COLUMN last_sign_in INTEGER"),
        QStringLiteral("CREATE UNIQUE INDEX users_email ON users(email COLLATE NOCASE)"),
        QStringLiteral("ALTER TABLE documents ADD COLUMN owner TEXT"),
    },
};

/// SQLite's primary result codes SQLITE_CORRUPT and SQLITE_NOTADB.
bool meansDamage(const QString &nativeCode)
{
    const int primaryCode = nativeCode.toInt() & 0xff;
    return primaryCode == 11 || primaryCode == 26;
}

} // namespace

Database::Database(QString path)
    : m_path(std::move(path))
    , m_connectionName(QUuid::createUuid().toString(QUuid::WithoutBraces))
{
}

Database::~Database()
{
    close();
}

bool Database::open()
{
    Health health = tryOpen();
    if (health == Health::damaged && keepDamagedFileAside())
        health = tryOpen();
    if (health == Health::sound)
        return true;
    qCWarning(logDatabase) << "The library database cannot be used:" << m_errorString;
    close();
    return false;
}

QSqlQuery Database::run(const QString &statement, const QVariantList &values)
{
    QSqlQuery query(m_connection);
    query.setForwardOnly(true);
    bool done = query.prepare(statement);
    for (const QVariant &value : values)
        query.addBindValue(value);
    done = done && query.exec();
    if (!done)
        throw StorageError(query.lastError().databaseText());
    return query;
}

Database::Health Database::tryOpen()
{
    if (!createFile())
        return Health::unusable;
    m_connection = QSqlDatabase::addDatabase(QStringLiteral("QSQLITE"), m_connectionName);
    m_connection.setDatabaseName(m_path);
    m_connection.setConnectOptions(QStringLiteral("QSQLITE_BUSY_TIMEOUT=2000"));
    if (!m_connection.open())
        return failure(m_connection.lastError().databaseText(), m_connection.lastError().nativeErrorCode());
    return check();
}

Database::Health Database::check()
{
    QSqlQuery query(m_connection);
    for (const QString &setting : settings)
        if (!query.exec(setting))
            return failure(query.lastError().databaseText(), query.lastError().nativeErrorCode());
    if (!query.exec(QStringLiteral("PRAGMA quick_check(1)")) || !query.next())
        return failure(query.lastError().databaseText(), query.lastError().nativeErrorCode());
    if (query.value(0).toString() != QLatin1String("ok")) {
        m_errorString = query.value(0).toString();
        return Health::damaged;
    }
    query.finish();
    try {
        migrate();
    } catch (const StorageError &error) {
        m_errorString = QString::fromUtf8(error.what());
        return Health::unusable;
    }
    return Health::sound;
}

Database::Health Database::failure(const QString &what, const QString &nativeCode)
{
    m_errorString = what;
    return meansDamage(nativeCode) ? Health::damaged : Health::unusable;
}

/// SQLite gives its side files the mode of the database, so that one has to be private from the start.
bool Database::createFile()
{
    QFile file(m_path);
    if (file.open(QIODevice::ReadWrite) &&
        file.setPermissions(QFileDevice::ReadOwner | QFileDevice::WriteOwner))
        return true;
    m_errorString = file.errorString();
    return false;
}

void Database::close()
{
    if (!m_connection.isValid())
        return;
    m_connection.close();
    m_connection = {};
    QSqlDatabase::removeDatabase(m_connectionName);
}

bool Database::keepDamagedFileAside()
{
    close();
    const QString stamp = QDateTime::currentDateTimeUtc().toString(QStringLiteral("yyyyMMddTHHmmsszzzZ"));
    const QString aside = m_path + QStringLiteral(".damaged-") + stamp;
    for (const QString &suffix : {QString(), QStringLiteral("-wal"), QStringLiteral("-shm")}) {
        if (QFile::exists(m_path + suffix) && !QFile::rename(m_path + suffix, aside + suffix)) {
            m_errorString += QStringLiteral(" (the damaged file could not be moved away)");
            return false;
        }
    }
    m_damageReport =
        QStringLiteral(
            "The library database was damaged (%1). It is kept as \"%2\", and a fresh one was made.")
            .arg(m_errorString, aside);
    m_errorString.clear();
    qCWarning(logDatabase).noquote() << m_damageReport;
    return true;
}

void Database::migrate()
{
    Transaction transaction(*this);
    QSqlQuery query = run(QStringLiteral("PRAGMA user_version"));
    const int version = query.next() ? query.value(0).toInt() : 0;
    query.finish();
    const int schemaVersion = int(migrations.size());
    if (version > schemaVersion)
        throw StorageError(QStringLiteral("it was written by a newer version of this program"));
    if (version == schemaVersion)
        return;
    for (int step = version; step < schemaVersion; ++step)
        for (const QString &statement : migrations[step])
            run(statement);
    run(QStringLiteral("PRAGMA user_version=%1").arg(schemaVersion));
    transaction.commit();
}

Transaction::Transaction(Database &database)
    : m_database(database)
{
    m_database.run(QStringLiteral("BEGIN IMMEDIATE"));
}

Transaction::~Transaction()
{
    if (!m_isOpen)
        return;
    try {
        m_database.run(QStringLiteral("ROLLBACK"));
    } catch (const StorageError &error) {
        qCWarning(logDatabase) << "A transaction could not be rolled back:" << error.what();
    }
}

void Transaction::commit()
{
    m_database.run(QStringLiteral("COMMIT"));
    m_isOpen = false;
}

} // namespace Cloud
