// SPDX-License-Identifier: GPL-3.0-or-later
#include "PeerUser.h"

#include <QFile>
#include <QList>

#include <arpa/inet.h>
#include <array>
#include <cstring>
#include <linux/inet_diag.h>
#include <linux/netlink.h>
#include <linux/sock_diag.h>
#include <netinet/in.h>
#include <unistd.h>

namespace Cloud {

namespace {

constexpr qint64 maximumTableSize = qint64(16) * 1024 * 1024; // bytes: some 100,000 connections

/// An end of a connection as both of the kernel's interfaces write it: in network byte order.
struct End
{
    std::array<quint32, 4> address{};
    quint16 port = 0;
};

End endOf(const sockaddr_storage &address)
{
    End end;
    if (address.ss_family == AF_INET) {
        sockaddr_in ip{};
        std::memcpy(&ip, &address, sizeof ip);
        end.address[0] = ip.sin_addr.s_addr;
        end.port = ip.sin_port;
    } else {
        sockaddr_in6 ip{};
        std::memcpy(&ip, &address, sizeof ip);
        std::memcpy(end.address.data(), &ip.sin6_addr, sizeof end.address);
        end.port = ip.sin6_port;
    }
    return end;
}

/// A netlink socket, closed with this object.
class DiagnosisSocket
{
public:
    DiagnosisSocket()
        : m_descriptor(::socket(AF_NETLINK, SOCK_RAW | SOCK_CLOEXEC, NETLINK_SOCK_DIAG))
    {
    }

    ~DiagnosisSocket()
    {
        if (m_descriptor >= 0)
            ::close(m_descriptor);
    }

    DiagnosisSocket(const DiagnosisSocket &) = delete;
    DiagnosisSocket &operator=(const DiagnosisSocket &) = delete;

    /// The kernel's description of one socket; its answer is there as soon as the question was taken.
    std::optional<inet_diag_msg> ask(const inet_diag_req_v2 &question) const
    {
        struct
        {
            nlmsghdr header;
            inet_diag_req_v2 question;
        } message{{sizeof message, SOCK_DIAG_BY_FAMILY, NLM_F_REQUEST, 0, 0}, question};
        std::array<char, 4096> bytes{};
        if (::send(m_descriptor, &message, sizeof message, 0) != ssize_t(sizeof message))
            return std::nullopt;
        const ssize_t size = ::recv(m_descriptor, bytes.data(), bytes.size(), MSG_DONTWAIT);
        nlmsghdr header{};
        inet_diag_msg answer{};
        if (size < ssize_t(NLMSG_LENGTH(sizeof answer)))
            return std::nullopt;
        std::memcpy(&header, bytes.data(), sizeof header);
        std::memcpy(&answer, bytes.data() + NLMSG_HDRLEN, sizeof answer);
        return header.nlmsg_type == SOCK_DIAG_BY_FAMILY ? std::optional(answer) : std::nullopt;
    }

private:
    int m_descriptor;
};

std::optional<uid_t> ownerByDiagnosis(const sockaddr_storage &from, const sockaddr_storage &to)
{
    const End source = endOf(from);
    const End destination = endOf(to);
    inet_diag_req_v2 question{};
    question.sdiag_family = quint8(from.ss_family);
    question.sdiag_protocol = IPPROTO_TCP;
    question.idiag_states = ~0U;
    question.id.idiag_sport = source.port;
    question.id.idiag_dport = destination.port;
    std::memcpy(question.id.idiag_src, source.address.data(), sizeof source.address);
    std::memcpy(question.id.idiag_dst, destination.address.data(), sizeof destination.address);
    question.id.idiag_cookie[0] = INET_DIAG_NOCOOKIE;
    question.id.idiag_cookie[1] = INET_DIAG_NOCOOKIE;
    const auto answer = DiagnosisSocket().ask(question);
    // A socket that no program holds any more has no inode, and seems to be root's.
    return answer && answer->idiag_inode != 0 ? std::optional(answer->idiag_uid) : std::nullopt;
}

/// "0100007F:1F90": the words of the address and the port in hexadecimal.
QByteArray tableForm(const sockaddr_storage &address)
{
    const End end = endOf(address);
    QByteArray text;
    for (std::size_t i = 0; i < (address.ss_family == AF_INET ? 1U : 4U); ++i)
        text += QByteArray::number(end.address[i], 16).rightJustified(8, '0');
    return (text + ':' + QByteArray::number(ntohs(end.port), 16).rightJustified(4, '0')).toUpper();
}

QByteArray tableOf(sa_family_t family)
{
    QFile file(family == AF_INET ? QStringLiteral("/proc/net/tcp") : QStringLiteral("/proc/net/tcp6"));
    return file.open(QIODevice::ReadOnly) ? file.read(maximumTableSize) : QByteArray();
}

} // namespace

std::optional<uid_t> ownerInTable(const QByteArray &table, const sockaddr_storage &from,
                                  const sockaddr_storage &to)
{
    const QByteArray ends = ' ' + tableForm(from) + ' ' + tableForm(to) + ' ';
    const qsizetype found = table.indexOf(ends);
    if (found < 0)
        return std::nullopt;
    // state, queues, timer, retransmissions, user, time-out, inode
    const QList<QByteArray> rest =
        table.mid(found + ends.size(), 200).split('\n').constFirst().simplified().split(' ');
    bool isNumber = false;
    const uid_t user = rest.value(4).toUInt(&isNumber);
    const bool isHeld = rest.value(6, "0") != "0";
    return isNumber && isHeld ? std::optional(user) : std::nullopt;
}

std::optional<uid_t> userOfPeer(qintptr descriptor)
{
    sockaddr_storage here{};
    sockaddr_storage there{};
    socklen_t hereSize = sizeof here;
    socklen_t thereSize = sizeof there;
    if (::getsockname(int(descriptor), reinterpret_cast<sockaddr *>(&here), &hereSize) != 0 ||
        ::getpeername(int(descriptor), reinterpret_cast<sockaddr *>(&there), &thereSize) != 0 ||
        (here.ss_family != AF_INET && here.ss_family != AF_INET6))
        return std::nullopt;
    const auto owner = ownerByDiagnosis(there, here);
    return owner ? owner : ownerInTable(tableOf(here.ss_family), there, here);
}

} // namespace Cloud
