// SPDX-License-Identifier: GPL-3.0-or-later
#include "AuthorizationCodes.h"

#include "AuthorizationRequest.h"
#include "SecureRandom.h"

#include <QCryptographicHash>

#include <utility>

namespace Cloud {

namespace {

constexpr qsizetype codeSize = 32;

QByteArray hashOf(const QByteArray &code)
{
    return QCryptographicHash::hash(code, QCryptographicHash::Sha256);
}

} // namespace

AuthorizationCodes::AuthorizationCodes(Clock clock)
    : m_clock(std::move(clock))
{
}

QByteArray AuthorizationCodes::issue(const QString &uid, const AuthorizationRequest &request)
{
    forgetExpired();
    QByteArray code = base64Url(secureRandomBytes(codeSize));
    m_entries.insert(hashOf(code), {{uid, request.redirectUri, request.codeChallenge}, m_clock() + lifetime});
    return code;
}

std::optional<AuthorizationCodes::Grant> AuthorizationCodes::redeem(const QByteArray &code)
{
    forgetExpired();
    const auto entry = m_entries.constFind(hashOf(code));
    if (entry == m_entries.constEnd())
        return std::nullopt;
    const Grant grant = entry->grant;
    m_entries.erase(entry);
    return grant;
}

void AuthorizationCodes::forgetExpired()
{
    const Timestamp now = m_clock();
    m_entries.removeIf([now](const auto &entry) { return entry.value().expires <= now; });
}

} // namespace Cloud
