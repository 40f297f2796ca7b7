// SPDX-License-Identifier: GPL-3.0-or-later
#include "Desktop/Freedesktop/DesktopEntries.h"
#include "Desktop/Freedesktop/Processes.h"
#include "Support/Waiting.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <csignal>
#include <filesystem>
#include <sys/wait.h>
#include <unistd.h>

namespace {

QByteArray entryFile(const QByteArray &name, const QByteArray &more)
{
    return "[Desktop Entry]\nType=Application\nName=" + name + "\n" + more + "\n";
}

class Entries : public testing::Test
{
protected:
    void write(const QString &path, const QByteArray &content)
    {
        const QString full = folder.filePath(path);
        QDir().mkpath(QFileInfo(full).path());
        QFile file(full);
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(content);
    }

    std::optional<DesktopEntry> find(const ApplicationTraits &traits)
    {
        if (!entries)
            entries = std::make_unique<DesktopEntries>(QStringList{
                folder.filePath(QStringLiteral("user")), folder.filePath(QStringLiteral("system"))});
        EXPECT_TRUE(waitUntil([this] { return entries->isReady(); }));
        return entries->find(traits);
    }

    QString idOf(const ApplicationTraits &traits)
    {
        const auto entry = find(traits);
        return entry ? entry->id : QString();
    }

    std::filesystem::path systemFolder() const
    {
        return folder.filePath(QStringLiteral("system")).toStdString();
    }

    QTemporaryDir folder;
    std::unique_ptr<DesktopEntries> entries;
};

} // namespace

TEST(DesktopEntryFile, givesTheNameInTheUsersLanguage)
{
    const QByteArray content = entryFile("Editor", "Name[de]=Texteditor\nName[pt_BR]=Editor de texto");
    const auto nameIn = [&](const char *locale) {
        return DesktopEntry(*DesktopEntries::parse(QStringLiteral("x"), content, QString::fromLatin1(locale)))
            .name;
    };
    EXPECT_EQ(nameIn("de_AT"), u"Texteditor");
    EXPECT_EQ(nameIn("pt_BR"), u"Editor de texto");
    EXPECT_EQ(nameIn("pt_PT"), u"Editor");
    EXPECT_EQ(nameIn("C"), u"Editor");
}

TEST(DesktopEntryFile, findsTheProgramInItsCommand)
{
    const std::pair<const char *, const char *> table[]{
        {"mousepad %U", "mousepad"},
        {"/usr/bin/featherpad --standalone %U", "featherpad"},
        {"env LANG=C GDK_BACKEND=x11 /opt/Some/bin/editor", "editor"},
        {"\"/opt/My Editor/my editor\" %f", "my editor"},
        {"/usr/bin/flatpak run --branch=stable org.example.Editor", ""},
        {"sh -c \"exec editor\"", ""},
        {"", ""},
    };
    for (const auto &[command, program] : table) {
        const auto entry = DesktopEntries::parse(QStringLiteral("x"),
                                                 entryFile("Name", QByteArrayLiteral("Exec=") + command),
                                                 QStringLiteral("C"));
        ASSERT_TRUE(entry);
        EXPECT_EQ(entry->program, QString::fromLatin1(program)) << command;
    }
}

TEST(DesktopEntryFile, readsItsMainGroupOnly)
{
    const auto entry = DesktopEntries::parse(
        QStringLiteral("org.example.Terminal"),
        entryFile("Terminal",
                  "# a comment=1\nCategories=System;TerminalEmulator;\nStartupWMClass=Term\nNoDisplay=true") +
            "[Desktop Action new]\nName=New window\nStartupWMClass=Other\n",
        QStringLiteral("C"));
    ASSERT_TRUE(entry);
    EXPECT_EQ(entry->name, u"Terminal");
    EXPECT_EQ(entry->startupWMClass, u"Term");
    EXPECT_TRUE(entry->isTerminalEmulator());
    EXPECT_FALSE(entry->isShownInMenus);
}

TEST(DesktopEntryFile, isNoApplicationWhenItIsDeletedOrDamaged)
{
    for (const QByteArray &content :
         {QByteArray(), QByteArray("\0\xff\xfe[Desktop", 12),
          QByteArray("[Desktop Entry]\nType=Link\nName=Web\n"),
          QByteArray("[Desktop Entry]\nType=Application\n"), entryFile("Gone", "Hidden=true")})
        EXPECT_FALSE(DesktopEntries::parse(QStringLiteral("x"), content, QStringLiteral("C")))
            << content.constData();
}

TEST_F(Entries, takesTheBestEvidenceFirst)
{
    write(QStringLiteral("system/hinted.desktop"), entryFile("Hinted", ""));
    write(QStringLiteral("system/byclass.desktop"), entryFile("By class", "StartupWMClass=Editor"));
    write(QStringLiteral("system/instance.desktop"), entryFile("Web application", "StartupWMClass=crx_abc"));
    write(QStringLiteral("system/browser.desktop"), entryFile("Browser", "StartupWMClass=Browser"));
    write(QStringLiteral("system/org.example.Notes.desktop"), entryFile("Notes", "Exec=other"));
    write(QStringLiteral("system/byprogram.desktop"), entryFile("By program", "Exec=/usr/bin/tool --gui"));
    const auto text = [](const char *value) { return QString::fromLatin1(value); };

    EXPECT_EQ(idOf({text("hinted"), text("editor"), text("Editor"), text("tool")}), u"hinted");
    EXPECT_EQ(idOf({text("/usr/share/applications/hinted.desktop"), {}, {}, {}}), u"hinted");
    EXPECT_EQ(idOf({{}, text("editor"), text("Editor"), text("tool")}), u"byclass");
    EXPECT_EQ(idOf({{}, text("EDITOR"), {}, {}}), u"byclass");
    EXPECT_EQ(idOf({{}, text("crx_abc"), text("Browser"), {}}), u"instance");
    EXPECT_EQ(idOf({{}, text("other"), text("Browser"), {}}), u"browser");
    EXPECT_EQ(idOf({{}, text("notes"), text("Notes"), {}}), u"org.example.Notes");
    EXPECT_EQ(idOf({{}, text("x"), text("X"), text("tool")}), u"byprogram");
    EXPECT_EQ(idOf({{}, text("unknown"), text("Unknown"), text("unknown")}), u"");
    EXPECT_EQ(idOf({}), u"");
}

TEST_F(Entries, preferTheOneShownInMenus)
{
    write(QStringLiteral("system/a-settings.desktop"),
          entryFile("Settings", "Exec=tool --settings\nNoDisplay=true"));
    write(QStringLiteral("system/b-tool.desktop"), entryFile("Tool", "Exec=tool"));
    EXPECT_EQ(idOf({{}, {}, {}, QStringLiteral("tool")}), u"b-tool");
}

TEST_F(Entries, ofTheUserHideThoseOfTheSystem)
{
    write(QStringLiteral("system/editor.desktop"), entryFile("System", ""));
    write(QStringLiteral("user/editor.desktop"), entryFile("User", ""));
    write(QStringLiteral("system/gone.desktop"), entryFile("Gone", ""));
    write(QStringLiteral("user/gone.desktop"), entryFile("Gone", "Hidden=true"));
    EXPECT_EQ(find({{}, QStringLiteral("editor"), {}, {}})->name, u"User");
    EXPECT_FALSE(find({{}, QStringLiteral("gone"), {}, {}}));
}

TEST_F(Entries, inSubfoldersHaveTheFolderInTheirName)
{
    write(QStringLiteral("system/kde/editor.desktop"), entryFile("Editor", "StartupWMClass=KEditor"));
    EXPECT_EQ(idOf({{}, QStringLiteral("keditor"), {}, {}}), u"kde-editor");
}

TEST_F(Entries, areReadAgainWhenAnApplicationIsInstalled)
{
    write(QStringLiteral("system/first.desktop"), entryFile("First", ""));
    last_write_time(systemFolder(), std::filesystem::file_time_type::clock::now() - std::chrono::hours(1));
    EXPECT_FALSE(find({{}, QStringLiteral("second"), {}, {}}));
    write(QStringLiteral("system/second.desktop"), entryFile("Second", ""));
    EXPECT_TRUE(waitUntil([this] { return find({{}, QStringLiteral("second"), {}, {}}).has_value(); }));
}

// Two changes within one step of the file system's clock look like one: the second was never noticed.
TEST_F(Entries, areReadAgainWhenTheFolderChangesTwiceInOneStepOfItsClock)
{
    write(QStringLiteral("system/first.desktop"), entryFile("First", ""));
    const auto step = last_write_time(systemFolder());
    EXPECT_FALSE(find({{}, QStringLiteral("second"), {}, {}}));
    write(QStringLiteral("system/second.desktop"), entryFile("Second", ""));
    last_write_time(systemFolder(), step);
    EXPECT_TRUE(waitUntil([this] { return find({{}, QStringLiteral("second"), {}, {}}).has_value(); }));
}

TEST_F(Entries, ofMissingFoldersAreNone)
{
    EXPECT_FALSE(find({{}, QStringLiteral("anything"), {}, {}}));
}

TEST(Processes, knowThatThisOneRuns)
{
    const qint64 self = QCoreApplication::applicationPid();
    const quint64 started = Processes::startTime(self);
    EXPECT_GT(started, 0U);
    EXPECT_TRUE(Processes::isRunning(self, started));
    EXPECT_TRUE(Processes::isRunning(self, 0));
    EXPECT_EQ(Processes::programName(self), QFileInfo(QCoreApplication::applicationFilePath()).fileName());
}

TEST(Processes, tellAReusedIdentifierApart)
{
    const qint64 self = QCoreApplication::applicationPid();
    EXPECT_FALSE(Processes::isRunning(self, Processes::startTime(self) + 1));
}

TEST(Processes, takeAZombieForEnded)
{
    const pid_t child = fork();
    if (child == 0)
        pause();
    ASSERT_GT(child, 0);
    const quint64 started = Processes::startTime(child);
    EXPECT_TRUE(Processes::isRunning(child, started));
    kill(child, SIGKILL);
    EXPECT_TRUE(waitUntil([&] { return !Processes::isRunning(child, started); }));
    EXPECT_FALSE(Processes::isRunning(child, 0));
    waitpid(child, nullptr, 0);
    EXPECT_FALSE(Processes::isRunning(child, 0));
}

TEST(Processes, knowNothingOfImpossibleIdentifiers)
{
    for (const qint64 pid : {qint64(0), qint64(-1), qint64(1) << 40}) {
        EXPECT_FALSE(Processes::isRunning(pid, 0));
        EXPECT_EQ(Processes::startTime(pid), 0U);
        EXPECT_EQ(Processes::programName(pid), QString());
    }
}
