// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "AppConfiguration.h"

#include <optional>

/// Tells at start whether the configuration is usable, and what to say when it is not.
class FirebaseBootstrap
{
public:
    explicit FirebaseBootstrap(AppConfiguration configuration);

    const AppConfiguration &configuration() const { return m_configuration; }
    const std::optional<QString> &statusMessage() const { return m_statusMessage; }

    /// Sets or clears statusMessage().
    void check();

private:
    AppConfiguration m_configuration;
    std::optional<QString> m_statusMessage;
};
