// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "ModelOptions.h"

#include "Foundation/HttpClient.h"

#include <stop_token>

namespace Cloud {

/// Has a language model improve prompts. Belongs to the thread that made it. Nothing is thrown.
class PromptModel
{
public:
    static constexpr std::chrono::seconds timeout{45};

    explicit PromptModel(ModelOptions options);

    struct Improvement
    {
        QString text;                    ///< empty when there is none
        const char *status = "INTERNAL"; ///< of the error then
        QString problem;                 ///< for the user
    };

    /// Refuses a result that has lost one of the prompt's variables.
    QCoro::Task<Improvement> improve(QString prompt, std::stop_token token);

private:
    HttpRequest request(const QString &prompt) const;

    ModelOptions m_options;
    HttpClient m_http;
};

} // namespace Cloud
