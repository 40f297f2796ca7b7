// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>
#include <QtGlobal>

#include <optional>

#include <sys/socket.h>
#include <sys/types.h>

namespace Cloud {

/// Which user of this computer is at the other end of the TCP connection @p descriptor; nothing for a
/// connection from elsewhere, for one that its program has closed already, and when the system does not say.
/// Asks the kernel, some 10 µs. Any thread.
std::optional<uid_t> userOfPeer(qintptr descriptor);

/// The owner of the socket that is bound to @p from and connected to @p to by @p table, the content of
/// /proc/net/tcp or /proc/net/tcp6, for where the kernel does not answer for a single socket.
std::optional<uid_t> ownerInTable(const QByteArray &table, const sockaddr_storage &from,
                                  const sockaddr_storage &to);

} // namespace Cloud
