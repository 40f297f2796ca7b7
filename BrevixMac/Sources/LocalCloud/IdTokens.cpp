// SPDX-License-Identifier: GPL-3.0-or-later
#include "IdTokens.h"

#include "Accounts.h"
#include "SecureRandom.h"

#include <QJsonDocument>
#include <QJsonObject>
#include <QMessageAuthenticationCode>

#include <utility>

namespace Cloud {

namespace {

/// The only header there is. Tokens with any other one ("none" above all) are not ours, so it is compared,
/// not parsed.
const QByteArray &encodedHeader()
{
    static const QByteArray header = base64Url(R"({"alg":"HS256","typ":"JWT"})");
    return header;
}

qint64 secondsOf(Timestamp time)
{
    return std::chrono::floor<std::chrono::seconds>(time).time_since_epoch().count();
}

} // namespace

IdTokens::IdTokens(QByteArray signingKey, QString projectID, Clock clock)
    : m_signingKey(std::move(signingKey))
    , m_projectID(std::move(projectID))
    , m_clock(std::move(clock))
{
}

QByteArray IdTokens::issue(const Account &account) const
{
    const qint64 now = secondsOf(m_clock());
    const QJsonObject claims{{QStringLiteral("iss"), QStringLiteral("brevix-local-cloud")},
                             {QStringLiteral("aud"), m_projectID},
                             {QStringLiteral("sub"), account.uid},
                             {QStringLiteral("user_id"), account.uid},
                             {QStringLiteral("email"), account.email},
                             {QStringLiteral("name"), account.displayName},
                             {QStringLiteral("auth_time"), now},
                             {QStringLiteral("iat"), now},
                             {QStringLiteral("exp"), now + lifetime.count()}};
    const QByteArray signedPart =
        encodedHeader() + '.' + base64Url(QJsonDocument(claims).toJson(QJsonDocument::Compact));
    return signedPart + '.' + base64Url(signature(signedPart));
}

std::optional<QString> IdTokens::userOf(const QByteArray &token) const
{
    const QList<QByteArray> parts = token.split('.');
    if (parts.size() != 3 || parts[0] != encodedHeader())
        return std::nullopt;
    const QByteArray expected = base64Url(signature(parts[0] + '.' + parts[1]));
    if (!equalInConstantTime(expected, parts[2]))
        return std::nullopt;
    const QByteArray json = QByteArray::fromBase64(parts[1], QByteArray::Base64UrlEncoding);
    const QJsonObject claims = QJsonDocument::fromJson(json).object();
    if (claims.value(u"aud").toString() != m_projectID ||
        claims.value(u"exp").toInteger() <= secondsOf(m_clock()))
        return std::nullopt;
    const QString uid = claims.value(u"sub").toString();
    return uid.isEmpty() ? std::nullopt : std::optional(uid);
}

QByteArray IdTokens::signature(const QByteArray &signedPart) const
{
    return QMessageAuthenticationCode::hash(signedPart, m_signingKey, QCryptographicHash::Sha256);
}

} // namespace Cloud
