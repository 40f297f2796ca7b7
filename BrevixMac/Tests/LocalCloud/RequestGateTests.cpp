// SPDX-License-Identifier: GPL-3.0-or-later
#include "LocalCloud/ServiceFixture.h"

using namespace Cloud;

namespace {

class RequestGateTest : public ServiceFixture
{
protected:
    /// The status for a library request with these values of Host and Origin.
    int statusFor(const QList<QByteArray> &hosts, const QList<QByteArray> &origins = {})
    {
        Request request = get(libraryPath("prompts"));
        request.headers.removeIf([](const auto &header) { return header.first == "host"; });
        for (const QByteArray &host : hosts)
            request.headers.emplaceBack("host", host);
        for (const QByteArray &origin : origins)
            request.headers.emplaceBack("origin", origin);
        return status(request);
    }
};

} // namespace

TEST_F(RequestGateTest, onlyLoopbackNamesWithTheServersPortAreServed)
{
    for (const QByteArray host : {"127.0.0.1:4711", "localhost:4711", "LocalHost:4711", "[::1]:4711"})
        EXPECT_EQ(statusFor({host}), 200) << host.constData();
    for (const QByteArray host :
         {"evil.example:4711", "127.0.0.1", "127.0.0.1:80", "127.0.0.1.evil.example:4711", "evil.example", "",
          "localhost:4711@evil.example"})
        EXPECT_EQ(statusFor({host}), 403) << host.constData();
}

TEST_F(RequestGateTest, exactlyOneHostIsNeeded)
{
    EXPECT_EQ(statusFor({}), 400);
    EXPECT_EQ(statusFor({"127.0.0.1:4711", "evil.example"}), 400);
}

TEST_F(RequestGateTest, pagesOfOtherOriginsAreRefused)
{
    const QByteArray host = "127.0.0.1:4711";
    EXPECT_EQ(statusFor({host}, {"http://127.0.0.1:4711"}), 200);
    EXPECT_EQ(statusFor({host}, {"http://localhost:4711"}), 200);
    for (const QByteArray origin : {"https://evil.example", "http://127.0.0.1:8080", "https://127.0.0.1:4711",
                                    "null", "http://", "", "file://"})
        EXPECT_EQ(statusFor({host}, {origin}), 403) << origin.constData();
    EXPECT_EQ(statusFor({host}, {"http://127.0.0.1:4711", "https://evil.example"}), 403);
}

TEST_F(RequestGateTest, noAnswerInvitesOtherOrigins)
{
    Request preflight = getWithoutToken(libraryPath("prompts"));
    preflight.method = "OPTIONS";
    preflight.headers.emplaceBack("origin", "https://evil.example");
    const Response response = service->handle(preflight);
    EXPECT_EQ(response.status, 403);
    for (const auto &[name, value] : response.headers)
        EXPECT_FALSE(name.toLower().startsWith("access-control")) << name.constData();
}
