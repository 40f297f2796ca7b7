// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Timestamp.h"

#include <QByteArray>
#include <QList>
#include <QString>

#include <optional>

namespace Cloud {

class Database;

/// A user. A value.
struct Account
{
    QString uid;
    QString email;
    QString displayName;
    Timestamp createdAt{};
    Timestamp lastSignInAt{}; ///< the creation time until somebody signs in
};

/// The users and their refresh tokens, of which only hashes are kept. Belongs to the database's thread;
/// everything throws StorageError.
class Accounts
{
public:
    /// A replaced token is still good for this long: two refreshes that cross each other, or an answer that
    /// was lost, must not end a session.
    static constexpr std::chrono::seconds replacementGrace{10};

    static constexpr qsizetype longestEmail = 254; ///< characters; RFC 5321

    /// The user of this computer, who needs no sign-in.
    static const Account &localUser();

    Accounts(Database &database, Clock clock);

    /// Why an account cannot have this name and address, for the person who typed them; empty when it can.
    static QString problemOf(const QString &name, const QString &email);

    void put(const Account &account);
    std::optional<Account> find(const QString &uid) const;

    /// The case of ASCII letters makes no difference.
    std::optional<Account> findByEmail(const QString &email) const;

    /// Everybody, oldest account first.
    QList<Account> list() const;

    /// A new account with an identifier of its own. The address must not be taken.
    Account create(const QString &name, const QString &email);

    /// Empty for an account without a password, which no password opens.
    QByteArray passwordHash(const QString &uid) const;

    /// Ends all sessions of the account, too.
    void setPasswordHash(const QString &uid, const QByteArray &hash);

    /// Deletes the account, its sessions and its library below artifacts/@p libraryAppID.
    void remove(const QString &uid, const QString &libraryAppID);

    /// Opens one more session of @p account and gives its refresh token.
    QByteArray signIn(const Account &account);

    /// A fresh session of @p account in place of the former one called @p session.
    QByteArray openSession(const Account &account, const QString &session);

    enum class Refusal { unknownToken, expiredToken };
    struct Refresh
    {
        std::optional<Account> account; ///< absent: refused
        QByteArray refreshToken;
        Refusal refusal = Refusal::unknownToken;
    };

    /// Trades @p refreshToken for its successor. One that was traded long before may be stolen: it ends the
    /// session.
    Refresh rotate(const QByteArray &refreshToken);

private:
    QByteArray issueToken(const QString &uid, const QString &family);

    Database &m_database;
    Clock m_clock;
};

} // namespace Cloud
