// SPDX-License-Identifier: GPL-3.0-or-later
#include "GoogleAuthorization.h"

#include "AuthError.h"
#include "Samples.h"

#include <QSet>
#include <QUrlQuery>

#include <gtest/gtest.h>

#include <limits>

using namespace GoogleAuthorization;
using namespace Qt::StringLiterals;

namespace {

const QString alphabet = u"abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789-._~"_s;

FirebaseRuntimeConfiguration firebase()
{
    FirebaseRuntimeConfiguration firebase = AppConfiguration::fallback().firebase;
    firebase.clientID = u"12-ab.apps.example"_s;
    firebase.reversedClientID = u"example.apps.12-ab"_s;
    return firebase;
}

const Attempt attempt{
    .state = u"the-state"_s,
    .codeVerifier = u"dBjftJeZ4CVP-mJ92K9TbmIQwMRDKf2xZnLL2e6pL3Y"_s,
    .redirectURI = u"example.apps.12-ab:/oauthredirect"_s,
};

/// The code, or the text of the error.
QString codeOrError(const QString &callback)
{
    try {
        return authorizationCode(QUrl(callback), u"s"_s);
    } catch (const AuthError &error) {
        return u"error: "_s + error.description();
    }
}

} // namespace

TEST(GoogleAuthorization, randomTextUsesTheWholeAlphabetAndRepeatsNothing)
{
    QSet<QChar> seen;
    QSet<QString> texts;
    for (int i = 0; i < 200; ++i) {
        const QString text = randomURLSafeString(64);
        ASSERT_EQ(text.size(), 64);
        for (const QChar character : text)
            seen.insert(character);
        texts.insert(text);
    }
    EXPECT_EQ(seen.size(), 66);
    EXPECT_EQ(texts.size(), 200);
    for (const QChar character : std::as_const(seen))
        EXPECT_TRUE(alphabet.contains(character));
    EXPECT_EQ(randomURLSafeString(0), QString());
}

TEST(GoogleAuthorization, drawsThatWouldFavourSomeLettersAreRejected)
{
    // 2^64 mod 66 is 16: the last 16 draws would make the first 16 letters likelier.
    constexpr quint64 largest = std::numeric_limits<quint64>::max();
    QList<quint64> draws{largest, largest - 15, 65, largest - 16, 0, 66};
    const QString text = randomURLSafeString(4, [&] { return draws.takeFirst(); });
    EXPECT_EQ(text, u"~~aa"_s);
    EXPECT_TRUE(draws.isEmpty());
}

TEST(GoogleAuthorization, theChallengeIsTheUnpaddedUrlSafeHash)
{
    EXPECT_EQ(codeChallenge(attempt.codeVerifier), u"keIo7Q7X0Zun5iFgsVdiPk5I7wGHjFs53mTcfrxxRqA"_s);
    for (int i = 0; i < 50; ++i) {
        const QString challenge = codeChallenge(QString::number(i));
        EXPECT_EQ(challenge.size(), 43);
        EXPECT_FALSE(challenge.contains(u'+') || challenge.contains(u'/') || challenge.contains(u'='));
    }
}

TEST(GoogleAuthorization, anAttemptHasFreshSecretsOfTheirLengths)
{
    const Attempt first = Attempt::make(firebase());
    const Attempt second = Attempt::make(firebase());
    EXPECT_EQ(first.state.size(), 32);
    EXPECT_EQ(first.codeVerifier.size(), 64);
    EXPECT_NE(first.state, second.state);
    EXPECT_NE(first.codeVerifier, second.codeVerifier);
    EXPECT_EQ(first.redirectURI, u"example.apps.12-ab:/oauthredirect"_s);
}

TEST(GoogleAuthorization, theAuthorizationPageGetsItsItemsInOrder)
{
    const CloudEndpoints endpoints = CloudEndpoints::local(QUrl(u"http://127.0.0.1:4000"_s));
    const QUrl url = attempt.authorizationURL(endpoints, firebase()).value_or(QUrl());
    EXPECT_EQ(url.adjusted(QUrl::RemoveQuery), QUrl(u"http://127.0.0.1:4000/o/oauth2/v2/auth"_s));
    QList<QPair<QString, QString>> items = QUrlQuery(url).queryItems(QUrl::FullyDecoded);
    const QList<QPair<QString, QString>> expected{
        {u"client_id"_s, u"12-ab.apps.example"_s},
        {u"redirect_uri"_s, u"example.apps.12-ab:/oauthredirect"_s},
        {u"response_type"_s, u"code"_s},
        {u"scope"_s, u"openid email profile"_s},
        {u"state"_s, u"the-state"_s},
        {u"code_challenge"_s, u"keIo7Q7X0Zun5iFgsVdiPk5I7wGHjFs53mTcfrxxRqA"_s},
        {u"code_challenge_method"_s, u"S256"_s},
        {u"include_granted_scopes"_s, u"true"_s},
        {u"prompt"_s, u"select_account"_s},
    };
    EXPECT_EQ(items, expected);
    EXPECT_TRUE(url.toString(QUrl::FullyEncoded).contains(u"scope=openid%20email%20profile&"_s));
    EXPECT_EQ(attempt.authorizationURL(CloudEndpoints::local(QUrl()), firebase()), std::nullopt);
}

TEST(GoogleAuthorization, awkwardClientIdentifiersAreEncoded)
{
    FirebaseRuntimeConfiguration odd = firebase();
    odd.clientID = u"a&b=c+d%2f#é"_s;
    const QUrl url = *attempt.authorizationURL(CloudEndpoints::local(QUrl(u"http://h"_s)), odd);
    EXPECT_EQ(QUrlQuery(url).queryItems(QUrl::FullyDecoded).first().second, odd.clientID);
    EXPECT_FALSE(url.hasFragment());
    EXPECT_TRUE(url.query(QUrl::FullyEncoded).startsWith(u"client_id=a%26b%3Dc%2Bd%252f%23%C3%A9&"_s));
}

TEST(GoogleAuthorization, callbacksAreCheckedInTheirOrder)
{
    const QString mismatch =
        u"error: Brevix rejected the Google sign-in callback because the request state didn't match."_s;
    const QString noCode = u"error: Google sign-in didn't return an authorization code."_s;
    const std::pair<QString, QString> rows[] = {
        {u"code=c&state=s"_s, u"c"_s},
        {u"state=s&scope=email%20profile&code=4%2F0Ab%3D"_s, u"4/0Ab="_s},
        {u"code=a+b&state=s"_s, u"a+b"_s}, // in an address a plus is a plus
        {u"error=access_denied&error_description=You%20said%20no&state=s&code=c"_s, u"error: You said no"_s},
        {u"error=access_denied&state=s&code=c"_s, u"error: access_denied"_s},
        {u"error=access_denied"_s, u"error: access_denied"_s},
        {u"error_description=why"_s, u"error: why"_s},
        {u"error&code=c&state=s"_s, u"c"_s}, // no value, no item
        {u"code=c"_s, mismatch},
        {u"code=c&state"_s, mismatch},
        {u"code=c&state="_s, mismatch},
        {u"code=c&state=S"_s, mismatch},
        {u"code=c&state=s%20"_s, mismatch},
        {u""_s, mismatch},
        {u"code=&state=s"_s, noCode},
        {u"state=s"_s, noCode},
        {u"code&state=s"_s, noCode},
        {u"Code=c&state=s"_s, noCode},
        // Of a repeated item the first counts.
        {u"code=one&code=two&state=s"_s, u"one"_s},
        {u"code=c&state=s&state=t"_s, u"c"_s},
        {u"code=c&state=t&state=s"_s, mismatch},
        {u"code=&code=two&state=s"_s, noCode},
        {u"st%61te=s&c%6Fde=%63"_s, u"c"_s},
        {u"&&code=c&&state=s&"_s, u"c"_s},
        {u"code=c=d&state=s"_s, u"c=d"_s},
    };
    for (const auto &[query, outcome] : rows) {
        EXPECT_EQ(codeOrError(u"example.apps.12-ab:/oauthredirect?"_s + query), outcome)
            << query.toStdString();
    }
    EXPECT_EQ(codeOrError(u"example.apps.12-ab:/oauthredirect"_s), mismatch);
    EXPECT_EQ(codeOrError(QString()), u"error: Google sign-in returned an invalid callback URL."_s);
}

TEST(GoogleAuthorization, onlyACallbackWithItsStateAnswersAnAttempt)
{
    const std::pair<QString, bool> rows[] = {
        {u"example.apps.12-ab:/oauthredirect?code=c&state=the-state"_s, true},
        {u"example.apps.12-ab:/oauthredirect?error=access_denied&state=the-state"_s, true},
        {u"example.apps.12-ab:/oauthredirect?error=access_denied"_s, false},
        {u"example.apps.12-ab:/oauthredirect?code=c&state=other"_s, false},
        {u"example.apps.12-ab:/elsewhere?code=c&state=the-state"_s, false},
        {u"example.apps.12-ab:/oauthredirect"_s, false},
        {u""_s, false},
    };
    for (const auto &[callback, isAnswer] : rows)
        EXPECT_EQ(attempt.isAnsweredBy(QUrl(callback)), isAnswer) << callback.toStdString();
}

TEST(GoogleAuthorization, formsAreSortedAndCarryReservedCharactersEncoded)
{
    EXPECT_EQ(formEncodedQuery({{u"b"_s, u"2"_s}, {u"a"_s, u"1"_s}, {u"B"_s, u"3"_s}}), "B=3&a=1&b=2");
    EXPECT_EQ(formEncodedQuery({{u"v"_s, u"a&b=c+d?e f%é\n"_s}}), "v=a%26b%3Dc%2Bd%3Fe%20f%25%C3%A9%0A");
    EXPECT_EQ(formEncodedQuery({{u"v"_s, u"-._~!$'()*,;:@/"_s}}), "v=-._~!$'()*,;:@/");
    EXPECT_EQ(formEncodedQuery({{u"a&"_s, u""_s}}), "a%26=");
    EXPECT_EQ(formEncodedQuery({}), "");
}

TEST(GoogleAuthorization, theExchangeSendsTheVerifierAndNoSecret)
{
    EXPECT_EQ(attempt.tokenExchangeBody(u"4/0A b"_s, u"12-ab.apps.example"_s),
              "client_id=12-ab.apps.example&code=4/0A%20b&"
              "code_verifier=dBjftJeZ4CVP-mJ92K9TbmIQwMRDKf2xZnLL2e6pL3Y&grant_type=authorization_code&"
              "redirect_uri=example.apps.12-ab:/oauthredirect");
}
