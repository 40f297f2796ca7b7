// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Timestamp.h"

#include <QByteArray>
#include <QHash>
#include <QString>

#include <optional>

namespace Cloud {

struct AuthorizationRequest;

/// The authorization codes that are on their way back, kept in memory only. Belongs to one thread.
class AuthorizationCodes
{
public:
    static constexpr std::chrono::seconds lifetime{60};

    /// What a code stands for.
    struct Grant
    {
        QString uid;
        QString redirectUri;
        QString codeChallenge;
    };

    explicit AuthorizationCodes(Clock clock);

    QByteArray issue(const QString &uid, const AuthorizationRequest &request);

    /// Nothing for a code that was not issued, is too old, or was redeemed before: each is good for one try.
    std::optional<Grant> redeem(const QByteArray &code);

private:
    struct Entry
    {
        Grant grant;
        Timestamp expires;
    };

    void forgetExpired();

    Clock m_clock;
    QHash<QByteArray, Entry> m_entries; ///< by the hash of the code
};

} // namespace Cloud
