// SPDX-License-Identifier: GPL-3.0-or-later
#include "Parameters.h"

#include "Answers.h"
#include "RequestRefused.h"

#include <QJsonDocument>

namespace Cloud {

namespace {

/// How the answer is written, which makes no difference to its content.
const QStringList harmlessParameters{QStringLiteral("alt"), QStringLiteral("$alt"), QStringLiteral("key"),
                                     QStringLiteral("prettyPrint"), QStringLiteral("$prettyPrint")};

/// Real parameters that would change the answer.
const QStringList otherParameters{QStringLiteral("mask.fieldPaths"),
                                  QStringLiteral("orderBy"),
                                  QStringLiteral("showMissing"),
                                  QStringLiteral("transaction"),
                                  QStringLiteral("readTime"),
                                  QStringLiteral("fields"),
                                  QStringLiteral("documentId"),
                                  QStringLiteral("updateMask.fieldPaths"),
                                  QStringLiteral("pageSize"),
                                  QStringLiteral("pageToken"),
                                  QStringLiteral("currentDocument.exists"),
                                  QStringLiteral("currentDocument.updateTime")};

} // namespace

QUrlQuery knownParameters(const Request &request, const QStringList &known)
{
    const QUrlQuery query = parseForm(request.query);
    const auto items = query.queryItems(QUrl::FullyDecoded);
    for (const auto &[name, value] : items) {
        if (known.contains(name) || harmlessParameters.contains(name))
            continue;
        if (otherParameters.contains(name))
            throw RequestRefused(unimplemented());
        throw RequestRefused(invalidArgument(QStringLiteral("Unknown query parameter \"%1\".").arg(name)));
    }
    return query;
}

QJsonObject jsonBody(const Request &request)
{
    if (request.body.trimmed().isEmpty())
        return {};
    const QJsonDocument body = QJsonDocument::fromJson(request.body);
    if (!body.isObject())
        throw RequestRefused(invalidArgument(QStringLiteral("The body must be a JSON object.")));
    return body.object();
}

} // namespace Cloud
