// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "FaultyServer.h"

#include "Models.h"

#include <QJsonObject>
#include <QMap>

/// A library on loopback, of whatever user and project: lists its records, adds those that are created, and
/// keeps the public copies that are shared. Misbehaves as told.
class LibraryServer final : public FaultyServer
{
public:
    QList<PromptCategory> categories;
    QList<PromptItem> prompts;
    QList<SkillItem> skills;
    QMap<QByteArray, QJsonObject> documents; ///< set by their own path, as shared copies are

    /// What becomes of requests that write something.
    enum class Writes { accepted, held, refused };
    Writes writes = Writes::accepted;

    /// What a refused write is told.
    static QString refusal();

    /// Writes that wait for releaseWrites().
    qsizetype heldWrites() const { return heldRequests(); }

    /// Accepts the held writes, the oldest first, and those that come from now on.
    void releaseWrites();

    // Each adds a record behind those of its kind.
    void addCategory(const QString &id, const QString &name, const QString &color);
    void addPrompt(const QString &id, const QString &title, const QString &text,
                   const QString &categoryID = {});
    void addSkill(const QString &id, const QString &title, const QString &text);

    /// Empties the library.
    void clear();

protected:
    Reply unscriptedReply(const Request &request) override;

private:
    Reply write(const Request &request);
    Reply list(const QByteArray &collection) const;
    Reply create(const Request &request);

    int m_created = 0;
};
