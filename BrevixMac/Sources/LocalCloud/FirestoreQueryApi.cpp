// SPDX-License-Identifier: GPL-3.0-or-later
#include "FirestoreQueryApi.h"

#include "Answers.h"
#include "DocumentWrites.h"
#include "Parameters.h"
#include "RequestRefused.h"
#include "StructuredQuery.h"

#include <QJsonDocument>

#include <utility>

namespace Cloud {

namespace {

const QStringList transactionKeys{QStringLiteral("transaction"), QStringLiteral("newTransaction"),
                                  QStringLiteral("readTime"), QStringLiteral("explainOptions")};

void refuseTransactions(const QJsonObject &body)
{
    for (const QString &key : transactionKeys)
        if (body.contains(key))
            throw RequestRefused(unimplemented());
}

/// [{…},{…}] of @p entries, each with the time it was read at.
Response streamAnswer(const QList<QByteArray> &entries, Timestamp readTime)
{
    const QByteArray time = R"("readTime":")" + formatTimestamp(readTime) + "\"}";
    QByteArray json = "[";
    for (const QByteArray &entry : entries) {
        if (json.size() > 1)
            json += ',';
        json += '{' + entry + ',' + time;
    }
    if (entries.isEmpty())
        json += '{' + time;
    return rawJsonAnswer(json + ']');
}

QJsonObject fieldsOf(const StoredDocument &document)
{
    return QJsonDocument::fromJson(document.fields).object();
}

QByteArray compact(const QJsonObject &fields)
{
    return QJsonDocument(fields).toJson(QJsonDocument::Compact);
}

} // namespace

FirestoreQueryApi::FirestoreQueryApi(const Documents &documents, DocumentAccess access, Clock clock)
    : m_documents(documents)
    , m_access(std::move(access))
    , m_clock(std::move(clock))
{
}

Response FirestoreQueryApi::batchGet(const Request &request, const QString &uid) const
{
    knownParameters(request, {});
    const QJsonObject body = jsonBody(request);
    refuseTransactions(body);
    std::optional<QList<FieldPath>> mask;
    if (body.contains(u"mask"))
        mask = parseFieldPaths(textsOf(body.value(u"mask").toObject().value(u"fieldPaths")));
    QList<QByteArray> entries;
    for (const QString &name : textsOf(body.value(u"documents"))) {
        const ResourcePath path = m_access.resolve(name);
        m_access.requireReading(uid, path);
        if (!path.isDocument())
            throw RequestRefused(invalidArgument(QStringLiteral("Only documents can be read by name.")));
        auto found = m_documents.find(path.collection(), path.documentID());
        if (found && mask)
            found->fields = compact(projected(fieldsOf(*found), *mask));
        if (found)
            entries.append(R"("found":)" + documentJson(path.collectionName(), *found));
        else
            entries.append(R"("missing":)" + jsonString(name));
    }
    return streamAnswer(entries, m_clock());
}

Response FirestoreQueryApi::runQuery(const ResourcePath &parent, const Request &request,
                                     const QString &uid) const
{
    knownParameters(request, {});
    const QJsonObject body = jsonBody(request);
    refuseTransactions(body);
    const StructuredQuery query(body.value(u"structuredQuery").toObject());
    const auto collection = parent.child(query.collectionID());
    if (!collection || !collection->isCollection())
        throw RequestRefused(invalidArgument(QStringLiteral("The query names no collection.")));
    m_access.requireReading(uid, *collection);
    const QString collectionName = collection->collectionName();
    QList<QueriedDocument> documents;
    for (const StoredDocument &stored : m_documents.all(collection->collection()))
        documents.append({stored, fieldsOf(stored), collectionName + u'/' + stored.id});
    QList<QByteArray> entries;
    for (QueriedDocument &document : query.run(documents)) {
        document.stored.fields = compact(document.fields);
        entries.append(R"("document":)" + documentJson(collectionName, document.stored));
    }
    return streamAnswer(entries, m_clock());
}

} // namespace Cloud
