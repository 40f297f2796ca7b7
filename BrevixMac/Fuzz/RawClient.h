// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>
#include <QtGlobal>

/// A connection to a server of this very thread over loopback, without a protocol. Runs the event loop while
/// it sends and receives. A server that does not end a connection which its client has ended breaks a
/// promise.
class RawClient
{
public:
    explicit RawClient(quint16 port);
    ~RawClient();

    /// Sends @p bytes and lets the server look at them. What a server that has hung up does not take is lost.
    void send(const QByteArray &bytes);

    /// Says that no more is coming, waits for the server to end the connection, and gives all it has sent.
    QByteArray finish();

    RawClient(const RawClient &) = delete;
    RawClient &operator=(const RawClient &) = delete;

private:
    bool receive();

    int m_socket;
    QByteArray m_received;
};
