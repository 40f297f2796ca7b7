// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "ModelOptions.h"

#include <QString>
#include <QUrl>

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
    ModelOptions model = {};
    QString address = {};       ///< that is listened at, if it is not loopback
    bool isEncrypted = false;   ///< HTTPS is spoken
    QUrl publicUrl = {};        ///< the origin that clients use, if it is another one
    bool asksPasswords = false; ///< else everybody who may connect may sign in as anybody
};

} // namespace Cloud
