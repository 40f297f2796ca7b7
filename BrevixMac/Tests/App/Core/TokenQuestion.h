// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "AuthService.h"

/// The token for the next request, or "error: " and the text of the failure.
inline QCoro::Task<QString> askForToken(AuthService &service)
{
    QString failure;
    try {
        const QString token = co_await service.validFirebaseIDToken();
        co_return token;
    } catch (const std::exception &error) {
        failure = u"error: " + QString::fromUtf8(error.what());
    }
    co_return failure;
}
