// SPDX-License-Identifier: GPL-3.0-or-later
#include "PromptOptimizationService.h"

#include "AuthService.h"
#include "HttpErrorBody.h"

#include "Foundation/Text.h"

#include <QJsonDocument>
#include <QJsonObject>

namespace {

using Kind = PromptOptimizationError::Kind;

const QString functionName = QStringLiteral("optimizePrompt");

QString describe(Kind kind, const QString &message)
{
    switch (kind) {
    case Kind::apiError:
        return message;
    case Kind::emptyPrompt:
        return QStringLiteral("Write prompt text before optimizing.");
    case Kind::invalidURL:
        return QStringLiteral("Brevix couldn't build the AI optimization request.");
    case Kind::invalidResponse:
        return QStringLiteral("Brevix received an invalid AI optimization response.");
    case Kind::invalidPayload:
        return QStringLiteral("Brevix couldn't decode the AI optimization response.");
    case Kind::missingOptimizedText:
        return QStringLiteral("AI optimization did not return prompt text.");
    }
    Q_UNREACHABLE();
}

HttpRequest callRequest(const QUrl &url, const QString &prompt, const QString &firebaseIDToken)
{
    const QJsonObject data{{QStringLiteral("prompt"), prompt}};
    const QJsonDocument body(QJsonObject{{QStringLiteral("data"), data}});
    HttpRequest request = HttpRequest::post(url, "application/json", body.toJson(QJsonDocument::Compact));
    request.headers.append({"Authorization", "Bearer " + firebaseIDToken.toUtf8()});
    return request;
}

QString optimizedText(const QByteArray &body)
{
    const QJsonDocument document = QJsonDocument::fromJson(body);
    if (!document.isObject())
        throw PromptOptimizationError(Kind::invalidPayload);
    const QJsonObject answer = document.object();
    const QJsonValue result = answer.value(u"result");
    const QJsonObject holder = result.isObject() ? result.toObject() : answer.value(u"data").toObject();
    QString text = Text::trimmed(holder.value(u"text").toString());
    if (text.isEmpty())
        throw PromptOptimizationError(Kind::missingOptimizedText);
    return text;
}

QString callableMessage(const QJsonObject &error)
{
    const QString unnamed = QStringLiteral("AI optimization failed.");
    return error.value(u"message").toString(error.value(u"status").toString(unnamed));
}

} // namespace

PromptOptimizationError::PromptOptimizationError(Kind kind, const QString &message)
    : std::runtime_error(describe(kind, message).toStdString())
    , m_kind(kind)
    , m_message(message)
{
}

QString PromptOptimizationError::description() const
{
    return describe(m_kind, m_message);
}

PromptOptimizationService::PromptOptimizationService(AppConfiguration configuration, CloudEndpoints endpoints,
                                                     AuthService &auth, HttpClient &http)
    : m_configuration(std::move(configuration))
    , m_endpoints(std::move(endpoints))
    , m_auth(auth)
    , m_http(http)
{
}

QCoro::Task<QString> PromptOptimizationService::optimize(QString prompt)
{
    const std::stop_token token = m_tasks.token();
    const QString trimmed = Text::trimmed(prompt);
    if (trimmed.isEmpty())
        throw PromptOptimizationError(Kind::emptyPrompt);
    const QString idToken = co_await m_auth.validFirebaseIDToken();
    if (token.stop_requested())
        throw CancelledError();
    const std::optional<QUrl> url =
        m_endpoints.callableFunction(m_configuration.firebase.projectID, functionName);
    if (!url)
        throw PromptOptimizationError(Kind::invalidURL);
    const HttpRequest request = callRequest(*url, trimmed, idToken);
    const HttpResponse response = co_await m_http.send(request, token);
    if (!response.isHttp())
        throw PromptOptimizationError(Kind::invalidResponse);
    if (response.statusCode == 401)
        m_auth.noteRejectedToken(idToken);
    if (!response.isSuccess())
        throw decodeCallableError(response.body, response.statusCode);
    co_return optimizedText(response.body);
}

PromptOptimizationError PromptOptimizationService::decodeCallableError(const QByteArray &data, int statusCode)
{
    const QJsonValue error = QJsonDocument::fromJson(data).object().value(u"error");
    if (error.isObject())
        return PromptOptimizationError(Kind::apiError, callableMessage(error.toObject()));
    if (const auto text = HttpErrorBody::text(data))
        return PromptOptimizationError(Kind::apiError, *text);
    return PromptOptimizationError(Kind::apiError,
                                   u"AI optimization returned HTTP " + QString::number(statusCode) + u'.');
}
