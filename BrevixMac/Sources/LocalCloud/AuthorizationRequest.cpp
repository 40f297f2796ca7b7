// SPDX-License-Identifier: GPL-3.0-or-later
#include "AuthorizationRequest.h"

#include "Form.h"
#include "SecureRandom.h"

#include <QCryptographicHash>
#include <QJsonArray>
#include <QJsonDocument>
#include <QMessageAuthenticationCode>
#include <QUrl>

#include <algorithm>

namespace Cloud {

namespace {

constexpr qsizetype maximumRedirectSize = 2000;
constexpr qsizetype maximumStateSize = 2000;
constexpr qsizetype challengeSize = 43; // base64url of 32 bytes
constexpr qsizetype shortestVerifier = 43;
constexpr qsizetype longestVerifier = 128;

const QStringList loopbackNames{QStringLiteral("127.0.0.1"), QStringLiteral("::1"),
                                QStringLiteral("localhost")};

bool isUnreserved(QChar character)
{
    const char16_t c = character.unicode();
    return (c >= u'a' && c <= u'z') || (c >= u'A' && c <= u'Z') || (c >= u'0' && c <= u'9') || c == u'-' ||
           c == u'.' || c == u'_' || c == u'~';
}

bool isChallenge(const QString &text)
{
    return text.size() == challengeSize && std::all_of(text.begin(), text.end(), [](QChar character) {
               return isUnreserved(character) && character != u'.' && character != u'~';
           });
}

/// A parameter that is given twice could be read differently by two readers.
bool repeatsAParameter(const QUrlQuery &query)
{
    const auto items = query.queryItems();
    return std::any_of(items.begin(), items.end(),
                       [&](const auto &item) { return query.allQueryItemValues(item.first).size() > 1; });
}

QString problemOf(const QUrlQuery &query, const OAuthClient &client)
{
    if (repeatsAParameter(query))
        return QStringLiteral("The request names a parameter twice.");
    if (formValue(query, QStringLiteral("client_id")) != client.clientID)
        return QStringLiteral("The program that asks is not known to this server.");
    if (!isAcceptableRedirect(formValue(query, QStringLiteral("redirect_uri")), client.redirectScheme))
        return QStringLiteral("The program that asks wants the answer at an address that is not its own.");
    return {};
}

const char *errorOf(const QUrlQuery &query, const AuthorizationRequest &request)
{
    if (formValue(query, QStringLiteral("response_type")) != QLatin1String("code"))
        return "unsupported_response_type";
    if (formValue(query, QStringLiteral("code_challenge_method")) != QLatin1String("S256") ||
        !isChallenge(request.codeChallenge) || request.state.size() > maximumStateSize)
        return "invalid_request";
    if (!formValue(query, QStringLiteral("scope")).split(u' ').contains(QStringLiteral("openid")))
        return "invalid_scope";
    if (formValue(query, QStringLiteral("prompt")) == QLatin1String("none"))
        return "interaction_required";
    return nullptr;
}

QByteArray encoded(const QString &text)
{
    return QUrl::toPercentEncoding(text);
}

} // namespace

QByteArray AuthorizationRequest::redirectUrl(const QString &name, const QString &value) const
{
    QByteArray url = redirectUri.toUtf8() + '?' + encoded(name) + '=' + encoded(value);
    if (!state.isEmpty())
        url += "&state=" + encoded(state);
    return url;
}

bool isAcceptableRedirect(const QString &uri, const QString &scheme)
{
    if (!scheme.isEmpty() && uri == scheme + QStringLiteral(":/oauthredirect"))
        return true;
    const auto isPrintable = [](QChar character) { return character > u' ' && character < u'\x7f'; };
    if (uri.size() > maximumRedirectSize || !std::all_of(uri.begin(), uri.end(), isPrintable))
        return false;
    const QUrl url(uri, QUrl::StrictMode);
    return url.isValid() && url.scheme() == QLatin1String("http") && loopbackNames.contains(url.host()) &&
           url.port() > 0 && url.userInfo().isEmpty() && !url.hasFragment() && !url.hasQuery() &&
           url.toString(QUrl::FullyEncoded) == uri;
}

bool answersChallenge(const QString &verifier, const QString &challenge)
{
    if (verifier.size() < shortestVerifier || verifier.size() > longestVerifier ||
        !std::all_of(verifier.begin(), verifier.end(), &isUnreserved))
        return false;
    const QByteArray expected =
        base64Url(QCryptographicHash::hash(verifier.toLatin1(), QCryptographicHash::Sha256));
    return equalInConstantTime(expected, challenge.toUtf8());
}

AuthorizationReading readAuthorizationRequest(const QUrlQuery &query, const OAuthClient &client)
{
    AuthorizationReading reading;
    reading.problem = problemOf(query, client);
    if (!reading.problem.isEmpty())
        return reading;
    reading.request = {formValue(query, QStringLiteral("redirect_uri")),
                       formValue(query, QStringLiteral("state")),
                       formValue(query, QStringLiteral("code_challenge"))};
    reading.error = errorOf(query, reading.request);
    return reading;
}

AuthorizationForms::AuthorizationForms(QByteArray key, Clock clock)
    : m_key(std::move(key))
    , m_clock(std::move(clock))
{
}

QString AuthorizationForms::seal(const AuthorizationRequest &request) const
{
    const qint64 expires = (m_clock() + lifetime).time_since_epoch().count();
    const QJsonArray content{request.redirectUri, request.state, request.codeChallenge,
                             QString::number(expires)};
    const QByteArray payload = base64Url(QJsonDocument(content).toJson(QJsonDocument::Compact));
    return QString::fromLatin1(payload + '.' + signature(payload));
}

std::optional<AuthorizationRequest> AuthorizationForms::open(const QString &sealed) const
{
    const QList<QByteArray> parts = sealed.toUtf8().split('.');
    if (parts.size() != 2 || !equalInConstantTime(signature(parts[0]), parts[1]))
        return std::nullopt;
    const QJsonArray content =
        QJsonDocument::fromJson(QByteArray::fromBase64(parts[0], QByteArray::Base64UrlEncoding)).array();
    if (content.at(3).toString().toLongLong() <= m_clock().time_since_epoch().count())
        return std::nullopt;
    return AuthorizationRequest{content.at(0).toString(), content.at(1).toString(), content.at(2).toString()};
}

QByteArray AuthorizationForms::signature(const QByteArray &payload) const
{
    return base64Url(QMessageAuthenticationCode::hash(payload, m_key, QCryptographicHash::Sha256));
}

} // namespace Cloud
