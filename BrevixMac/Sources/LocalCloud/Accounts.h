// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Timestamp.h"

#include <QByteArray>
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
};

/// The users and their refresh tokens, of which only hashes are kept. Belongs to the database's thread;
/// everything throws StorageError.
class Accounts
{
public:
    /// A replaced token is still good for this long: two refreshes that cross each other, or an answer that
    /// was lost, must not end a session.
    static constexpr std::chrono::seconds replacementGrace{10};

    /// The user of this computer, who needs no sign-in.
    static const Account &localUser();

    Accounts(Database &database, Clock clock);

    void put(const Account &account);
    std::optional<Account> find(const QString &uid) const;

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
