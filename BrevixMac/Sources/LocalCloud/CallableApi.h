// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "PromptModel.h"
#include "Request.h"

#include "Foundation/TaskScope.h"

#include <memory>

namespace Cloud {

class IdTokens;

/// Answers callable functions, of which there is one: optimizePrompt. Throws nothing.
class CallableApi
{
public:
    CallableApi(const IdTokens &idTokens, const ModelOptions &model);

    /// POST /{project}/us-central1/@p function
    Response call(const QString &function, const Request &request);

private:
    Response optimizePrompt(const QString &prompt);
    QCoro::Task<> optimizeByModel(QString prompt, std::function<void(const Response &)> reply,
                                  std::stop_token token);

    const IdTokens &m_idTokens;
    std::unique_ptr<PromptModel> m_model; ///< null: rules do the work
    int m_running = 0;
    TaskScope m_tasks; // keep last: stops the coroutines before the other members die
};

} // namespace Cloud
