// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Accounts.h"
#include "Request.h"

namespace Cloud {

/// What the page that asks who somebody is shows. A value.
struct SignInPage
{
    QString sealedRequest; ///< goes back with every form
    QString redirectUri;   ///< where the forms lead in the end
    bool asksPassword = false;
    QList<Account> accounts; ///< to choose from, unless passwords are asked
    QString problem;         ///< what was wrong with the last try
    QString name;            ///< as typed before
    QString email;           ///< as typed before

    Response answer() const;
};

} // namespace Cloud
