// SPDX-License-Identifier: GPL-3.0-or-later
#include "LaunchAtLoginService.h"

#include "Desktop/LoginItem.h"

std::optional<QString> LaunchAtLoginService::setEnabled(bool enabled)
{
    return m_loginItem.setEnabled(enabled);
}

bool LaunchAtLoginService::isEnabled() const
{
    return m_loginItem.isEnabled();
}
