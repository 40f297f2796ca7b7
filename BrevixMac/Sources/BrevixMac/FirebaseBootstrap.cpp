// SPDX-License-Identifier: GPL-3.0-or-later
#include "FirebaseBootstrap.h"

#include <utility>

FirebaseBootstrap::FirebaseBootstrap(AppConfiguration configuration)
    : m_configuration(std::move(configuration))
{
}

void FirebaseBootstrap::check()
{
    if (m_configuration.firebase.isConfigured()) {
        m_statusMessage.reset();
        return;
    }
    m_statusMessage = QStringLiteral(
        "Add BrevixMac/Sources/BrevixMac/Resources/GoogleService-Info.plist or update the fallback "
        "FirebaseConfig.plist with valid native macOS Firebase values.");
}
