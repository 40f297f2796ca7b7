// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "HttpAdapter.h"

#include <QObject>
#include <QTimer>

class QTcpSocket;

namespace Cloud {

/// Watches a client's connection from in front of the HTTP library: sees each byte before the library does,
/// refuses requests that are too large or ambiguous, drops a client that stalls, and writes the answers.
class HttpConnection final : public QObject
{
public:
    /// Becomes a child of @p socket. @p openConnections counts the living ones and outlives them.
    HttpConnection(QTcpSocket &socket, const HttpAdapter::Limits &limits, int &openConnections);
    ~HttpConnection() override;

    static HttpConnection &of(const QTcpSocket &socket);

    /// Answers @p request, which the library has handed over whole; what comes next belongs to the next one.
    void answer(const Request &request, const Response &response);

private:
    void watchIncoming();
    void watchOutgoing();
    void inspectHead(const QByteArray &bytes);
    void waitForAnswer(const Request &request, const Response &response);
    void write(const Request &request, const Response &response, bool keepsOpen);
    void send(const QByteArray &bytes);
    void refuse(int status, const char *reason);
    void takeFromLibrary();
    void discardIncoming();

    QTcpSocket &m_socket;
    const HttpAdapter::Limits m_limits;
    int &m_openConnections;
    QTimer m_timer;
    QByteArray m_head; ///< of the present request, until it is complete
    qsizetype m_received = 0;
    bool m_headComplete = false;
};

} // namespace Cloud
