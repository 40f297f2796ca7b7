// SPDX-License-Identifier: GPL-3.0-or-later
#include "RawClient.h"

#include "FuzzTarget.h"

#include <QCoreApplication>
#include <QDeadlineTimer>
#include <QSocketNotifier>
#include <QTimer>

#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>

namespace {

using namespace std::chrono_literals;

// Much longer than the time limits of the server that is fuzzed.
constexpr auto patience = 20s;

} // namespace

RawClient::RawClient(quint16 port)
    : m_socket(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0))
{
    // Closing resets the connection, so that thousands of them leave no ports behind that wait.
    const linger atOnce{.l_onoff = 1, .l_linger = 0};
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(port);
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    require(m_socket >= 0 && ::setsockopt(m_socket, SOL_SOCKET, SO_LINGER, &atOnce, sizeof atOnce) == 0 &&
                (::connect(m_socket, reinterpret_cast<const sockaddr *>(&address), sizeof address) == 0 ||
                 errno == EINPROGRESS),
            "a connection can be made");
}

RawClient::~RawClient()
{
    ::close(m_socket);
    QCoreApplication::processEvents();
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
}

void RawClient::send(const QByteArray &bytes)
{
    // Inputs are smaller than the socket's buffer.
    [[maybe_unused]] const ssize_t sent =
        ::send(m_socket, bytes.constData(), size_t(bytes.size()), MSG_NOSIGNAL);
    QCoreApplication::processEvents();
    receive();
}

QByteArray RawClient::finish()
{
    ::shutdown(m_socket, SHUT_WR);
    const QDeadlineTimer deadline(patience);
    QSocketNotifier news(m_socket, QSocketNotifier::Read);
    QTimer wake;
    wake.start(100ms);
    while (receive()) {
        require(!deadline.hasExpired(), "a connection that its client has ended comes to its end");
        QCoreApplication::processEvents(QEventLoop::AllEvents | QEventLoop::WaitForMoreEvents);
    }
    return m_received;
}

/// False when the server has ended the connection.
bool RawClient::receive()
{
    char buffer[4096];
    for (;;) {
        const ssize_t count = ::recv(m_socket, buffer, sizeof buffer, 0);
        if (count > 0)
            m_received.append(buffer, count);
        else
            return count < 0 && (errno == EAGAIN || errno == EINTR);
    }
}
