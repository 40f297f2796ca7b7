// SPDX-License-Identifier: GPL-3.0-or-later
#include "RequestGate.h"

#include "Answers.h"
#include "Site.h"

#include <utility>

namespace Cloud {

RequestGate::RequestGate(const Site &site)
{
    // Clients leave the port out when it is the scheme's own.
    const bool isUsualPort = site.port == (site.isEncrypted ? 443 : 80);
    const QByteArray suffix = isUsualPort ? QByteArray() : QByteArray(':' + QByteArray::number(site.port));
    m_hosts = {"127.0.0.1" + suffix, "localhost" + suffix, "[::1]" + suffix};
    if (!site.address.isEmpty()) {
        const bool isIPv6 = site.address.contains(u':');
        m_hosts.append((isIPv6 ? '[' + site.address.toLatin1() + ']' : site.address.toLatin1()) + suffix);
    }
    for (const QByteArray &host : std::as_const(m_hosts))
        m_origins.append((site.isEncrypted ? "https://" : "http://") + host);
    if (site.publicUrl.isEmpty())
        return;
    m_hosts.append(site.publicUrl.authority(QUrl::FullyEncoded).toLatin1().toLower());
    m_origins.append(site.publicUrl.scheme().toLatin1() + "://" + m_hosts.constLast());
}

std::optional<Response> RequestGate::refusal(const Request &request) const
{
    if (request.headerCount("host") != 1)
        return invalidArgument(QStringLiteral("Exactly one Host header is required."));
    if (!m_hosts.contains(request.header("host").toLower()))
        return errorAnswer(403, "PERMISSION_DENIED", QStringLiteral("This host name is not served here."));
    if (request.headerCount("origin") == 0)
        return std::nullopt;
    if (request.headerCount("origin") == 1 && m_origins.contains(request.header("origin").toLower()))
        return std::nullopt;
    return errorAnswer(403, "PERMISSION_DENIED", QStringLiteral("Requests of other origins are refused."));
}

} // namespace Cloud
