// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Request.h"

#include <optional>

namespace Cloud {

struct Site;

/// Keeps web pages of other origins away from a server that any page on this computer could reach: a name
/// that was rebound to the loopback address shows in Host, a cross-site request in Origin. A value.
class RequestGate
{
public:
    explicit RequestGate(const Site &site);

    /// The refusal, or nothing when the request may go on.
    std::optional<Response> refusal(const Request &request) const;

private:
    QList<QByteArray> m_hosts;
    QList<QByteArray> m_origins;
};

} // namespace Cloud
