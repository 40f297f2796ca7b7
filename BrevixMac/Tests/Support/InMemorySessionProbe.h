// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Desktop/SessionProbe.h"

#include "Foundation/TaskScope.h"

#include <chrono>

/// Has found a session in which everything works.
class InMemorySessionProbe : public SessionProbe
{
public:
    SessionFacts facts = wholesome();
    int examinations = 0;
    QString scheme; ///< as last asked about
    std::chrono::milliseconds delay{0};

    static SessionFacts wholesome()
    {
        return {.display = SessionFacts::Display::x11,
                .desktopName = QStringLiteral("XFCE"),
                .hasSessionBus = true,
                .hasWindowManager = true,
                .accessibility = SessionFacts::Accessibility::on,
                .accessiblePrograms = 3,
                .mutePrograms = {},
                .hasKeySynthesis = true,
                .hasPasteKeys = true,
                .clipboard = SessionFacts::Clipboard::answering,
                .clipboardOwner = QStringLiteral("Editor"),
                .tray = SessionFacts::Tray::notifier,
                .scheme = {.isPrivate = true,
                           .claim = SchemeFacts::Claim::ours,
                           .handler = {},
                           .canRegister = true,
                           .hasOpener = true}};
    }

    QCoro::Task<SessionFacts> examine(QString askedScheme) override
    {
        ++examinations;
        scheme = askedScheme;
        if (delay.count() > 0)
            co_await sleepFor(delay);
        const SessionFacts found = facts; // a named value is moved from when it is returned
        co_return found;
    }
};
