// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

namespace Cloud {

/// What one server is: where it is reached, and the names and keys by which its clients know it. A value.
struct Site
{
    quint16 port = 0;
    QString projectID;
    QString libraryAppID;
    QString apiKey;
    QString clientID;       ///< the only OAuth client
    QString redirectScheme; ///< of that client's own addresses
};

} // namespace Cloud
