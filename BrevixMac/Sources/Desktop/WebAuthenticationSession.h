// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QObject>
#include <QString>
#include <QUrl>

#include <chrono>
#include <functional>
#include <optional>
#include <stdexcept>

/// A browser session that ended without a callback. Its descriptions are for the user.
class WebAuthenticationError : public std::runtime_error
{
public:
    enum class Code { canceledLogin = 1, timedOut = 2 };

    explicit WebAuthenticationError(Code code, const QString &description = {},
                                    const QString &failureReason = {})
        : std::runtime_error(description.toStdString())
        , m_code(code)
        , m_description(description)
        , m_failureReason(failureReason)
    {
    }

    Code code() const { return m_code; }
    const QString &description() const { return m_description; }
    const QString &failureReason() const { return m_failureReason; } ///< empty when there is none

private:
    Code m_code;
    QString m_description;
    QString m_failureReason;
};

/// Shows a sign-in page in the user's browser and waits for its redirect to a scheme that belongs to this
/// application. One session at a time. Main thread only; nothing here waits for another process.
class WebAuthenticationSession : public QObject
{
    Q_OBJECT

public:
    /// How long a session waits for its callback: time for a second factor or a forgotten password.
    static constexpr std::chrono::minutes timeLimit{10};

    struct Request
    {
        QUrl url;               ///< of the page to show
        QString callbackScheme; ///< of the address that the page leads to at its end
        /// Tells whether a callback is the answer to this request. Every program, and every web page with the
        /// user's consent, can open an address of the scheme: what is not the answer must not end the
        /// session.
        std::function<bool(const QUrl &callback)> isAnswer;
    };

    /// How a session ended: with one of the two, or (a mechanism that has lost track) with neither.
    struct Result
    {
        std::optional<QUrl> callbackURL = {};
        std::optional<WebAuthenticationError> error = {};
    };

    using Completion = std::function<void(const Result &)>;

    using QObject::QObject;

    /// Shows the page. @p completion is called exactly once, never from inside start(): with the callback,
    /// the time-out, or the cancellation, which the end of this object counts as. False, without a call,
    /// when there can be no callback in this session, or while another session runs.
    virtual bool start(Request request, Completion completion) = 0;

    /// Ends the running session with canceledLogin. Does nothing without one.
    virtual void cancel() = 0;

    /// Takes an address that the desktop was asked to open with this application. What nobody waits for is
    /// dropped.
    virtual void openURL(const QString &address) = 0;

Q_SIGNALS:
    /// No browser could be opened for the running session. It goes on: the user may open the address
    /// elsewhere.
    void browserUnavailable();

    /// An address of the running session's scheme came that is no answer to it. The session goes on.
    void callbackRejected();
};
