// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Request.h"

#include <QJsonObject>
#include <QString>

namespace Cloud {

/// 200 with @p object.
Response jsonAnswer(const QJsonObject &object);

/// 200 with @p json, which is JSON already.
Response rawJsonAnswer(QByteArray json);

/// The error shape of the cloud's interfaces: {"error":{"code":…,"message":…,"status":…}}.
Response errorAnswer(int httpStatus, const char *status, const QString &message);

Response invalidArgument(const QString &message);    ///< 400
Response unauthenticated();                          ///< 401
Response permissionDenied();                         ///< 403
Response notFound(const QString &message);           ///< 404
Response alreadyExists(const QString &message);      ///< 409
Response failedPrecondition(const QString &message); ///< 400
Response unimplemented();                            ///< 501: never a wrong answer instead

/// @p text as a JSON string, quotes included.
QByteArray jsonString(const QString &text);

} // namespace Cloud
