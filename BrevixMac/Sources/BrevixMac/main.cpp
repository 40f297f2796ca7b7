// SPDX-License-Identifier: GPL-3.0-or-later
#include "BrevixMacApp.h"
#include "DoctorCommand.h"
#include "InstanceService.h"

#include "Desktop/DisplayServer.h"
#include "Foundation/CommandLine.h"
#include "Foundation/Console.h"
#include "Foundation/TerminationSignals.h"

#include <QApplication>

#include <utility>

namespace {

struct BrevixCommandLine : CommandLine
{
    QCommandLineOption local{
        QStringLiteral("local"),
        QStringLiteral("Use a library on this machine, served by Brevix itself; needs no account.")};
    QCommandLineOption json{QStringLiteral("json"), QStringLiteral("With doctor: print the report as JSON.")};

    BrevixCommandLine()
    {
        describe(QStringLiteral("Your prompts, in any text field.\n\n"
                                "Without a command, starts Brevix in the tray, or shows the one that runs."),
                 {local, json}, QStringLiteral("[toggle | palette | settings | doctor | open-url ADDRESS]"),
                 QStringLiteral(
                     "toggle: open or close the picker of the running Brevix; "
                     "bind it to a key where the global shortcut is not available.\n"
                     "palette: open the prompt palette of the running Brevix.\n"
                     "settings: open the settings of the running Brevix.\n"
                     "doctor: say which of hotkey, capture, insertion, clipboard, tray and sign-in work "
                     "in this session, and what to do about the rest; ends with 1 when something fails.\n"
                     "open-url ADDRESS: hand the last address of the sign-in page to the running "
                     "Brevix; the desktop does this by itself."));
    }
};

int unavailable(const QString &problem)
{
    return Console::fail(problem, Console::exitUnavailable);
}

int exitCodeFor(InstanceService::Answer answer)
{
    switch (answer) {
    case InstanceService::Answer::done:
        return 0;
    case InstanceService::Answer::notRunning:
        return unavailable(QStringLiteral("Brevix is not running. Start it with: brevix"));
    case InstanceService::Answer::noBus:
        return unavailable(QStringLiteral("there is no D-Bus session bus to reach the running Brevix"));
    case InstanceService::Answer::failed:
        break;
    }
    return unavailable(QStringLiteral("the running Brevix did not answer"));
}

int start(int argc, char **argv, BrevixMacApp::Library library)
{
    if (const auto problem = DisplayServer::problem())
        return unavailable(*problem);
    DisplayServer::choosePlatform();
    TerminationSignals::holdBack();
    QApplication application(argc, argv);
    QApplication::setDesktopFileName(BrevixMacApp::bundleIdentifier());

    InstanceService instance;
    if (!instance.claim()) {
        const bool shown = InstanceService::ask(QStringLiteral("Show")) == InstanceService::Answer::done;
        return shown ? 0 : unavailable(QStringLiteral("Brevix runs already but did not answer"));
    }
    const TerminationSignals signals;
    BrevixMacApp app(instance, library,
                     [](const QString &problem) { QCoreApplication::exit(unavailable(problem)); });
    if (const auto problem = app.problem())
        return unavailable(*problem);
    QObject::connect(&signals, &TerminationSignals::received, &application, [&app] { app.quit(); });
    return QApplication::exec();
}

} // namespace

int main(int argc, char **argv)
{
    QCoreApplication::setApplicationName(QStringLiteral("brevix"));
    QCoreApplication::setApplicationVersion(QStringLiteral(BREVIX_VERSION));

    QStringList arguments;
    for (int i = 0; i < argc; ++i)
        arguments.append(QString::fromLocal8Bit(argv[i]));
    BrevixCommandLine line;
    if (const auto exitCode = line.read(arguments))
        return *exitCode;
    const QStringList commands = line.words();
    const auto library = line.isSet(line.local) ? BrevixMacApp::Library::local : BrevixMacApp::Library::cloud;
    const bool isDoctor = commands == QStringList{QStringLiteral("doctor")};
    if (line.isSet(line.json) && !isDoctor)
        return CommandLine::misused(QStringLiteral("--json goes with doctor"));
    if (isDoctor)
        return DoctorCommand::run(argc, argv, library,
                                  line.isSet(line.json) ? DoctorCommand::Format::json
                                                        : DoctorCommand::Format::text);
    if (commands.isEmpty())
        return start(argc, argv, library);
    if (commands.size() == 2 && commands.first() == u"open-url") {
        const QCoreApplication application(argc, argv);
        return exitCodeFor(InstanceService::open(commands.last()));
    }
    const std::pair<QStringView, QStringView> requests[] = {
        {u"toggle", u"Toggle"}, {u"palette", u"Palette"}, {u"settings", u"Settings"}};
    for (const auto &[command, method] : requests) {
        if (commands.size() == 1 && commands.first() == command) {
            const QCoreApplication application(argc, argv);
            return exitCodeFor(InstanceService::ask(method.toString()));
        }
    }
    return CommandLine::misused(QStringLiteral("unknown command \"%1\"").arg(commands.join(u' ')));
}
