// SPDX-License-Identifier: GPL-3.0-or-later
#include "Desktop/DisplayServer.h"

#include <QDir>
#include <QFile>
#include <QLibraryInfo>
#include <QStringList>
#include <QtGlobal>

#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>
#include <xcb/xcb.h>

#include <cstring>
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

/// WAYLAND_DISPLAY is a path, or a name in the folder of the session.
bool isWaylandReachable()
{
    const QString name = qEnvironmentVariable("WAYLAND_DISPLAY");
    const QString path =
        name.startsWith(u'/') ? name : QString(qEnvironmentVariable("XDG_RUNTIME_DIR") + u'/' + name);
    const QByteArray encoded = QFile::encodeName(path);
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    if (size_t(encoded.size()) >= sizeof address.sun_path)
        return false;
    std::memcpy(address.sun_path, encoded.constData(), size_t(encoded.size()));
    const int descriptor = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0);
    if (descriptor < 0)
        return false;
    const bool isConnected =
        ::connect(descriptor, reinterpret_cast<const sockaddr *>(&address), sizeof address) == 0;
    ::close(descriptor);
    return isConnected;
}

bool hasWaylandPlugin()
{
    const QDir folder(QLibraryInfo::path(QLibraryInfo::PluginsPath) + QStringLiteral("/platforms"));
    return !folder.entryList({QStringLiteral("libqwayland*.so")}).isEmpty();
}

} // namespace

namespace DisplayServer {

std::optional<QString> problem()
{
    // Qt ends the process where it finds no display, so it must not come to that.
    if (isSet("QT_QPA_PLATFORM"))
        return std::nullopt;
    if (isSet("DISPLAY"))
        return isX11Reachable()
                   ? std::nullopt
                   : std::optional(QStringLiteral("no display: cannot connect to X server \"%1\"")
                                       .arg(qEnvironmentVariable("DISPLAY")));
    if (!isSet("WAYLAND_DISPLAY"))
        return QStringLiteral("no display: neither DISPLAY nor WAYLAND_DISPLAY is set");
    if (!isWaylandReachable())
        return QStringLiteral("no display: cannot connect to Wayland display \"%1\"")
            .arg(qEnvironmentVariable("WAYLAND_DISPLAY"));
    if (!hasWaylandPlugin())
        return QStringLiteral("no display: Qt's Wayland plugin is missing (package qt6-wayland)");
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
