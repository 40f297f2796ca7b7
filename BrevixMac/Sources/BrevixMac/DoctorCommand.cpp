// SPDX-License-Identifier: GPL-3.0-or-later
#include "DoctorCommand.h"

#include "Doctor.h"
#include "InstanceService.h"
#include "PreferenceStore.h"

#include "Desktop/DesktopSession.h"
#include "Desktop/DesktopSessionProbe.h"
#include "Desktop/DisplayServer.h"
#include "Desktop/HotKeys.h"
#include "Foundation/Console.h"
#include "Foundation/UserDefaults.h"

#include <QApplication>

#include <cstdio>
#include <sys/ioctl.h>
#include <unistd.h>

namespace {

// An examination's own deadlines end before.
constexpr std::chrono::seconds answerPatience{10};

/// 0 when the output is no terminal.
int terminalColumns()
{
    winsize size{};
    return ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) == 0 ? size.ws_col : 0;
}

int print(const DoctorReport &report, DoctorCommand::Format format)
{
    const QByteArray text =
        format == DoctorCommand::Format::json ? report.toJson() : report.toText(terminalColumns()).toUtf8();
    std::fwrite(text.constData(), 1, static_cast<size_t>(text.size()), stdout);
    return report.hasFailure() ? Console::exitFailure : 0;
}

/// The hotkey is taken for a moment, to see whether it could be.
InstanceFacts factsOfNobody(HotKeys &hotKeys, const PreferenceStore &preferences, bool hasSilentSibling)
{
    InstanceFacts facts{.isRunning = false,
                        .hasSilentSibling = hasSilentSibling,
                        .shortcut = preferences.preferredShortcut(),
                        .hasHotkeys = hotKeys.isAvailable(),
                        .method = preferences.preferredInsertionMethod()};
    facts.isHotkeyHeld = hotKeys.registerHotKey(facts.shortcut.keyCode, facts.shortcut.modifiers);
    hotKeys.unregisterHotKey();
    return facts;
}

DoctorReport examineHere(BrevixMacApp::Library library, bool hasSilentSibling)
{
    DesktopSession desktop;
    UserDefaults defaults(UserDefaults::pathForDomain(BrevixMacApp::defaultsDomain(library)));
    const PreferenceStore preferences(defaults);
    Doctor doctor(
        desktop.probe(), [&] { return factsOfNobody(desktop.hotKeys(), preferences, hasSilentSibling); },
        BrevixMacApp::signInScheme(library));
    QObject::connect(&doctor, &Doctor::examined, qApp, &QCoreApplication::quit, Qt::QueuedConnection);
    doctor.examine();
    QCoreApplication::exec();
    return doctor.report();
}

QCoro::Task<> examineBlind(QString scheme, InstanceFacts facts, DoctorReport *report)
{
    const SessionFacts session = co_await DesktopSessionProbe::examineWithoutDisplay(scheme);
    *report = Doctor::judge(session, facts);
    QMetaObject::invokeMethod(qApp, &QCoreApplication::quit, Qt::QueuedConnection);
}

DoctorReport examineWithoutDisplay(BrevixMacApp::Library library, bool hasSilentSibling)
{
    DoctorReport report;
    const InstanceFacts facts{.isRunning = false, .hasSilentSibling = hasSilentSibling};
    detach(examineBlind(BrevixMacApp::signInScheme(library), facts, &report), "examining the session");
    QCoreApplication::exec();
    return report;
}

} // namespace

int DoctorCommand::run(int argc, char **argv, BrevixMacApp::Library library, Format format)
{
    bool hasSilentSibling = false;
    {
        const QCoreApplication application(argc, argv);
        const auto reply = InstanceService::askForText(QStringLiteral("Doctor"), answerPatience);
        const auto report = DoctorReport::fromJson(reply.text.toUtf8());
        if (reply.answer == InstanceService::Answer::done && report)
            return print(*report, format);
        hasSilentSibling =
            reply.answer == InstanceService::Answer::done || reply.answer == InstanceService::Answer::failed;
    }
    if (const auto problem = DisplayServer::problem()) {
        const QCoreApplication application(argc, argv);
        print(examineWithoutDisplay(library, hasSilentSibling), format);
        return Console::fail(*problem, Console::exitUnavailable);
    }
    DisplayServer::choosePlatform();
    const QApplication application(argc, argv);
    return print(examineHere(library, hasSilentSibling), format);
}
