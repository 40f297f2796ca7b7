// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "HttpAdapter.h"

#include <QTcpSocket>
#include <QTimer>

namespace Cloud {

/// A client's connection, watched from in front of the HTTP library: sees each byte before the library does,
/// refuses requests that are too large, and drops a client that stalls.
class HttpConnection final : public QTcpSocket
{
public:
    /// @p openConnections counts the living ones and outlives them.
    HttpConnection(const HttpAdapter::Limits &limits, int &openConnections);
    ~HttpConnection() override;

    /// The library has handed over a request; what comes now belongs to the next one.
    void requestCompleted();

private:
    void watchIncoming();
    void watchOutgoing();
    void inspectHead(const QByteArray &bytes);
    void refuse(int status, const char *reason);
    void discardIncoming();

    const HttpAdapter::Limits m_limits;
    int &m_openConnections;
    QTimer m_timer;
    QByteArray m_head; ///< of the present request, until it is complete
    qsizetype m_received = 0;
    bool m_headComplete = false;
};

} // namespace Cloud
