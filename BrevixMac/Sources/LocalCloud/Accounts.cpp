// SPDX-License-Identifier: GPL-3.0-or-later
#include "Accounts.h"

#include "Database.h"
#include "SecureRandom.h"

#include <QCryptographicHash>
#include <QSqlQuery>

#include <algorithm>
#include <utility>

namespace Cloud {

namespace {

constexpr qsizetype refreshTokenSize = 32;
constexpr qsizetype sessionNameSize = 12;
constexpr qsizetype identifierSize = 28;
constexpr qsizetype longestName = 100;

/// How long a replaced token is remembered, to tell a reused one from an unknown one.
constexpr std::chrono::hours replacedTokenMemory{24 * 30};

qint64 micros(Timestamp time)
{
    return time.time_since_epoch().count();
}

const QString accountColumns =
    QStringLiteral("SELECT uid, email, display_name, created, last_sign_in FROM users ");

/// Of a row of accountColumns.
Account accountAt(const QSqlQuery &query)
{
    const auto time = [&](int column) {
        return Timestamp(std::chrono::microseconds(query.value(column).toLongLong()));
    };
    return {query.value(0).toString(), query.value(1).toString(), query.value(2).toString(), time(3),
            query.value(4).isNull() ? time(3) : time(4)};
}

bool isPrintable(const QString &text)
{
    return std::all_of(text.begin(), text.end(),
                       [](QChar character) { return character.isPrint() || character.isSurrogate(); });
}

QByteArray hashOf(const QByteArray &token)
{
    return QCryptographicHash::hash(token, QCryptographicHash::Sha256);
}

} // namespace

const Account &Accounts::localUser()
{
    static const Account account{QStringLiteral("local-user"), QStringLiteral("local@localhost"),
                                 QStringLiteral("Local Library")};
    return account;
}

Accounts::Accounts(Database &database, Clock clock)
    : m_database(database)
    , m_clock(std::move(clock))
{
}

QString Accounts::problemOf(const QString &name, const QString &email)
{
    if (name.isEmpty() || name.size() > longestName || !isPrintable(name))
        return QStringLiteral("Please give a name of at most %1 characters.").arg(longestName);
    const qsizetype at = email.lastIndexOf(u'@');
    if (at <= 0 || at == email.size() - 1 || email.size() > longestEmail || email.contains(u' ') ||
        !isPrintable(email))
        return QStringLiteral("Please give an e-mail address, such as name@example.org.");
    return {};
}

void Accounts::put(const Account &account)
{
    m_database.run(QStringLiteral("INSERT INTO users(uid, email, display_name, created) VALUES(?, ?, ?, ?)"
                                  " ON CONFLICT(uid) DO UPDATE SET email = excluded.email,"
                                  " display_name = excluded.display_name"),
                   {account.uid, account.email, account.displayName, micros(m_clock())});
}

std::optional<Account> Accounts::find(const QString &uid) const
{
    QSqlQuery query = m_database.run(accountColumns + QStringLiteral("WHERE uid = ?"), {uid});
    return query.next() ? std::optional(accountAt(query)) : std::nullopt;
}

std::optional<Account> Accounts::findByEmail(const QString &email) const
{
    QSqlQuery query =
        m_database.run(accountColumns + QStringLiteral("WHERE email = ? COLLATE NOCASE"), {email});
    return query.next() ? std::optional(accountAt(query)) : std::nullopt;
}

QList<Account> Accounts::list() const
{
    QSqlQuery query = m_database.run(accountColumns + QStringLiteral("ORDER BY created, uid"));
    QList<Account> accounts;
    while (query.next())
        accounts.append(accountAt(query));
    return accounts;
}

Account Accounts::create(const QString &name, const QString &email)
{
    const Timestamp now = m_clock();
    Account account{randomIdentifier(identifierSize), email, name, now, now};
    put(account);
    return account;
}

QByteArray Accounts::passwordHash(const QString &uid) const
{
    QSqlQuery query = m_database.run(QStringLiteral("SELECT password FROM users WHERE uid = ?"), {uid});
    return query.next() ? query.value(0).toByteArray() : QByteArray();
}

void Accounts::setPasswordHash(const QString &uid, const QByteArray &hash)
{
    Transaction transaction(m_database);
    m_database.run(QStringLiteral("UPDATE users SET password = ? WHERE uid = ?"),
                   {QString::fromLatin1(hash), uid});
    m_database.run(QStringLiteral("DELETE FROM refresh_tokens WHERE uid = ?"), {uid});
    transaction.commit();
}

void Accounts::remove(const QString &uid, const QString &libraryAppID)
{
    // Text compares byte by byte, and "0" is the character after "/": everything below the user's path.
    const QString path = QStringLiteral("artifacts/%1/users/%2").arg(libraryAppID, uid);
    Transaction transaction(m_database);
    m_database.run(QStringLiteral("DELETE FROM documents WHERE collection > ? AND collection < ?"),
                   {QString(path + u'/'), QString(path + u'0')});
    m_database.run(QStringLiteral("DELETE FROM users WHERE uid = ?"), {uid});
    transaction.commit();
}

QByteArray Accounts::signIn(const Account &account)
{
    const QString session = QString::fromLatin1(base64Url(secureRandomBytes(sessionNameSize)));
    m_database.run(QStringLiteral("UPDATE users SET last_sign_in = ? WHERE uid = ?"),
                   {micros(m_clock()), account.uid});
    return openSession(account, session);
}

QByteArray Accounts::openSession(const Account &account, const QString &session)
{
    Transaction transaction(m_database);
    put(account);
    m_database.run(QStringLiteral("DELETE FROM refresh_tokens WHERE uid = ? AND family = ?"),
                   {account.uid, session});
    QByteArray token = issueToken(account.uid, session);
    transaction.commit();
    return token;
}

Accounts::Refresh Accounts::rotate(const QByteArray &refreshToken)
{
    const Timestamp now = m_clock();
    const QByteArray hash = hashOf(refreshToken);
    Transaction transaction(m_database);
    QSqlQuery query = m_database.run(
        QStringLiteral("SELECT uid, family, replaced FROM refresh_tokens WHERE hash = ?"), {hash});
    if (!query.next())
        return {};
    const QString uid = query.value(0).toString();
    const QString family = query.value(1).toString();
    const QVariant replaced = query.value(2);
    query.finish();
    if (!replaced.isNull() && replaced.toLongLong() + micros(Timestamp(replacementGrace)) < micros(now)) {
        m_database.run(QStringLiteral("DELETE FROM refresh_tokens WHERE uid = ? AND family = ?"),
                       {uid, family});
        transaction.commit();
        return {.account = {}, .refreshToken = {}, .refusal = Refusal::expiredToken};
    }
    m_database.run(
        QStringLiteral("UPDATE refresh_tokens SET replaced = COALESCE(replaced, ?) WHERE hash = ?"),
        {micros(now), hash});
    m_database.run(QStringLiteral("DELETE FROM refresh_tokens WHERE replaced < ?"),
                   {micros(now - replacedTokenMemory)});
    Refresh refresh{.account = find(uid), .refreshToken = issueToken(uid, family)};
    transaction.commit();
    return refresh;
}

QByteArray Accounts::issueToken(const QString &uid, const QString &family)
{
    QByteArray token = base64Url(secureRandomBytes(refreshTokenSize));
    m_database.run(
        QStringLiteral("INSERT INTO refresh_tokens(hash, uid, family, created) VALUES(?, ?, ?, ?)"),
        {hashOf(token), uid, family, micros(m_clock())});
    return token;
}

} // namespace Cloud
