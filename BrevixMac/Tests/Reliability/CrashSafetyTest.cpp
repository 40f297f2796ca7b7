// SPDX-License-Identifier: GPL-3.0-or-later
#include "Reliability/StoredStateKinds.h"

#include "BrevixMac/AuthService.h"
#include "BrevixMac/PreferenceStore.h"
#include "BrevixMac/RecentUsageStore.h"
#include "Foundation/UserDefaults.h"
#include "LocalCloud/Database.h"
#include "LocalCloud/Documents.h"

#include <QDir>
#include <QJsonDocument>
#include <QJsonObject>
#include <QMap>
#include <QProcess>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <csignal>
#include <random>

namespace {

// BREVIX_CRASH_ROUNDS asks for more; the figures of docs/reliability.md are of 500.
int rounds()
{
    const int wanted = qEnvironmentVariableIntValue("BREVIX_CRASH_ROUNDS");
    return wanted > 0 ? wanted : 60;
}

using Numbers = QMap<char, int>;

/// Lets the writer report @p reports writes, waits for @p moment more, kills it, and gives the last number
/// that it reported of each kind.
Numbers writeUntilKilled(const QString &folder, qsizetype reports, std::chrono::microseconds moment)
{
    QProcess writer;
    writer.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    writer.start(qEnvironmentVariable("STATE_WRITER"), {folder});
    QByteArray output;
    while (output.count('\n') <= reports && writer.waitForReadyRead(20'000))
        output += writer.readAllStandardOutput();
    EXPECT_GT(output.count('\n'), reports) << "the writer does not write";
    usleep(useconds_t(moment.count())); // into the middle of a write
    kill(pid_t(writer.processId()), SIGKILL);
    writer.waitForFinished(20'000);
    EXPECT_EQ(writer.exitStatus(), QProcess::CrashExit) << "the writer ended by itself";
    output += writer.readAllStandardOutput();

    Numbers last;
    const QList<QByteArray> lines = output.split('\n');
    for (const QByteArray &line : lines) {
        if (line.size() > 2)
            last[line.at(0)] = line.mid(2).toInt();
    }
    return last;
}

void expectNothingOlder(const QString &folder, const Numbers &last, int round)
{
    UserDefaults defaults(folder + StoredState::defaultsFile);
    ASSERT_EQ(defaults.damagedFilePath(), QString()) << "round " << round;
    const PreferenceStore preferences(defaults);
    EXPECT_GE(preferences.lastSignedInUserID().value_or(QString()).toInt(),
              last.value(StoredState::preferences))
        << "round " << round;

    const RecentUsageStore recents(defaults);
    if (last.contains(StoredState::recents)) {
        ASSERT_FALSE(recents.recentIDs().isEmpty()) << "round " << round;
        EXPECT_GE(recents.recentIDs().constFirst().toInt(), last.value(StoredState::recents))
            << "round " << round;
    }
    if (last.contains(StoredState::session)) {
        const auto session =
            StoredAuthSession::fromJson(defaults.data(AuthService::storageKey).value_or(QByteArray()));
        ASSERT_TRUE(session.has_value()) << "round " << round;
        EXPECT_GE(session->refreshToken.toInt(), last.value(StoredState::session)) << "round " << round;
    }

    Cloud::Database database(folder + StoredState::databaseFile);
    ASSERT_TRUE(database.open()) << "round " << round;
    ASSERT_EQ(database.damageReport(), QString()) << "round " << round;
    const auto documents = Cloud::Documents(database).list(StoredState::collection, 10, {});
    QList<int> numbers;
    for (const Cloud::StoredDocument &document : documents)
        numbers.append(QJsonDocument::fromJson(document.fields).object().value(u"number").toString().toInt());
    if (last.contains(StoredState::database)) {
        ASSERT_EQ(numbers.size(), 2) << "round " << round;
        EXPECT_GE(numbers.at(0), last.value(StoredState::database)) << "round " << round;
    }
    if (!numbers.isEmpty()) {
        EXPECT_EQ(numbers.constFirst(), numbers.constLast()) << "half a transaction, round " << round;
    }
}

} // namespace

TEST(CrashSafety, killedWhileWritingEverythingStaysReadableAndNothingIsOlderThanTheLastCompletedWrite)
{
    const QTemporaryDir folder;
    std::mt19937 random(20261121);
    int writes = 0;
    for (int round = 1; round <= rounds() && !testing::Test::HasFatalFailure(); ++round) {
        const qsizetype reports = random() % 24;
        const std::chrono::microseconds moment(random() % 4000);
        const Numbers last = writeUntilKilled(folder.path(), reports, moment);
        writes = qMax(writes, last.value(StoredState::preferences));
        expectNothingOlder(folder.path(), last, round);
    }
    // A writer that never wrote would prove nothing.
    EXPECT_GT(writes, rounds()) << "too few writes were under way";
    // Temporary files of killed writers may stay behind, but the user's files are the only ones that are
    // read.
    RecordProperty("completed_rounds_of_writes", writes);
}
