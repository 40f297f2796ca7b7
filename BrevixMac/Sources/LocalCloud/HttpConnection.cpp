// SPDX-License-Identifier: GPL-3.0-or-later
#include "HttpConnection.h"

#include "Answers.h"

#include <QPointer>
#include <QTcpSocket>

namespace Cloud {

namespace {

/// Bytes. A small body travels in one piece with its head; the socket takes a large one over without a copy.
constexpr qsizetype copiedBodySize = qsizetype(1024) * 1024;

/// How long the head at the beginning of @p bytes is, the empty line at its end included; -1 when it is not
/// complete. As the HTTP library reads it: after empty lines, and with lines that may end in a line feed
/// alone.
qsizetype headLength(const QByteArray &bytes)
{
    qsizetype at = 0;
    while (at < bytes.size() && (bytes[at] == '\r' || bytes[at] == '\n'))
        ++at;
    while ((at = bytes.indexOf('\n', at)) >= 0) {
        ++at;
        const QByteArrayView next = QByteArrayView(bytes).sliced(at);
        if (next.startsWith('\n'))
            return at + 1;
        if (next.startsWith("\r\n"))
            return at + 2;
    }
    return -1;
}

/// The values of the header called @p lowerCaseName in @p head.
QList<QByteArray> headerValues(const QByteArray &head, QByteArrayView lowerCaseName)
{
    QList<QByteArray> values;
    for (const QByteArray &line : head.split('\n')) {
        const qsizetype colon = line.indexOf(':');
        if (colon >= 0 && line.left(colon).trimmed().toLower() == lowerCaseName)
            values.append(line.mid(colon + 1).trimmed());
    }
    return values;
}

/// A carriage return without its line feed, which the HTTP library takes for the end of a head in one place
/// and for a character in another.
bool hasBareReturn(QByteArrayView head)
{
    for (qsizetype at = head.indexOf('\r'); at >= 0 && at + 1 < head.size(); at = head.indexOf('\r', at + 1))
        if (head[at + 1] != '\n')
            return true;
    return false;
}

/// How long the body is by @p head; 0 when it does not say, -1 when two readers could disagree about it.
qint64 contentLength(const QByteArray &head)
{
    const QList<QByteArray> lengths = headerValues(head, "content-length");
    const QList<QByteArray> encodings = headerValues(head, "transfer-encoding");
    if (lengths.size() + encodings.size() > 1)
        return -1;
    if (lengths.isEmpty())
        return encodings.isEmpty() || encodings.constFirst().toLower() == "chunked" ? 0 : -1;
    bool isNumber = false;
    const qint64 length = lengths.constFirst().toLongLong(&isNumber);
    return isNumber && length >= 0 ? length : -1;
}

QByteArray reasonPhrase(int status)
{
    switch (status) {
    case 200:
        return "OK";
    case 303:
        return "See Other";
    case 404:
        return "Not Found";
    default:
        return status < 400 ? "Done" : "Error";
    }
}

QByteArray headOf(const Response &response, bool keepsOpen)
{
    QByteArray head = "HTTP/1.1 " + QByteArray::number(response.status) + ' ' +
                      reasonPhrase(response.status) + "\r\nContent-Type: " + response.contentType +
                      "\r\nContent-Length: " + QByteArray::number(response.body.size()) +
                      "\r\nCache-Control: no-store\r\nX-Content-Type-Options: nosniff\r\n";
    for (const auto &[name, value] : response.headers)
        head += name + ": " + value + "\r\n";
    return head + (keepsOpen ? "\r\n" : "Connection: close\r\n\r\n");
}

} // namespace

HttpConnection::HttpConnection(QTcpSocket &socket, const HttpAdapter::Limits &limits, int &openConnections)
    : QObject(&socket)
    , m_socket(socket)
    , m_limits(limits)
    , m_openConnections(openConnections)
    , m_timer(this)
{
    ++m_openConnections;
    m_timer.setSingleShot(true);
    connect(&m_timer, &QTimer::timeout, &m_socket, &QTcpSocket::abort);
    m_timer.start(m_limits.stall);
    // Slots run in the order of their connection: this one before the library's.
    connect(&m_socket, &QTcpSocket::readyRead, this, &HttpConnection::watchIncoming);
    connect(&m_socket, &QTcpSocket::bytesWritten, this, &HttpConnection::watchOutgoing);
}

HttpConnection::~HttpConnection()
{
    --m_openConnections;
}

HttpConnection &HttpConnection::of(const QTcpSocket &socket)
{
    for (QObject *child : socket.children())
        if (auto *connection = dynamic_cast<HttpConnection *>(child))
            return *connection;
    qFatal("A socket without its watch");
}

void HttpConnection::answer(const Request &request, const Response &response)
{
    if (response.later)
        waitForAnswer(request, response);
    else
        write(request, response, request.header("connection").toLower() != "close");
}

/// Takes the connection out of the library's hands, so that no later request overtakes this one's answer.
void HttpConnection::waitForAnswer(const Request &request, const Response &response)
{
    takeFromLibrary();
    m_timer.start(m_limits.answer);
    response.later([self = QPointer(this), request](const Response &answer) {
        if (self)
            self->write(request, answer, false);
    });
}

void HttpConnection::write(const Request &request, const Response &response, bool keepsOpen)
{
    const QByteArray head = headOf(response, keepsOpen);
    const QByteArray body = request.method == "HEAD" ? QByteArray() : response.body;
    if (body.size() < copiedBodySize) {
        send(head + body);
    } else {
        m_socket.write(head);
        send(body);
    }
    m_received = 0;
    m_headComplete = false;
    m_head.clear();
    m_timer.start(m_socket.bytesToWrite() > 0 ? m_limits.stall : m_limits.idle);
    if (!keepsOpen)
        m_socket.disconnectFromHost();
}

/// At once as far as possible. When the socket reads that the client has ended its side, as some do right
/// after their request, it gives up all that is not sent.
void HttpConnection::send(const QByteArray &bytes)
{
    m_socket.write(bytes);
    m_socket.flush();
}

void HttpConnection::watchIncoming()
{
    const qint64 available = m_socket.bytesAvailable();
    if (m_received == 0 && available > 0)
        m_timer.start(
            m_limits.stall); // for the whole request, so that a trickle of bytes does not prolong it
    m_received += available;
    if (!m_headComplete)
        inspectHead(m_socket.peek(available));
    else if (m_received > m_limits.headSize + m_limits.bodySize)
        refuse(413, "Payload Too Large");
}

void HttpConnection::watchOutgoing()
{
    if (m_received == 0)
        m_timer.start(m_socket.bytesToWrite() > 0 ? m_limits.stall : m_limits.idle);
}

void HttpConnection::inspectHead(const QByteArray &bytes)
{
    m_head += bytes;
    const qsizetype end = headLength(m_head);
    if (end > m_limits.headSize || (end < 0 && m_head.size() > m_limits.headSize))
        return refuse(431, "Request Header Fields Too Large");
    const QByteArray head = end < 0 ? m_head : m_head.left(end);
    if (hasBareReturn(head))
        return refuse(400, "Bad Request");
    if (end < 0)
        return;
    m_headComplete = true;
    const qint64 length = contentLength(head);
    if (length < 0)
        return refuse(400, "Bad Request");
    const qsizetype bodyReceived = m_head.size() - end;
    if (length > m_limits.bodySize || bodyReceived > m_limits.headSize + m_limits.bodySize)
        return refuse(413, "Payload Too Large");
    const QList<QByteArray> expected = headerValues(head, "expect");
    if (!expected.isEmpty() && expected.constFirst().toLower() == "100-continue" && bodyReceived == 0)
        send("HTTP/1.1 100 Continue\r\n\r\n");
    m_head.clear();
}

/// Answers in the library's place. What the client is still sending is thrown away rather than left unread,
/// because closing over unread bytes would destroy the answer on its way.
void HttpConnection::refuse(int status, const char *reason)
{
    takeFromLibrary();
    const QByteArray body = errorAnswer(status, "INVALID_ARGUMENT", QString::fromLatin1(reason)).body;
    send("HTTP/1.1 " + QByteArray::number(status) + ' ' + reason +
         "\r\nContent-Type: application/json; charset=UTF-8\r\nConnection: close\r\nContent-Length: " +
         QByteArray::number(body.size()) + "\r\n\r\n" + body);
    m_head.clear();
    m_timer.start(m_limits.stall);
    discardIncoming();
}

void HttpConnection::takeFromLibrary()
{
    disconnect(&m_socket, &QTcpSocket::readyRead, nullptr, nullptr);
    connect(&m_socket, &QTcpSocket::readyRead, this, &HttpConnection::discardIncoming);
}

void HttpConnection::discardIncoming()
{
    if (m_socket.isTransactionStarted())
        m_socket.commitTransaction();
    m_socket.skip(m_socket.bytesAvailable());
}

} // namespace Cloud
