// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Form.h"
#include "Request.h"

#include <QJsonObject>
#include <QStringList>

namespace Cloud {

/// The query of @p request, if all its parameters are of @p known or only say how the answer is written.
/// Throws RequestRefused: 501 for parameters of the interface that are not done here, 400 for unknown ones.
QUrlQuery knownParameters(const Request &request, const QStringList &known);

/// The body of @p request, which must be a JSON object whatever its Content-Type says; no body is an empty
/// object. Throws RequestRefused.
QJsonObject jsonBody(const Request &request);

} // namespace Cloud
