// SPDX-License-Identifier: GPL-3.0-or-later
#include "DocumentWrites.h"

#include "Answers.h"
#include "FieldTransform.h"
#include "RequestRefused.h"
#include "Values.h"

#include <QJsonDocument>

#include <utility>

namespace Cloud {

namespace {

constexpr qsizetype maximumFieldPaths = 1000;

[[noreturn]] void refuse(const QString &reason)
{
    throw RequestRefused(invalidArgument(reason));
}

QString nameOf(const ResourcePath &path)
{
    return path.collectionName() + u'/' + path.documentID();
}

void require(const Precondition &precondition, const std::optional<StoredDocument> &present,
             const ResourcePath &path)
{
    const bool mustExist = precondition.exists == true || precondition.updateTime;
    if (mustExist && !present)
        throw RequestRefused(notFound(QStringLiteral("No document to update: ") + nameOf(path)));
    if (precondition.exists == false && present)
        throw RequestRefused(alreadyExists(QStringLiteral("Document already exists: ") + nameOf(path)));
    if (precondition.updateTime && present->updatedAt != *precondition.updateTime)
        throw RequestRefused(
            failedPrecondition(QStringLiteral("The document has been changed since: ") + nameOf(path)));
}

QJsonObject updatedFields(const DocumentWrite &write, const QJsonObject &present)
{
    if (!write.mask)
        return write.fields;
    QJsonObject fields = present;
    for (const FieldPath &path : *write.mask)
        setValueAt(fields, path, valueAt(write.fields, path));
    return fields;
}

DocumentWrite transformWrite(const QJsonObject &json, const DocumentAccess &access)
{
    DocumentWrite write{.path = access.resolve(json.value(u"document").toString()), .fields = {}};
    write.mask.emplace();
    write.transforms = json.value(u"fieldTransforms").toArray();
    return write;
}

DocumentWrite updateWrite(const QJsonObject &json, const DocumentAccess &access)
{
    const QJsonObject document = json.value(u"update").toObject();
    DocumentWrite write{.path = access.resolve(document.value(u"name").toString()),
                        .fields = canonicalFields(document.value(u"fields"))};
    if (json.contains(u"updateMask"))
        write.mask = parseFieldPaths(textsOf(json.value(u"updateMask").toObject().value(u"fieldPaths")));
    write.transforms = json.value(u"updateTransforms").toArray();
    return write;
}

DocumentWrite bareWrite(const QJsonObject &json, const DocumentAccess &access)
{
    if (json.contains(u"transform"))
        return transformWrite(json.value(u"transform").toObject(), access);
    if (json.contains(u"update"))
        return updateWrite(json, access);
    if (json.contains(u"delete"))
        return {.kind = DocumentWrite::Kind::remove,
                .path = access.resolve(json.value(u"delete").toString()),
                .fields = {}};
    if (json.contains(u"verify"))
        return {.kind = DocumentWrite::Kind::verify,
                .path = access.resolve(json.value(u"verify").toString()),
                .fields = {}};
    refuse(QStringLiteral("A write must update, delete, verify or transform a document."));
}

} // namespace

Precondition Precondition::fromJson(const QJsonValue &json)
{
    Precondition precondition;
    const QJsonObject object = json.toObject();
    const QJsonValue exists = object.value(u"exists");
    if (exists.isBool())
        precondition.exists = exists.toBool();
    if (object.contains(u"updateTime"))
        precondition.updateTime = parseTimestamp(object.value(u"updateTime").toString());
    const qsizetype understood = (precondition.exists ? 1 : 0) + (precondition.updateTime ? 1 : 0);
    if (understood != object.size() || understood > 1 || !(json.isObject() || json.isUndefined()))
        refuse(QStringLiteral("The precondition cannot be understood."));
    return precondition;
}

DocumentWrite DocumentWrite::fromJson(const QJsonObject &json, const DocumentAccess &access)
{
    DocumentWrite write = bareWrite(json, access);
    if (!write.path.isDocument())
        refuse(QStringLiteral("Only documents can be written."));
    write.precondition = Precondition::fromJson(json.value(u"currentDocument"));
    return write;
}

DocumentWriter::DocumentWriter(Documents &documents, DocumentAccess access)
    : m_documents(documents)
    , m_access(std::move(access))
{
}

DocumentWriter::Result DocumentWriter::apply(const DocumentWrite &write, const QString &uid, Timestamp now)
{
    const QString collection = write.path.collection();
    const QString id = write.path.documentID();
    const auto present = m_documents.find(collection, id);
    if (write.kind == DocumentWrite::Kind::verify)
        m_access.requireReading(uid, write.path);
    else
        m_access.requireWriting(uid, write.path, present);
    require(write.precondition, present, write.path);
    if (write.kind == DocumentWrite::Kind::verify)
        return {present.value_or(
                    StoredDocument{.id = id, .fields = {}, .createdAt = now, .updatedAt = now, .owner = {}}),
                {}};
    if (write.kind == DocumentWrite::Kind::remove) {
        m_documents.remove(collection, id);
        return {{.id = id, .fields = {}, .createdAt = now, .updatedAt = now, .owner = {}}, {}};
    }
    const QJsonObject before = present ? QJsonDocument::fromJson(present->fields).object() : QJsonObject();
    QJsonObject fields = updatedFields(write, before);
    const QJsonArray transformResults = transformFields(fields, write.transforms, now);
    fields = canonicalFields(fields);
    m_documents.put(collection, id, fields, now, uid);
    return {{.id = id,
             .fields = QJsonDocument(fields).toJson(QJsonDocument::Compact),
             .createdAt = present ? present->createdAt : now,
             .updatedAt = now,
             .owner = present ? present->owner : uid},
            transformResults};
}

QList<FieldPath> parseFieldPaths(const QStringList &texts)
{
    if (texts.size() > maximumFieldPaths)
        refuse(QStringLiteral("A list of fields may have at most %1.").arg(maximumFieldPaths));
    QList<FieldPath> paths;
    for (const QString &text : texts) {
        const auto path = parseFieldPath(text);
        if (!path)
            refuse(QStringLiteral("\"%1\" is no field path.").arg(text.left(200)));
        paths.append(*path);
    }
    return paths;
}

QStringList textsOf(const QJsonValue &array)
{
    QStringList texts;
    const QJsonArray elements = array.toArray();
    for (const QJsonValue element : elements) {
        if (!element.isString())
            refuse(QStringLiteral("A list of texts holds something else."));
        texts.append(element.toString());
    }
    return texts;
}

} // namespace Cloud
