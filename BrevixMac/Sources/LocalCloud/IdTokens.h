// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Timestamp.h"

#include <QByteArray>
#include <QString>

#include <optional>

namespace Cloud {

struct Account;

/// Issues and checks ID tokens: JSON Web Tokens (RFC 7519) signed with HMAC-SHA-256. Any thread.
class IdTokens
{
public:
    static constexpr std::chrono::seconds lifetime{3600};

    /// Tokens are for @p projectID alone.
    IdTokens(QByteArray signingKey, QString projectID, Clock clock);

    QByteArray issue(const Account &account) const;

    /// The user of a token that this server signed for this project and that has not expired; nothing for any
    /// other text.
    std::optional<QString> userOf(const QByteArray &token) const;

private:
    QByteArray signature(const QByteArray &signedPart) const;

    QByteArray m_signingKey;
    QString m_projectID;
    Clock m_clock;
};

} // namespace Cloud
