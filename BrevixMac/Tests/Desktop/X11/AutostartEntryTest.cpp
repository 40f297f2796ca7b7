// SPDX-License-Identifier: GPL-3.0-or-later
#include "Desktop/Freedesktop/AutostartEntry.h"

#include "Support/Waiting.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <QStandardPaths>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <unistd.h>

namespace {

class Autostart : public testing::Test
{
protected:
    AutostartEntry entryFor(const QString &program, const QStringList &arguments = {}) const
    {
        return AutostartEntry({.id = QStringLiteral("org.example.App"),
                               .name = QStringLiteral("App"),
                               .comment = QStringLiteral("A comment"),
                               .program = program,
                               .arguments = arguments},
                              userFolder, {systemFolder});
    }

    static void write(const QString &path, const QByteArray &content)
    {
        QDir().mkpath(QFileInfo(path).path());
        QFile file(path);
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(content);
    }

    QByteArray written() const
    {
        QFile file(entry.filePath());
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    }

    void writeUserEntry(const QByteArray &content) { write(entry.filePath(), content); }

    void writeSystemEntry()
    {
        write(systemFolder + QStringLiteral("/org.example.App.desktop"), "[Desktop Entry]\nExec=/bin/sh\n");
    }

    QTemporaryDir folder;
    QString userFolder = folder.filePath(QStringLiteral("user/autostart"));
    QString systemFolder = folder.filePath(QStringLiteral("system/autostart"));
    AutostartEntry entry = entryFor(QStringLiteral("/bin/sh"), {QStringLiteral("--local")});
};

} // namespace

TEST_F(Autostart, isWrittenWithProgramAndMode)
{
    EXPECT_FALSE(entry.isEnabled());
    EXPECT_EQ(entry.setEnabled(true), std::nullopt);
    EXPECT_TRUE(entry.isEnabled());
    EXPECT_EQ(written(), QByteArrayLiteral("[Desktop Entry]\nType=Application\nName=App\nComment=A comment\n"
                                           "Exec=/bin/sh --local\nIcon=org.example.App\nTerminal=false\n"
                                           "StartupNotify=false\nX-GNOME-Autostart-enabled=true\n"));
    EXPECT_EQ(QDir(userFolder).entryList(QDir::Files | QDir::Hidden).size(), 1) << "a temporary file stayed";
}

TEST_F(Autostart, isRemoved)
{
    entry.setEnabled(true);
    EXPECT_EQ(entry.setEnabled(false), std::nullopt);
    EXPECT_FALSE(entry.isEnabled());
    EXPECT_FALSE(QFileInfo::exists(entry.filePath()));
    EXPECT_EQ(entry.setEnabled(false), std::nullopt) << "nothing to remove is no failure";
}

TEST_F(Autostart, tellsWhatTheUserDidElsewhere)
{
    const struct
    {
        const char *what;
        QByteArray content;
        bool isEnabled;
    } cases[] = {
        {"plain", "[Desktop Entry]\nExec=/bin/sh\n", true},
        {"hidden", "[Desktop Entry]\nExec=/bin/sh\nHidden=true\n", false},
        {"switched off", "[Desktop Entry]\nExec=/bin/sh\nX-GNOME-Autostart-enabled=false\n", false},
        {"spaces", "[Desktop Entry]\n Hidden = true \nExec=/bin/sh\n", false},
        {"comment", "[Desktop Entry]\n#Hidden=true\nExec=/bin/sh\n", true},
        {"another group", "[Desktop Entry]\nExec=/bin/sh\n[Other]\nHidden=true\n", true},
        {"program gone", "[Desktop Entry]\nExec=/nonexistent/program --local\n", false},
        {"no program", "[Desktop Entry]\n", false},
        {"quoted program", "[Desktop Entry]\nExec=\"/bin/sh\" --local\n", true},
        {"program of the search path", "[Desktop Entry]\nExec=sh\n", true},
        {"other desktop only", "[Desktop Entry]\nExec=/bin/sh\nOnlyShowIn=KDE;\n", false},
        {"this desktop only", "[Desktop Entry]\nExec=/bin/sh\nOnlyShowIn=XFCE;\n", true},
        {"not this desktop", "[Desktop Entry]\nExec=/bin/sh\nNotShowIn=XFCE;\n", false},
        {"to try first", "[Desktop Entry]\nExec=/bin/sh\nTryExec=/nonexistent\n", false},
        {"no entry at all", "hello", false},
        {"empty", "", false},
        {"bytes", QByteArray(70000, '\xff'), false},
    };
    qputenv("XDG_CURRENT_DESKTOP", "XFCE");
    for (const auto &each : cases) {
        writeUserEntry(each.content);
        EXPECT_EQ(entry.isEnabled(), each.isEnabled) << each.what;
    }
}

TEST_F(Autostart, mendsAnEntryThatWasHidden)
{
    writeUserEntry("[Desktop Entry]\nExec=/bin/sh\nHidden=true\n");
    EXPECT_EQ(entry.setEnabled(true), std::nullopt);
    EXPECT_TRUE(entry.isEnabled());
}

TEST_F(Autostart, hidesAnEntryOfTheSystem)
{
    writeSystemEntry();
    EXPECT_TRUE(entry.isEnabled());
    EXPECT_EQ(entry.setEnabled(false), std::nullopt);
    EXPECT_FALSE(entry.isEnabled());
    EXPECT_EQ(entry.setEnabled(true), std::nullopt);
    EXPECT_TRUE(entry.isEnabled());
}

TEST_F(Autostart, saysWhyItCannotBeWritten)
{
    write(folder.filePath(QStringLiteral("user")), "a file where a folder should be");
    const auto problem = entry.setEnabled(true);
    ASSERT_TRUE(problem);
    EXPECT_TRUE(problem->contains(entry.filePath())) << qPrintable(*problem);
    EXPECT_FALSE(entry.isEnabled());
}

TEST_F(Autostart, keepsTheOldEntryWhenTheNewOneCannotBeWritten)
{
    if (geteuid() == 0)
        GTEST_SKIP() << "root may write everywhere";
    writeUserEntry("[Desktop Entry]\nExec=/bin/sh\nHidden=true\n");
    QFile::setPermissions(userFolder, QFile::ReadOwner | QFile::ExeOwner);
    EXPECT_TRUE(entry.setEnabled(true));
    QFile::setPermissions(userFolder, QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
    EXPECT_TRUE(written().contains("Hidden=true"));
}

TEST_F(Autostart, quotesByTheRulesOfTheEntryFormat)
{
    const struct
    {
        QString argument;
        QString quoted;
    } cases[] = {
        {QStringLiteral("/usr/bin/app"), QStringLiteral("/usr/bin/app")},
        {QStringLiteral("/opt/my app/app"), QStringLiteral("\"/opt/my app/app\"")},
        {QStringLiteral("50%"), QStringLiteral("50%%")},
        {QStringLiteral("a\"b"), QStringLiteral("\"a\\\"b\"")},
        {QStringLiteral("a$b`c"), QStringLiteral("\"a\\$b\\`c\"")},
        {QStringLiteral("a\\b"), QStringLiteral("\"a\\\\b\"")},
        {QStringLiteral("it's"), QStringLiteral("\"it's\"")},
        {QString(), QStringLiteral("\"\"")},
        {QStringLiteral("größe"), QStringLiteral("größe")},
    };
    for (const auto &each : cases)
        EXPECT_EQ(AutostartEntry::quoted(each.argument), each.quoted);
}

TEST_F(Autostart, findsItsOwnProgramAgainWhateverItsPathIs)
{
    for (const QString &name :
         {QStringLiteral("my app"), QStringLiteral("100% \"real\" $HOME `x`"), QStringLiteral("back\\slash"),
          QStringLiteral("tab\tand\nline"), QStringLiteral("größe ✓")}) {
        const QString program = folder.filePath(name);
        ASSERT_TRUE(QFile::copy(QStringLiteral("/bin/true"), program));
        AutostartEntry odd = entryFor(program);
        EXPECT_EQ(odd.setEnabled(true), std::nullopt);
        EXPECT_TRUE(odd.isEnabled()) << qPrintable(name) << "\n" << written().constData();
    }
}

TEST_F(Autostart, isStartedByADesktopWithASpaceInItsPath)
{
    if (QStandardPaths::findExecutable(QStringLiteral("gio")).isEmpty())
        GTEST_SKIP() << "gio is not installed";
    const QString program = folder.filePath(QStringLiteral("my $app"));
    const QString trace = folder.filePath(QStringLiteral("trace"));
    write(program, "#!/bin/sh\nprintf '%s' \"$1\" > \"" + trace.toUtf8() + "\"\n");
    QFile::setPermissions(program, QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
    AutostartEntry odd = entryFor(program, {QStringLiteral("--local")});
    ASSERT_EQ(odd.setEnabled(true), std::nullopt);
    QProcess launch;
    launch.start(QStringLiteral("gio"), {QStringLiteral("launch"), odd.filePath()});
    ASSERT_TRUE(launch.waitForFinished());
    QFile seen(trace);
    EXPECT_TRUE(waitUntil([&] { return seen.size() > 0; }));
    ASSERT_TRUE(seen.open(QIODevice::ReadOnly)) << launch.readAllStandardError().constData();
    EXPECT_EQ(seen.readAll(), QByteArrayLiteral("--local"));
}
