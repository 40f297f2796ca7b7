// SPDX-License-Identifier: GPL-3.0-or-later
#include "Doctor.h"

#include "Support/InMemorySessionProbe.h"
#include "Support/TestMain.h"
#include "Support/Waiting.h"

#include <gtest/gtest.h>

#include <memory>

using namespace Qt::StringLiterals;

namespace {

using State = DoctorRow::State;
using Display = SessionFacts::Display;
using Accessibility = SessionFacts::Accessibility;
using Clipboard = SessionFacts::Clipboard;
using Tray = SessionFacts::Tray;
using Claim = SchemeFacts::Claim;

struct Case
{
    const char *name;
    std::function<void(SessionFacts &, InstanceFacts &)> arrange;
    QString id;
    State state;
    QString reason;   ///< a part of it
    QString fix = {}; ///< a part of it; empty when there must be none
};

DoctorRow rowOf(const DoctorReport &report, const QString &id)
{
    for (const DoctorRow &row : report.rows) {
        if (row.id == id)
            return row;
    }
    ADD_FAILURE() << "no row " << id.toStdString();
    return {};
}

DoctorReport judged(const std::function<void(SessionFacts &, InstanceFacts &)> &arrange)
{
    SessionFacts session = InMemorySessionProbe::wholesome();
    InstanceFacts instance;
    arrange(session, instance);
    return Doctor::judge(session, instance);
}

std::function<void(SessionFacts &, InstanceFacts &)> session(std::function<void(SessionFacts &)> arrange)
{
    return [arrange](SessionFacts &facts, InstanceFacts &) { arrange(facts); };
}

std::function<void(SessionFacts &, InstanceFacts &)> instance(std::function<void(InstanceFacts &)> arrange)
{
    return [arrange](SessionFacts &, InstanceFacts &facts) { arrange(facts); };
}

std::function<void(SessionFacts &, InstanceFacts &)> on(Display display, const QString &desktop)
{
    return session([=](SessionFacts &facts) {
        facts.display = display;
        facts.desktopName = desktop;
    });
}

/// A Wayland session gives none of the mechanisms of X11.
std::function<void(SessionFacts &, InstanceFacts &)> onWayland(const QString &desktop)
{
    return [desktop](SessionFacts &facts, InstanceFacts &own) {
        facts.display = Display::wayland;
        facts.desktopName = desktop;
        facts.clipboard = Clipboard::unreachable;
        facts.hasKeySynthesis = facts.hasPasteKeys = facts.hasWindowManager = false;
        own.hasHotkeys = own.isHotkeyHeld = own.isPostingAllowed = false;
    };
}

void expectCases(const QList<Case> &cases)
{
    for (const Case &each : cases) {
        const DoctorRow row = rowOf(judged(each.arrange), each.id);
        EXPECT_EQ(name(row.state), name(each.state)) << each.name;
        EXPECT_TRUE(row.reason.contains(each.reason)) << each.name << ": " << qPrintable(row.reason);
        EXPECT_TRUE(row.fix.contains(each.fix)) << each.name << ": " << qPrintable(row.fix);
        EXPECT_EQ(row.fix.isEmpty(), each.fix.isEmpty()) << each.name << ": " << qPrintable(row.fix);
        EXPECT_TRUE(row.reason.endsWith(u'.')) << each.name << ": " << qPrintable(row.reason);
        const bool needsHelp = row.state == State::fails || row.state == State::degraded;
        EXPECT_TRUE(!needsHelp || !row.fix.isEmpty()) << each.name;
    }
}

} // namespace

TEST(DoctorRules, nothingIsWrongInAWholesomeSession)
{
    const DoctorReport report = Doctor::judge(InMemorySessionProbe::wholesome(), InstanceFacts());
    EXPECT_FALSE(report.hasFailure());
    QStringList ids;
    for (const DoctorRow &row : report.rows) {
        ids.append(row.id);
        EXPECT_EQ(row.state, State::works) << qPrintable(row.id);
        EXPECT_EQ(row.fix, QString()) << qPrintable(row.id);
        EXPECT_TRUE(row.reason.endsWith(u'.')) << qPrintable(row.reason);
        EXPECT_FALSE(row.title.isEmpty());
    }
    EXPECT_EQ(ids, QStringList({u"hotkey"_s, u"capture"_s, u"directInsertion"_s, u"paste"_s,
                                u"clipboardRestore"_s, u"tray"_s, u"schemeHandler"_s}));
}

TEST(DoctorRules, theHotkey)
{
    const auto refused = instance([](InstanceFacts &own) { own.isHotkeyHeld = false; });
    expectCases({
        {"held by the running Brevix", instance([](InstanceFacts &) {}), u"hotkey"_s, State::works,
         u"Super+Shift+P opens the picker"_s},
        {"another combination", instance([](InstanceFacts &own) {
             own.shortcut = {.keyCode = 49,
                             .modifiers = KeyboardShortcut::control | KeyboardShortcut::option};
         }),
         u"hotkey"_s, State::works, u"Ctrl+Alt+Space opens"_s},
        {"free, nobody runs", instance([](InstanceFacts &own) { own.isRunning = false; }), u"hotkey"_s,
         State::works, u"can be had"_s},
        {"refused", refused, u"hotkey"_s, State::fails, u"held by another program or the desktop"_s,
         u"Record another shortcut"_s},
        {"a Brevix that hangs may hold it", instance([](InstanceFacts &own) {
             own.isRunning = own.isHotkeyHeld = false;
             own.hasSilentSibling = true;
         }),
         u"hotkey"_s, State::unknown, u"does not answer"_s, u"start it again"_s},
        {"Wayland", onWayland(u"weston"_s), u"hotkey"_s, State::fails, u"no global shortcuts"_s,
         u"Bind a key to \"brevix toggle\""_s},
        {"Wayland on GNOME", onWayland(u"ubuntu:GNOME"_s), u"hotkey"_s, State::fails, u"no global"_s,
         u"Custom Shortcuts"_s},
        {"Wayland on KDE", onWayland(u"KDE"_s), u"hotkey"_s, State::fails, u"no global"_s,
         u"System Settings › Shortcuts"_s},
        {"Wayland on sway", onWayland(u"sway"_s), u"hotkey"_s, State::fails, u"no global"_s,
         u"bindsym Mod4+Shift+p exec brevix toggle"_s},
        {"Wayland on Hyprland", onWayland(u"Hyprland"_s), u"hotkey"_s, State::fails, u"no global"_s,
         u"bind = SUPER SHIFT, P, exec, brevix toggle"_s},
        {"an X server inside Wayland", on(Display::xwayland, u"GNOME"_s), u"hotkey"_s, State::degraded,
         u"only while an X11 program is in front"_s, u"brevix toggle"_s},
        {"no display", on(Display::none, {}), u"hotkey"_s, State::fails, u"no display"_s, u"graphical"_s},
    });
}

TEST(DoctorRules, captureAndWhatDependsOnIt)
{
    const auto accessibility = [](Accessibility state) {
        return session([state](SessionFacts &facts) { facts.accessibility = state; });
    };
    const auto noBus = session([](SessionFacts &facts) { facts.hasSessionBus = false; });
    const auto unconnected = instance([](InstanceFacts &own) { own.isTrusted = false; });
    const auto onlyLooking = instance([](InstanceFacts &own) { own.isTrusted = own.isRunning = false; });
    expectCases({
        {"several programs", session([](SessionFacts &) {}), u"capture"_s, State::works,
         u"3 programs tell"_s},
        {"one program", session([](SessionFacts &facts) { facts.accessiblePrograms = 1; }), u"capture"_s,
         State::works, u"1 program tells"_s},
        {"no session bus", noBus, u"capture"_s, State::fails, u"no D-Bus session bus"_s,
         u"dbus-run-session"_s},
        {"no service", accessibility(Accessibility::noService), u"capture"_s, State::fails,
         u"no accessibility service"_s, u"at-spi2-core"_s},
        {"a dead bus", accessibility(Accessibility::notAnswering), u"capture"_s, State::fails,
         u"does not answer"_s, u"Log out"_s},
        {"switched off", accessibility(Accessibility::switchedOff), u"capture"_s, State::fails,
         u"switched off"_s, u"Press Request beside Accessibility"_s},
        {"not connected", unconnected, u"capture"_s, State::fails, u"no connection"_s, u"start it again"_s},
        {"who only looks needs no connection", onlyLooking, u"capture"_s, State::works, u"3 programs"_s},
        {"nobody to look at", session([](SessionFacts &facts) { facts.accessiblePrograms = 0; }),
         u"capture"_s, State::unknown, u"No open program tells"_s, u"Open an editor"_s},
        {"a mute program", session([](SessionFacts &facts) { facts.mutePrograms = {u"Kate"_s}; }),
         u"capture"_s, State::degraded, u"Kate does not tell about its fields"_s, u"Restart"_s},
        {"mute programs", session([](SessionFacts &facts) {
             facts.mutePrograms = {u"Kate"_s, u"Clock"_s, u"Chromium"_s};
         }),
         u"capture"_s, State::degraded, u"Kate, Clock and Chromium do not tell"_s,
         u"--force-renderer-accessibility"_s},
        {"many mute programs", session([](SessionFacts &facts) {
             facts.mutePrograms = {u"A"_s, u"B"_s, u"C"_s, u"D"_s, u"E"_s, u"F"_s};
         }),
         u"capture"_s, State::degraded, u"A, B, C, D and 2 more do not tell"_s, u"Restart"_s},
        {"no display", on(Display::none, {}), u"capture"_s, State::fails, u"no display"_s, u"graphical"_s},
        {"Wayland", onWayland(u"sway"_s), u"capture"_s, State::works, u"3 programs tell"_s},

        {"direct: switched off", accessibility(Accessibility::switchedOff), u"directInsertion"_s,
         State::fails, u"needs capture"_s, u"See Capture"_s},
        {"direct: nobody to try", session([](SessionFacts &facts) { facts.accessiblePrograms = 0; }),
         u"directInsertion"_s, State::unknown, u"No open program tells"_s, u"Open an editor"_s},
        {"direct: not chosen",
         instance([](InstanceFacts &own) { own.method = InsertionMethod::clipboardPaste; }),
         u"directInsertion"_s, State::works, u"Not used: the preferred method is Clipboard Paste."_s},
        {"direct: no display", on(Display::none, {}), u"directInsertion"_s, State::fails, u"no display"_s,
         u"graphical"_s},

        {"paste: switched off", accessibility(Accessibility::switchedOff), u"paste"_s, State::fails,
         u"does not know where to paste"_s, u"Ctrl+Return"_s},
    });
}

TEST(DoctorRules, pasteAndTheClipboard)
{
    expectCases({
        {"paste", session([](SessionFacts &) {}), u"paste"_s, State::works, u"can press the paste keys"_s},
        {"paste not chosen", instance([](InstanceFacts &own) { own.method = InsertionMethod::copiedOnly; }),
         u"paste"_s, State::works, u"Not used: the preferred method is Copy Only."_s},
        {"paste without XTEST", session([](SessionFacts &facts) { facts.hasKeySynthesis = false; }),
         u"paste"_s, State::fails, u"XTEST"_s, u"Switch XTEST on"_s},
        {"paste with a lost connection", instance([](InstanceFacts &own) { own.isPostingAllowed = false; }),
         u"paste"_s, State::fails, u"lost its connection"_s, u"start it again"_s},
        {"paste without keys", session([](SessionFacts &facts) { facts.hasPasteKeys = false; }), u"paste"_s,
         State::fails, u"neither a V nor an Insert key"_s, u"Latin"_s},
        {"paste without a window manager",
         session([](SessionFacts &facts) { facts.hasWindowManager = false; }), u"paste"_s, State::degraded,
         u"No window manager"_s, u"window manager"_s},
        {"paste in Wayland", onWayland(u"sway"_s), u"paste"_s, State::fails, u"no way to press keys"_s,
         u"Ctrl+Return"_s},
        {"paste inside Wayland", on(Display::xwayland, u"KDE"_s), u"paste"_s, State::degraded,
         u"only X11 programs"_s, u"X11 session"_s},
        {"paste without a display", on(Display::none, {}), u"paste"_s, State::fails, u"no display"_s,
         u"graphical"_s},

        {"clipboard", session([](SessionFacts &) {}), u"clipboardRestore"_s, State::works,
         u"can be saved and put back"_s},
        {"empty clipboard", session([](SessionFacts &facts) { facts.clipboard = Clipboard::empty; }),
         u"clipboardRestore"_s, State::works, u"empty"_s},
        {"silent owner", session([](SessionFacts &facts) { facts.clipboard = Clipboard::silent; }),
         u"clipboardRestore"_s, State::fails, u"Editor, which owns the clipboard, does not answer"_s,
         u"restart Editor."_s},
        {"silent owner of no name", session([](SessionFacts &facts) {
             facts.clipboard = Clipboard::silent;
             facts.clipboardOwner.clear();
         }),
         u"clipboardRestore"_s, State::fails, u"The program that owns the clipboard does not answer"_s,
         u"restart that program."_s},
        {"clipboard in Wayland", onWayland(u"sway"_s), u"clipboardRestore"_s, State::fails,
         u"cannot reach the clipboard"_s, u"X11 session"_s},
        {"clipboard inside Wayland", on(Display::xwayland, u"KDE"_s), u"clipboardRestore"_s, State::degraded,
         u"only while an X11 program is in front"_s, u"X11 session"_s},
        {"clipboard inside GNOME, which shares it", on(Display::xwayland, u"GNOME"_s), u"clipboardRestore"_s,
         State::works, u"can be saved"_s},
        {"clipboard without a display", on(Display::none, {}), u"clipboardRestore"_s, State::fails,
         u"no display"_s, u"graphical"_s},
    });
}

TEST(DoctorRules, theTray)
{
    const auto tray = [](Tray state, const QString &desktop = u"XFCE"_s) {
        return session([=](SessionFacts &facts) {
            facts.tray = state;
            facts.desktopName = desktop;
        });
    };
    const auto refused = [](bool isRunning) {
        return instance([isRunning](InstanceFacts &own) {
            own.isTrayIconShown = false;
            own.isRunning = isRunning;
        });
    };
    expectCases({
        {"notifier", tray(Tray::notifier), u"tray"_s, State::works, u"StatusNotifierItem"_s},
        {"embedding", tray(Tray::embedding), u"tray"_s, State::works, u"XEmbed"_s},
        {"none", tray(Tray::none), u"tray"_s, State::fails, u"Nothing shows tray icons"_s, u"panel"_s},
        {"collected and not shown", tray(Tray::watcherWithoutHost), u"tray"_s, State::fails,
         u"Nothing shows tray icons"_s, u"panel"_s},
        {"none on GNOME", tray(Tray::none, u"GNOME"_s), u"tray"_s, State::fails, u"Nothing shows"_s,
         u"gnome-shell-extension-appindicator"_s},
        {"not taken", refused(true), u"tray"_s, State::fails, u"has not taken the icon"_s, u"Restart"_s},
        {"who only looks has no icon", refused(false), u"tray"_s, State::works, u"StatusNotifierItem"_s},
        {"no display", on(Display::none, {}), u"tray"_s, State::fails, u"no display"_s, u"graphical"_s},
    });
}

TEST(DoctorRules, theSchemeHandler)
{
    const auto scheme = [](std::function<void(SchemeFacts &)> arrange) {
        return session([arrange](SessionFacts &facts) { arrange(facts.scheme); });
    };
    const auto claimed = [&](Claim claim, const QString &handler = {}, bool isOverruled = false) {
        return scheme([=](SchemeFacts &facts) {
            facts.claim = claim;
            facts.handler = handler;
            facts.isOverruled = isOverruled;
        });
    };
    expectCases({
        {"ours", claimed(Claim::ours), u"schemeHandler"_s, State::works, u"opens Brevix"_s},
        {"nobody's yet", claimed(Claim::nobody), u"schemeHandler"_s, State::works,
         u"Signing in registers Brevix"_s},
        {"another's", claimed(Claim::somebody, u"other.desktop"_s), u"schemeHandler"_s, State::works,
         u"Now with other.desktop; signing in registers"_s},
        {"of a program that is gone", claimed(Claim::broken, u"/old/brevix"_s), u"schemeHandler"_s,
         State::works, u"/old/brevix, which is gone"_s},
        {"overruled", claimed(Claim::somebody, u"other.desktop"_s, true), u"schemeHandler"_s, State::fails,
         u"other.desktop gets the end of a sign-in"_s, u"mimeapps.list"_s},
        {"files that cannot be written", scheme([](SchemeFacts &facts) {
             facts.claim = Claim::nobody;
             facts.canRegister = false;
         }),
         u"schemeHandler"_s, State::fails, u"cannot write"_s, u"writable"_s},
        {"files that cannot be written any more",
         scheme([](SchemeFacts &facts) { facts.canRegister = false; }), u"schemeHandler"_s, State::works,
         u"opens Brevix"_s},
        {"no opener", scheme([](SchemeFacts &facts) { facts.hasOpener = false; }), u"schemeHandler"_s,
         State::degraded, u"Nothing is installed that opens a browser"_s, u"xdg-utils"_s},
        {"refused", scheme([](SchemeFacts &facts) { facts.isRefusedByOpener = true; }), u"schemeHandler"_s,
         State::degraded, u"xdg-open, which Chromium uses, refuses"_s, u"Firefox"_s},
        {"no scheme", scheme([](SchemeFacts &facts) { facts.isPrivate = false; }), u"schemeHandler"_s,
         State::fails, u"no scheme of its own"_s, u"GoogleService-Info.plist"_s},
        {"no session bus", session([](SessionFacts &facts) { facts.hasSessionBus = false; }),
         u"schemeHandler"_s, State::fails, u"cannot come back to Brevix"_s, u"dbus-run-session"_s},
        {"no display", on(Display::none, {}), u"schemeHandler"_s, State::works, u"opens Brevix"_s},
    });
}

TEST(DoctorReport, saysWhoHasLookedAndWhatFails)
{
    const auto source = [](bool isRunning, bool hasSilentSibling) {
        return judged(instance([=](InstanceFacts &own) {
                   own.isRunning = isRunning;
                   own.hasSilentSibling = hasSilentSibling;
               }))
            .source;
    };
    EXPECT_EQ(source(true, false), DoctorReport::Source::instance);
    EXPECT_EQ(source(false, false), DoctorReport::Source::standalone);
    EXPECT_EQ(source(false, true), DoctorReport::Source::silentInstance);
    EXPECT_TRUE(judged(session([](SessionFacts &facts) { facts.tray = Tray::none; })).hasFailure());
    EXPECT_FALSE(judged(session([](SessionFacts &facts) { facts.hasWindowManager = false; })).hasFailure());
}

TEST(DoctorReport, comesBackFromItsJson)
{
    const DoctorReport report = judged(session([](SessionFacts &facts) {
        facts.tray = Tray::none;
        facts.mutePrograms = {u"A \"quoted\" – name\n"_s};
    }));
    EXPECT_EQ(DoctorReport::fromJson(report.toJson()), report);
    for (const QByteArray &bad : {QByteArray(), QByteArray("[]"), QByteArray("{}"), QByteArray("nonsense"),
                                  QByteArray(R"({"source":"instance","rows":[]})"),
                                  QByteArray(R"({"source":"other","rows":[{"state":"works"}]})"),
                                  QByteArray(R"({"source":"instance","rows":[{"state":"odd"}]})")})
        EXPECT_FALSE(DoctorReport::fromJson(bad)) << bad.toStdString();
}

TEST(DoctorReport, standsInColumnsAndWrapsBetweenWords)
{
    const DoctorReport report{.source = DoctorReport::Source::standalone,
                              .session = u"X11, openbox"_s,
                              .rows = {{.id = u"a"_s,
                                        .title = u"First"_s,
                                        .state = State::works,
                                        .reason = u"All is well."_s,
                                        .fix = {}},
                                       {.id = u"b"_s,
                                        .title = u"The second"_s,
                                        .state = State::degraded,
                                        .reason = u"Some words that do not fit."_s,
                                        .fix = u"Do this and that."_s}}};
    const QString head = u"Brevix "_s + QStringLiteral(BREVIX_VERSION) +
                         u" · X11, openbox\nBrevix is not running; examined without it\n\n"_s;
    EXPECT_EQ(report.toText(0), head + u"First       works     All is well.\n"
                                       "The second  degraded  Some words that do not fit.\n"
                                       "                      → Do this and that.\n"_s);
    EXPECT_EQ(report.toText(42), head + u"First       works     All is well.\n"
                                        "The second  degraded  Some words that do\n"
                                        "                      not fit.\n"
                                        "                      → Do this and that.\n"_s);
    for (const QString &line : report.toText(1).split(u'\n').mid(3))
        EXPECT_LE(line.size(), 22 + 20) << qPrintable(line);
}

TEST(DoctorExamination, asksOnceAndTellsWhenItIsDone)
{
    InMemorySessionProbe probe;
    probe.delay = std::chrono::milliseconds(20);
    probe.facts.tray = Tray::none;
    Doctor doctor(
        probe, [] { return InstanceFacts(); }, u"app.example"_s);
    EXPECT_TRUE(doctor.report().rows.isEmpty());
    int changes = 0;
    int ends = 0;
    QObject::connect(&doctor, &Doctor::isExaminingChanged, &doctor, [&] { ++changes; });
    QObject::connect(&doctor, &Doctor::examined, &doctor, [&] { ++ends; });

    doctor.examine();
    doctor.examine();
    EXPECT_TRUE(doctor.isExamining());
    EXPECT_TRUE(waitUntil([&] { return ends == 1; }));
    EXPECT_FALSE(doctor.isExamining());
    EXPECT_EQ(changes, 2);
    EXPECT_EQ(probe.examinations, 1);
    EXPECT_EQ(probe.scheme, u"app.example"_s);
    EXPECT_EQ(rowOf(doctor.report(), u"tray"_s).state, State::fails);

    probe.facts.tray = Tray::notifier;
    doctor.examine();
    EXPECT_TRUE(waitUntil([&] { return ends == 2; }));
    EXPECT_EQ(rowOf(doctor.report(), u"tray"_s).state, State::works);
}

TEST(DoctorExamination, mayEndWhileItRuns)
{
    InMemorySessionProbe probe;
    probe.delay = std::chrono::milliseconds(20);
    int asked = 0;
    auto doctor = std::make_unique<Doctor>(
        probe,
        [&] {
            ++asked;
            return InstanceFacts();
        },
        u"app.example"_s);
    doctor->examine();
    doctor.reset();
    await(sleepFor(std::chrono::milliseconds(60)));
    EXPECT_EQ(asked, 0);
}
