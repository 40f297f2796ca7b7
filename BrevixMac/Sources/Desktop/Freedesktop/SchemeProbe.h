// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Desktop/Freedesktop/SchemeHandler.h"
#include "Desktop/SessionProbe.h"

#include <QCoroTask>
#include <QProcessEnvironment>

/// Whether the desktop would bring an address of a private scheme to this application. Main thread only;
/// reads small files and asks the desktop's own tool, which is given three seconds.
namespace SchemeProbe {

struct Options
{
    SchemeHandler::Folders folders = SchemeHandler::Folders::standard();
    QString queryTool = QStringLiteral("xdg-mime"); ///< found in the path unless it is one
    QString opener = QStringLiteral("xdg-open");    ///< the same
    QString otherOpener = QStringLiteral("gio");    ///< the same, where the opener is not installed
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
};

QCoro::Task<SchemeFacts> examine(QString scheme, Options options);

/// Whether xdg-open takes @p environment for that of a desktop it knows, to whose opener it leaves the work.
bool isKnownDesktop(const QProcessEnvironment &environment);

} // namespace SchemeProbe
