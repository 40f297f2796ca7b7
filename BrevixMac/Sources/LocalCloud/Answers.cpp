// SPDX-License-Identifier: GPL-3.0-or-later
#include "Answers.h"

#include <QJsonArray>
#include <QJsonDocument>

namespace Cloud {

Response jsonAnswer(const QJsonObject &object)
{
    return rawJsonAnswer(QJsonDocument(object).toJson(QJsonDocument::Compact));
}

Response rawJsonAnswer(QByteArray json)
{
    Response response;
    response.body = std::move(json);
    return response;
}

Response errorAnswer(int httpStatus, const char *status, const QString &message)
{
    const QJsonObject error{{QStringLiteral("code"), httpStatus},
                            {QStringLiteral("message"), message},
                            {QStringLiteral("status"), QLatin1String(status)}};
    Response response = jsonAnswer({{QStringLiteral("error"), error}});
    response.status = httpStatus;
    return response;
}

Response invalidArgument(const QString &message)
{
    return errorAnswer(400, "INVALID_ARGUMENT", message);
}

Response unauthenticated()
{
    Response response =
        errorAnswer(401, "UNAUTHENTICATED", QStringLiteral("A valid bearer token is required."));
    response.headers.emplaceBack("WWW-Authenticate", "Bearer");
    return response;
}

Response permissionDenied()
{
    return errorAnswer(403, "PERMISSION_DENIED", QStringLiteral("Missing or insufficient permissions."));
}

Response notFound(const QString &message)
{
    return errorAnswer(404, "NOT_FOUND", message);
}

Response alreadyExists(const QString &message)
{
    return errorAnswer(409, "ALREADY_EXISTS", message);
}

Response failedPrecondition(const QString &message)
{
    return errorAnswer(400, "FAILED_PRECONDITION", message);
}

Response unimplemented()
{
    return errorAnswer(501, "UNIMPLEMENTED", QStringLiteral("This server does not offer that operation."));
}

QByteArray jsonString(const QString &text)
{
    const QByteArray array = QJsonDocument(QJsonArray{text}).toJson(QJsonDocument::Compact);
    return array.sliced(1, array.size() - 2);
}

} // namespace Cloud
