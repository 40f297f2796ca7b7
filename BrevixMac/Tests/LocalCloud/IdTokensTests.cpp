// SPDX-License-Identifier: GPL-3.0-or-later
#include "LocalCloud/Accounts.h"
#include "LocalCloud/IdTokens.h"
#include "LocalCloud/SecureRandom.h"

#include <QJsonDocument>
#include <QJsonObject>
#include <QMessageAuthenticationCode>

#include <gtest/gtest.h>

using namespace Cloud;

namespace {

class IdTokensTest : public testing::Test
{
protected:
    static QJsonObject part(const QByteArray &token, int index)
    {
        return QJsonDocument::fromJson(
                   QByteArray::fromBase64(token.split('.').at(index), QByteArray::Base64UrlEncoding))
            .object();
    }

    /// A token with a chosen header and claims, correctly signed with the server's own key.
    QByteArray forged(const QByteArray &header, const QByteArray &claims) const
    {
        const QByteArray signedPart = base64Url(header) + '.' + base64Url(claims);
        return signedPart + '.' +
               base64Url(QMessageAuthenticationCode::hash(signedPart, key, QCryptographicHash::Sha256));
    }

    const QByteArray key = QByteArray(32, 'k');
    Timestamp now = Timestamp(std::chrono::seconds(1'800'000'000));
    IdTokens tokens{key, QStringLiteral("demo"), [this] { return now; }};
    const Account account{QStringLiteral("u1"), QStringLiteral("u1@example.org"), QStringLiteral("U One")};
};

} // namespace

TEST_F(IdTokensTest, tokenHasThreePartsAndTheUsualClaims)
{
    const QByteArray token = tokens.issue(account);
    EXPECT_EQ(token.count('.'), 2);
    EXPECT_EQ(part(token, 0).value(u"alg").toString(), QStringLiteral("HS256"));
    const QJsonObject claims = part(token, 1);
    EXPECT_EQ(claims.value(u"sub").toString(), QStringLiteral("u1"));
    EXPECT_EQ(claims.value(u"user_id").toString(), QStringLiteral("u1"));
    EXPECT_EQ(claims.value(u"aud").toString(), QStringLiteral("demo"));
    EXPECT_EQ(claims.value(u"iat").toInteger(), 1'800'000'000);
    EXPECT_EQ(claims.value(u"exp").toInteger(), 1'800'003'600);
    EXPECT_EQ(tokens.userOf(token), QStringLiteral("u1"));
}

TEST_F(IdTokensTest, changedTokensAreRefused)
{
    const QByteArray token = tokens.issue(account);
    for (qsizetype i = 0; i < token.size(); ++i) {
        QByteArray changed = token;
        changed[i] = changed[i] == 'A' ? 'B' : 'A';
        EXPECT_EQ(tokens.userOf(changed), std::nullopt) << "byte " << i;
    }
}

TEST_F(IdTokensTest, otherAlgorithmsAreRefusedEvenWithAGoodSignature)
{
    const QByteArray claims = R"({"aud":"demo","sub":"u1","exp":1900000000})";
    EXPECT_EQ(tokens.userOf(forged(R"({"alg":"HS256","typ":"JWT"})", claims)), QStringLiteral("u1"));
    for (const QByteArray header :
         {R"({"alg":"none","typ":"JWT"})", R"({"alg":"HS512","typ":"JWT"})", "{}", ""})
        EXPECT_EQ(tokens.userOf(forged(header, claims)), std::nullopt) << header.constData();
    EXPECT_EQ(tokens.userOf(base64Url(R"({"alg":"none"})") + '.' + base64Url(claims) + '.'), std::nullopt);
}

TEST_F(IdTokensTest, claimsMustFit)
{
    const QByteArray header = R"({"alg":"HS256","typ":"JWT"})";
    for (const QByteArray claims :
         {R"({"aud":"other","sub":"u1","exp":1900000000})", R"({"aud":"demo","sub":"","exp":1900000000})",
          R"({"aud":"demo","exp":1900000000})", R"({"aud":"demo","sub":"u1"})",
          R"({"aud":"demo","sub":"u1","exp":1800000000})", R"({"aud":"demo","sub":"u1","exp":"1900000000"})",
          "[]", "nonsense", ""})
        EXPECT_EQ(tokens.userOf(forged(header, claims)), std::nullopt) << claims.constData();
}

TEST_F(IdTokensTest, otherKeysAndShapesAreRefused)
{
    const IdTokens others(QByteArray(32, 'x'), QStringLiteral("demo"), [this] { return now; });
    EXPECT_EQ(tokens.userOf(others.issue(account)), std::nullopt);
    for (const QByteArray text : {"", ".", "..", "...", "a.b", "a.b.c.d"})
        EXPECT_EQ(tokens.userOf(text), std::nullopt) << text.constData();
}

TEST_F(IdTokensTest, tokenExpiresAfterAnHour)
{
    const QByteArray token = tokens.issue(account);
    now += std::chrono::seconds(3599);
    EXPECT_TRUE(tokens.userOf(token));
    now += std::chrono::seconds(1);
    EXPECT_FALSE(tokens.userOf(token));
}

TEST(SecureRandom, bytesDifferEachTime)
{
    EXPECT_EQ(secureRandomBytes(32).size(), 32);
    EXPECT_NE(secureRandomBytes(32), secureRandomBytes(32));
}

TEST(SecureRandom, constantTimeComparisonComparesEverything)
{
    EXPECT_TRUE(equalInConstantTime("abc", "abc"));
    EXPECT_TRUE(equalInConstantTime("", ""));
    EXPECT_FALSE(equalInConstantTime("abc", "abd"));
    EXPECT_FALSE(equalInConstantTime("xbc", "abc"));
    EXPECT_FALSE(equalInConstantTime("abc", "ab"));
}
