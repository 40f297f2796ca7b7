// SPDX-License-Identifier: GPL-3.0-or-later
#include "Desktop/Freedesktop/BrowserAuthenticationSession.h"

#include <QCoreApplication>
#include <QLoggingCategory>

#include <utility>

namespace {

Q_LOGGING_CATEGORY(log, "brevix.desktop", QtInfoMsg)

} // namespace

BrowserAuthenticationSession::BrowserAuthenticationSession()
    : BrowserAuthenticationSession(Options{})
{
}

BrowserAuthenticationSession::BrowserAuthenticationSession(Options options)
    : m_options(std::move(options))
    , m_opener(m_options.openers)
{
    m_timeLimit.setSingleShot(true);
    connect(&m_timeLimit, &QTimer::timeout, this, &BrowserAuthenticationSession::onTimeLimit);
    connect(&m_opener, &BrowserOpener::failed, this, [this] {
        if (m_completion)
            Q_EMIT browserUnavailable();
    });
}

BrowserAuthenticationSession::~BrowserAuthenticationSession()
{
    cancel();
}

bool BrowserAuthenticationSession::start(Request request, Completion completion)
{
    const QString program =
        m_options.program.isEmpty() ? QCoreApplication::applicationFilePath() : m_options.program;
    if (m_completion || !SchemeHandler::registerScheme(request.callbackScheme, program, m_options.folders))
        return false;
    m_request = std::move(request);
    m_completion = std::move(completion);
    m_timeLimit.start(m_options.timeLimit);
    m_opener.open(m_request.url);
    return true;
}

void BrowserAuthenticationSession::cancel()
{
    if (m_completion)
        end({.error = WebAuthenticationError(WebAuthenticationError::Code::canceledLogin)});
}

void BrowserAuthenticationSession::openURL(const QString &address)
{
    // Never the address itself in the log: it may hold an authorization code.
    if (!m_completion || address.size() > longestAddress) {
        qCInfo(log, "an address was opened that nobody waits for");
        return;
    }
    const QUrl callback(address);
    const bool isOurs =
        callback.isValid() && callback.scheme().compare(m_request.callbackScheme, Qt::CaseInsensitive) == 0;
    if (isOurs && m_request.isAnswer(callback)) {
        end({.callbackURL = callback});
        return;
    }
    qCInfo(log, "an address was opened that is no answer to the running sign-in");
    Q_EMIT callbackRejected();
}

void BrowserAuthenticationSession::end(const Result &result)
{
    m_timeLimit.stop();
    m_request = {};
    const Completion completion = std::exchange(m_completion, nullptr);
    completion(result);
}

void BrowserAuthenticationSession::onTimeLimit()
{
    end({.error = WebAuthenticationError(
             WebAuthenticationError::Code::timedOut,
             QStringLiteral("Google sign-in was not finished in time. Please try again."))});
}
