// SPDX-License-Identifier: GPL-3.0-or-later
#include "UserCommands.h"

#include "Foundation/CommandLine.h"
#include "Foundation/Console.h"
#include "Foundation/TerminationSignals.h"
#include "LocalCloud/LocalCloud.h"

#include <QCoreApplication>
#include <QProcessEnvironment>
#include <QStandardPaths>
#include <QTimer>

#include <chrono>

namespace {

constexpr int defaultPort = 8787;
constexpr std::chrono::seconds quietOpening{3};

struct CloudCommandLine : CommandLine
{
    QCommandLineOption listen{
        QStringLiteral("listen"),
        QStringLiteral("Where to listen, 127.0.0.1:8787 unless given. Other addresses than "
                       "this computer's own loopback need --certificate and --key."),
        QStringLiteral("ADDRESS:PORT")};
    QCommandLineOption data{QStringLiteral("data"),
                            QStringLiteral("The folder of the database and the signing key."),
                            QStringLiteral("FOLDER")};
    QCommandLineOption certificate{QStringLiteral("certificate"),
                                   QStringLiteral("The certificate, with its chain, in PEM form."),
                                   QStringLiteral("FILE")};
    QCommandLineOption key{QStringLiteral("key"),
                           QStringLiteral("The certificate's private key in PEM form."),
                           QStringLiteral("FILE")};
    QCommandLineOption publicUrl{
        QStringLiteral("public-url"),
        QStringLiteral("The address that clients use, if it is not the one listened at."),
        QStringLiteral("URL")};
    QCommandLineOption open{
        QStringLiteral("open"),
        QStringLiteral("Ask for no passwords: your own programs on this computer may sign in "
                       "as anybody, other users' may not connect. Only on loopback, for "
                       "trying things out.")};
    QCommandLineOption name{QStringLiteral("name"), QStringLiteral("The name of a new user."),
                            QStringLiteral("NAME")};

    CloudCommandLine()
    {
        describe(QStringLiteral("Keeps prompt libraries for a household or a team.\n\n"
                                "Without a command, serves until it is ended.\n"
                                "  add-user EMAIL       make an account; its password is asked for\n"
                                "  set-password EMAIL   change a password and end the account's sessions\n"
                                "  remove-user EMAIL    delete an account and its library\n"
                                "  list-users           show the accounts"),
                 {listen, data, certificate, key, publicUrl, open, name}, QStringLiteral("[command]"),
                 QStringLiteral("One of the above."));
    }
};

/// Reads "ADDRESS:PORT" and "[ADDRESS]:PORT" into @p options. False for another text.
bool readAddress(const QString &text, LocalCloud::Options &options)
{
    const qsizetype colon = text.lastIndexOf(u':');
    if (colon < 0)
        return false;
    QString address = text.left(colon);
    if (address.startsWith(u'[') && address.endsWith(u']'))
        address = address.sliced(1, address.size() - 2);
    bool isPort = false;
    options.port = text.sliced(colon + 1).toUShort(&isPort);
    options.address =
        address == QLatin1String("localhost") ? QHostAddress(QHostAddress::LocalHost) : QHostAddress(address);
    return isPort && !options.address.isNull();
}

QString defaultFolder()
{
    return QStandardPaths::writableLocation(QStandardPaths::GenericDataLocation) +
           QStringLiteral("/brevix-cloud");
}

int serve(QCoreApplication &application, const LocalCloud::Options &options)
{
    TerminationSignals::holdBack();
    const TerminationSignals signals;
    LocalCloud cloud(options);
    if (!cloud.start())
        return Console::fail(cloud.errorString());
    QObject::connect(&signals, &TerminationSignals::received, &application, &QCoreApplication::quit);
    QTimer patience;
    patience.setSingleShot(true);
    QObject::connect(&patience, &QTimer::timeout, &application, [&options] {
        Console::say(QStringLiteral("Checking the database in %1 before serving it; this takes as long as "
                                    "reading it.")
                         .arg(options.dataFolder));
    });
    patience.start(quietOpening);
    cloud.whenOpened([&](bool isUsable) {
        patience.stop();
        if (isUsable)
            Console::say(
                QStringLiteral("Serving %1, data in %2").arg(cloud.origin().toString(), options.dataFolder));
        else
            QCoreApplication::exit(
                Console::fail(QStringLiteral("The database cannot be used: ") + cloud.errorString()));
    });
    return QCoreApplication::exec();
}

int runCommand(const QStringList &words, const QString &name, const LocalCloud::Options &options)
{
    const UserCommands users(options);
    const QString &command = words.constFirst();
    if (command == QLatin1String("list-users") && words.size() == 1)
        return users.list();
    if (words.size() == 2 && command == QLatin1String("add-user"))
        return users.add(words[1], name.isEmpty() ? words[1].section(u'@', 0, 0) : name);
    if (words.size() == 2 && command == QLatin1String("set-password"))
        return users.setPassword(words[1]);
    if (words.size() == 2 && command == QLatin1String("remove-user"))
        return users.remove(words[1]);
    return CommandLine::misused(QStringLiteral("\"%1\" cannot be understood.").arg(words.join(u' ')));
}

} // namespace

int main(int argc, char **argv)
{
    QCoreApplication application(argc, argv);
    QCoreApplication::setApplicationName(QStringLiteral("brevix-cloud"));
    QCoreApplication::setApplicationVersion(QStringLiteral(BREVIX_VERSION));
    CloudCommandLine line;
    if (const auto exitCode = line.read(QCoreApplication::arguments()))
        return *exitCode;

    LocalCloud::Options options;
    options.port = defaultPort;
    options.dataFolder = line.isSet(line.data) ? line.value(line.data) : defaultFolder();
    options.certificateFile = line.value(line.certificate);
    options.keyFile = line.value(line.key);
    options.publicUrl = QUrl(line.value(line.publicUrl), QUrl::StrictMode);
    options.asksPasswords = !line.isSet(line.open);
    if (line.isSet(line.listen) && !readAddress(line.value(line.listen), options))
        return Console::fail(QStringLiteral("--listen takes ADDRESS:PORT, such as 192.168.1.5:8443."),
                             Console::exitUsage);
    const QStringList words = line.words();
    if (!words.isEmpty())
        return runCommand(words, line.value(line.name), options);
    QString problem;
    options.model = Cloud::ModelOptions::fromEnvironment(QProcessEnvironment::systemEnvironment(), problem);
    if (problem.isEmpty())
        problem = LocalCloud::problemOf(options);
    return problem.isEmpty() ? serve(application, options) : Console::fail(problem, Console::exitUsage);
}
