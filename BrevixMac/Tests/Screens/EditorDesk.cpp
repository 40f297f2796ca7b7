// SPDX-License-Identifier: GPL-3.0-or-later
#include "EditorDesk.h"

#include "Support/Waiting.h"

#include <QFile>

#include <stdexcept>

EditorDesk::EditorDesk()
{
    email = QStringLiteral("ann@example.com");
    server.addCategory(QStringLiteral("outreach"), QStringLiteral("Outreach"), QStringLiteral("#8b5cf6"));
    server.addCategory(QStringLiteral("writing"), QStringLiteral("Writing"), QStringLiteral("#ec4899"));
}

void EditorDesk::start()
{
    appState.reset();
    if (userID)
        storeSession(*userID);
    else
        defaults.remove(AuthService::storageKey);
    AppBench::start();
    if (userID && !waitForLibrary())
        throw std::runtime_error("the library did not arrive");
}

void EditorDesk::signInAs(const QString &id)
{
    storeSession(id);
    appState->authService().start();
    if (!waitUntil([&] {
            const auto &user = appState->authService().currentUser();
            return user && user->uid == id;
        }))
        throw std::runtime_error("nobody signed in");
}

QString EditorDesk::write(const QString &name, const QByteArray &bytes) const
{
    const QString path = folder.filePath(name);
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly) || file.write(bytes) != bytes.size())
        throw std::runtime_error("cannot write a file");
    return path;
}
