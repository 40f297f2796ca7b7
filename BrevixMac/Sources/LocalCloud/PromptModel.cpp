// SPDX-License-Identifier: GPL-3.0-or-later
#include "PromptModel.h"

#include "PromptTidying.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <utility>

namespace Cloud {

namespace {

constexpr qsizetype maximumAnswerSize = 1024LL * 1024;
constexpr qsizetype maximumTextSize = 100'000;

const QString instruction = QStringLiteral("You improve prompts that people write for language models. "
                                           "Rewrite the prompt you are given so that it is "
                                           "clear, specific and well structured, in its own language and "
                                           "with its own intent. Placeholders in double "
                                           "braces such as {{name}} must all stay exactly as they are. Do "
                                           "not carry the prompt out and do not comment: "
                                           "answer with the improved prompt only.");

QJsonObject message(const QString &role, const QString &content)
{
    return {{QStringLiteral("role"), role}, {QStringLiteral("content"), content}};
}

PromptModel::Improvement failure(const char *status, const QString &problem)
{
    return {{}, status, problem};
}

PromptModel::Improvement improvementIn(const HttpResponse &response, const QString &prompt)
{
    if (response.statusCode == 401 || response.statusCode == 403)
        return failure("FAILED_PRECONDITION", QStringLiteral("The language model refused the server's key."));
    if (response.statusCode == 429)
        return failure("RESOURCE_EXHAUSTED",
                       QStringLiteral("The language model is too busy. Please try later."));
    if (!response.isSuccess())
        return failure("UNAVAILABLE",
                       QStringLiteral("The language model answered with HTTP %1.").arg(response.statusCode));
    if (response.body.size() > maximumAnswerSize)
        return failure("INTERNAL", QStringLiteral("The language model's answer was too long."));
    const QJsonValue content = QJsonDocument::fromJson(response.body)[u"choices"][0][u"message"][u"content"];
    const QString text = content.toString().trimmed();
    if (text.isEmpty() || text.size() > maximumTextSize)
        return failure("INTERNAL", QStringLiteral("The language model gave no usable text."));
    const QStringList variables = variablesOf(prompt);
    const bool keepsVariables = std::all_of(variables.begin(), variables.end(),
                                            [&](const QString &variable) { return text.contains(variable); });
    if (!keepsVariables)
        return failure("INTERNAL", QStringLiteral("The language model did not keep the prompt's variables."));
    return {text, "OK", {}};
}

} // namespace

PromptModel::PromptModel(ModelOptions options)
    : m_options(std::move(options))
{
}

QCoro::Task<PromptModel::Improvement> PromptModel::improve(QString prompt, std::stop_token token)
{
    HttpRequest httpRequest = request(prompt);
    Improvement improvement;
    try {
        const HttpResponse response = co_await m_http.send(httpRequest, token);
        improvement = improvementIn(response, prompt);
    } catch (const CancelledError &) {
        improvement = failure("CANCELLED", QStringLiteral("The server is stopping."));
    } catch (const TransportError &) {
        improvement = failure("UNAVAILABLE", QStringLiteral("The language model could not be reached."));
    }
    co_return improvement;
}

HttpRequest PromptModel::request(const QString &prompt) const
{
    const QJsonObject body{
        {QStringLiteral("model"), m_options.model},
        {QStringLiteral("temperature"), 0.2},
        {QStringLiteral("messages"), QJsonArray{message(QStringLiteral("system"), instruction),
                                                message(QStringLiteral("user"), prompt)}}};
    HttpRequest request;
    request.method = "POST";
    request.url = m_options.baseUrl;
    QString path = request.url.path();
    while (path.endsWith(u'/'))
        path.chop(1);
    request.url.setPath(path + QStringLiteral("/chat/completions"));
    request.headers = {{"Content-Type", "application/json"}};
    if (!m_options.key.isEmpty())
        request.headers.append({"Authorization", "Bearer " + m_options.key});
    request.body = QJsonDocument(body).toJson(QJsonDocument::Compact);
    request.timeout = timeout;
    return request;
}

} // namespace Cloud
