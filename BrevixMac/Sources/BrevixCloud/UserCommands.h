// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "LocalCloud/LocalCloud.h"

#include <QString>

/// What an administrator does with the accounts of a server, also while it runs. Each prints its outcome and
/// gives the exit code of the program.
class UserCommands
{
public:
    explicit UserCommands(LocalCloud::Options options);

    /// Asks for the password of the new account.
    int add(const QString &email, const QString &name) const;

    /// Asks for the new password and ends all sessions of the account.
    int setPassword(const QString &email) const;

    /// Deletes the account and its library. What it has shared stays.
    int remove(const QString &email) const;

    int list() const;

private:
    LocalCloud::Options m_options;
};
