// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>
#include <QString>

/// Makes this program the one that the desktop opens addresses of a scheme with, for this user: a desktop
/// entry that is shown in no menu, and the default for the scheme's type in mimeapps.list (both as the
/// freedesktop.org specifications describe them). Both files are replaced atomically; what others have put
/// into mimeapps.list stays. Main thread; reads and writes two small files.
namespace SchemeHandler {

struct Folders
{
    QString applications;  ///< of the desktop entries
    QString configuration; ///< of mimeapps.list

    /// The user's own.
    static Folders standard();
};

/// Whether @p scheme can belong to an application: valid, and in the reverse-domain form that keeps it apart
/// from the schemes everybody uses.
bool isPrivateScheme(const QString &scheme);

/// Has `@p program open-url ADDRESS` run for addresses of @p scheme. False, with a line in the log, when the
/// scheme is no private one or the entry cannot be written.
bool registerScheme(const QString &scheme, const QString &program,
                    const Folders &folders = Folders::standard());

/// The name of the scheme's entry file.
QString entryFileName(const QString &scheme);

/// The entry file's content.
QByteArray entryContent(const QString &scheme, const QString &program);

/// The program that an entry file of that content starts; empty when there is none to be seen.
QString programOf(const QByteArray &entryContent);

/// The first default for @p type in @p mimeApps, the content of a mimeapps.list; empty without one.
QByteArray defaultOf(const QByteArray &mimeApps, const QByteArray &type);

/// @p mimeApps, the content of a mimeapps.list, with @p entry as the first default for @p type. Everything
/// else stays as it is, other defaults of the type behind it.
QByteArray withDefault(const QByteArray &mimeApps, const QByteArray &type, const QByteArray &entry);

} // namespace SchemeHandler
