// SPDX-License-Identifier: GPL-3.0-or-later
#include "DocumentAccess.h"

#include "Answers.h"
#include "RequestRefused.h"

#include <utility>

namespace Cloud {

DocumentAccess::DocumentAccess(QString projectID, QString libraryAppID)
    : m_projectID(std::move(projectID))
    , m_libraryAppID(std::move(libraryAppID))
{
}

ResourcePath DocumentAccess::resolve(const QString &name) const
{
    const auto path = ResourcePath::fromPieces(name.split(u'/'));
    if (!path)
        throw RequestRefused(
            invalidArgument(QStringLiteral("\"%1\" names no document.").arg(name.left(200))));
    requireOwn(*path);
    return *path;
}

void DocumentAccess::requireOwn(const ResourcePath &path) const
{
    if (path.projectID() != m_projectID)
        throw RequestRefused(permissionDenied());
    if (path.databaseID() != QLatin1String("(default)"))
        throw RequestRefused(
            notFound(QStringLiteral("The database \"%1\" does not exist.").arg(path.databaseID())));
}

void DocumentAccess::requireReading(const std::optional<QString> &uid, const ResourcePath &path) const
{
    const Area area = areaOf(uid, path.segments());
    // A shared document's name is what its link gives away, so they are not listed.
    const bool isShared = area == Area::shared && path.isDocument();
    if (area == Area::ownLibrary || isShared)
        return;
    throw RequestRefused(uid ? permissionDenied() : unauthenticated());
}

void DocumentAccess::requireWriting(const QString &uid, const ResourcePath &path,
                                    const std::optional<StoredDocument> &present) const
{
    const Area area = areaOf(uid, path.segments());
    const bool isOwnShare = area == Area::shared && (!present || present->owner == uid);
    if (!path.isDocument() || !(area == Area::ownLibrary || isOwnShare))
        throw RequestRefused(permissionDenied());
}

DocumentAccess::Area DocumentAccess::areaOf(const std::optional<QString> &uid,
                                            const QStringList &segments) const
{
    if (segments.size() < 5 || segments[0] != QLatin1String("artifacts") || segments[1] != m_libraryAppID)
        return Area::elsewhere;
    if (segments[2] == QLatin1String("users") && segments[3] == uid)
        return Area::ownLibrary;
    return segments[2] == QLatin1String("public") && segments[3] == QLatin1String("data") ? Area::shared
                                                                                          : Area::elsewhere;
}

} // namespace Cloud
