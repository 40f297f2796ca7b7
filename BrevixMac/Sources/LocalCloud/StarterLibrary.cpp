// SPDX-License-Identifier: GPL-3.0-or-later
#include "StarterLibrary.h"

#include "Accounts.h"
#include "Database.h"
#include "Documents.h"

#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QSqlQuery>

namespace Cloud {

namespace {

/// The setting that remembers it of @p uid.
QString seededKey(const QString &uid)
{
    const QString key = QStringLiteral("starterLibrarySeeded");
    return uid == Accounts::localUser().uid ? key : key + u':' + uid;
}

QJsonObject readStarterLibrary()
{
    QFile file(QStringLiteral(":/localcloud/starter-library.json"));
    if (!file.open(QIODevice::ReadOnly))
        qFatal("The starter library is missing from the program");
    return QJsonDocument::fromJson(file.readAll()).object();
}

QJsonObject stringValue(const QString &text)
{
    return {{QStringLiteral("stringValue"), text}};
}

/// What every record of the library carries besides its own texts.
QJsonObject commonFields(const QString &uid, int order, Timestamp now)
{
    return {{QStringLiteral("order"), QJsonObject{{QStringLiteral("integerValue"), QString::number(order)}}},
            {QStringLiteral("createdAt"),
             QJsonObject{{QStringLiteral("timestampValue"), QString::fromLatin1(formatTimestamp(now))}}},
            {QStringLiteral("createdBy"), stringValue(uid)}};
}

/// Every text of a starter record but its id becomes the field of the same name.
QJsonObject fieldsOf(const QJsonObject &record, const QString &uid, int order, Timestamp now)
{
    QJsonObject fields = commonFields(uid, order, now);
    for (auto text = record.begin(); text != record.end(); ++text)
        if (text.key() != QLatin1String("id"))
            fields.insert(text.key(), stringValue(text.value().toString()));
    return fields;
}

bool isSeeded(Database &database, const QString &key)
{
    QSqlQuery query = database.run(QStringLiteral("SELECT 1 FROM settings WHERE key = ?"), {key});
    return query.next();
}

} // namespace

void seedStarterLibrary(Database &database, const QString &libraryAppID, const QString &uid, Timestamp now)
{
    Transaction transaction(database);
    const QString key = seededKey(uid);
    if (isSeeded(database, key))
        return;
    const QString user = QStringLiteral("artifacts/%1/users/%2/").arg(libraryAppID, uid);
    const QJsonObject library = readStarterLibrary();
    Documents documents(database);
    for (const QString &collection : library.keys()) {
        int order = 0;
        const QJsonArray records = library.value(collection).toArray();
        for (const QJsonValue record : records) {
            const QString id = record.toObject().value(u"id").toString();
            documents.put(user + collection, id, fieldsOf(record.toObject(), uid, ++order, now), now);
        }
    }
    database.run(QStringLiteral("INSERT INTO settings(key, value) VALUES(?, '1')"), {key});
    transaction.commit();
}

} // namespace Cloud
