// SPDX-License-Identifier: GPL-3.0-or-later
// Writes what Brevix keeps on disk, over and over, in the folder it is given, until it is killed. After each
// write that has returned it says so on standard output: one line with a letter for what was written and a
// growing number.
#include "Reliability/StoredStateKinds.h"

#include "BrevixMac/AuthService.h"
#include "BrevixMac/PreferenceStore.h"
#include "BrevixMac/RecentUsageStore.h"
#include "Foundation/UserDefaults.h"
#include "LocalCloud/Database.h"
#include "LocalCloud/Documents.h"

#include <QCoreApplication>

#include <unistd.h>

namespace {

void report(char kind, int number)
{
    char line[32];
    const int length = std::snprintf(line, sizeof line, "%c %d\n", kind, number);
    if (write(STDOUT_FILENO, line, size_t(length)) != length)
        std::exit(1);
}

// Sizes change from write to write, so that a file that was cut off or mixed with its predecessor shows.
QString padding(int number)
{
    return QString(100 + number * 37 % 5000, QLatin1Char('x'));
}

} // namespace

int main(int argc, char **argv)
{
    QCoreApplication application(argc, argv);
    const QString folder = QString::fromLocal8Bit(argv[1]);
    UserDefaults defaults(folder + StoredState::defaultsFile);
    PreferenceStore preferences(defaults);
    RecentUsageStore recents(defaults);
    Cloud::Database database(folder + StoredState::databaseFile);
    if (!database.open())
        return 1;
    Cloud::Documents documents(database);

    int number = preferences.lastSignedInUserID().value_or(QStringLiteral("0")).toInt();
    report(StoredState::started, number);
    for (;;) {
        ++number;
        preferences.setLastSignedInUserID(QString::number(number));
        defaults.waitForWrites();
        report(StoredState::preferences, number);

        PromptItem prompt;
        prompt.id = QString::number(number);
        prompt.title = padding(number);
        recents.record(prompt, std::nullopt);
        defaults.waitForWrites();
        report(StoredState::recents, number);

        StoredAuthSession session;
        session.uid = QStringLiteral("u");
        session.firebaseIDToken = padding(number);
        session.refreshToken = QString::number(number);
        session.expiresAt = QDateTime::fromSecsSinceEpoch(1'800'000'000, Qt::UTC);
        defaults.setData(AuthService::storageKey, session.toJson());
        defaults.waitForWrites();
        report(StoredState::session, number);

        Cloud::Transaction transaction(database);
        for (const QString &id : {QStringLiteral("a"), QStringLiteral("b")})
            documents.put(StoredState::collection, id,
                          {{QStringLiteral("number"), QString::number(number)},
                           {QStringLiteral("padding"), padding(number)}},
                          Cloud::Timestamp());
        transaction.commit();
        report(StoredState::database, number);
    }
}
