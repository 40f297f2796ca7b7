// SPDX-License-Identifier: GPL-3.0-or-later
#include "UserCommands.h"

#include "Foundation/Console.h"
#include "LocalCloud/Accounts.h"
#include "LocalCloud/DataFolder.h"
#include "LocalCloud/Database.h"
#include "LocalCloud/Passwords.h"
#include "LocalCloud/StarterLibrary.h"

#include <functional>
#include <utility>

using namespace Cloud;

namespace {

using Work = std::function<int(Database &, Accounts &)>;

/// Runs @p work on the server's database.
int withAccounts(const LocalCloud::Options &options, const Work &work)
{
    DataFolder folder(options.dataFolder);
    if (!folder.prepare())
        return Console::fail(folder.errorString());
    Database database(folder.databasePath());
    if (!database.open())
        return Console::fail(QStringLiteral("The database cannot be used: ") + database.errorString());
    try {
        Accounts accounts(database, &systemTime);
        return work(database, accounts);
    } catch (const StorageError &error) {
        return Console::fail(QString::fromUtf8(error.what()));
    }
}

/// The hash of a password that is asked for; empty when there is none, with the reason printed.
QByteArray askedPasswordHash()
{
    const QString password = Console::askPassword(QStringLiteral("Password: "));
    QString problem = passwordProblem(password);
    if (problem.isEmpty() && Console::isInteractive() &&
        Console::askPassword(QStringLiteral("Once more: ")) != password)
        problem = QStringLiteral("The two passwords differ.");
    QByteArray hash = problem.isEmpty() ? passwordHash(password) : QByteArray();
    if (hash.isEmpty())
        Console::fail(problem.isEmpty() ? QStringLiteral("There is not enough memory to hash a password.")
                                        : problem);
    return hash;
}

int noSuchAccount(const QString &email)
{
    return Console::fail(QStringLiteral("There is no account \"%1\".").arg(email));
}

} // namespace

UserCommands::UserCommands(LocalCloud::Options options)
    : m_options(std::move(options))
{
}

int UserCommands::add(const QString &email, const QString &name) const
{
    const QString problem = Accounts::problemOf(name, email);
    if (!problem.isEmpty())
        return Console::fail(problem);
    return withAccounts(m_options, [&](Database &database, Accounts &accounts) {
        if (accounts.findByEmail(email))
            return Console::fail(QStringLiteral("There is an account \"%1\" already.").arg(email));
        const QByteArray hash = askedPasswordHash();
        if (hash.isEmpty())
            return Console::exitFailure;
        const Account account = accounts.create(name, email);
        accounts.setPasswordHash(account.uid, hash);
        seedStarterLibrary(database, m_options.libraryAppID, account.uid, systemTime());
        return Console::say(QStringLiteral("Added %1.").arg(email));
    });
}

int UserCommands::setPassword(const QString &email) const
{
    return withAccounts(m_options, [&](Database &, Accounts &accounts) {
        const auto account = accounts.findByEmail(email);
        if (!account)
            return noSuchAccount(email);
        const QByteArray hash = askedPasswordHash();
        if (hash.isEmpty())
            return Console::exitFailure;
        accounts.setPasswordHash(account->uid, hash);
        return Console::say(QStringLiteral("Changed the password of %1 and ended its sessions.").arg(email));
    });
}

int UserCommands::remove(const QString &email) const
{
    return withAccounts(m_options, [&](Database &, Accounts &accounts) {
        const auto account = accounts.findByEmail(email);
        if (!account)
            return noSuchAccount(email);
        accounts.remove(account->uid, m_options.libraryAppID);
        return Console::say(QStringLiteral("Removed %1 and its library.").arg(email));
    });
}

int UserCommands::list() const
{
    return withAccounts(m_options, [](Database &, Accounts &accounts) {
        for (const Account &account : accounts.list())
            Console::say(account.email + u'\t' + account.displayName);
        return 0;
    });
}
