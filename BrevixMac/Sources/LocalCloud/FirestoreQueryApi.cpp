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

/// [{…},{…}], which grows entry by entry up to a limit; each entry says when it was read.
class StreamAnswer
{
public:
    StreamAnswer(Timestamp readTime, qsizetype maximumSize)
        : m_time(R"("readTime":")" + formatTimestamp(readTime) + "\"}")
        , m_maximumSize(maximumSize)
    {
    }

    void append(const QByteArray &entry)
    {
        if (m_json.size() + entry.size() > m_maximumSize)
            throw RequestRefused(invalidArgument(QStringLiteral("The answer would be too large.")));
        m_json += (m_json.size() > 1 ? ",{" : "{") + entry + ',' + m_time;
    }

    Response whole()
    {
        if (m_json.size() == 1) // even nothing was read at some time
            m_json += '{' + m_time;
        return rawJsonAnswer(m_json + ']');
    }

private:
    const QByteArray m_time;
    const qsizetype m_maximumSize;
    QByteArray m_json = "[";
};

QJsonObject fieldsOf(const StoredDocument &document)
{
    return QJsonDocument::fromJson(document.fields).object();
}

QByteArray compact(const QJsonObject &fields)
{
    return QJsonDocument(fields).toJson(QJsonDocument::Compact);
}

} // namespace

FirestoreQueryApi::FirestoreQueryApi(const Documents &documents, DocumentAccess access, Clock clock,
                                     qsizetype maximumSize)
    : m_documents(documents)
    , m_access(std::move(access))
    , m_clock(std::move(clock))
    , m_maximumSize(maximumSize)
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
    const QStringList names = textsOf(body.value(u"documents"));
    if (names.size() > maximumNames)
        throw RequestRefused(invalidArgument(
            QStringLiteral("At most %1 documents can be read by name at once.").arg(maximumNames)));
    StreamAnswer answer(m_clock(), m_maximumSize);
    for (const QString &name : names) {
        const ResourcePath path = m_access.resolve(name);
        m_access.requireReading(uid, path);
        if (!path.isDocument())
            throw RequestRefused(invalidArgument(QStringLiteral("Only documents can be read by name.")));
        auto found = m_documents.find(path.collection(), path.documentID());
        if (found && mask)
            found->fields = compact(projected(fieldsOf(*found), *mask));
        if (found)
            answer.append(R"("found":)" + documentJson(path.collectionName(), *found));
        else
            answer.append(R"("missing":)" + jsonString(name));
    }
    return answer.whole();
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
    qsizetype size = 0;
    m_documents.visit(collection->collection(), -1, {}, [&](const StoredDocument &stored) {
        size += stored.fields.size();
        if (size > m_maximumSize)
            throw RequestRefused(
                invalidArgument(QStringLiteral("The collection is too large to be queried.")));
        documents.append({stored, fieldsOf(stored), collectionName + u'/' + stored.id});
        return true;
    });
    StreamAnswer answer(m_clock(), m_maximumSize);
    for (QueriedDocument &document : query.run(documents)) {
        document.stored.fields = compact(document.fields);
        answer.append(R"("document":)" + documentJson(collectionName, document.stored));
    }
    return answer.whole();
}

} // namespace Cloud
