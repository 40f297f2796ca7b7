// SPDX-License-Identifier: GPL-3.0-or-later
#include "Desktop/DisplayServer.h"

#include <QStringList>
#include <QtGlobal>

#include <xcb/xcb.h>

#include <memory>
#include <utility>

namespace {

bool isSet(const char *variable)
{
    return !qEnvironmentVariableIsEmpty(variable);
}

QStringList &ownVariables()
{
    static QStringList names;
    return names;
}

void setOwn(const char *variable, const char *value)
{
    qputenv(variable, value);
    ownVariables().append(QString::fromLatin1(variable));
}

bool isX11Reachable()
{
    const std::unique_ptr<xcb_connection_t, decltype(&xcb_disconnect)> connection(
        xcb_connect(nullptr, nullptr), &xcb_disconnect);
    return xcb_connection_has_error(connection.get()) == 0;
}

} // namespace

namespace DisplayServer {

std::optional<QString> problem()
{
    if (isSet("QT_QPA_PLATFORM") || isSet("WAYLAND_DISPLAY"))
        return std::nullopt;
    if (!isSet("DISPLAY"))
        return QStringLiteral("no display: neither DISPLAY nor WAYLAND_DISPLAY is set");
    if (!isX11Reachable())
        return QStringLiteral("no display: cannot connect to X server \"%1\"")
            .arg(qEnvironmentVariable("DISPLAY"));
    return std::nullopt;
}

void choosePlatform()
{
    if (!isSet("QT_QPA_PLATFORM") && isSet("DISPLAY"))
        setOwn("QT_QPA_PLATFORM", "xcb");
    // Nothing here draws with OpenGL, and its libraries are the largest part of a Qt program's start and
    // memory.
    if (!isSet("QT_XCB_GL_INTEGRATION"))
        setOwn("QT_XCB_GL_INTEGRATION", "none");
}

QProcessEnvironment environmentForPrograms()
{
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    for (const QString &name : std::as_const(ownVariables()))
        environment.remove(name);
    return environment;
}

} // namespace DisplayServer
