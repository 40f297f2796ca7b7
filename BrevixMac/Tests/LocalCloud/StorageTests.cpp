// SPDX-License-Identifier: GPL-3.0-or-later
#include "LocalCloud/DataFolder.h"
#include "LocalCloud/ServiceFixture.h"
#include "Support/TestMain.h"

#include <QDir>
#include <QFile>
#include <QSqlQuery>

using namespace Cloud;

namespace {

constexpr auto ownerOnly =
    QFileDevice::ReadOwner | QFileDevice::WriteOwner | QFileDevice::ReadUser | QFileDevice::WriteUser;

void overwrite(const QString &path, const QByteArray &bytes)
{
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly | QIODevice::Truncate));
    file.write(bytes);
}

QByteArray contentOf(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

class StorageTest : public ServiceFixture
{
protected:
    QStringList filesKeptAside() const
    {
        return QDir(folder.path()).entryList({QStringLiteral("library.sqlite.damaged-*")});
    }
};

} // namespace

TEST_F(StorageTest, databaseAndItsSideFilesAreTheOwnersAlone)
{
    for (const QString &name : {QStringLiteral("library.sqlite"), QStringLiteral("library.sqlite-wal"),
                                QStringLiteral("library.sqlite-shm")}) {
        ASSERT_TRUE(QFile::exists(folder.filePath(name))) << qPrintable(name);
        EXPECT_EQ(QFile::permissions(folder.filePath(name)), ownerOnly) << qPrintable(name);
    }
}

TEST_F(StorageTest, documentsSurviveARestart)
{
    store(QStringLiteral("notes"), QStringLiteral("n1"), {});
    restart();
    EXPECT_EQ(status(get(libraryPath("notes/n1"))), 200);
}

TEST_F(StorageTest, fileThatIsNoDatabaseIsKeptAsideAndReplaced)
{
    service.reset();
    const QByteArray nonsense = QByteArray("this is not a database. ").repeated(400);
    overwrite(databasePath(), nonsense);
    expectWarning(QStringLiteral("was damaged"));
    restart();
    EXPECT_TRUE(service->isUsable());
    EXPECT_TRUE(service->errorString().contains(QStringLiteral("was damaged")));
    EXPECT_EQ(answer(get(libraryPath("categories"))).value(u"documents").toArray().size(), 5);
    ASSERT_EQ(filesKeptAside().size(), 1);
    EXPECT_EQ(contentOf(folder.filePath(filesKeptAside().constFirst())), nonsense);
}

TEST_F(StorageTest, databaseWithDamagedPagesIsKeptAsideAndReplaced)
{
    for (int i = 0; i < 50; ++i)
        store(QStringLiteral("notes"), QString::number(i), {});
    service.reset();
    QByteArray bytes = contentOf(databasePath());
    ASSERT_GT(bytes.size(), 20'000);
    for (qsizetype i = 4096; i < bytes.size(); i += 1)
        bytes[i] = char(0x5a);
    overwrite(databasePath(), bytes);
    expectWarning(QStringLiteral("was damaged"));
    restart();
    EXPECT_TRUE(service->isUsable());
    EXPECT_EQ(filesKeptAside().size(), 1);
    EXPECT_EQ(status(get(libraryPath("notes/7"))), 404);
}

TEST_F(StorageTest, emptyFileBecomesADatabase)
{
    service.reset();
    overwrite(databasePath(), {});
    restart();
    EXPECT_TRUE(service->isUsable());
    EXPECT_TRUE(filesKeptAside().isEmpty());
}

TEST_F(StorageTest, databaseOfANewerVersionIsLeftAlone)
{
    {
        Database database(databasePath());
        ASSERT_TRUE(database.open());
        database.run(QStringLiteral("PRAGMA user_version=99"));
    }
    expectWarning(QStringLiteral("newer version"));
    restart();
    EXPECT_FALSE(service->isUsable());
    EXPECT_TRUE(service->errorString().contains(QStringLiteral("newer version")));
    EXPECT_TRUE(session.idToken.isEmpty());
    EXPECT_EQ(status(get(libraryPath("prompts"))), 503);
    EXPECT_TRUE(filesKeptAside().isEmpty());
}

TEST_F(StorageTest, pathThatCannotHoldADatabaseIsReported)
{
    expectWarning(QStringLiteral("cannot be used"));
    Service broken(demoSite(), folder.filePath(QStringLiteral("missing/library.sqlite")), signingKey);
    EXPECT_FALSE(broken.isUsable());
    EXPECT_FALSE(broken.errorString().isEmpty());
    EXPECT_EQ(broken.handle(get(libraryPath("prompts"))).status, 503);
}

TEST_F(StorageTest, unfinishedTransactionIsRolledBack)
{
    Database database(databasePath());
    ASSERT_TRUE(database.open());
    {
        Transaction transaction(database);
        database.run(QStringLiteral("DELETE FROM documents"));
    }
    EXPECT_EQ(answer(get(libraryPath("categories"))).value(u"documents").toArray().size(), 5);
}

TEST(DataFolderTest, createsTheFolderAndTheKeyForTheOwnerAlone)
{
    const QTemporaryDir parent;
    const QString path = parent.filePath(QStringLiteral("a/b"));
    DataFolder folder(path);
    ASSERT_TRUE(folder.prepare());
    EXPECT_EQ(QFile::permissions(path), ownerOnly | QFileDevice::ExeOwner | QFileDevice::ExeUser);
    EXPECT_EQ(QFile::permissions(path + QStringLiteral("/signing.key")), ownerOnly);
    EXPECT_EQ(folder.signingKey().size(), 32);
}

TEST(DataFolderTest, keyLastsAcrossRestarts)
{
    const QTemporaryDir parent;
    DataFolder first(parent.path());
    DataFolder second(parent.path());
    ASSERT_TRUE(first.prepare());
    ASSERT_TRUE(second.prepare());
    EXPECT_EQ(first.signingKey(), second.signingKey());
}

TEST(DataFolderTest, openPermissionsAreTightened)
{
    const QTemporaryDir parent;
    const QString key = parent.filePath(QStringLiteral("signing.key"));
    ASSERT_TRUE(DataFolder(parent.path()).prepare());
    ASSERT_TRUE(QFile::setPermissions(key, ownerOnly | QFileDevice::ReadGroup | QFileDevice::ReadOther));
    ASSERT_TRUE(DataFolder(parent.path()).prepare());
    EXPECT_EQ(QFile::permissions(key), ownerOnly);
}

TEST(DataFolderTest, damagedKeyIsReplaced)
{
    const QTemporaryDir parent;
    overwrite(parent.filePath(QStringLiteral("signing.key")), "short");
    expectWarning(QStringLiteral("signing key"));
    DataFolder folder(parent.path());
    ASSERT_TRUE(folder.prepare());
    EXPECT_EQ(folder.signingKey().size(), 32);
    EXPECT_EQ(contentOf(parent.filePath(QStringLiteral("signing.key"))), folder.signingKey());
}

TEST(DataFolderTest, folderThatCannotBeCreatedIsReported)
{
    const QTemporaryDir parent;
    overwrite(parent.filePath(QStringLiteral("file")), "x");
    for (const QString &path : {QString(), parent.filePath(QStringLiteral("file")),
                                parent.filePath(QStringLiteral("file/below"))}) {
        DataFolder folder(path);
        EXPECT_FALSE(folder.prepare()) << qPrintable(path);
        EXPECT_TRUE(folder.errorString().contains(QStringLiteral("cannot be used"))) << qPrintable(path);
    }
}

TEST(DataFolderTest, onlyAFolderOfItsOwnIsMadePrivate)
{
    constexpr auto everybody = QFileDevice::ReadOwner | QFileDevice::WriteOwner | QFileDevice::ExeOwner |
                               QFileDevice::ReadOther | QFileDevice::ExeOther;
    const struct
    {
        QString file; // in the folder; empty: none
        bool isUsed;
    } rows[] = {{{}, true},
                {QStringLiteral("signing.key"), true},
                {QStringLiteral("library.sqlite"), true},
                {QStringLiteral("letter.txt"), false},
                {QStringLiteral(".hidden"), false}};
    for (const auto &[file, isUsed] : rows) {
        const QTemporaryDir folder;
        if (!file.isEmpty())
            overwrite(folder.filePath(file), QByteArray(DataFolder::signingKeySize, 'k'));
        ASSERT_TRUE(QFile::setPermissions(folder.path(), everybody));
        DataFolder data(folder.path());
        EXPECT_EQ(data.prepare(), isUsed) << qPrintable(file);
        const bool isPrivate = !(QFile::permissions(folder.path()) & QFileDevice::ReadOther);
        EXPECT_EQ(isPrivate, isUsed) << qPrintable(file);
        EXPECT_EQ(data.errorString().contains(QStringLiteral("it holds something else")), !isUsed);
        EXPECT_EQ(QDir(folder.path()).exists(QStringLiteral("signing.key")), isUsed);
    }
}
