// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Request.h"

namespace Cloud {

/// The token after "Bearer " in the one Authorization header of @p request; empty when there is no such.
inline QByteArray bearerToken(const Request &request)
{
    const QByteArray authorization = request.header("authorization");
    if (request.headerCount("authorization") != 1 || authorization.left(7).toLower() != "bearer ")
        return {};
    return authorization.sliced(7).trimmed();
}

} // namespace Cloud
