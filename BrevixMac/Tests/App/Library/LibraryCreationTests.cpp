// SPDX-License-Identifier: GPL-3.0-or-later
#include "LibraryFixture.h"
#include "RefreshTimer.h"

#include <QJsonDocument>
#include <QJsonObject>

#include <functional>

namespace {

class LibraryCreationTest : public LibraryFixture
{
protected:
    struct Creation
    {
        const char *collection;
        std::function<QCoro::Task<QString>()> start; ///< gives what the user reads about it
    };

    QList<Creation> creations() const
    {
        return {{"categories", [this] { return problemIn(store->createCategory(u"N"_s, u"#112233"_s)); }},
                {"prompts", [this] { return problemIn(store->createPrompt(u"T"_s, u"X"_s, u"c"_s)); }},
                {"skills", [this] { return problemIn(store->createSkill(u"T"_s, u"X"_s, {})); }}};
    }

    /// The fields of the last document that was sent.
    QJsonObject sentFields() const
    {
        const QList<FaultyServer::Request> posts = requests("POST");
        const QJsonObject body = QJsonDocument::fromJson(posts.last().body).object();
        EXPECT_EQ(body.keys(), QStringList{u"fields"_s});
        return body.value(u"fields").toObject();
    }

    static QJsonObject json(const char *text) { return QJsonDocument::fromJson(text).object(); }
};

} // namespace

TEST_F(LibraryCreationTest, whileNobodyIsSignedInNothingIsSent)
{
    for (const Creation &creation : creations()) {
        EXPECT_EQ(await(creation.start()),
                  u"Sign in before creating or sharing prompts, skills, or categories."_s)
            << creation.collection;
    }
    EXPECT_TRUE(server.requests().isEmpty());
}

TEST_F(LibraryCreationTest, aCategoryIsSentWithItsColourAndItsMaker)
{
    bind();
    const PromptCategory category = await(store->createCategory(u"Work"_s, u"#8b5cf6"_s));
    EXPECT_EQ(category, (PromptCategory{u"new1"_s, u"Work"_s, u"#8b5cf6"_s, 0, now}));
    EXPECT_EQ(sentFields(), json(R"({"name": {"stringValue": "Work"}, "color": {"stringValue": "#8b5cf6"},
                                     "createdAt": {"timestampValue": "2024-05-01T09:00:00.000Z"},
                                     "createdBy": {"stringValue": "u1"}})"));
}

TEST_F(LibraryCreationTest, aPromptIsSentWithItsCategoryAndItsMaker)
{
    bind();
    now = utc(9, 30, 12).addMSecs(345);
    const PromptItem prompt = await(store->createPrompt(u"Mail"_s, u"Hi {{name}}"_s, u"c1"_s));
    EXPECT_EQ(prompt, (PromptItem{u"new1"_s, u"Mail"_s, u"Hi {{name}}"_s, u"c1"_s, 0, now}));
    EXPECT_EQ(sentFields(), json(R"({"title": {"stringValue": "Mail"}, "text": {"stringValue": "Hi {{name}}"},
                       "categoryId": {"stringValue": "c1"},
                       "createdAt": {"timestampValue": "2024-05-01T09:30:12.345Z"},
                       "createdBy": {"stringValue": "u1"}})"));
}

TEST_F(LibraryCreationTest, aSkillIsSentWithItsFileNameOnlyWhenItHasOne)
{
    bind();
    const SkillItem typed = await(store->createSkill(u"Review"_s, u"Look."_s, {}));
    EXPECT_EQ(typed, (SkillItem{u"new1"_s, u"Review"_s, u"Look."_s, {}, 0, now}));
    EXPECT_EQ(sentFields(), json(R"({"title": {"stringValue": "Review"}, "text": {"stringValue": "Look."},
                                     "createdAt": {"timestampValue": "2024-05-01T09:00:00.000Z"},
                                     "createdBy": {"stringValue": "u1"}})"));

    const SkillItem imported = await(store->createSkill(u"Plan"_s, u"Think."_s, u"plan.md"_s));
    EXPECT_EQ(imported.sourceFilename, u"plan.md"_s);
    EXPECT_EQ(sentFields().value(u"sourceFilename"), json(R"({"stringValue": "plan.md"})"));
}

TEST_F(LibraryCreationTest, theRequestGoesToTheUsersCollectionWithTheToken)
{
    for (const QString &userID : {u"u1"_s, u"a b%/ü🎉"_s}) {
        bind(userID);
        for (const Creation &creation : creations()) {
            EXPECT_EQ(await(creation.start()), u"(no problem)"_s);
            const FaultyServer::Request request = requests("POST").last();
            const QByteArray user = QUrl::toPercentEncoding(userID, "/");
            EXPECT_EQ(request.target, documentsRoot() + "/users/" + user + '/' + creation.collection);
            EXPECT_TRUE(request.head.contains("\r\nAuthorization: Bearer token\r\n")) << request.head.data();
            EXPECT_TRUE(request.head.contains("\r\nContent-Type: application/json\r\n"))
                << request.head.data();
        }
    }
}

TEST_F(LibraryCreationTest, theRecordIsShownInItsPlaceBeforeTheRefreshAnswers)
{
    server.prompts = {makePrompt(u"1"_s, u"Alpha"_s), makePrompt(u"2"_s, u"gamma"_s),
                      makePrompt(u"3"_s, u"Aardvark"_s, {}, {}, 1)};
    bind();
    QList<QStringList> shown;
    QObject::connect(store.get(), &LibraryStore::promptsChanged, store.get(),
                     [&] { shown.append(idsOf(store->prompts())); });
    QList<SyncState> states;
    QObject::connect(store.get(), &LibraryStore::syncStateChanged, store.get(),
                     [&] { states.append(store->syncState()); });
    now = utc(10);
    server.reply("categories", {.fault = Fault::stall});

    await(store->createPrompt(u"Beta"_s, u"X"_s, u"c"_s));

    const QStringList inPlace{u"1"_s, u"new1"_s, u"2"_s, u"3"_s};
    EXPECT_EQ(shown, QList<QStringList>{inPlace});
    EXPECT_EQ(states, QList<SyncState>{SyncState::synced(utc(10))});
    EXPECT_TRUE(waitUntil([this] { return server.count("categories") == 2; })) << "no refresh followed";
}

TEST_F(LibraryCreationTest, theRefreshReconcilesWithTheServer)
{
    bind();
    await(store->createSkill(u"Mine"_s, u"X"_s, {}));
    EXPECT_EQ(idsOf(store->skills()), QStringList{u"new1"_s});
    server.skills = {makeSkill(u"other"_s, u"Another's"_s)};
    EXPECT_TRUE(waitUntil([this] { return idsOf(store->skills()) == QStringList{u"other"_s}; }));
}

TEST_F(LibraryCreationTest, aRecordThatARefreshHasBroughtMeanwhileIsShownOnce)
{
    server.prompts = {makePrompt(u"p"_s, u"Old"_s)};
    bind();
    server.replyOnce("prompts", {.body = R"({"name": "x/p", "fields": {"title": {"stringValue": "New"}}})"});
    await(store->createPrompt(u"New"_s, u"X"_s, u"c"_s));
    EXPECT_EQ(store->prompts(), QList<PromptItem>{makePrompt(u"p"_s, u"New"_s)});
}

TEST_F(LibraryCreationTest, aRefreshInFlightDoesNotTakeTheRecordAwayAgain)
{
    bind();
    server.reply("skills", {.delay = std::chrono::milliseconds(60)});
    fireRefreshTimer(*store);
    ASSERT_TRUE(waitUntil([this] { return server.count("skills") == 2; }));
    server.reply("categories", {.fault = Fault::stall});
    await(store->createPrompt(u"New"_s, u"X"_s, u"c"_s));
    EXPECT_FALSE(waitUntil([this] { return store->prompts().isEmpty(); }, std::chrono::milliseconds(120)));
}

TEST_F(LibraryCreationTest, aLongTextAndOddCharactersArriveWhole)
{
    bind();
    const QString text = u"\"{{name}}\"\\ \t\r\n\u0001 é 中 🎉 \u202e"_s.repeated(50'000).left(1 << 20);
    const PromptItem prompt = await(store->createPrompt(u"\u00a0\"🎉\"\n"_s, text, u"a/b%20 ü"_s));
    EXPECT_EQ(prompt.text, text);
    EXPECT_EQ(prompt.title, u"\u00a0\"🎉\"\n"_s);
    EXPECT_EQ(prompt.categoryID, u"a/b%20 ü"_s);
    EXPECT_EQ(server.prompts.first().text, text);
}

TEST_F(LibraryCreationTest, everyFailureIsNamedAndLeavesTheShownLibraryAlone)
{
    server.categories = {makeCategory(u"c"_s, u"C"_s)};
    server.prompts = {makePrompt(u"p"_s, u"P"_s)};
    server.skills = {makeSkill(u"s"_s, u"S"_s)};
    const QString host = server.origin().host();
    const std::pair<FaultyServer::Reply, QString> rows[] = {
        {{.status = 403, .body = R"({"error": {"message": "PERMISSION_DENIED"}})"}, u"PERMISSION_DENIED"_s},
        {{.status = 401, .body = R"({"error": {"code": 401, "message": "Unauthorized."}})"},
         u"Unauthorized."_s},
        {{.status = 429, .body = R"({"error": {"status": "RESOURCE_EXHAUSTED"}})"},
         u"{\"error\": {\"status\": \"RESOURCE_EXHAUSTED\"}}"_s},
        {{.status = 500, .body = ""}, u"Firestore returned HTTP 500."_s},
        {{.status = 502, .body = ""}, u"Firestore returned HTTP 502."_s},
        {{.status = 503, .body = "\xff\xfe"}, u"Firestore returned HTTP 503."_s},
        {{.status = 503, .body = " <html>busy</html>\n", .headers = "Content-Type: text/html\r\n"},
         u" <html>busy</html>\n"_s},
        {{.status = 307, .body = "", .headers = "Location: /elsewhere\r\n"},
         u"Firestore returned HTTP 307."_s},
        {{.body = "[]"}, u"Brevix couldn't decode the Firestore response."_s},
        {{.body = "<html>", .headers = "Content-Type: text/html\r\n"},
         u"Brevix couldn't read the Firestore response: illegal value"_s},
        {{.body = ""}, u"Brevix couldn't read the Firestore response: illegal value"_s},
        {{.fault = Fault::close}, u"The server %1 closed the connection without a valid answer."_s.arg(host)},
        {{.body = R"({"name": "x/y", "fields": {}})", .fault = Fault::truncate},
         u"The connection to %1 was lost before the answer was complete."_s.arg(host)},
        {{.fault = Fault::huge}, u"The answer of %1 is too large."_s.arg(host)},
    };
    bind();
    const auto categories = store->categories();
    const auto prompts = store->prompts();
    const auto skills = store->skills();
    for (const Creation &creation : creations()) {
        for (const auto &[reply, text] : rows) {
            const SyncState before = store->syncState();
            server.replyOnce(creation.collection, reply);
            EXPECT_EQ(await(creation.start()), text) << creation.collection;
            EXPECT_EQ(store->categories(), categories);
            EXPECT_EQ(store->prompts(), prompts);
            EXPECT_EQ(store->skills(), skills);
            EXPECT_EQ(store->syncState(), before);
        }
    }
    EXPECT_EQ(requests("GET").size(), 3) << "a failed creation refreshes nothing";
    EXPECT_EQ(requests("POST").size() - server.count("token"), 3 * int(std::size(rows)))
        << "nothing is sent twice";
}

TEST_F(LibraryCreationTest, aRefusedTokenIsNamedAndTheNextTryMayWork)
{
    bind();
    server.replyOnce("prompts", {.status = 401, .body = R"({"error": {"message": "Token expired."}})"});
    EXPECT_EQ(problemOf(store->createPrompt(u"T"_s, u"X"_s, u"c"_s)), u"Token expired."_s);
    EXPECT_EQ(await(store->createPrompt(u"T"_s, u"X"_s, u"c"_s)).id, u"new1"_s);
}

TEST_F(LibraryCreationTest, anOldTokenIsRefreshedFirst)
{
    bind();
    storeSession(now.addSecs(119));
    server.reply("token", {.body = R"({"user_id": "u1", "id_token": "fresh", "refresh_token": "r2",
                                       "expires_in": "3600"})"});
    await(store->createPrompt(u"T"_s, u"X"_s, u"c"_s));
    EXPECT_TRUE(requests("POST").last().head.contains("Authorization: Bearer fresh\r\n"));
}

TEST_F(LibraryCreationTest, aTokenThatCannotBeHadIsNamed)
{
    bind();
    storeSession(now.addSecs(119));
    server.reply("token", {.status = 400, .body = R"({"error": {"message": "TOKEN_EXPIRED"}})"});
    for (const Creation &creation : creations())
        EXPECT_EQ(await(creation.start()), u"Your Brevix session expired. Please sign in again."_s);
    defaults.remove(AuthService::storageKey);
    EXPECT_EQ(await(creations().first().start()), u"You're not signed in."_s);
    EXPECT_TRUE(server.prompts.isEmpty());
}

TEST_F(LibraryCreationTest, anUnusableAddressIsNamed)
{
    configuration.firebase.projectID = u"no project"_s;
    makeStore();
    store->bind(u"u1"_s);
    for (const Creation &creation : creations())
        EXPECT_EQ(await(creation.start()), u"Brevix couldn't build the Firestore request URL."_s);
    EXPECT_TRUE(requests("POST").isEmpty());
}

TEST_F(LibraryCreationTest, signingOutMeanwhileCancelsItAndShowsNothing)
{
    bind();
    for (const Creation &creation : creations()) {
        server.replyOnce(creation.collection, {.fault = Fault::stall});
        const qsizetype before = requests("POST").size();
        QCoro::Task<QString> problem = creation.start();
        ASSERT_TRUE(waitUntil([&] { return requests("POST").size() > before; }));
        store->unbind();
        EXPECT_EQ(await(std::move(problem)), u"The request was cancelled."_s);
        EXPECT_EQ(store->syncState(), SyncState::idle());
        EXPECT_TRUE(store->categories().isEmpty() && store->prompts().isEmpty() && store->skills().isEmpty());
        bind();
    }
}

TEST_F(LibraryCreationTest, signingOutWhileTheTokenIsRefreshedCancelsItToo)
{
    bind();
    storeSession(now.addSecs(119));
    server.reply("token", {.fault = Fault::stall});
    QCoro::Task<PromptItem> prompt = store->createPrompt(u"T"_s, u"X"_s, u"c"_s);
    ASSERT_TRUE(waitUntil([this] { return server.count("token") == 1; }));
    auth.signOut();
    store->unbind();
    EXPECT_EQ(problemOf(std::move(prompt)), u"The request was cancelled."_s);
    EXPECT_EQ(server.count("prompts"), 1);
}

TEST_F(LibraryCreationTest, anObserverThatSignsOutStopsAtTheNewRecord)
{
    bind();
    QObject::connect(store.get(), &LibraryStore::promptsChanged, store.get(), [this] {
        if (!store->prompts().isEmpty())
            store->unbind();
    });
    EXPECT_EQ(await(store->createPrompt(u"T"_s, u"X"_s, u"c"_s)).id, u"new1"_s);
    EXPECT_EQ(store->syncState(), SyncState::idle());
    EXPECT_FALSE(waitUntil([this] { return requests("GET").size() > 3; }, std::chrono::milliseconds(50)));
}

TEST_F(LibraryCreationTest, aStoreThatDiesMeanwhileEndsIt)
{
    bind();
    server.replyOnce("prompts", {.fault = Fault::stallHalfway});
    QCoro::Task<PromptItem> prompt = store->createPrompt(u"T"_s, u"X"_s, u"c"_s);
    ASSERT_TRUE(waitUntil([this] { return requests("POST").size() == 1; }));
    store.reset();
    EXPECT_EQ(problemOf(std::move(prompt)), u"The request was cancelled."_s);
}
