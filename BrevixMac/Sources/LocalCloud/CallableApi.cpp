// SPDX-License-Identifier: GPL-3.0-or-later
#include "CallableApi.h"

#include "Answers.h"
#include "BearerToken.h"
#include "IdTokens.h"
#include "PromptTidying.h"

#include <QJsonDocument>

#include <utility>

namespace Cloud {

namespace {

constexpr qsizetype maximumPromptSize = 100'000; // UTF-16 units
constexpr int maximumRunning = 8;

int httpStatusOf(QByteArrayView status)
{
    if (status == "UNAUTHENTICATED")
        return 401;
    if (status == "NOT_FOUND")
        return 404;
    if (status == "RESOURCE_EXHAUSTED")
        return 429;
    if (status == "UNAVAILABLE")
        return 503;
    return status == "INTERNAL" ? 500 : 400;
}

/// The error shape of callable functions.
Response failure(const char *status, const QString &message)
{
    const QJsonObject error{{QStringLiteral("status"), QLatin1String(status)},
                            {QStringLiteral("message"), message}};
    Response response = jsonAnswer({{QStringLiteral("error"), error}});
    response.status = httpStatusOf(status);
    return response;
}

/// @p source says who did it: "rules" or "model".
Response success(const QString &text, const char *source)
{
    const QJsonObject result{{QStringLiteral("text"), text},
                             {QStringLiteral("source"), QLatin1String(source)}};
    return jsonAnswer({{QStringLiteral("result"), result}});
}

} // namespace

CallableApi::CallableApi(const IdTokens &idTokens, const ModelOptions &model)
    : m_idTokens(idTokens)
    , m_model(model.isConfigured() ? std::make_unique<PromptModel>(model) : nullptr)
{
}

Response CallableApi::call(const QString &function, const Request &request)
{
    if (function != QLatin1String("optimizePrompt"))
        return failure("NOT_FOUND", QStringLiteral("There is no such function."));
    if (!m_idTokens.userOf(bearerToken(request)))
        return failure("UNAUTHENTICATED", QStringLiteral("You're not signed in."));
    const QJsonValue data = QJsonDocument::fromJson(request.body).object().value(u"data");
    const QJsonValue prompt = data.toObject().value(u"prompt");
    if (!prompt.isString() || prompt.toString().trimmed().isEmpty())
        return failure("INVALID_ARGUMENT", QStringLiteral("There is no prompt to optimize."));
    if (prompt.toString().size() > maximumPromptSize)
        return failure("INVALID_ARGUMENT", QStringLiteral("The prompt is too long to optimize."));
    return optimizePrompt(prompt.toString());
}

Response CallableApi::optimizePrompt(const QString &prompt)
{
    if (!m_model)
        return success(tidiedPrompt(prompt), "rules");
    if (m_running >= maximumRunning)
        return failure("RESOURCE_EXHAUSTED", QStringLiteral("The server is busy. Please try again."));
    Response response;
    response.later = [this, prompt](const std::function<void(const Response &)> &reply) {
        detach(optimizeByModel(prompt, reply, m_tasks.token()), "optimizing a prompt");
    };
    return response;
}

QCoro::Task<> CallableApi::optimizeByModel(QString prompt, std::function<void(const Response &)> reply,
                                           std::stop_token token)
{
    ++m_running;
    const PromptModel::Improvement improvement = co_await m_model->improve(prompt, token);
    if (token.stop_requested())
        co_return;
    --m_running;
    if (improvement.text.isEmpty())
        reply(failure(improvement.status, improvement.problem));
    else
        reply(success(improvement.text, "model"));
}

} // namespace Cloud
