// SPDX-License-Identifier: GPL-3.0-or-later
#include "LocalCloud/ServiceFixture.h"

#include <QFile>
#include <QSqlQuery>

using namespace Cloud;

namespace {

class SecureToken : public ServiceFixture
{
protected:
    QString refusalOf(const Request &request)
    {
        const Response response = service->handle(request);
        EXPECT_EQ(response.status, 400);
        EXPECT_EQ(errorOf(response).value(u"code").toInt(), 400);
        return errorOf(response).value(u"message").toString();
    }

    QByteArray refreshed(const QByteArray &refreshToken)
    {
        return answer(refreshRequest(refreshToken)).value(u"refresh_token").toString().toLatin1();
    }
};

} // namespace

TEST_F(SecureToken, refreshAnswersInSnakeCaseWithTheLifetimeAsText)
{
    now += std::chrono::hours(2);
    const QJsonObject reply = answer(refreshRequest(session.refreshToken));
    EXPECT_EQ(reply.value(u"expires_in"), QJsonValue(QStringLiteral("3600")));
    EXPECT_EQ(reply.value(u"token_type").toString(), QStringLiteral("Bearer"));
    EXPECT_EQ(reply.value(u"user_id").toString(), QStringLiteral("local-user"));
    EXPECT_EQ(reply.value(u"project_id").toString(), QStringLiteral("demo"));
    EXPECT_EQ(reply.value(u"access_token"), reply.value(u"id_token"));
    session.idToken = reply.value(u"id_token").toString().toLatin1();
    EXPECT_EQ(status(get(libraryPath("prompts"))), 200);
}

TEST_F(SecureToken, refreshTokenIsReplacedByEachRefresh)
{
    const QByteArray second = refreshed(session.refreshToken);
    const QByteArray third = refreshed(second);
    EXPECT_NE(second, session.refreshToken);
    EXPECT_NE(third, second);
    EXPECT_FALSE(third.isEmpty());
}

TEST_F(SecureToken, refreshesThatCrossEachOtherBothSucceed)
{
    const QByteArray first = refreshed(session.refreshToken);
    now += std::chrono::seconds(10);
    const QByteArray second = refreshed(session.refreshToken);
    EXPECT_NE(first, second);
    EXPECT_FALSE(refreshed(first).isEmpty());
    EXPECT_FALSE(refreshed(second).isEmpty());
}

TEST_F(SecureToken, reuseOfAnOldTokenIsRefusedAndEndsTheSession)
{
    const QByteArray second = refreshed(session.refreshToken);
    now += std::chrono::seconds(11);
    EXPECT_EQ(refusalOf(refreshRequest(session.refreshToken)), QStringLiteral("TOKEN_EXPIRED"));
    EXPECT_EQ(refusalOf(refreshRequest(second)), QStringLiteral("INVALID_REFRESH_TOKEN"));
}

TEST_F(SecureToken, anotherLocalSessionReplacesTheFormerOne)
{
    const QByteArray former = session.refreshToken;
    const Service::Session next = service->issueLocalSession();
    EXPECT_EQ(refusalOf(refreshRequest(former)), QStringLiteral("INVALID_REFRESH_TOKEN"));
    EXPECT_FALSE(refreshed(next.refreshToken).isEmpty());
}

TEST_F(SecureToken, refreshSurvivesARestart)
{
    const QByteArray token = session.refreshToken;
    service.reset();
    service = std::make_unique<Service>(demoSite(), databasePath(), signingKey, [this] { return now; });
    EXPECT_FALSE(refreshed(token).isEmpty());
}

TEST_F(SecureToken, badRequestsAreRefusedInTheDocumentedShape)
{
    Request request = refreshRequest("unknown");
    EXPECT_EQ(refusalOf(request), QStringLiteral("INVALID_REFRESH_TOKEN"));

    request = refreshRequest(session.idToken);
    EXPECT_EQ(refusalOf(request), QStringLiteral("INVALID_REFRESH_TOKEN"));

    request = refreshRequest("");
    EXPECT_EQ(refusalOf(request), QStringLiteral("MISSING_REFRESH_TOKEN"));

    request.body = "grant_type=password&refresh_token=" + session.refreshToken;
    EXPECT_EQ(refusalOf(request), QStringLiteral("INVALID_GRANT_TYPE"));

    request.body = "";
    EXPECT_EQ(refusalOf(request), QStringLiteral("INVALID_GRANT_TYPE"));

    for (const QByteArray query : {"", "key=", "key=wrong", "key=the-key2", "other=the-key"}) {
        request = refreshRequest(session.refreshToken);
        request.query = query;
        EXPECT_EQ(refusalOf(request), QStringLiteral("API key not valid. Please pass a valid API key."))
            << query.constData();
    }
    EXPECT_FALSE(refreshed(session.refreshToken).isEmpty()); // none of these used it up
}

TEST_F(SecureToken, emulatorAddressIsServedToo)
{
    Request request = refreshRequest(session.refreshToken);
    request.path = "/securetoken.googleapis.com/v1/token";
    EXPECT_EQ(status(request), 200);
}

TEST_F(SecureToken, formValuesAreDecoded)
{
    Request request = refreshRequest(session.refreshToken);
    request.query = "key=the%2Dkey";
    request.body =
        "refresh_token=" + session.refreshToken.toPercentEncoding() + "&grant_type=refresh%5Ftoken";
    EXPECT_EQ(status(request), 200);
}

TEST_F(SecureToken, onlyHashesOfRefreshTokensAreStored)
{
    const QByteArray token = session.refreshToken;
    service.reset(); // writes the log back into the database
    QFile file(databasePath());
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    EXPECT_FALSE(file.readAll().contains(token));
}
