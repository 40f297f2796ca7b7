// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "AppConfiguration.h"
#include "CloudEndpoints.h"

#include "Foundation/HttpClient.h"
#include "Foundation/TaskScope.h"

#include <stdexcept>

class AuthService;

/// A failed optimisation; its description is for the user.
class PromptOptimizationError : public std::runtime_error
{
public:
    enum class Kind {
        apiError,
        emptyPrompt,
        invalidURL,
        invalidResponse,
        invalidPayload,
        missingOptimizedText
    };

    /// @p message only for apiError.
    explicit PromptOptimizationError(Kind kind, const QString &message = {});

    Kind kind() const { return m_kind; }
    QString description() const;

private:
    Kind m_kind;
    QString m_message;
};

/// Asks the cloud function `optimizePrompt` to rewrite a prompt's text. Main thread only; each call is
/// independent, and nothing is kept or tried twice.
class PromptOptimizationService
{
public:
    /// @p auth and @p http must outlive this object.
    PromptOptimizationService(AppConfiguration configuration, CloudEndpoints endpoints, AuthService &auth,
                              HttpClient &http);

    /// The rewritten text, trimmed. Throws PromptOptimizationError, AuthError, TransportError or
    /// CancelledError.
    QCoro::Task<QString> optimize(QString prompt);

    /// Ends every call under way as cancelled.
    void cancel() { m_tasks.restart(); }

    /// The error of an answer whose status is not 200 to 299.
    static PromptOptimizationError decodeCallableError(const QByteArray &data, int statusCode);

private:
    AppConfiguration m_configuration;
    CloudEndpoints m_endpoints;
    AuthService &m_auth;
    HttpClient &m_http;
    TaskScope m_tasks; // keep last: stops the coroutines before the other members die
};
