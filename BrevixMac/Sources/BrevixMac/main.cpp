// SPDX-License-Identifier: GPL-3.0-or-later
#include "BrevixMacApp.h"
#include "DoctorCommand.h"
#include "InstanceService.h"

#include "Desktop/DisplayServer.h"
#include "Foundation/TerminationSignals.h"

#include <QApplication>
#include <QCommandLineParser>

#include <cstdio>

namespace {

// sysexits.h: a service is unavailable, the command line is wrong.
constexpr int exitUnavailable = 69;
constexpr int exitUsage = 64;

int fail(const QString &message, int code)
{
    std::fprintf(stderr, "brevix: %s\n", qUtf8Printable(message));
    return code;
}

struct CommandLine
{
    QCommandLineParser parser;
    QCommandLineOption local{
        QStringLiteral("local"),
        QStringLiteral("Use a library on this machine, served by Brevix itself; needs no account.")};
    QCommandLineOption json{QStringLiteral("json"), QStringLiteral("With doctor: print the report as JSON.")};
    QCommandLineOption help{{QStringLiteral("h"), QStringLiteral("help")},
                            QStringLiteral("Show this help and exit.")};
    QCommandLineOption version{{QStringLiteral("v"), QStringLiteral("version")},
                               QStringLiteral("Show the version and exit.")};

    CommandLine()
    {
        parser.setApplicationDescription(
            QStringLiteral("Your prompts, in any text field.\n\n"
                           "Without a command, starts Brevix in the tray, or shows the one that runs."));
        parser.addOptions({local, json, help, version});
        parser.addPositionalArgument(
            QStringLiteral("command"),
            QStringLiteral(
                "toggle: open or close the picker of the running Brevix; "
                "bind it to a key where the global shortcut is not available.\n"
                "palette: open the prompt palette of the running Brevix.\n"
                "settings: open the settings of the running Brevix.\n"
                "doctor: say which of hotkey, capture, insertion, clipboard, tray and sign-in work "
                "in this session, and what to do about the rest; ends with 1 when something "
                "fails.\n"
                "open-url ADDRESS: hand the last address of the sign-in page to the running "
                "Brevix; the desktop does this by itself."),
            QStringLiteral("[toggle | palette | settings | doctor | open-url ADDRESS]"));
    }
};

int exitCodeFor(InstanceService::Answer answer)
{
    switch (answer) {
    case InstanceService::Answer::done:
        return 0;
    case InstanceService::Answer::notRunning:
        return fail(QStringLiteral("Brevix is not running. Start it with: brevix"), exitUnavailable);
    case InstanceService::Answer::noBus:
        return fail(QStringLiteral("there is no D-Bus session bus to reach the running Brevix"),
                    exitUnavailable);
    case InstanceService::Answer::failed:
        break;
    }
    return fail(QStringLiteral("the running Brevix did not answer"), exitUnavailable);
}

int start(int argc, char **argv, BrevixMacApp::Library library)
{
    if (const auto problem = DisplayServer::problem())
        return fail(*problem, exitUnavailable);
    DisplayServer::choosePlatform();
    TerminationSignals::holdBack();
    QApplication application(argc, argv);
    QApplication::setDesktopFileName(BrevixMacApp::bundleIdentifier());

    InstanceService instance;
    if (!instance.claim()) {
        const bool shown = InstanceService::ask(QStringLiteral("Show")) == InstanceService::Answer::done;
        return shown ? 0 : fail(QStringLiteral("Brevix runs already but did not answer"), exitUnavailable);
    }
    const TerminationSignals signals;
    BrevixMacApp app(instance, library,
                     [](const QString &problem) { QCoreApplication::exit(fail(problem, exitUnavailable)); });
    if (const auto problem = app.problem())
        return fail(*problem, exitUnavailable);
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
    CommandLine line;
    if (!line.parser.parse(arguments))
        return fail(line.parser.errorText() + QStringLiteral("\nTry: brevix --help"), exitUsage);
    if (line.parser.isSet(line.help)) {
        std::fputs(qPrintable(line.parser.helpText()), stdout);
        return 0;
    }
    if (line.parser.isSet(line.version)) {
        std::printf("brevix %s\n", BREVIX_VERSION);
        return 0;
    }
    const QStringList commands = line.parser.positionalArguments();
    const auto library =
        line.parser.isSet(line.local) ? BrevixMacApp::Library::local : BrevixMacApp::Library::cloud;
    const bool isDoctor = commands == QStringList{QStringLiteral("doctor")};
    if (line.parser.isSet(line.json) && !isDoctor)
        return fail(QStringLiteral("--json goes with doctor\nTry: brevix --help"), exitUsage);
    if (isDoctor)
        return DoctorCommand::run(argc, argv, library,
                                  line.parser.isSet(line.json) ? DoctorCommand::Format::json
                                                               : DoctorCommand::Format::text);
    if (commands == QStringList{QStringLiteral("toggle")}) {
        const QCoreApplication application(argc, argv);
        return exitCodeFor(InstanceService::ask(QStringLiteral("Toggle")));
    }
    if (commands == QStringList{QStringLiteral("palette")}) {
        const QCoreApplication application(argc, argv);
        return exitCodeFor(InstanceService::ask(QStringLiteral("Palette")));
    }
    if (commands == QStringList{QStringLiteral("settings")}) {
        const QCoreApplication application(argc, argv);
        return exitCodeFor(InstanceService::ask(QStringLiteral("Settings")));
    }
    if (commands.size() == 2 && commands.first() == u"open-url") {
        const QCoreApplication application(argc, argv);
        return exitCodeFor(InstanceService::open(commands.last()));
    }
    if (!commands.isEmpty())
        return fail(QStringLiteral("unknown command \"%1\"\nTry: brevix --help").arg(commands.join(u' ')),
                    exitUsage);
    return start(argc, argv, library);
}
