// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

#include <optional>

/// Whether the session starts this application when the user logs in. Main thread only.
class LoginItem
{
public:
    LoginItem() = default;
    virtual ~LoginItem() = default;

    LoginItem(const LoginItem &) = delete;
    LoginItem &operator=(const LoginItem &) = delete;

    /// As the session has it now, whoever changed it last.
    virtual bool isEnabled() const = 0;

    /// Why it could not be done, as a sentence for the user; nothing when it was.
    virtual std::optional<QString> setEnabled(bool enabled) = 0;
};
