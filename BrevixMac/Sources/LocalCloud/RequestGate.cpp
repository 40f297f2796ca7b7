// SPDX-License-Identifier: GPL-3.0-or-later
#include "RequestGate.h"

#include "Answers.h"

namespace Cloud {

RequestGate::RequestGate(quint16 port)
{
    const QByteArray suffix = ':' + QByteArray::number(port);
    m_hosts = {"127.0.0.1" + suffix, "localhost" + suffix, "[::1]" + suffix};
}

std::optional<Response> RequestGate::refusal(const Request &request) const
{
    if (request.headerCount("host") != 1)
        return invalidArgument(QStringLiteral("Exactly one Host header is required."));
    if (!m_hosts.contains(request.header("host").toLower()))
        return errorAnswer(403, "PERMISSION_DENIED", QStringLiteral("This host name is not served here."));
    if (request.headerCount("origin") == 0)
        return std::nullopt;
    const QByteArray origin = request.header("origin");
    if (request.headerCount("origin") == 1 && origin.startsWith("http://") &&
        m_hosts.contains(origin.sliced(7).toLower()))
        return std::nullopt;
    return errorAnswer(403, "PERMISSION_DENIED", QStringLiteral("Requests of other origins are refused."));
}

} // namespace Cloud
