// SPDX-License-Identifier: GPL-3.0-or-later
#include "HttpConnection.h"

#include "Answers.h"

namespace Cloud {

namespace {

/// The value of Content-Length in @p head; 0 when there is none, -1 when it is no size.
qint64 contentLength(const QByteArray &head)
{
    for (const QByteArray &line : head.split('\n')) {
        const qsizetype colon = line.indexOf(':');
        if (colon < 0 || line.left(colon).trimmed().toLower() != "content-length")
            continue;
        bool isNumber = false;
        const qint64 length = line.mid(colon + 1).trimmed().toLongLong(&isNumber);
        return isNumber && length >= 0 ? length : -1;
    }
    return 0;
}

} // namespace

HttpConnection::HttpConnection(const HttpAdapter::Limits &limits, int &openConnections)
    : m_limits(limits)
    , m_openConnections(openConnections)
    , m_timer(this)
{
    ++m_openConnections;
    m_timer.setSingleShot(true);
    connect(&m_timer, &QTimer::timeout, this, [this] { abort(); });
    m_timer.start(m_limits.stall);
    // Slots run in the order of their connection: this one before the library's.
    connect(this, &QTcpSocket::readyRead, this, &HttpConnection::watchIncoming);
    connect(this, &QTcpSocket::bytesWritten, this, &HttpConnection::watchOutgoing);
}

HttpConnection::~HttpConnection()
{
    --m_openConnections;
}

void HttpConnection::requestCompleted()
{
    m_received = 0;
    m_headComplete = false;
    m_head.clear();
    m_timer.start(bytesToWrite() > 0 ? m_limits.stall : m_limits.idle);
}

void HttpConnection::watchIncoming()
{
    const qint64 available = bytesAvailable();
    if (m_received == 0 && available > 0)
        m_timer.start(
            m_limits.stall); // for the whole request, so that a trickle of bytes does not prolong it
    m_received += available;
    if (!m_headComplete)
        inspectHead(peek(available));
    else if (m_received > m_limits.headSize + m_limits.bodySize)
        refuse(413, "Payload Too Large");
}

void HttpConnection::watchOutgoing()
{
    if (m_received == 0)
        m_timer.start(bytesToWrite() > 0 ? m_limits.stall : m_limits.idle);
}

void HttpConnection::inspectHead(const QByteArray &bytes)
{
    m_head += bytes;
    const qsizetype end = m_head.indexOf("\r\n\r\n");
    if (end > m_limits.headSize || (end < 0 && m_head.size() > m_limits.headSize))
        return refuse(431, "Request Header Fields Too Large");
    if (end < 0)
        return;
    m_headComplete = true;
    const qint64 length = contentLength(m_head.left(end));
    if (length < 0)
        return refuse(400, "Bad Request");
    if (length > m_limits.bodySize || m_head.size() - end > m_limits.headSize + m_limits.bodySize)
        return refuse(413, "Payload Too Large");
    m_head.clear();
}

/// Answers in the library's place and takes the connection out of its hands. What the client is still sending
/// is thrown away rather than left unread, because closing over unread bytes would destroy the answer on its
/// way.
void HttpConnection::refuse(int status, const char *reason)
{
    disconnect(this, &QTcpSocket::readyRead, nullptr, nullptr);
    connect(this, &QTcpSocket::readyRead, this, &HttpConnection::discardIncoming);
    const QByteArray body = errorAnswer(status, "INVALID_ARGUMENT", QString::fromLatin1(reason)).body;
    write("HTTP/1.1 " + QByteArray::number(status) + ' ' + reason +
          "\r\nContent-Type: application/json; charset=UTF-8\r\nConnection: close\r\nContent-Length: " +
          QByteArray::number(body.size()) + "\r\n\r\n" + body);
    m_head.clear();
    m_timer.start(m_limits.stall);
    discardIncoming();
}

void HttpConnection::discardIncoming()
{
    if (isTransactionStarted())
        commitTransaction();
    skip(bytesAvailable());
}

} // namespace Cloud
