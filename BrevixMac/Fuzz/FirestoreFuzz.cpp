// SPDX-License-Identifier: GPL-3.0-or-later
#include "FuzzTarget.h"

#include "BrevixMac/FirestoreFieldValue.h"
#include "BrevixMac/LibraryDocuments.h"

#include <QJsonArray>
#include <QJsonDocument>

void readForeignBytes(const QByteArray &bytes)
{
    const FirestoreRESTError error = FirestoreCodec::decodeFirestoreError(bytes, 500);
    require(error.kind() == FirestoreRESTError::Kind::apiError, "an error answer is an error of the service");

    const QJsonDocument json = QJsonDocument::fromJson(bytes);
    QJsonArray documents = json.object().value(u"documents").toArray();
    documents.append(json.object());
    for (const QJsonValue &value : std::as_const(documents)) {
        const QJsonObject document = value.toObject();
        const PromptItem prompt = LibraryDocuments::makePrompt(document);
        const SkillItem skill = LibraryDocuments::makeSkill(document);
        const PromptCategory category = LibraryDocuments::makeCategory(document);
        require(!prompt.id.isEmpty() && !skill.id.isEmpty() && !category.id.isEmpty(),
                "every record has an identifier, also from a document without a name");
        FirestoreCodec::encodedPath({prompt.id, prompt.title, prompt.categoryID});
    }
}
