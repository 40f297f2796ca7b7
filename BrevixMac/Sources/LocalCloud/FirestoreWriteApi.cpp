// SPDX-License-Identifier: GPL-3.0-or-later
#include "FirestoreWriteApi.h"

#include "Answers.h"
#include "Database.h"
#include "Parameters.h"
#include "RequestRefused.h"
#include "SecureRandom.h"
#include "Values.h"

#include <utility>

namespace Cloud {

namespace {

constexpr qsizetype identifierSize = 20;
constexpr qsizetype maximumWrites = 500;

const QString idKey = QStringLiteral("documentId");
const QString maskKey = QStringLiteral("updateMask.fieldPaths");
const QString existsKey = QStringLiteral("currentDocument.exists");
const QString updateTimeKey = QStringLiteral("currentDocument.updateTime");

Precondition preconditionOf(const QUrlQuery &query)
{
    QJsonObject json;
    if (query.hasQueryItem(existsKey)) {
        const QString text = formValue(query, existsKey);
        const bool isBool = text == QLatin1String("true") || text == QLatin1String("false");
        json.insert(QStringLiteral("exists"), isBool ? QJsonValue(text == QLatin1String("true")) : text);
    }
    if (query.hasQueryItem(updateTimeKey))
        json.insert(QStringLiteral("updateTime"), formValue(query, updateTimeKey));
    return Precondition::fromJson(json);
}

} // namespace

FirestoreWriteApi::FirestoreWriteApi(Database &database, Documents &documents, DocumentAccess access,
                                     Clock clock)
    : m_database(database)
    , m_writer(documents, std::move(access))
    , m_clock(std::move(clock))
{
}

Response FirestoreWriteApi::create(const ResourcePath &collection, const Request &request, const QString &uid)
{
    const QUrlQuery query = knownParameters(request, {idKey});
    const QString wanted = formValue(query, idKey);
    const auto path = collection.child(wanted.isEmpty() ? randomIdentifier(identifierSize) : wanted);
    if (!path)
        throw RequestRefused(invalidArgument(QStringLiteral("documentId is no name of a document.")));
    return writeOne({.path = *path,
                     .fields = canonicalFields(jsonBody(request).value(u"fields")),
                     .precondition = {.exists = false, .updateTime = {}}},
                    uid);
}

Response FirestoreWriteApi::patch(const ResourcePath &document, const Request &request, const QString &uid)
{
    const QUrlQuery query = knownParameters(request, {maskKey, existsKey, updateTimeKey});
    DocumentWrite write{.path = document,
                        .fields = canonicalFields(jsonBody(request).value(u"fields")),
                        .precondition = preconditionOf(query)};
    if (query.hasQueryItem(maskKey))
        write.mask = parseFieldPaths(query.allQueryItemValues(maskKey, QUrl::FullyDecoded));
    return writeOne(write, uid);
}

Response FirestoreWriteApi::remove(const ResourcePath &document, const Request &request, const QString &uid)
{
    const QUrlQuery query = knownParameters(request, {existsKey, updateTimeKey});
    writeOne({.kind = DocumentWrite::Kind::remove,
              .path = document,
              .fields = {},
              .precondition = preconditionOf(query)},
             uid);
    return rawJsonAnswer("{}");
}

Response FirestoreWriteApi::commit(const Request &request, const QString &uid)
{
    knownParameters(request, {});
    const QJsonObject body = jsonBody(request);
    if (!body.value(u"transaction").toString().isEmpty())
        throw RequestRefused(unimplemented());
    const QJsonArray writes = body.value(u"writes").toArray();
    if (writes.size() > maximumWrites)
        throw RequestRefused(invalidArgument(QStringLiteral("A commit takes at most 500 writes.")));
    const Timestamp now = m_clock();
    const QString time = QString::fromLatin1(formatTimestamp(now));
    QJsonArray results;
    Transaction transaction(m_database);
    for (const QJsonValue json : writes) {
        const DocumentWrite write = DocumentWrite::fromJson(json.toObject(), m_writer.access());
        const QJsonArray transformResults = m_writer.apply(write, uid, now).transformResults;
        QJsonObject result{{QStringLiteral("updateTime"), time}};
        if (!transformResults.isEmpty())
            result.insert(QStringLiteral("transformResults"), transformResults);
        results.append(result);
    }
    transaction.commit();
    QJsonObject answer{{QStringLiteral("commitTime"), time}};
    if (!results.isEmpty())
        answer.insert(QStringLiteral("writeResults"), results);
    return jsonAnswer(answer);
}

Response FirestoreWriteApi::writeOne(const DocumentWrite &write, const QString &uid)
{
    Transaction transaction(m_database);
    const StoredDocument document = m_writer.apply(write, uid, m_clock()).document;
    transaction.commit();
    return rawJsonAnswer(documentJson(write.path.collectionName(), document));
}

} // namespace Cloud
