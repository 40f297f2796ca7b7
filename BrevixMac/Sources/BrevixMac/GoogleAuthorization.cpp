// SPDX-License-Identifier: GPL-3.0-or-later
#include "GoogleAuthorization.h"

#include "AuthError.h"

#include <QCryptographicHash>
#include <QRandomGenerator>

#include <algorithm>
#include <limits>

namespace {

const QString unreservedAlphabet =
    QStringLiteral("abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789-._~");
constexpr qsizetype stateLength = 32;
constexpr qsizetype codeVerifierLength = 64;
const QString redirectPath = QStringLiteral("/oauthredirect");

using QueryItems = QMap<QString, QString>;

QString decoded(const QString &text)
{
    return QString::fromUtf8(QByteArray::fromPercentEncoding(text.toUtf8()));
}

/// The query items that have a value, an empty one included.
QueryItems queryItems(const QUrl &url)
{
    QueryItems items;
    for (const QString &item : url.query(QUrl::FullyEncoded).split(u'&')) {
        const qsizetype at = item.indexOf(u'=');
        if (at < 0)
            continue;
        const QString name = decoded(item.first(at));
        if (!items.contains(name))
            items.insert(name, decoded(item.sliced(at + 1)));
    }
    return items;
}

QString encodedQueryPart(const QString &text)
{
    return QString::fromLatin1(QUrl::toPercentEncoding(text, "!$'()*,;:@/"));
}

} // namespace

namespace GoogleAuthorization {

quint64 secureBits()
{
    return QRandomGenerator::system()->generate64();
}

QString randomURLSafeString(qsizetype length, const std::function<quint64()> &draw)
{
    // The draws above the last whole multiple would favour the first letters of the alphabet.
    const auto count = static_cast<quint64>(unreservedAlphabet.size());
    constexpr quint64 largest = std::numeric_limits<quint64>::max();
    const quint64 largestFair = largest - (largest % count + 1) % count;

    QString text;
    while (text.size() < length) {
        const quint64 bits = draw();
        if (bits <= largestFair)
            text.append(unreservedAlphabet.at(static_cast<qsizetype>(bits % count)));
    }
    return text;
}

QString codeChallenge(const QString &verifier)
{
    const QByteArray hash = QCryptographicHash::hash(verifier.toUtf8(), QCryptographicHash::Sha256);
    return QString::fromLatin1(hash.toBase64(QByteArray::Base64UrlEncoding | QByteArray::OmitTrailingEquals));
}

Attempt Attempt::make(const FirebaseRuntimeConfiguration &firebase)
{
    return {.state = randomURLSafeString(stateLength),
            .codeVerifier = randomURLSafeString(codeVerifierLength),
            .redirectURI = firebase.reversedClientID + u':' + redirectPath};
}

std::optional<QUrl> Attempt::authorizationURL(const CloudEndpoints &endpoints,
                                              const FirebaseRuntimeConfiguration &firebase) const
{
    const std::optional<QUrl> page = endpoints.authorization();
    if (!page)
        return std::nullopt;
    const std::pair<QString, QString> items[] = {
        {QStringLiteral("client_id"), firebase.clientID},
        {QStringLiteral("redirect_uri"), redirectURI},
        {QStringLiteral("response_type"), QStringLiteral("code")},
        {QStringLiteral("scope"), QStringLiteral("openid email profile")},
        {QStringLiteral("state"), state},
        {QStringLiteral("code_challenge"), codeChallenge(codeVerifier)},
        {QStringLiteral("code_challenge_method"), QStringLiteral("S256")},
        {QStringLiteral("include_granted_scopes"), QStringLiteral("true")},
        {QStringLiteral("prompt"), QStringLiteral("select_account")},
    };
    QStringList query;
    for (const auto &[name, value] : items)
        query.append(name + u'=' + encodedQueryPart(value));
    QUrl url = *page;
    url.setQuery(query.join(u'&'), QUrl::StrictMode);
    return url.isValid() ? std::optional(url) : std::nullopt;
}

bool Attempt::isAnsweredBy(const QUrl &callback) const
{
    return callback.isValid() && callback.path() == redirectPath &&
           queryItems(callback).value(QStringLiteral("state")) == state;
}

QByteArray Attempt::tokenExchangeBody(const QString &authorizationCode, const QString &clientID) const
{
    return formEncodedQuery({{QStringLiteral("client_id"), clientID},
                             {QStringLiteral("code"), authorizationCode},
                             {QStringLiteral("code_verifier"), codeVerifier},
                             {QStringLiteral("grant_type"), QStringLiteral("authorization_code")},
                             {QStringLiteral("redirect_uri"), redirectURI}});
}

QString authorizationCode(const QUrl &callback, const QString &expectedState)
{
    if (!callback.isValid())
        throw AuthError(AuthError::Kind::invalidCallbackURL);
    const QueryItems items = queryItems(callback);
    for (const QString &name : {QStringLiteral("error_description"), QStringLiteral("error")}) {
        if (items.contains(name))
            throw AuthError(AuthError::Kind::oauthCallbackError, {}, items.value(name));
    }
    const auto state = items.constFind(QStringLiteral("state"));
    if (state == items.constEnd() || *state != expectedState)
        throw AuthError(AuthError::Kind::stateMismatch);
    QString code = items.value(QStringLiteral("code"));
    if (code.isEmpty())
        throw AuthError(AuthError::Kind::missingAuthorizationCode);
    return code;
}

QByteArray formEncodedQuery(const QMap<QString, QString> &pairs)
{
    QStringList parts;
    for (auto it = pairs.cbegin(); it != pairs.cend(); ++it)
        parts.append(encodedQueryPart(it.key()) + u'=' + encodedQueryPart(it.value()));
    std::sort(parts.begin(), parts.end());
    return parts.join(u'&').toUtf8();
}

} // namespace GoogleAuthorization
