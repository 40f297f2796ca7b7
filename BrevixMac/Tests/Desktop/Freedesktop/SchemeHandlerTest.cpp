// SPDX-License-Identifier: GPL-3.0-or-later
#include "Desktop/Freedesktop/SchemeHandler.h"

#include "SignalsHeldBack.h"

#include "Support/TestMain.h"
#include "Support/Waiting.h"

#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <unistd.h>

using namespace Qt::StringLiterals;

namespace {

const QString scheme = u"com.example.apps.12-ab"_s;
const QByteArray type = "x-scheme-handler/com.example.apps.12-ab";
const QByteArray entry = "app.brevix.Brevix.open-com.example.apps.12-ab.desktop";

/// For its time this process is nobody, whom permissions hold back; what is below @p folder stays reachable.
class Unprivileged
{
public:
    explicit Unprivileged(const QString &folder)
    {
        if (m_isRoot) {
            constexpr auto everybody = QFile::Permissions::fromInt(0x7777);
            QFile::setPermissions(folder, everybody);
            QDirIterator inner(folder, QDir::Dirs | QDir::NoDotAndDotDot, QDirIterator::Subdirectories);
            while (inner.hasNext())
                QFile::setPermissions(inner.next(), everybody);
            EXPECT_EQ(::seteuid(nobody), 0);
        }
    }
    ~Unprivileged()
    {
        if (m_isRoot) {
            EXPECT_EQ(::seteuid(0), 0);
        }
    }

    Unprivileged(const Unprivileged &) = delete;
    Unprivileged &operator=(const Unprivileged &) = delete;

private:
    static constexpr uid_t nobody = 65534;
    const bool m_isRoot = ::geteuid() == 0;
};

class SchemeHandlerTest : public testing::Test
{
protected:
    QByteArray read(const QString &path) const
    {
        QFile file(path);
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    }

    void write(const QString &path, const QByteArray &content) const
    {
        QFile file(path);
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(content);
    }

    QTemporaryDir folder;
    SchemeHandler::Folders folders{folder.filePath(u"data/applications"_s), folder.filePath(u"config"_s)};
    QString entryPath = folders.applications + u'/' + QString::fromLatin1(entry);
    QString mimeApps = folders.configuration + u"/mimeapps.list"_s;
};

} // namespace

TEST_F(SchemeHandlerTest, onlySchemesInReverseDomainFormMayBeClaimed)
{
    for (const QString &good : {u"com.googleusercontent.apps.1-a"_s, u"app.brevix.local"_s, u"A.b"_s})
        EXPECT_TRUE(SchemeHandler::isPrivateScheme(good)) << good.toStdString();
    for (const QString &bad : {u""_s, u"https"_s, u"mailto"_s, u"a"_s, u"1a.b"_s, u"a.b c"_s, u"a..b"_s,
                               u"a."_s, u"a.b\n"_s, u"a.b;c"_s, u"a.b/c"_s, u"é.b"_s, u"REPLACE_WITH.x"_s}) {
        EXPECT_FALSE(SchemeHandler::isPrivateScheme(bad)) << bad.toStdString();
        expectWarning(u"is not one that an application may claim"_s);
        EXPECT_FALSE(SchemeHandler::registerScheme(bad, u"/usr/bin/brevix"_s, folders));
    }
    EXPECT_FALSE(QDir(folders.applications).exists());
}

TEST_F(SchemeHandlerTest, registersAHiddenEntryAndMakesItTheDefault)
{
    ASSERT_TRUE(SchemeHandler::registerScheme(scheme, u"/opt/brevix/bin/brevix"_s, folders));
    const QByteArray content = read(entryPath);
    EXPECT_TRUE(content.startsWith("[Desktop Entry]\nType=Application\nName=Brevix\n"));
    EXPECT_TRUE(content.contains("\nNoDisplay=true\n"));
    EXPECT_TRUE(content.contains("\nExec=/opt/brevix/bin/brevix open-url %u\n"));
    EXPECT_TRUE(content.endsWith(QByteArray("\nMimeType=" + type + ";\n")));
    EXPECT_EQ(read(mimeApps), "[Default Applications]\n" + type + '=' + entry + ";\n");
}

TEST_F(SchemeHandlerTest, registeringAgainFollowsTheProgramAndRepeatsNothing)
{
    ASSERT_TRUE(SchemeHandler::registerScheme(scheme, u"/old/brevix"_s, folders));
    const QByteArray before = read(mimeApps);
    ASSERT_TRUE(SchemeHandler::registerScheme(scheme, u"/new/brevix"_s, folders));
    EXPECT_TRUE(read(entryPath).contains("Exec=/new/brevix open-url %u\n"));
    EXPECT_EQ(read(mimeApps), before);
    EXPECT_EQ(QDir(folders.applications).entryList(QDir::Files).size(), 1);
}

TEST_F(SchemeHandlerTest, aSecondSchemeDoesNotTakeTheFirstOneAway)
{
    ASSERT_TRUE(SchemeHandler::registerScheme(scheme, u"/usr/bin/brevix"_s, folders));
    ASSERT_TRUE(SchemeHandler::registerScheme(u"app.brevix.local"_s, u"/usr/bin/brevix"_s, folders));
    EXPECT_TRUE(QFile::exists(entryPath));
    EXPECT_TRUE(read(mimeApps).contains(QByteArray(type + '=')));
    EXPECT_TRUE(read(mimeApps).contains("x-scheme-handler/app.brevix.local="));
}

TEST_F(SchemeHandlerTest, whatOthersHavePutIntoTheListStays)
{
    using SchemeHandler::withDefault;
    const QByteArray line = type + '=' + entry + ';';
    const std::pair<QByteArray, QByteArray> rows[] = {
        {"", "[Default Applications]\n" + line + '\n'},
        {"\n", "[Default Applications]\n" + line + '\n'},
        {"# mine\n[Added Associations]\ntext/plain=a.desktop;\n",
         "# mine\n[Added Associations]\ntext/plain=a.desktop;\n\n[Default Applications]\n" + line + '\n'},
        {"[Default Applications]\ntext/html=b.desktop\n\n[Added Associations]\ntext/plain=a.desktop;\n",
         "[Default Applications]\ntext/html=b.desktop\n" + line +
             "\n\n[Added Associations]\ntext/plain=a.desktop;\n"},
        {"[Default Applications]", "[Default Applications]\n" + line + '\n'},
        // The same key in another group is another matter.
        {"[Removed Associations]\n" + type + "=c.desktop;\n[Default Applications]\n",
         "[Removed Associations]\n" + type + "=c.desktop;\n[Default Applications]\n" + line + '\n'},
        // Somebody else's claim stays behind ours.
        {"[Default Applications]\n" + type + "=other.desktop\n",
         "[Default Applications]\n" + line + "other.desktop;\n"},
        {"[Default Applications]\n" + type + " = other.desktop;" + entry + "; ;\n",
         "[Default Applications]\n" + type + " =" + entry + ";other.desktop;\n"},
        {"[Default Applications]\n" + line + "\n", "[Default Applications]\n" + line + '\n'},
        {"[Default Applications]\r\ntext/html=b\r\n",
         "[Default Applications]\r\ntext/html=b\r\n" + line + "\r\n"},
        {"[Default Applications]\n#" + line + "\n", "[Default Applications]\n" + line + "\n#" + line + '\n'},
    };
    for (const auto &[before, after] : rows) {
        EXPECT_EQ(withDefault(before, type, entry), after) << before.toStdString();
        EXPECT_EQ(withDefault(after, type, entry), after) << "twice is once:\n" << before.toStdString();
    }
}

TEST_F(SchemeHandlerTest, aListThatIsALinkStaysOne)
{
    ASSERT_TRUE(QDir().mkpath(folders.configuration));
    const QString target = folder.filePath(u"dotfiles-mimeapps.list"_s);
    write(target, "[Default Applications]\ntext/html=b.desktop\n");
    ASSERT_TRUE(QFile::link(target, mimeApps));
    ASSERT_TRUE(SchemeHandler::registerScheme(scheme, u"/usr/bin/brevix"_s, folders));
    EXPECT_TRUE(QFileInfo(mimeApps).isSymLink());
    EXPECT_TRUE(read(target).contains(type));
    EXPECT_TRUE(read(target).contains("text/html=b.desktop\n"));
}

// A list that could not be read used to count as empty, and what others had put into it was lost.
TEST_F(SchemeHandlerTest, aListThatCannotBeReadIsLeftAlone)
{
    ASSERT_TRUE(QDir().mkpath(folders.configuration));
    const QByteArray kept = "[Default Applications]\ntext/html=b.desktop\n";
    write(mimeApps, kept);
    ASSERT_TRUE(QFile::setPermissions(mimeApps, {}));
    expectWarning(u"cannot read"_s);
    {
        const Unprivileged here(folder.path());
        ASSERT_FALSE(QFile(mimeApps).open(QIODevice::ReadOnly));
        EXPECT_TRUE(SchemeHandler::registerScheme(scheme, u"/usr/bin/brevix"_s, folders));
    }
    ASSERT_TRUE(QFile::setPermissions(mimeApps, QFile::ReadOwner | QFile::WriteOwner));
    EXPECT_EQ(read(mimeApps), kept);
}

TEST_F(SchemeHandlerTest, theProgramThatUpdatesTheIndexCanBeEndedBySignals)
{
    const SignalsHeldBack held;
    const QString tool = folder.filePath(u"update-desktop-database"_s);
    write(tool, "#!/bin/sh\ngrep SigBlk /proc/self/status >\"$0.out\"\n");
    ASSERT_TRUE(QFile::setPermissions(tool, QFile::ReadOwner | QFile::ExeOwner));
    const QByteArray path = qgetenv("PATH");
    qputenv("PATH", folder.path().toUtf8() + ':' + path);
    ASSERT_TRUE(SchemeHandler::registerScheme(scheme, u"/usr/bin/brevix"_s, folders));
    qputenv("PATH", path);
    EXPECT_TRUE(waitUntil([&] { return read(tool + u".out") == "SigBlk:\t0000000000000000\n"; }))
        << read(tool + u".out").constData();
}

TEST_F(SchemeHandlerTest, programsWithOddNamesAreQuoted)
{
    const auto exec = [](const QString &program) {
        const QByteArray content = SchemeHandler::entryContent(scheme, program);
        const qsizetype at = content.indexOf("Exec=") + 5;
        return content.mid(at, content.indexOf('\n', at) - at);
    };
    EXPECT_EQ(exec(u"/usr/bin/brevix"_s), "/usr/bin/brevix open-url %u");
    EXPECT_EQ(exec(u"/my apps/brevix"_s), "\"/my apps/brevix\" open-url %u");
    EXPECT_EQ(exec(u"/100%/brevix"_s), "\"/100%%/brevix\" open-url %u");
    EXPECT_EQ(exec(u"/a\"b$c`d\\e/brevix"_s), R"("/a\\"b\\$c\\`d\\\\e/brevix" open-url %u)");
}

TEST_F(SchemeHandlerTest, anEntryThatCannotBeWrittenIsToldAndOneThatIsOnlyNoDefaultIsNot)
{
    write(folder.filePath(u"data"_s), "a file where a folder should be");
    expectWarning(u"cannot write"_s);
    EXPECT_FALSE(SchemeHandler::registerScheme(scheme, u"/usr/bin/brevix"_s, folders));

    const SchemeHandler::Folders onlyApplications{folder.filePath(u"other"_s), folder.filePath(u"data"_s)};
    EXPECT_TRUE(SchemeHandler::registerScheme(scheme, u"/usr/bin/brevix"_s, onlyApplications));
}
