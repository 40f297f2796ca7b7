// SPDX-License-Identifier: GPL-3.0-or-later
#include "PromptOptimizationService.h"

#include "LibraryFixture.h"

#include <QJsonDocument>
#include <QJsonObject>
#include <QProcessEnvironment>

namespace {

using Kind = PromptOptimizationError::Kind;

class PromptOptimizationServiceTest : public LibraryFixture
{
protected:
    QString optimize(const QString &prompt) { return await(service->optimize(prompt)); }
    void reply(const FaultyServer::Reply &reply) { server.reply("optimizePrompt", reply); }

    std::unique_ptr<PromptOptimizationService> service =
        std::make_unique<PromptOptimizationService>(configuration, endpoints, auth, http);
};

} // namespace

TEST_F(PromptOptimizationServiceTest, thePromptIsSentToTheProjectsFunction)
{
    reply({.body = R"({"result": {"text": "  Better.\n"}})"});
    EXPECT_EQ(optimize(u" \"Do it\" {{now}}\n"_s), u"Better."_s);
    ASSERT_EQ(server.requests().size(), 1);
    const FaultyServer::Request request = server.requests().first();
    EXPECT_EQ(request.method, "POST");
    EXPECT_EQ(request.target,
              '/' + configuration.firebase.projectID.toUtf8() + "/us-central1/optimizePrompt");
    EXPECT_TRUE(request.head.contains("\r\nAuthorization: Bearer token\r\n"));
    EXPECT_TRUE(request.head.contains("\r\nContent-Type: application/json\r\n"));
    const QJsonObject body = QJsonDocument::fromJson(request.body).object();
    EXPECT_EQ(body, QJsonDocument::fromJson(R"({"data": {"prompt": "\"Do it\" {{now}}"}})").object());
}

TEST_F(PromptOptimizationServiceTest, anEmptyPromptAsksNobody)
{
    for (const QString &prompt : {QString(), u"   "_s, u"\n\t \u00a0\u2028\r\n"_s})
        EXPECT_EQ(problemOf(service->optimize(prompt)), u"Write prompt text before optimizing."_s);
    EXPECT_TRUE(server.requests().isEmpty());
}

TEST_F(PromptOptimizationServiceTest, theResultIsPreferredToTheData)
{
    const std::pair<const char *, QString> rows[] = {
        {R"({"result": {"text": "a"}, "data": {"text": "b"}})", u"a"_s},
        {R"({"data": {"text": "b"}})", u"b"_s},
        {R"({"result": null, "data": {"text": "b"}})", u"b"_s},
        {R"({"result": "a", "data": {"text": "b"}})", u"b"_s},
        {R"({"result": {"text": " é 🎉 \n line "}})", u"é 🎉 \n line"_s},
    };
    for (const auto &[body, text] : rows) {
        reply({.body = body});
        EXPECT_EQ(optimize(u"x"_s), text) << body;
    }
}

TEST_F(PromptOptimizationServiceTest, everyFailureIsNamed)
{
    const QString missing = u"AI optimization did not return prompt text."_s;
    const QString undecodable = u"Brevix couldn't decode the AI optimization response."_s;
    const QString host = server.origin().host();
    const std::pair<FaultyServer::Reply, QString> rows[] = {
        {{.body = R"({"result": {"text": "  \n"}, "data": {"text": "b"}})"}, missing},
        {{.body = R"({"result": {"text": 5}})"}, missing},
        {{.body = R"({"result": {}})"}, missing},
        {{.body = R"({"result": []})"}, missing},
        {{.body = "{}"}, missing},
        {{.body = "[]"}, undecodable},
        {{.body = ""}, undecodable},
        {{.body = "<html>", .headers = "Content-Type: text/html\r\n"}, undecodable},
        {{.body = R"({"result": {"text": "cut)"}, undecodable},
        {{.status = 401, .body = R"({"error": {"status": "UNAUTHENTICATED"}})"}, u"UNAUTHENTICATED"_s},
        {{.status = 429, .body = R"({"error": {"message": "Too many.", "status": "RESOURCE_EXHAUSTED"}})"},
         u"Too many."_s},
        {{.status = 500, .body = R"({"error": {"message": 5, "status": "INTERNAL"}})"}, u"INTERNAL"_s},
        {{.status = 500, .body = R"({"error": {}})"}, u"AI optimization failed."_s},
        {{.status = 500, .body = R"({"error": {"message": null, "status": 7}})"},
         u"AI optimization failed."_s},
        {{.status = 500, .body = R"({"error": "text"})"}, u"{\"error\": \"text\"}"_s},
        {{.status = 503, .body = " <html>\n"}, u" <html>\n"_s},
        {{.status = 500, .body = ""}, u"AI optimization returned HTTP 500."_s},
        {{.status = 502, .body = ""}, u"AI optimization returned HTTP 502."_s},
        {{.status = 502, .body = "\xff"}, u"AI optimization returned HTTP 502."_s},
        {{.status = 302, .body = "", .headers = "Location: /elsewhere\r\n"},
         u"AI optimization returned HTTP 302."_s},
        {{.fault = Fault::close}, u"The server %1 closed the connection without a valid answer."_s.arg(host)},
        {{.body = R"({"result": {"text": "a"}})", .fault = Fault::truncate},
         u"The connection to %1 was lost before the answer was complete."_s.arg(host)},
        {{.fault = Fault::huge}, u"The answer of %1 is too large."_s.arg(host)},
    };
    for (const auto &[answer, text] : rows) {
        reply(answer);
        EXPECT_EQ(problemOf(service->optimize(u"x"_s)), text);
    }
    EXPECT_EQ(server.count("optimizePrompt"), qsizetype(std::size(rows))) << "nothing is sent twice";
}

TEST_F(PromptOptimizationServiceTest, withoutASessionNothingIsSent)
{
    defaults.remove(AuthService::storageKey);
    EXPECT_EQ(problemOf(service->optimize(u"x"_s)), u"You're not signed in."_s);
    EXPECT_TRUE(server.requests().isEmpty());
}

TEST_F(PromptOptimizationServiceTest, aProjectThatMakesNoAddressIsNamed)
{
    for (const QString &projectID : {u"no project"_s, u"a/b@evil.example"_s}) {
        configuration.firebase.projectID = projectID;
        service = std::make_unique<PromptOptimizationService>(
            configuration, CloudEndpoints::production(QProcessEnvironment()), auth, http);
        EXPECT_EQ(problemOf(service->optimize(u"x"_s)),
                  u"Brevix couldn't build the AI optimization request."_s);
    }
    EXPECT_TRUE(server.requests().isEmpty());
}

TEST_F(PromptOptimizationServiceTest, aRefusedTokenIsRefreshedForTheNextCall)
{
    reply({.body = R"({"result": {"text": "a"}})"});
    server.replyOnce("optimizePrompt", {.status = 401, .body = R"({"error": {"message": "Expired."}})"});
    server.reply("token", {.body = R"({"user_id": "u1", "id_token": "fresh", "refresh_token": "r2",
                                       "expires_in": "3600"})"});
    EXPECT_EQ(problemOf(service->optimize(u"x"_s)), u"Expired."_s);
    EXPECT_EQ(optimize(u"x"_s), u"a"_s);
    EXPECT_TRUE(server.requests().last().head.contains("\r\nAuthorization: Bearer fresh\r\n"));
}

TEST_F(PromptOptimizationServiceTest, callsAreIndependent)
{
    server.replyOnce("optimizePrompt",
                     {.body = R"({"result": {"text": "slow"}})", .delay = std::chrono::milliseconds(40)});
    QCoro::Task<QString> slow = service->optimize(u"1"_s);
    ASSERT_TRUE(waitUntil([this] { return server.count("optimizePrompt") == 1; }));
    reply({.body = R"({"result": {"text": "fast"}})"});
    EXPECT_EQ(optimize(u"2"_s), u"fast"_s);
    EXPECT_EQ(await(std::move(slow)), u"slow"_s);
}

TEST_F(PromptOptimizationServiceTest, itIsCancelledOrEndsWithTheService)
{
    reply({.fault = Fault::stall});
    for (const auto &end : {std::function<void()>([this] { service->cancel(); }),
                            std::function<void()>([this] { service.reset(); })}) {
        const qsizetype before = server.count("optimizePrompt");
        QCoro::Task<QString> text = service->optimize(u"x"_s);
        ASSERT_TRUE(waitUntil([&] { return server.count("optimizePrompt") > before; }));
        end();
        EXPECT_EQ(problemOf(std::move(text)), u"The request was cancelled."_s);
    }
}

TEST(PromptOptimizationError, everyKindHasItsText)
{
    const std::pair<Kind, QString> rows[] = {
        {Kind::apiError, u"message"_s},
        {Kind::emptyPrompt, u"Write prompt text before optimizing."_s},
        {Kind::invalidURL, u"Brevix couldn't build the AI optimization request."_s},
        {Kind::invalidResponse, u"Brevix received an invalid AI optimization response."_s},
        {Kind::invalidPayload, u"Brevix couldn't decode the AI optimization response."_s},
        {Kind::missingOptimizedText, u"AI optimization did not return prompt text."_s},
    };
    for (const auto &[kind, text] : rows) {
        const PromptOptimizationError error(kind, u"message"_s);
        EXPECT_EQ(error.description(), text);
        EXPECT_EQ(QString::fromUtf8(error.what()), text);
        EXPECT_EQ(error.kind(), kind);
    }
}
