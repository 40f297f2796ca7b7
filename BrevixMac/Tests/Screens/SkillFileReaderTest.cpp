// SPDX-License-Identifier: GPL-3.0-or-later
#include "SkillFileReader.h"

#include "Support/Waiting.h"

#include <QElapsedTimer>
#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <sys/stat.h>
#include <unistd.h>

#include <thread>

namespace {

class SkillFileReaderTest : public testing::Test
{
protected:
    QTemporaryDir folder;
    std::atomic<bool> isStopped = false;

    QString path(const QString &name) { return folder.filePath(name); }

    QString write(const QString &name, const QByteArray &bytes)
    {
        QFile file(path(name));
        EXPECT_TRUE(file.open(QIODevice::WriteOnly));
        EXPECT_EQ(file.write(bytes), bytes.size());
        return path(name);
    }

    SkillFileReader::Result read(const QString &file) { return SkillFileReader::readFile(file, isStopped); }
    QString problem(const QString &file) { return read(file).problem; }
};

TEST_F(SkillFileReaderTest, readsAFileWhole)
{
    const auto result = read(write(QStringLiteral("a.md"), "# Title\n\nTwo words.\n"));
    EXPECT_EQ(result.problem, u"");
    EXPECT_EQ(result.file,
              (SkillFile{QStringLiteral("a.md"), QStringLiteral("# Title\n\nTwo words.\n"), 3, 3}));
}

struct ContentCase
{
    const char *name;
    QByteArray bytes;
    QString text;    ///< expected
    QString problem; ///< expected
};

TEST_F(SkillFileReaderTest, decidesOnEveryKindOfContent)
{
    const QString notText = QStringLiteral("It is not a text file.");
    const QString notUtf8 = QStringLiteral("It is not encoded in UTF-8.");
    const QString empty = QStringLiteral("It is empty.");
    const ContentCase cases[] = {
        {"a byte-order mark is taken off", "\xef\xbb\xbf# T", QStringLiteral("# T"), {}},
        {"carriage returns and line feeds", "a\r\nb\r\n", QStringLiteral("a\nb\n"), {}},
        {"carriage returns alone", "a\rb", QStringLiteral("a\nb"), {}},
        {"other scripts",
         "\xe4\xbb\xa3\xe7\xa0\x81 \xf0\x9f\x9a\x80",
         QStringLiteral("\u4ee3\u7801 \U0001f680"),
         {}},
        {"nothing", "", {}, empty},
        {"a byte-order mark alone", "\xef\xbb\xbf", {}, empty},
        {"Latin-1", "caf\xe9", {}, notUtf8},
        {"cut off within a character", "caf\xc3", {}, notUtf8},
        {"a surrogate", "\xed\xa0\x80", {}, notUtf8},
        {"overlong", "\xc0\x80", {}, notUtf8},
        {"null bytes", QByteArray("a\0b", 3), {}, notText},
        {"UTF-16", QByteArray("\xff\xfe\x61\x00", 4), {}, notText},
    };
    for (const ContentCase &given : cases) {
        const auto result = read(write(QStringLiteral("file"), given.bytes));
        EXPECT_EQ(result.problem, given.problem) << given.name;
        EXPECT_EQ(result.problem.isEmpty() ? result.file.text : QString(), given.text) << given.name;
    }
}

TEST_F(SkillFileReaderTest, decidesOnEveryKindOfFile)
{
    EXPECT_EQ(problem(path(QStringLiteral("missing"))), u"No such file or directory.");
    EXPECT_EQ(problem(folder.path()), u"It is a folder.");
    const QString pipe = path(QStringLiteral("pipe"));
    ASSERT_EQ(::mkfifo(QFile::encodeName(pipe).constData(), 0600), 0);
    EXPECT_EQ(problem(pipe), u"It is not a plain file.");
    EXPECT_EQ(problem(QStringLiteral("/dev/zero")), u"It is not a plain file.");
    const QString link = path(QStringLiteral("link.md"));
    ASSERT_TRUE(QFile::link(write(QStringLiteral("real.md"), "# T"), link));
    EXPECT_EQ(read(link).file.text, u"# T");
    EXPECT_EQ(read(link).file.fileName, u"link.md");
    const QString dangling = path(QStringLiteral("dangling"));
    ASSERT_TRUE(QFile::link(path(QStringLiteral("nowhere")), dangling));
    EXPECT_EQ(problem(dangling), u"No such file or directory.");
}

TEST_F(SkillFileReaderTest, saysThatAFileMustNotBeRead)
{
    if (::geteuid() == 0)
        GTEST_SKIP() << "everything may be read by this user";
    const QString file = write(QStringLiteral("secret"), "x");
    ASSERT_TRUE(QFile::setPermissions(file, QFileDevice::Permissions()));
    EXPECT_EQ(problem(file), u"Permission denied.");
}

TEST_F(SkillFileReaderTest, saysThatReadingFailed)
{
    // May be opened by everybody, and read by nobody at its beginning.
    EXPECT_EQ(problem(QStringLiteral("/proc/self/mem")), u"Input/output error.");
}

TEST_F(SkillFileReaderTest, readsAFileThatAnnouncesNoSize)
{
    const auto result = read(QStringLiteral("/proc/version"));
    EXPECT_EQ(result.problem, u"");
    EXPECT_TRUE(result.file.text.startsWith(u"Linux"));
}

TEST_F(SkillFileReaderTest, refusesWhatIsLargerThanItsLimitWithoutReadingIt)
{
    const QString file = write(QStringLiteral("sparse"), {});
    ASSERT_EQ(::truncate(QFile::encodeName(file).constData(), SkillFileReader::maximumBytes + 1), 0);
    EXPECT_EQ(problem(file), u"It is larger than 128 MB.");
}

TEST_F(SkillFileReaderTest, readsFiftyMegabytesWhileTheEventLoopTurns)
{
    const QString file =
        write(QStringLiteral("large.txt"), QByteArray("0123456789abcde\n").repeated(50 * 65536));
    SkillFileReader reader;
    qsizetype size = 0;
    QObject::connect(&reader, &SkillFileReader::finished, &reader,
                     [&](const SkillFile &read) { size = read.text.size(); });
    QElapsedTimer sinceTurn;
    sinceTurn.start();
    qint64 longestTurn = 0;
    reader.read(file);
    ASSERT_TRUE(waitUntil(
        [&] {
            longestTurn = std::max(longestTurn, sinceTurn.restart());
            return !reader.isReading();
        },
        std::chrono::seconds(30)));
    EXPECT_EQ(size, 50LL * 1024 * 1024);
    EXPECT_LT(longestTurn, 400) << "the main thread was held up";
}

TEST_F(SkillFileReaderTest, saysThatAFileChangedWhileItWasRead)
{
    const QString file = write(QStringLiteral("changing"), "long enough");
    const auto shrink = [&] { EXPECT_EQ(::truncate(QFile::encodeName(file).constData(), 3), 0); };
    EXPECT_EQ(SkillFileReader::readFile(file, isStopped, shrink).problem,
              u"It changed while it was being read.");
}

TEST_F(SkillFileReaderTest, readsAFileThatIsDeletedMeanwhileToItsEnd)
{
    const QString file = write(QStringLiteral("vanishing"), "still here");
    const auto result = SkillFileReader::readFile(file, isStopped, [&] { EXPECT_TRUE(QFile::remove(file)); });
    EXPECT_EQ(result.problem, u"");
    EXPECT_EQ(result.file.text, u"still here");
}

/// Work that lasts until it is told to stop, as on a hung file system.
struct HungWork
{
    std::shared_ptr<std::atomic<int>> finished = std::make_shared<std::atomic<int>>(0);

    SkillFileReader::Result operator()(const QString &, const std::atomic<bool> &isStopped) const
    {
        while (!isStopped)
            std::this_thread::yield();
        ++*finished;
        return {{}, QStringLiteral("too late")};
    }
};

TEST_F(SkillFileReaderTest, givesUpAtItsDeadline)
{
    const HungWork work;
    SkillFileReader reader(nullptr, work, std::chrono::milliseconds(50));
    QStringList said;
    QObject::connect(&reader, &SkillFileReader::failed, &reader,
                     [&](const QString &problem) { said.append(problem); });
    reader.read(QStringLiteral("any"));
    EXPECT_TRUE(reader.isReading());
    ASSERT_TRUE(waitUntil([&] { return !reader.isReading(); }));
    EXPECT_EQ(said, QStringList{QStringLiteral("Reading it takes too long.")});
    ASSERT_TRUE(waitUntil([&] { return *work.finished == 1; }));
    EXPECT_EQ(said.size(), 1);
}

TEST_F(SkillFileReaderTest, mayDieWhileItReads)
{
    const HungWork work;
    {
        SkillFileReader reader(nullptr, work);
        reader.read(QStringLiteral("any"));
    }
    EXPECT_TRUE(waitUntil([&] { return *work.finished == 1; }));
}

TEST_F(SkillFileReaderTest, aSecondFileReplacesTheFirst)
{
    SkillFileReader reader;
    QStringList names;
    QObject::connect(&reader, &SkillFileReader::finished, &reader,
                     [&](const SkillFile &file) { names.append(file.fileName); });
    reader.read(write(QStringLiteral("first"), QByteArray(8 * 1024 * 1024, 'x')));
    reader.read(write(QStringLiteral("second"), "x"));
    ASSERT_TRUE(waitUntil([&] { return !reader.isReading(); }));
    EXPECT_EQ(names, QStringList{QStringLiteral("second")});
}

} // namespace
