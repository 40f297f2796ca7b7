// SPDX-License-Identifier: GPL-3.0-or-later
#include "LocalCloud/ServiceFixture.h"

using namespace Cloud;

ServiceFixture::ServiceFixture()
{
    restart();
}

Site ServiceFixture::demoSite()
{
    return {.port = port,
            .projectID = QStringLiteral("demo"),
            .libraryAppID = QStringLiteral("brevix-app"),
            .apiKey = QStringLiteral("the-key"),
            .clientID = QStringLiteral("the-client"),
            .redirectScheme = QStringLiteral("app.brevix.test")};
}

void ServiceFixture::restart()
{
    service.reset();
    service = std::make_unique<Service>(demoSite(), databasePath(), signingKey, [this] { return now; });
    session = service->issueLocalSession();
}

Request ServiceFixture::get(const QByteArray &path, const QByteArray &query) const
{
    Request request = getWithoutToken(path, query);
    request.headers.emplaceBack("authorization", "Bearer " + session.idToken);
    return request;
}

Request ServiceFixture::getWithoutToken(const QByteArray &path, const QByteArray &query) const
{
    Request request;
    request.path = path;
    request.query = query;
    request.headers.emplaceBack("host", "127.0.0.1:4711");
    return request;
}

Request ServiceFixture::formPost(const QByteArray &path, const QByteArray &body) const
{
    Request request = getWithoutToken(path);
    request.method = "POST";
    request.headers.emplaceBack("content-type", "application/x-www-form-urlencoded");
    request.body = body;
    return request;
}

Request ServiceFixture::refreshRequest(const QByteArray &refreshToken) const
{
    Request request = formPost("/v1/token", "grant_type=refresh_token&refresh_token=" + refreshToken);
    request.query = "key=the-key";
    return request;
}

QByteArray ServiceFixture::documentsPath(const QByteArray &path)
{
    return "/v1/projects/demo/databases/(default)/documents/" + path;
}

QByteArray ServiceFixture::libraryPath(const QByteArray &collection)
{
    return documentsPath("artifacts/brevix-app/users/local-user/" + collection);
}

QJsonObject ServiceFixture::answer(const Request &request)
{
    const Response response = service->handle(request);
    EXPECT_EQ(response.status, 200) << response.body.constData();
    return jsonOf(response);
}

int ServiceFixture::status(const Request &request)
{
    return service->handle(request).status;
}

QByteArray ServiceFixture::tokenOf(const QString &uid) const
{
    const IdTokens tokens(signingKey, QStringLiteral("demo"), [this] { return now; });
    return tokens.issue({uid, QStringLiteral("somebody@example.org"), QStringLiteral("Somebody")});
}

void ServiceFixture::store(const QString &collection, const QString &id, const QJsonObject &fields)
{
    Database database(databasePath());
    ASSERT_TRUE(database.open());
    Documents(database).put(QStringLiteral("artifacts/brevix-app/users/local-user/") + collection, id, fields,
                            now);
}

QJsonObject errorOf(const Response &response)
{
    return jsonOf(response).value(u"error").toObject();
}

QJsonObject jsonOf(const Response &response)
{
    return QJsonDocument::fromJson(response.body).object();
}
