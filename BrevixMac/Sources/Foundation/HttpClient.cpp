// SPDX-License-Identifier: GPL-3.0-or-later
#include "HttpClient.h"

#include <QIODevice>
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

QString describeLoss(const QString &host, int statusCode)
{
    const QString pattern =
        statusCode == 0 ? QStringLiteral("The server %1 closed the connection without a valid answer.")
                        : QStringLiteral("The connection to %1 was lost before the answer was complete.");
    return pattern.arg(host);
}

QString describeFailure(const QNetworkReply &reply, const QString &host, int statusCode)
{
    switch (reply.error()) {
    case QNetworkReply::RemoteHostClosedError:
    case QNetworkReply::ContentReSendError:
        return describeLoss(host, statusCode);
    case QNetworkReply::ConnectionRefusedError:
        return QStringLiteral("The server %1 refused the connection.").arg(host);
    case QNetworkReply::HostNotFoundError:
        return QStringLiteral("The server %1 could not be found. Check your Internet connection.").arg(host);
    case QNetworkReply::TimeoutError:
        return QStringLiteral("The connection to %1 timed out.").arg(host);
    case QNetworkReply::SslHandshakeFailedError:
        return QStringLiteral("No secure connection to %1 could be made: %2").arg(host, reply.errorString());
    case QNetworkReply::TemporaryNetworkFailureError:
    case QNetworkReply::NetworkSessionFailedError:
        return QStringLiteral("There is no network connection to %1.").arg(host);
    default:
        return QStringLiteral("The request to %1 failed: %2").arg(host, reply.errorString());
    }
}

/// Tells whether @p reply has ended with a whole answer. Qt gives an error for every status from 400 on, too;
/// what else ends a reply after the status line has been read, such as a lost connection, comes with other
/// codes.
bool isWholeAnswer(const QNetworkReply &reply, int statusCode)
{
    switch (reply.error()) {
    case QNetworkReply::NoError:
        return true;
    case QNetworkReply::ContentReSendError:
        // Qt wants to send the body again when a redirect asks for it; but no redirect is followed.
        return statusCode >= 300 && statusCode <= 399;
    case QNetworkReply::ProxyAuthenticationRequiredError:
    case QNetworkReply::ContentAccessDenied:
    case QNetworkReply::ContentOperationNotPermittedError:
    case QNetworkReply::ContentNotFoundError:
    case QNetworkReply::AuthenticationRequiredError:
    case QNetworkReply::ContentConflictError:
    case QNetworkReply::ContentGoneError:
    case QNetworkReply::UnknownContentError:
    case QNetworkReply::ProtocolInvalidOperationError:
    case QNetworkReply::InternalServerError:
    case QNetworkReply::OperationNotImplementedError:
    case QNetworkReply::ServiceUnavailableError:
    case QNetworkReply::UnknownServerError:
        return statusCode >= 400;
    default:
        return false;
    }
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
    for (const auto &[name, value] : request.headers)
        result.setRawHeader(name, result.hasRawHeader(name) ? result.rawHeader(name) + ", " + value : value);
    if (!result.hasRawHeader("User-Agent"))
        result.setRawHeader("User-Agent", "Brevix/" BREVIX_VERSION);
    return result;
}

/// A request body that can be read only once. When a connection is lost, Qt silently sends the request again
/// if it can rewind the body; but the server may have acted on it already, and a prompt would be created
/// twice.
class OneTimeBody final : public QIODevice
{
public:
    explicit OneTimeBody(QByteArray bytes)
        : m_bytes(std::move(bytes))
    {
        open(QIODevice::ReadOnly | QIODevice::Unbuffered);
    }

    bool isSequential() const override { return true; }
    bool seek(qint64) override { return false; }
    bool atEnd() const override { return m_position == m_bytes.size(); }
    qint64 bytesAvailable() const override { return m_bytes.size() - m_position; }

private:
    qint64 readData(char *target, qint64 maximum) override
    {
        const qint64 size = std::min(maximum, bytesAvailable());
        std::copy_n(m_bytes.constData() + m_position, size, target);
        m_position += size;
        return size > 0 ? size : -1;
    }

    qint64 writeData(const char *, qint64) override { return -1; }

    QByteArray m_bytes;
    qint64 m_position = 0;
};

QNetworkReply *startRequest(QNetworkAccessManager &network, const HttpRequest &request)
{
    QNetworkRequest outgoing = networkRequest(request);
    if (request.body.isEmpty())
        return network.sendCustomRequest(outgoing, request.method);
    outgoing.setAttribute(QNetworkRequest::DoNotBufferUploadDataAttribute, true);
    outgoing.setHeader(QNetworkRequest::ContentLengthHeader, request.body.size());
    auto *body = new OneTimeBody(request.body);
    QNetworkReply *reply = network.sendCustomRequest(outgoing, request.method, body);
    body->setParent(reply);
    return reply;
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
        , m_maximumBodySize(request.maximumBodySize)
        , m_token(std::move(token))
        , m_reply(startRequest(network, request))
    {
        QNetworkReply *reply = m_reply;
        QObject::connect(reply, &QNetworkReply::metaDataChanged, &m_context,
                         [this] { checkAnnouncedSize(); });
        QObject::connect(reply, &QNetworkReply::readyRead, &m_context, [this] { takeBytes(); });
        QObject::connect(reply, &QNetworkReply::finished, &m_context, [this] { onFinished(); });
        QObject::connect(reply, &QObject::destroyed, &m_context, [this] { settle(Outcome::cancelled); });
        m_deadline.setSingleShot(true);
        m_deadline.setTimerType(Qt::PreciseTimer);
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
        if (m_reply->header(QNetworkRequest::ContentLengthHeader).toLongLong() > m_maximumBodySize)
            stop(Outcome::tooLarge);
    }

    void takeBytes()
    {
        if (m_outcome)
            return;
        m_response.body += m_reply->readAll();
        if (m_response.body.size() > m_maximumBodySize)
            stop(Outcome::tooLarge);
    }

    void onFinished()
    {
        if (m_outcome)
            return;
        takeBytes();
        m_response.statusCode = m_reply->attribute(QNetworkRequest::HttpStatusCodeAttribute).toInt();
        m_response.contentType = m_reply->rawHeader("Content-Type");
        if (isWholeAnswer(*m_reply, m_response.statusCode)) {
            settle(Outcome::answered);
        } else {
            m_failure = describeFailure(*m_reply, m_host, m_response.statusCode);
            settle(Outcome::failed);
        }
    }

    const QString m_host;
    const std::chrono::milliseconds m_timeout;
    const qint64 m_maximumBodySize;
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
