// SPDX-License-Identifier: GPL-3.0-or-later
#include "Foundation/PropertyList.h"
#include "Foundation/UserDefaults.h"
#include "Support/TestMain.h"

#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QRegularExpression>
#include <QStandardPaths>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <sys/stat.h>
#include <unistd.h>

namespace {

const QString key = QStringLiteral("key");

class UserDefaultsTest : public testing::Test
{
protected:
    QString path() const { return folder.filePath(QStringLiteral("brevix/store/defaults.plist")); }
    QString storeFolder() const { return QFileInfo(path()).path(); }

    QStringList files() const
    {
        return QDir(storeFolder())
            .entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot, QDir::Name);
    }

    void writeFile(const QByteArray &bytes) const
    {
        QDir().mkpath(storeFolder());
        QFile file(path());
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        ASSERT_EQ(file.write(bytes), bytes.size());
    }

    static QByteArray readFile(const QString &path)
    {
        QFile file(path);
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    }

    static unsigned mode(const QString &path)
    {
        struct stat status = {};
        return ::stat(QFile::encodeName(path).constData(), &status) == 0 ? status.st_mode & 07777u : 0;
    }

    QTemporaryDir folder;
};

} // namespace

TEST_F(UserDefaultsTest, aMissingFileIsAnEmptyStoreAndIsNotMadeByReading)
{
    const UserDefaults defaults(path());
    EXPECT_FALSE(defaults.data(key));
    EXPECT_FALSE(defaults.boolean(key));
    EXPECT_FALSE(defaults.text(key));
    EXPECT_TRUE(defaults.damagedFilePath().isEmpty());
    EXPECT_EQ(defaults.filePath(), path());
    EXPECT_FALSE(QFileInfo::exists(path()));
}

TEST_F(UserDefaultsTest, keepsEveryKindAcrossRestarts)
{
    QByteArray everyByte;
    for (int byte = 0; byte < 256; ++byte)
        everyByte.append(static_cast<char>(byte));
    const QString text = QStringLiteral(" <a & \"b\"> é e\u0301 👩‍👩‍👧\n\ttail ");
    {
        UserDefaults defaults(path());
        defaults.setData(QStringLiteral("data"), everyByte);
        defaults.setData(QStringLiteral("empty data"), QByteArray());
        defaults.setBoolean(QStringLiteral("true"), true);
        defaults.setBoolean(QStringLiteral("false"), false);
        defaults.setText(QStringLiteral("text <&>"), text);
        defaults.setText(QStringLiteral("empty text"), QString());
    }
    const UserDefaults defaults(path());
    EXPECT_EQ(defaults.data(QStringLiteral("data")), everyByte);
    EXPECT_EQ(defaults.data(QStringLiteral("empty data")), QByteArray());
    EXPECT_EQ(defaults.boolean(QStringLiteral("true")), true);
    EXPECT_EQ(defaults.boolean(QStringLiteral("false")), false);
    EXPECT_EQ(defaults.text(QStringLiteral("text <&>")), text);
    EXPECT_EQ(defaults.text(QStringLiteral("empty text")), QString());
}

TEST_F(UserDefaultsTest, everyChangeIsOnItsWayToTheDiskAtOnce)
{
    UserDefaults defaults(path());
    defaults.setText(key, QStringLiteral("first"));
    defaults.waitForWrites();
    EXPECT_EQ(UserDefaults(path()).text(key), QStringLiteral("first"));
    defaults.setText(key, QStringLiteral("second"));
    defaults.waitForWrites();
    EXPECT_EQ(UserDefaults(path()).text(key), QStringLiteral("second"));
    defaults.setBoolean(key, true);
    defaults.waitForWrites();
    EXPECT_EQ(UserDefaults(path()).boolean(key), true);
    defaults.remove(key);
    defaults.waitForWrites();
    EXPECT_FALSE(UserDefaults(path()).boolean(key));
    EXPECT_EQ(files(), QStringList(QStringLiteral("defaults.plist"))) << "no temporary file stays";
}

TEST_F(UserDefaultsTest, readsTheFileOnlyOnce)
{
    const UserDefaults defaults(path());
    UserDefaults(path()).setText(key, QStringLiteral("from elsewhere"));
    EXPECT_FALSE(defaults.text(key));
}

TEST_F(UserDefaultsTest, valuesOfAnotherKindReadAsNothing)
{
    UserDefaults defaults(path());
    defaults.setText(QStringLiteral("text"), QStringLiteral("false"));
    defaults.setBoolean(QStringLiteral("boolean"), true);
    defaults.setData(QStringLiteral("data"), "false");
    defaults.waitForWrites();
    for (const bool isReloaded : {false, true}) {
        const UserDefaults reloaded(path());
        const UserDefaults &store = isReloaded ? reloaded : defaults;
        EXPECT_FALSE(store.boolean(QStringLiteral("text")));
        EXPECT_FALSE(store.data(QStringLiteral("text")));
        EXPECT_FALSE(store.text(QStringLiteral("boolean")));
        EXPECT_FALSE(store.data(QStringLiteral("boolean")));
        EXPECT_FALSE(store.text(QStringLiteral("data")));
        EXPECT_FALSE(store.boolean(QStringLiteral("data")));
    }
}

TEST_F(UserDefaultsTest, numbersDatesAndCollectionsReadAsNothingButAreKept)
{
    const QVariantMap foreign{
        {QStringLiteral("integer"), 1LL},
        {QStringLiteral("real"), 1.5},
        {QStringLiteral("date"), QDateTime(QDate(2024, 5, 1), QTime(9, 30), Qt::UTC)},
        {QStringLiteral("list"), QVariantList{true, 2LL}},
        {QStringLiteral("dictionary"), QVariantMap{{QStringLiteral("a"), QStringLiteral("b")}}},
    };
    writeFile(PropertyList::serialize(foreign));
    UserDefaults defaults(path());
    for (auto entry = foreign.begin(); entry != foreign.end(); ++entry) {
        EXPECT_FALSE(defaults.boolean(entry.key()));
        EXPECT_FALSE(defaults.text(entry.key()));
        EXPECT_FALSE(defaults.data(entry.key()));
    }
    defaults.setBoolean(key, true);
    defaults.waitForWrites();
    QVariantMap expected = foreign;
    expected.insert(key, true);
    EXPECT_EQ(PropertyList::readDictionary(path()), expected);
}

TEST_F(UserDefaultsTest, onlyTheOwnerMayReadIt)
{
    const mode_t previous = ::umask(0);
    UserDefaults defaults(path());
    defaults.setText(key, QStringLiteral("secret"));
    defaults.waitForWrites();
    ::umask(previous);
    EXPECT_EQ(mode(path()), 0600u);
    EXPECT_EQ(mode(storeFolder()), 0700u);
    EXPECT_EQ(mode(QFileInfo(storeFolder()).path()), 0700u);
}

TEST_F(UserDefaultsTest, aFileThatOthersCouldReadIsClosedByTheNextWrite)
{
    writeFile(PropertyList::serialize({{key, true}}));
    ::chmod(QFile::encodeName(path()).constData(), 0644);
    UserDefaults defaults(path());
    defaults.setBoolean(key, false);
    defaults.waitForWrites();
    EXPECT_EQ(mode(path()), 0600u);
}

TEST_F(UserDefaultsTest, aFolderThatIsThereKeepsItsPermissions)
{
    QDir().mkpath(storeFolder());
    ::chmod(QFile::encodeName(storeFolder()).constData(), 0755);
    UserDefaults defaults(path());
    defaults.setBoolean(key, false);
    defaults.waitForWrites();
    EXPECT_EQ(mode(storeFolder()), 0755u);
}

TEST_F(UserDefaultsTest, aDamagedFileIsKeptAside)
{
    QByteArray cut = PropertyList::serialize({{key, QStringLiteral("value")}});
    cut.truncate(cut.size() / 2);
    const QList<QByteArray> damages{cut,
                                    "",
                                    "not a property list",
                                    "<plist><array/></plist>",
                                    "bplist00garbage",
                                    QByteArray(PropertyList::maximumSize + 1, ' ')};
    for (const QByteArray &damage : damages) {
        expectWarning(QStringLiteral("cannot be read and is kept as"));
        writeFile(damage);
        UserDefaults defaults(path());
        EXPECT_FALSE(defaults.text(key));
        const QRegularExpression name(QStringLiteral("/defaults\\.plist\\.damaged-\\d{8}T\\d{6}Z(-\\d+)?$"));
        EXPECT_TRUE(name.match(defaults.damagedFilePath()).hasMatch())
            << qPrintable(defaults.damagedFilePath());
        EXPECT_EQ(readFile(defaults.damagedFilePath()), damage);
        EXPECT_FALSE(QFileInfo::exists(path()));
        defaults.setText(key, QStringLiteral("new"));
        defaults.waitForWrites();
        EXPECT_EQ(UserDefaults(path()).text(key), QStringLiteral("new"));
        EXPECT_EQ(readFile(defaults.damagedFilePath()), damage) << "writing leaves it alone";
    }
    EXPECT_EQ(files().size(), damages.size() + 1) << "no copy replaces another";
}

TEST_F(UserDefaultsTest, aFolderInItsPlaceIsKeptAside)
{
    expectWarning(QStringLiteral("cannot be read and is kept as"));
    QDir().mkpath(path());
    UserDefaults defaults(path());
    EXPECT_TRUE(QFileInfo(defaults.damagedFilePath()).isDir());
    defaults.setBoolean(key, true);
    defaults.waitForWrites();
    EXPECT_EQ(UserDefaults(path()).boolean(key), true);
}

TEST_F(UserDefaultsTest, aFailedWriteIsLoggedAndKeepsTheValueInMemory)
{
    QFile blocker(folder.filePath(QStringLiteral("brevix")));
    ASSERT_TRUE(blocker.open(QIODevice::WriteOnly)); // a file where a folder is needed
    expectWarning(QStringLiteral("cannot be made"));
    UserDefaults defaults(path());
    defaults.setText(key, QStringLiteral("kept"));
    defaults.waitForWrites();
    EXPECT_EQ(defaults.text(key), QStringLiteral("kept"));

    ASSERT_TRUE(blocker.remove());
    defaults.setBoolean(QStringLiteral("other"), true);
    defaults.waitForWrites();
    EXPECT_EQ(UserDefaults(path()).text(key), QStringLiteral("kept")) << "the next write catches up";
}

TEST_F(UserDefaultsTest, aFailedWriteLeavesTheOldFileWhole)
{
    writeFile(PropertyList::serialize({{key, QStringLiteral("old")}}));
    UserDefaults defaults(path());
    const QString moved = storeFolder() + QStringLiteral("-moved");
    ASSERT_TRUE(QDir().rename(storeFolder(), moved));
    QFile blocker(storeFolder());
    ASSERT_TRUE(blocker.open(QIODevice::WriteOnly));
    expectWarning(QStringLiteral("cannot be made"));
    defaults.setText(key, QStringLiteral("new"));
    defaults.waitForWrites();
    EXPECT_EQ(UserDefaults(moved + QStringLiteral("/defaults.plist")).text(key), QStringLiteral("old"));
}

TEST_F(UserDefaultsTest, anUnwritableFolderIsSurvived)
{
    if (::geteuid() == 0)
        GTEST_SKIP() << "root may write everywhere";
    writeFile(PropertyList::serialize({{key, QStringLiteral("old")}}));
    ::chmod(QFile::encodeName(storeFolder()).constData(), 0500);
    expectWarning(QStringLiteral("cannot be written"));
    UserDefaults defaults(path());
    defaults.setText(key, QStringLiteral("new"));
    defaults.waitForWrites();
    EXPECT_EQ(defaults.text(key), QStringLiteral("new"));
    EXPECT_EQ(UserDefaults(path()).text(key), QStringLiteral("old"));
    ::chmod(QFile::encodeName(storeFolder()).constData(), 0700);
}

TEST_F(UserDefaultsTest, aFileSystemThatTakesNoFilesIsSurvived)
{
    expectWarning(QStringLiteral("cannot be written"));
    UserDefaults defaults(QStringLiteral("/proc/defaults.plist"));
    defaults.setText(key, QStringLiteral("kept"));
    defaults.waitForWrites();
    EXPECT_EQ(defaults.text(key), QStringLiteral("kept"));
}

TEST_F(UserDefaultsTest, aLinkedFileStaysALink)
{
    const QString target = folder.filePath(QStringLiteral("dotfiles.plist"));
    QDir().mkpath(storeFolder());
    ASSERT_TRUE(QFile::link(target, path()));
    QFile file(target);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write(PropertyList::serialize({{key, true}}));
    file.close();
    UserDefaults defaults(path());
    EXPECT_EQ(defaults.boolean(key), true);
    defaults.setBoolean(key, false);
    defaults.waitForWrites();
    EXPECT_TRUE(QFileInfo(path()).isSymLink());
    EXPECT_EQ(UserDefaults(target).boolean(key), false);
}

TEST(UserDefaultsPath, liesInTheUsersConfigurationFolder)
{
    const QString configuration = QStandardPaths::writableLocation(QStandardPaths::GenericConfigLocation);
    EXPECT_EQ(UserDefaults::pathForDomain(QStringLiteral("brevix")),
              configuration + QStringLiteral("/brevix/defaults.plist"));
}
