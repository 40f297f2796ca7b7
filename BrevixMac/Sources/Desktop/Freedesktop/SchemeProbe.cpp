// SPDX-License-Identifier: GPL-3.0-or-later
#include "Desktop/Freedesktop/SchemeProbe.h"

#include <QCoroProcess>
#include <QDir>
#include <QFileInfo>
#include <QRegularExpression>
#include <QStandardPaths>

namespace {

using namespace std::chrono_literals;

constexpr auto toolPatience = 3s;
constexpr auto killPatience = 1s;
constexpr qint64 longestScript = qint64(1) * 1024 * 1024;

QByteArray contentOf(const QString &path, qint64 limit = longestScript)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.read(limit) : QByteArray();
}

QString typeOf(const QString &scheme)
{
    return u"x-scheme-handler/" + scheme.toLower();
}

QString found(const QString &program)
{
    return program.isEmpty() ? QString() : QStandardPaths::findExecutable(program);
}

/// Whether files can be made in @p folder, which may have to be made itself.
bool canWriteInto(const QString &folder)
{
    QFileInfo nearest(QDir::cleanPath(folder));
    while (!nearest.exists() && !nearest.isRoot())
        nearest.setFile(nearest.path());
    return nearest.isDir() && nearest.isWritable();
}

/// The desktop entry that addresses of @p scheme start, as the desktop's own tool has it.
QCoro::Task<QString> handlerOf(QString scheme, SchemeProbe::Options options)
{
    const QString tool = found(options.queryTool);
    if (tool.isEmpty()) {
        const QByteArray list = contentOf(options.folders.configuration + QStringLiteral("/mimeapps.list"));
        co_return QString::fromUtf8(SchemeHandler::defaultOf(list, typeOf(scheme).toUtf8()));
    }
    QProcess process;
    process.setProcessEnvironment(options.environment);
    process.setStandardErrorFile(QProcess::nullDevice());
    process.setStandardInputFile(QProcess::nullDevice());
    process.start(tool, {QStringLiteral("query"), QStringLiteral("default"), typeOf(scheme)});
    const bool hasEnded = co_await qCoro(process).waitForFinished(toolPatience);
    if (!hasEnded) {
        process.kill();
        co_await qCoro(process).waitForFinished(killPatience);
        co_return QString();
    }
    co_return QString::fromLocal8Bit(process.readAllStandardOutput()).section(u'\n', 0, 0).trimmed();
}

/// On a desktop that it does not know, xdg-open takes everything for a file whose scheme holds anything but
/// letters, in the versions that look for them with this pattern.
bool isRefused(const QString &scheme, const QString &opener, const QProcessEnvironment &environment)
{
    static const QRegularExpression onlyLetters(
        QRegularExpression::anchoredPattern(QStringLiteral("[A-Za-z+.-]+")));
    return !opener.isEmpty() && !onlyLetters.match(scheme).hasMatch() &&
           !SchemeProbe::isKnownDesktop(environment) && contentOf(opener).contains("'^[[:alpha:]+\\.\\-]+:'");
}

} // namespace

bool SchemeProbe::isKnownDesktop(const QProcessEnvironment &environment)
{
    static const QStringList known{
        QStringLiteral("cinnamon"), QStringLiteral("x-cinnamon"), QStringLiteral("enlightenment"),
        QStringLiteral("gnome"),    QStringLiteral("kde"),        QStringLiteral("deepin"),
        QStringLiteral("lxde"),     QStringLiteral("lxqt"),       QStringLiteral("mate"),
        QStringLiteral("xfce"),     QStringLiteral("xfce4"),      QStringLiteral("lubuntu")};
    for (const char *mark : {"KDE_FULL_SESSION", "GNOME_DESKTOP_SESSION_ID", "MATE_DESKTOP_SESSION_ID"}) {
        if (!environment.value(QString::fromLatin1(mark)).isEmpty())
            return true;
    }
    const QString names = environment.value(QStringLiteral("XDG_CURRENT_DESKTOP")) + u':' +
                          environment.value(QStringLiteral("DESKTOP_SESSION"));
    for (const QString &name : names.toLower().split(u':')) {
        if (known.contains(name) || name.startsWith(u"gnome"))
            return true;
    }
    return false;
}

QCoro::Task<SchemeFacts> SchemeProbe::examine(QString scheme, Options options)
{
    using Claim = SchemeFacts::Claim;
    SchemeFacts facts;
    facts.isPrivate = SchemeHandler::isPrivateScheme(scheme);
    const QString opener = found(options.opener);
    facts.hasOpener = !opener.isEmpty() || !found(options.otherOpener).isEmpty();
    if (!facts.isPrivate)
        co_return facts;
    facts.isRefusedByOpener = isRefused(scheme, opener, options.environment);
    facts.canRegister =
        canWriteInto(options.folders.applications) && canWriteInto(options.folders.configuration);

    const QString handler = co_await handlerOf(scheme, options);
    const QString entry = SchemeHandler::entryFileName(scheme);
    const QString program = SchemeHandler::programOf(contentOf(options.folders.applications + u'/' + entry));
    if (handler == entry) {
        facts.claim = QFileInfo(program).isExecutable() ? Claim::ours : Claim::broken;
        facts.handler = facts.claim == Claim::broken ? program : QString();
    } else if (!handler.isEmpty()) {
        const QByteArray list = contentOf(options.folders.configuration + QStringLiteral("/mimeapps.list"));
        facts.claim = Claim::somebody;
        facts.handler = handler;
        facts.isOverruled = SchemeHandler::defaultOf(list, typeOf(scheme).toUtf8()) == entry.toUtf8();
    }
    co_return facts;
}
