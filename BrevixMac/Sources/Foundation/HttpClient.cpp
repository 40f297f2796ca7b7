// SPDX-License-Identifier: GPL-3.0-or-later
#include "HttpClient.h"

#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QNetworkRequest>
#include <QPointer>
#include <QTimer>

#include <algorithm>
#include <coroutine>
#include <optional>

namespace {

QString seconds(std::chrono::milliseconds duration)
{
    return QString::number(static_cast<double>(duration.count()) / 1000);
}

QString describe(QNetworkReply::NetworkError error, const QString &host, const QString &details)
{
    switch (error) {
    case QNetworkReply::ConnectionRefusedError:
        return QStringLiteral("The server %1 refused the connection.").arg(host);
    case QNetworkReply::RemoteHostClosedError:
    case QNetworkReply::ContentReSendError:
        return QStringLiteral("The connection to %1 was lost before the answer was complete.").arg(host);
    case QNetworkReply::HostNotFoundError:
        return QStringLiteral("The server %1 could not be found. Check your Internet connection.").arg(host);
    case QNetworkReply::TimeoutError:
    case QNetworkReply::ProxyTimeoutError:
        return QStringLiteral("The connection to %1 timed out.").arg(host);
    case QNetworkReply::SslHandshakeFailedError:
        return QStringLiteral("No secure connection to %1 could be made: %2").arg(host, details);
    case QNetworkReply::TemporaryNetworkFailureError:
    case QNetworkReply::NetworkSessionFailedError:
        return QStringLiteral("There is no network connection to %1.").arg(host);
    default:
        return QStringLiteral("The request to %1 failed: %2").arg(host, details);
    }
}

/// Errors of the content or the server come with a whole answer; the others mean that none has come.
bool isAnswer(QNetworkReply::NetworkError error)
{
    return error == QNetworkReply::NoError || error == QNetworkReply::ProxyAuthenticationRequiredError ||
           (error >= QNetworkReply::ContentAccessDenied && error <= QNetworkReply::UnknownContentError &&
            error != QNetworkReply::ContentReSendError) ||
           error >= QNetworkReply::InternalServerError;
}

bool isFieldSafe(const QByteArray &field)
{
    return !field.contains('\r') && !field.contains('\n') && !field.contains('\0');
}

/// Throws for what must not be sent: another scheme would read local files, a line break in a header would
/// smuggle in further headers.
void checkRequest(const HttpRequest &request)
{
    const QString scheme = request.url.scheme();
    if ((scheme != u"https" && scheme != u"http") || request.url.host().isEmpty())
        throw TransportError(QStringLiteral("The address of the request is not valid."));
    const bool areSafe = std::all_of(request.headers.begin(), request.headers.end(), [](const auto &header) {
        return !header.first.isEmpty() && isFieldSafe(header.first) && isFieldSafe(header.second);
    });
    if (!areSafe)
        throw TransportError(QStringLiteral("A header of the request is not valid."));
}

QNetworkRequest networkRequest(const HttpRequest &request)
{
    QNetworkRequest result(request.url);
    result.setAttribute(QNetworkRequest::RedirectPolicyAttribute, QNetworkRequest::ManualRedirectPolicy);
    result.setAttribute(QNetworkRequest::CookieLoadControlAttribute, QNetworkRequest::Manual);
    result.setAttribute(QNetworkRequest::CookieSaveControlAttribute, QNetworkRequest::Manual);
    result.setAttribute(QNetworkRequest::AuthenticationReuseAttribute, QNetworkRequest::Manual);
    result.setRawHeader("User-Agent", "Brevix/" BREVIX_VERSION);
    for (const auto &[name, value] : request.headers)
        result.setRawHeader(name, value);
    return result;
}

/// One request on its way. Lives in the frame of the coroutine that awaits it and resumes that from the event
/// loop, exactly once, whatever happens first: the answer, the deadline, the stop request, or the end of the
/// network manager, which takes its replies along.
class Exchange
{
public:
    /// What is awaited. The compiler copies awaiters, so it only points to its exchange.
    struct Awaiter
    {
        Exchange *exchange;
        bool await_ready() const noexcept { return false; }
        void await_suspend(std::coroutine_handle<> coroutine) const noexcept
        {
            exchange->m_coroutine = coroutine;
        }
        HttpResponse await_resume() const { return exchange->takeResponse(); }
    };

    Exchange(QNetworkAccessManager &network, const HttpRequest &request, std::stop_token token)
        : m_host(request.url.host())
        , m_timeout(request.timeout)
        , m_token(std::move(token))
        , m_reply(network.sendCustomRequest(networkRequest(request), request.method, request.body))
    {
        QNetworkReply *reply = m_reply;
        QObject::connect(reply, &QNetworkReply::metaDataChanged, &m_context,
                         [this] { checkAnnouncedSize(); });
        QObject::connect(reply, &QNetworkReply::readyRead, &m_context, [this] { takeBytes(); });
        QObject::connect(reply, &QNetworkReply::finished, &m_context, [this] { onFinished(); });
        QObject::connect(reply, &QObject::destroyed, &m_context, [this] { settle(Outcome::cancelled); });
        m_deadline.setSingleShot(true);
        QObject::connect(&m_deadline, &QTimer::timeout, &m_context, [this] { stop(Outcome::timedOut); });
        m_deadline.start(std::max(m_timeout, std::chrono::milliseconds::zero()));
        m_stopCallback.emplace(m_token, Cancel{this});
    }

    Exchange(const Exchange &) = delete;
    Exchange &operator=(const Exchange &) = delete;

    ~Exchange()
    {
        if (!m_reply)
            return;
        m_reply->disconnect(&m_context);
        m_reply->deleteLater();
    }

    Awaiter response() { return {this}; }

private:
    enum class Outcome { answered, failed, timedOut, tooLarge, cancelled };

    struct Cancel
    {
        Exchange *exchange;
        void operator()() const { exchange->stop(Outcome::cancelled); }
    };

    HttpResponse takeResponse()
    {
        if (m_token.stop_requested())
            throw CancelledError();
        switch (m_outcome.value_or(Outcome::cancelled)) {
        case Outcome::answered:
            return std::move(m_response);
        case Outcome::failed:
            throw TransportError(m_failure);
        case Outcome::timedOut:
            throw TransportError(QStringLiteral("The server %1 did not answer within %2 seconds.")
                                     .arg(m_host, seconds(m_timeout)));
        case Outcome::tooLarge:
            throw TransportError(QStringLiteral("The answer of %1 is too large.").arg(m_host));
        case Outcome::cancelled:
            break;
        }
        throw CancelledError();
    }

    void settle(Outcome outcome)
    {
        if (m_outcome)
            return;
        m_outcome = outcome;
        m_deadline.stop();
        QMetaObject::invokeMethod(
            &m_context, [this] { m_coroutine.resume(); }, Qt::QueuedConnection);
    }

    void stop(Outcome outcome)
    {
        if (m_outcome)
            return;
        settle(outcome);
        if (m_reply)
            m_reply->abort();
    }

    // Spares the transfer of what would be thrown away. A compressed answer is counted as it is unpacked.
    void checkAnnouncedSize()
    {
        if (m_reply->header(QNetworkRequest::ContentLengthHeader).toLongLong() > HttpClient::maximumBodySize)
            stop(Outcome::tooLarge);
    }

    void takeBytes()
    {
        if (m_outcome)
            return;
        m_response.body += m_reply->readAll();
        if (m_response.body.size() > HttpClient::maximumBodySize)
            stop(Outcome::tooLarge);
    }

    void onFinished()
    {
        if (m_outcome)
            return;
        takeBytes();
        m_response.statusCode = m_reply->attribute(QNetworkRequest::HttpStatusCodeAttribute).toInt();
        m_response.contentType = m_reply->rawHeader("Content-Type");
        if (isAnswer(m_reply->error())) {
            settle(Outcome::answered);
        } else {
            m_failure = describe(m_reply->error(), m_host, m_reply->errorString());
            settle(Outcome::failed);
        }
    }

    const QString m_host;
    const std::chrono::milliseconds m_timeout;
    const std::stop_token m_token;
    QPointer<QNetworkReply> m_reply;
    std::optional<Outcome> m_outcome;
    HttpResponse m_response;
    QString m_failure;
    std::coroutine_handle<> m_coroutine;
    QTimer m_deadline;
    QObject m_context;
    std::optional<std::stop_callback<Cancel>> m_stopCallback; // keep last: it refers to the rest
};

} // namespace

TransportError::TransportError(const QString &description)
    : std::runtime_error(description.toStdString())
    , m_description(description)
{
}

CancelledError::CancelledError()
    : std::runtime_error("The request was cancelled.")
{
}

HttpClient::HttpClient()
    : m_network(std::make_unique<QNetworkAccessManager>())
{
}

HttpClient::~HttpClient() = default;

QCoro::Task<HttpResponse> HttpClient::send(HttpRequest request, std::stop_token token)
{
    if (token.stop_requested())
        throw CancelledError();
    checkRequest(request);
    Exchange exchange(*m_network, request, std::move(token));
    HttpResponse response = co_await exchange.response();
    co_return response;
}
