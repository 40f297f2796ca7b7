// SPDX-License-Identifier: GPL-3.0-or-later
#include "Desktop/Freedesktop/SchemeProbe.h"

#include "Support/TestMain.h"
#include "Support/Waiting.h"

#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace {

using Claim = SchemeFacts::Claim;

const QString scheme = u"com.example.apps.12-ab"_s;
const QString plainScheme = u"app.brevix.local"_s;
const QString entry = u"app.brevix.Brevix.open-com.example.apps.12-ab.desktop"_s;

class SchemeProbeTest : public testing::Test
{
protected:
    SchemeProbeTest()
    {
        options.folders = {folder.filePath(u"data/applications"_s), folder.filePath(u"config"_s)};
        options.queryTool = script(u"query"_s, "");
        options.opener = script(u"opener"_s, "");
        options.environment.clear();
    }

    QString script(const QString &name, const QByteArray &body)
    {
        const QString path = folder.filePath(name);
        QFile file(path);
        EXPECT_TRUE(file.open(QIODevice::WriteOnly));
        file.write("#!/bin/sh\n" + body + '\n');
        file.setPermissions(QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
        return path;
    }

    void answer(const QString &handler)
    {
        script(u"query"_s, "[ \"$*\" = 'query default x-scheme-handler/" + scheme.toUtf8() + "' ] && echo " +
                               handler.toUtf8());
    }

    SchemeFacts look(const QString &which = scheme) { return await(SchemeProbe::examine(which, options)); }

    QTemporaryDir folder;
    SchemeProbe::Options options;
};

} // namespace

TEST_F(SchemeProbeTest, nobodyHasIt)
{
    const SchemeFacts facts = look();
    EXPECT_TRUE(facts.isPrivate);
    EXPECT_EQ(facts.claim, Claim::nobody);
    EXPECT_TRUE(facts.canRegister);
    EXPECT_TRUE(facts.hasOpener);
    EXPECT_FALSE(QDir(options.folders.applications).exists()) << "looking makes nothing";
}

TEST_F(SchemeProbeTest, itIsOursAfterARegistration)
{
    const QString program = script(u"a \"program\" of $ours"_s, "");
    ASSERT_TRUE(SchemeHandler::registerScheme(scheme, program, options.folders));
    answer(entry);
    EXPECT_EQ(look().claim, Claim::ours);

    QFile::remove(program);
    EXPECT_EQ(look().claim, Claim::broken);
    EXPECT_EQ(look().handler, program);
}

TEST_F(SchemeProbeTest, anotherProgramHasItWithAndWithoutOurRegistration)
{
    answer(u"other.desktop"_s);
    SchemeFacts facts = look();
    EXPECT_EQ(facts.claim, Claim::somebody);
    EXPECT_EQ(facts.handler, u"other.desktop"_s);
    EXPECT_FALSE(facts.isOverruled);

    ASSERT_TRUE(SchemeHandler::registerScheme(scheme, u"/bin/true"_s, options.folders));
    EXPECT_TRUE(look().isOverruled);
}

TEST_F(SchemeProbeTest, withoutTheToolTheUsersListCounts)
{
    options.queryTool = u"/nonexistent"_s;
    EXPECT_EQ(look().claim, Claim::nobody);
    ASSERT_TRUE(SchemeHandler::registerScheme(scheme, u"/bin/true"_s, options.folders));
    EXPECT_EQ(look().claim, Claim::ours);
}

TEST_F(SchemeProbeTest, aToolThatHangsIsGivenUp)
{
    script(u"query"_s, "exec sleep 60");
    QElapsedTimer clock;
    clock.start();
    EXPECT_EQ(look().claim, Claim::nobody);
    EXPECT_LT(clock.elapsed(), 10000);
}

TEST_F(SchemeProbeTest, foldersThatCannotBeMadeAreSeen)
{
    QFile file(folder.filePath(u"data"_s));
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    EXPECT_FALSE(look().canRegister);
}

TEST_F(SchemeProbeTest, anythingThatOpensABrowserWillDo)
{
    options.opener = u"/nonexistent"_s;
    options.otherOpener = script(u"other"_s, "");
    EXPECT_TRUE(look().hasOpener);
    options.otherOpener = u"/nonexistent"_s;
    EXPECT_FALSE(look().hasOpener);
}

TEST_F(SchemeProbeTest, anOpenerThatTakesLettersOnlyIsSeenWhereItDecides)
{
    EXPECT_FALSE(look().isRefusedByOpener);
    script(u"opener"_s, "egrep -q '^[[:alpha:]+\\.\\-]+:'");
    EXPECT_TRUE(look().isRefusedByOpener);
    EXPECT_FALSE(look(plainScheme).isRefusedByOpener);
    options.environment.insert(u"XDG_CURRENT_DESKTOP"_s, u"GNOME"_s);
    EXPECT_FALSE(look().isRefusedByOpener);
}

TEST_F(SchemeProbeTest, aSchemeThatIsNobodysOwnIsNotAskedAbout)
{
    script(u"query"_s, "touch " + folder.filePath(u"asked"_s).toUtf8());
    EXPECT_FALSE(look(u"https"_s).isPrivate);
    EXPECT_FALSE(look({}).isPrivate);
    EXPECT_FALSE(QFile::exists(folder.filePath(u"asked"_s)));
}

TEST(KnownDesktops, areRecognisedByEachOfTheirMarks)
{
    const auto isKnown = [](const QString &name, const QString &value) {
        QProcessEnvironment environment;
        environment.insert(name, value);
        return SchemeProbe::isKnownDesktop(environment);
    };
    for (const QString &desktop : {u"GNOME"_s, u"GNOME-Flashback:GNOME"_s, u"ubuntu:GNOME"_s, u"KDE"_s,
                                   u"XFCE"_s, u"X-Cinnamon"_s, u"MATE"_s, u"LXQt"_s})
        EXPECT_TRUE(isKnown(u"XDG_CURRENT_DESKTOP"_s, desktop)) << qPrintable(desktop);
    EXPECT_TRUE(isKnown(u"KDE_FULL_SESSION"_s, u"true"_s));
    EXPECT_TRUE(isKnown(u"DESKTOP_SESSION"_s, u"xfce"_s));
    for (const QString &desktop : {u"openbox"_s, u"sway"_s, u"i3"_s, QString()})
        EXPECT_FALSE(isKnown(u"XDG_CURRENT_DESKTOP"_s, desktop)) << qPrintable(desktop);
}

TEST(SchemeEntries, nameTheProgramThatTheyStart)
{
    for (const QString &program : {u"/usr/bin/brevix"_s, u"/opt/my programs/brevix"_s,
                                   u"/tmp/a\"b$c`d\\e/50%/brevix"_s, u"/home/\u00e9/brevix"_s})
        EXPECT_EQ(SchemeHandler::programOf(SchemeHandler::entryContent(scheme, program)), program);
    EXPECT_EQ(SchemeHandler::programOf("[Desktop Entry]\nName=x\n"), QString());
    EXPECT_EQ(SchemeHandler::programOf({}), QString());
}

TEST(MimeAppsLists, nameTheDefaultOfAType)
{
    const QByteArray list =
        "x/y=a.desktop\n[Default Applications]\n# x/y=b.desktop\nx/y = c.desktop ; d.desktop\n"
        "[Added Associations]\nx/z=e.desktop\n";
    EXPECT_EQ(SchemeHandler::defaultOf(list, "x/y"), "c.desktop");
    EXPECT_EQ(SchemeHandler::defaultOf(list, "x/z"), "");
    EXPECT_EQ(SchemeHandler::defaultOf({}, "x/y"), "");
}
