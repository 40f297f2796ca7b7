// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

#include <optional>

class LoginItem;

/// Registers the application as a login item. Main thread only; keeps nothing.
class LaunchAtLoginService
{
public:
    /// @p loginItem must outlive this object.
    explicit LaunchAtLoginService(LoginItem &loginItem)
        : m_loginItem(loginItem)
    {
    }

    /// Registers or unregisters. The session's error, for the user; nothing when it was done.
    std::optional<QString> setEnabled(bool enabled);

    /// What the session would do at the next login.
    bool isEnabled() const;

private:
    LoginItem &m_loginItem;
};
