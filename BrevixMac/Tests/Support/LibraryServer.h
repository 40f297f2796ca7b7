// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "FaultyServer.h"

#include "Models.h"

#include <QJsonObject>
#include <QMap>

/// A library on loopback, of whatever user and project: lists its records, adds those that are created, keeps
/// the public copies that are shared, and rewrites prompts. Misbehaves as told.
class LibraryServer final : public FaultyServer
{
public:
    QList<PromptCategory> categories;
    QList<PromptItem> prompts;
    QList<SkillItem> skills;
    QMap<QByteArray, QJsonObject> documents; ///< set by their own path, as shared copies are

    std::optional<QString> refusal; ///< what every write and every request for a rewriting is told
    QString optimizedText = QStringLiteral("An optimized prompt for {{audience}}.");

    /// Writes, and requests for a rewriting, wait for release().
    bool isHolding = false;
    qsizetype heldWrites() const { return heldRequests(); }

    /// Answers the held writes, the oldest first, and those that come from now on.
    void release();
    /// Answers the oldest of them only.
    void releaseOldest();

    int writes = 0;               ///< requests to write something, refused ones too
    QStringList optimizeRequests; ///< texts that were to be rewritten

    /// The fields of what was created in a collection, oldest first.
    QList<QJsonObject> created(const QByteArray &collection) const { return m_created.value(collection); }
    /// A text field of those.
    static QString text(const QJsonObject &fields, const QString &name);

    // Each adds a record behind those of its kind.
    void addCategory(const QString &id, const QString &name, const QString &color);
    void addPrompt(const QString &id, const QString &title, const QString &text,
                   const QString &categoryID = {});
    void addSkill(const QString &id, const QString &title, const QString &text);

    void removeCategory(const QString &id);

    /// Empties the library.
    void clear();

protected:
    void noteRequest(const Request &request) override;
    Reply unscriptedReply(const Request &request) override;

private:
    Reply write(const Request &request);
    Reply list(const QByteArray &collection) const;
    Reply create(const Request &request);

    QHash<QByteArray, QList<QJsonObject>> m_created;
    int m_lastID = 0;
};
