// SPDX-License-Identifier: GPL-3.0-or-later
#include "LibraryStore.h"

#include "App/Core/Samples.h"
#include "AuthService.h"
#include "FirestoreFieldValue.h"
#include "LibraryDocuments.h"
#include "RefreshTimer.h"

#include "Foundation/UserDefaults.h"
#include "Support/FaultyServer.h"
#include "Support/InMemoryDesktop.h"
#include "Support/Waiting.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QTemporaryDir>

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace {

using Value = FirestoreFieldValue;
using Fault = FaultyServer::Reply::Fault;

QJsonObject document(const QString &id, const QMap<QString, QJsonObject> &fields)
{
    QJsonObject object;
    for (auto it = fields.cbegin(); it != fields.cend(); ++it)
        object.insert(it.key(), it.value());
    return {{u"name"_s, QString(u"projects/x/databases/(default)/documents/"_s + id)}, {u"fields"_s, object}};
}

QJsonObject string(const QString &text)
{
    return Value::string(text).restValue();
}

QJsonObject integer(const QString &text)
{
    return {{u"integerValue"_s, text}};
}

QByteArray answer(const QList<QJsonObject> &documents)
{
    QJsonArray list;
    for (const QJsonObject &item : documents)
        list.append(item);
    return QJsonDocument(QJsonObject{{u"documents"_s, list}}).toJson();
}

class LibraryStoreTest : public testing::Test
{
protected:
    LibraryStoreTest()
    {
        const StoredAuthSession session{.uid = u"u"_s,
                                        .firebaseIDToken = u"token"_s,
                                        .refreshToken = u"r"_s,
                                        .expiresAt = now.addDays(1)};
        defaults.setData(AuthService::storageKey, session.toJson());
        server.reply("categories", {.body = answer({document(u"c"_s, {{u"name"_s, string(u"Work"_s)}})})});
        server.reply("prompts", {.body = answer({document(u"p"_s, {{u"title"_s, string(u"Mail"_s)}})})});
        server.reply("skills", {.body = answer({document(u"s"_s, {{u"title"_s, string(u"Notes"_s)}})})});
    }

    bool settled() const { return kind() == SyncState::Kind::synced || kind() == SyncState::Kind::error; }
    SyncState::Kind kind() const { return store->syncState().kind; }

    void bindAndSettle()
    {
        store->bind(u"user 1"_s);
        ASSERT_TRUE(waitUntil([&] { return settled(); }));
    }

    QTimer *timer() const { return store->findChild<QTimer *>(); }

    /// Lets the refresh timer fire once.
    void fireTimer()
    {
        const qsizetype before = server.requests().size();
        fireRefreshTimer(*store);
        ASSERT_TRUE(waitUntil([&] { return server.requests().size() > before; }));
    }

    QTemporaryDir folder;
    UserDefaults defaults{folder.filePath(u"preferences.plist"_s)};
    HttpClient http;
    FaultyServer server;
    QDateTime now = utc(9);
    AppConfiguration configuration = AppConfiguration::fallback();
    CloudEndpoints endpoints = CloudEndpoints::local(server.origin());
    InMemoryWebAuthenticationSession browser;
    AuthService auth{configuration, endpoints, http, defaults, browser, [this] { return now; }};
    std::unique_ptr<LibraryStore> store =
        std::make_unique<LibraryStore>(configuration, endpoints, auth, http, [this] { return now; });
};

} // namespace

TEST_F(LibraryStoreTest, bindingFetchesTheThreeCollectionsInTurn)
{
    EXPECT_EQ(store->syncState(), SyncState::idle());
    store->bind(u"user 1"_s);
    EXPECT_EQ(store->syncState(), SyncState::loading());
    ASSERT_TRUE(waitUntil([&] { return settled(); }));
    EXPECT_EQ(store->syncState(), SyncState::synced(now));
    EXPECT_EQ(idsOf(store->categories()), QStringList{u"c"_s});
    EXPECT_EQ(idsOf(store->prompts()), QStringList{u"p"_s});
    EXPECT_EQ(idsOf(store->skills()), QStringList{u"s"_s});

    const QByteArray base = "/v1/projects/" + configuration.firebase.projectID.toUtf8() +
                            "/databases/(default)/documents/artifacts/brevix-app-fallback/users/user%201/";
    ASSERT_EQ(server.requests().size(), 3);
    const char *const collections[] = {"categories", "prompts", "skills"};
    for (int index = 0; index < 3; ++index) {
        const FaultyServer::Request &request = server.requests()[index];
        EXPECT_EQ(request.method, "GET");
        EXPECT_EQ(request.target, QByteArray(base + collections[index] + "?pageSize=500"));
        EXPECT_TRUE(request.head.contains("\r\nAuthorization: Bearer token"));
    }
}

TEST_F(LibraryStoreTest, bindingTheSameUserTwiceKeepsTheRefreshAndTheTimer)
{
    store->bind(u"u"_s);
    ASSERT_NE(timer(), nullptr);
    EXPECT_TRUE(timer()->isActive());
    EXPECT_EQ(timer()->intervalAsDuration(), std::chrono::seconds(45));
    const int id = timer()->timerId();
    store->bind(u"u"_s);
    EXPECT_EQ(timer()->timerId(), id);
    ASSERT_TRUE(waitUntil([&] { return settled(); }));
    store->bind(u"u"_s);
    EXPECT_FALSE(waitUntil([&] { return server.requests().size() > 3; }, std::chrono::milliseconds(100)));
}

TEST_F(LibraryStoreTest, theTimerRefreshesWithoutFlicker)
{
    bindAndSettle();
    QList<SyncState> states;
    QObject::connect(store.get(), &LibraryStore::syncStateChanged, store.get(),
                     [&] { states.append(store->syncState()); });
    now = utc(10);
    server.reply("prompts", {.body = answer({document(u"p2"_s, {})})});
    fireTimer();
    ASSERT_TRUE(waitUntil([&] { return store->syncState() == SyncState::synced(utc(10)); }));
    EXPECT_EQ(states.size(), 1);
    EXPECT_EQ(idsOf(store->prompts()), QStringList{u"p2"_s});
}

TEST_F(LibraryStoreTest, anUnchangedListIsNotAnnouncedAgain)
{
    bindAndSettle();
    int changes = 0;
    QObject::connect(store.get(), &LibraryStore::promptsChanged, store.get(), [&] { ++changes; });
    const QChar *characters = store->prompts().first().title.constData();
    now = utc(10);
    fireTimer();
    ASSERT_TRUE(waitUntil([&] { return store->syncState() == SyncState::synced(utc(10)); }));
    EXPECT_EQ(changes, 0);
    EXPECT_EQ(store->prompts().first().title.constData(), characters);
}

TEST_F(LibraryStoreTest, unbindingInFlightLeavesNothing)
{
    server.reply("skills", {.delay = std::chrono::milliseconds(50)});
    store->bind(u"u"_s);
    ASSERT_TRUE(waitUntil([&] { return server.count("skills") == 1; }));
    store->unbind();
    EXPECT_EQ(store->syncState(), SyncState::idle());
    EXPECT_FALSE(timer()->isActive());
    EXPECT_FALSE(
        waitUntil([&] { return store->syncState() != SyncState::idle(); }, std::chrono::milliseconds(200)));
    EXPECT_TRUE(store->categories().isEmpty());
    EXPECT_TRUE(store->prompts().isEmpty());
    EXPECT_TRUE(store->skills().isEmpty());
}

TEST_F(LibraryStoreTest, unbindingAShownLibraryClearsIt)
{
    bindAndSettle();
    store->unbind();
    EXPECT_TRUE(store->categories().isEmpty() && store->prompts().isEmpty() && store->skills().isEmpty());
    EXPECT_EQ(store->syncState(), SyncState::idle());
}

TEST_F(LibraryStoreTest, anObserverThatUnbindsEndsTheRefreshThere)
{
    QObject::connect(store.get(), &LibraryStore::categoriesChanged, store.get(), [&] {
        if (!store->categories().isEmpty())
            store->unbind();
    });
    store->bind(u"u"_s);
    ASSERT_TRUE(waitUntil([&] { return kind() == SyncState::Kind::idle; }));
    EXPECT_FALSE(
        waitUntil([&] { return settled() || !store->prompts().isEmpty(); }, std::chrono::milliseconds(50)));
}

TEST_F(LibraryStoreTest, bindingAnotherUserNeverMixesLibraries)
{
    server.reply("skills", {.delay = std::chrono::milliseconds(50)});
    store->bind(u"first"_s);
    ASSERT_TRUE(waitUntil([&] { return server.count("skills") == 1; }));
    server.reply("skills", {});
    server.reply("prompts", {.body = answer({document(u"other"_s, {})})});
    store->bind(u"second"_s);
    EXPECT_EQ(store->syncState(), SyncState::loading());
    EXPECT_TRUE(store->prompts().isEmpty());
    ASSERT_TRUE(waitUntil([&] { return settled(); }));
    EXPECT_FALSE(waitUntil([&] { return store->prompts().size() != 1; }, std::chrono::milliseconds(100)));
    EXPECT_EQ(idsOf(store->prompts()), QStringList{u"other"_s});
}

TEST_F(LibraryStoreTest, aNewRefreshReplacesTheOneInFlight)
{
    server.reply("categories", {.fault = Fault::stall});
    store->bind(u"u"_s);
    ASSERT_TRUE(waitUntil([&] { return server.count("categories") == 1; }));
    server.reply("categories", {});
    fireTimer();
    ASSERT_TRUE(waitUntil([&] { return settled(); }));
    EXPECT_EQ(store->syncState(), SyncState::synced(now));
}

TEST_F(LibraryStoreTest, dyingInFlightIsHarmless)
{
    server.reply("prompts", {.delay = std::chrono::milliseconds(30)});
    store->bind(u"u"_s);
    ASSERT_TRUE(waitUntil([&] { return server.count("prompts") == 1; }));
    store.reset();
    EXPECT_FALSE(waitUntil([&] { return server.count("skills") > 0; }, std::chrono::milliseconds(150)));
}

TEST_F(LibraryStoreTest, everyFailureIsNamedAndLeavesTheShownLibraryAlone)
{
    bindAndSettle();
    const QList<PromptCategory> categories = store->categories();
    const QList<PromptItem> prompts = store->prompts();
    const QList<SkillItem> skills = store->skills();
    const std::pair<FaultyServer::Reply, QString> rows[] = {
        {{403, R"({"error":{"code":403,"message":"PERMISSION_DENIED"}})"}, u"PERMISSION_DENIED"_s},
        {{401, R"({"error":{"message":"Request had invalid authentication credentials."}})"},
         u"Request had invalid authentication credentials."_s},
        {{500, ""}, u"Firestore returned HTTP 500."_s},
        {{502, ""}, u"Firestore returned HTTP 502."_s},
        {{502, "\xff"}, u"Firestore returned HTTP 502."_s},
        {{503, " <html>busy</html>\n"}, u" <html>busy</html>\n"_s},
        {{200, "[]"}, u"Brevix couldn't decode the Firestore response."_s},
        {{200, "<html>portal</html>"}, u"Brevix couldn't read the Firestore response: illegal value"_s},
    };
    for (const char *collection : {"categories", "prompts", "skills"}) {
        for (const auto &[reply, text] : rows) {
            server.reply(collection, reply);
            fireTimer();
            EXPECT_TRUE(waitUntil([&] { return store->syncState() == SyncState::error(text); }))
                << store->syncState().title().toStdString() << " instead of " << text.toStdString();
        }
        for (const Fault fault : {Fault::close, Fault::garbage, Fault::truncate}) {
            const SyncState before = store->syncState();
            server.reply(collection, {.body = "{\"documents\":[]}", .fault = fault});
            fireTimer();
            EXPECT_TRUE(waitUntil([&] {
                return kind() == SyncState::Kind::error && store->syncState() != before;
            })) << int(fault);
            server.reply(collection, {500, ""});
            fireTimer();
            EXPECT_TRUE(
                waitUntil([&] { return store->syncState().message == u"Firestore returned HTTP 500."_s; }));
        }
        server.reply(collection, {200, "{}"});
        EXPECT_EQ(store->categories(), categories);
        EXPECT_EQ(store->prompts(), prompts);
        EXPECT_EQ(store->skills(), skills);
        server.reply("categories", {.body = answer({document(u"c"_s, {{u"name"_s, string(u"Work"_s)}})})});
        server.reply("prompts", {.body = answer({document(u"p"_s, {{u"title"_s, string(u"Mail"_s)}})})});
        server.reply("skills", {.body = answer({document(u"s"_s, {{u"title"_s, string(u"Notes"_s)}})})});
    }
    fireTimer();
    EXPECT_TRUE(waitUntil([&] { return store->syncState() == SyncState::synced(now); }));
}

TEST_F(LibraryStoreTest, aTokenThatExpiresInTheMiddleOfASyncIsRefreshedForTheNext)
{
    bindAndSettle();
    const QList<PromptItem> prompts = store->prompts();
    server.replyOnce("prompts", {401, R"({"error":{"message":"UNAUTHENTICATED"}})"});
    server.reply("token", {.body = R"({"expires_in":"3600","refresh_token":"r2","id_token":"newer",)"
                                   R"("user_id":"user 1"})"});
    fireTimer();
    ASSERT_TRUE(waitUntil([&] { return store->syncState() == SyncState::error(u"UNAUTHENTICATED"_s); }));
    EXPECT_EQ(store->prompts(), prompts);
    fireTimer();
    ASSERT_TRUE(waitUntil([&] { return store->syncState() == SyncState::synced(now); }));
    EXPECT_EQ(server.count("token"), 1);
    // Not the last one: one that the timer has cancelled may arrive late.
    const auto hasNewToken = [](const FaultyServer::Request &request) {
        return request.lastPiece() == "skills" && request.head.contains("\r\nAuthorization: Bearer newer");
    };
    EXPECT_TRUE(std::any_of(server.requests().begin(), server.requests().end(), hasNewToken));
}

TEST_F(LibraryStoreTest, aTokenThatCannotBeHadIsNamed)
{
    auth.signOut();
    bindAndSettle();
    EXPECT_EQ(store->syncState(), SyncState::error(u"You're not signed in."_s));
    EXPECT_TRUE(server.requests().isEmpty());
    EXPECT_TRUE(timer()->isActive());
}

TEST_F(LibraryStoreTest, anUnusableAddressIsNamed)
{
    configuration.firebase.projectID = u"no project"_s;
    store = std::make_unique<LibraryStore>(configuration, endpoints, auth, http, [this] { return now; });
    bindAndSettle();
    EXPECT_EQ(store->syncState(), SyncState::error(u"Brevix couldn't build the Firestore request URL."_s));
}

TEST_F(LibraryStoreTest, withAnEmptyLibraryEachRefreshShowsThatItIsSyncing)
{
    for (const char *collection : {"categories", "prompts", "skills"})
        server.reply(collection, {200, "{}"});
    bindAndSettle();
    EXPECT_EQ(store->syncState(), SyncState::synced(now));
    EXPECT_TRUE(store->categories().isEmpty() && store->prompts().isEmpty() && store->skills().isEmpty());
    QList<SyncState::Kind> kinds;
    QObject::connect(store.get(), &LibraryStore::syncStateChanged, store.get(),
                     [&] { kinds.append(kind()); });
    now = utc(10);
    fireTimer();
    ASSERT_TRUE(waitUntil([&] { return store->syncState() == SyncState::synced(utc(10)); }));
    EXPECT_EQ(kinds.first(), SyncState::Kind::loading);
}

TEST_F(LibraryStoreTest, wrongShapesOfTheDocumentsReadAsEmpty)
{
    for (const char *body : {R"({"documents":{}})", R"({"documents":[1,2]})", R"({"documents":null})"}) {
        store->unbind();
        server.reply("prompts", {200, body});
        bindAndSettle();
        EXPECT_EQ(store->syncState(), SyncState::synced(now)) << body;
        EXPECT_TRUE(store->prompts().isEmpty());
    }
}

TEST_F(LibraryStoreTest, listsAreSortedByOrderThenTextWithoutRegardToCase)
{
    const auto entry = [](const QString &id, const QString &name, const QString &order) {
        return document(
            id, {{u"name"_s, string(name)}, {u"title"_s, string(name)}, {u"order"_s, integer(order)}});
    };
    const QByteArray body = answer({entry(u"1"_s, u"b"_s, u"2"_s), entry(u"2"_s, u"A"_s, u"1"_s),
                                    entry(u"3"_s, u"c"_s, u"1"_s), entry(u"4"_s, u"a"_s, u"1"_s)});
    for (const char *collection : {"categories", "prompts", "skills"})
        server.reply(collection, {200, body});
    bindAndSettle();
    const QStringList expected{u"2"_s, u"4"_s, u"3"_s, u"1"_s};
    EXPECT_EQ(idsOf(store->categories()), expected);
    EXPECT_EQ(idsOf(store->prompts()), expected);
    EXPECT_EQ(idsOf(store->skills()), expected);
}

TEST_F(LibraryStoreTest, onlyTheFirstPageOfACollectionIsAskedFor)
{
    QJsonObject page =
        QJsonDocument::fromJson(answer({document(u"p"_s, {{u"title"_s, string(u"Mail"_s)}})})).object();
    page.insert(u"nextPageToken"_s, u"more"_s);
    server.reply("prompts", {.body = QJsonDocument(page).toJson()});
    bindAndSettle();
    EXPECT_EQ(kind(), SyncState::Kind::synced);
    EXPECT_EQ(idsOf(store->prompts()), QStringList{u"p"_s});
    EXPECT_EQ(server.count("prompts"), 1);
    for (const auto &request : server.requests()) {
        EXPECT_TRUE(request.target.contains("pageSize=500")) << request.target.constData();
        EXPECT_FALSE(request.target.contains("pageToken")) << request.target.constData();
    }
}

TEST(LibraryStoreRecords, documentsWithoutFieldsTakeTheDefaults)
{
    const QJsonObject bare{{u"name"_s, u"a/b/id"_s}};
    EXPECT_EQ(LibraryDocuments::makeCategory(bare), makeCategory(u"id"_s, u"Untitled Category"_s));
    EXPECT_EQ(LibraryDocuments::makePrompt(bare),
              makePrompt(u"id"_s, u"Untitled Prompt"_s, QString(), QString()));
    EXPECT_EQ(LibraryDocuments::makeSkill(bare), makeSkill(u"id"_s, u"Untitled Skill"_s, QString()));
}

TEST(LibraryStoreRecords, fieldsAreReadUnderTheirStoredNames)
{
    const QJsonObject time = Value::timestamp(utc(9)).restValue();
    const PromptCategory category =
        LibraryDocuments::makeCategory(document(u"c"_s, {{u"name"_s, string(u"N"_s)},
                                                         {u"color"_s, string(u"#fff"_s)},
                                                         {u"order"_s, integer(u"4"_s)},
                                                         {u"createdAt"_s, time}}));
    EXPECT_EQ(category, (PromptCategory{u"c"_s, u"N"_s, u"#fff"_s, 4, utc(9)}));
    const PromptItem prompt =
        LibraryDocuments::makePrompt(document(u"p"_s, {{u"title"_s, string(u"T"_s)},
                                                       {u"text"_s, string(u"X"_s)},
                                                       {u"categoryId"_s, string(u"c"_s)},
                                                       {u"categoryID"_s, string(u"no"_s)},
                                                       {u"order"_s, integer(u"-4"_s)},
                                                       {u"createdAt"_s, time}}));
    EXPECT_EQ(prompt, (PromptItem{u"p"_s, u"T"_s, u"X"_s, u"c"_s, -4, utc(9)}));
    const SkillItem skill =
        LibraryDocuments::makeSkill(document(u"s"_s, {{u"title"_s, string(u"T"_s)},
                                                      {u"name"_s, string(u"no"_s)},
                                                      {u"text"_s, string(u"X"_s)},
                                                      {u"content"_s, string(u"no"_s)},
                                                      {u"sourceFilename"_s, string(u"f.md"_s)},
                                                      {u"createdAt"_s, time}}));
    EXPECT_EQ(skill, (SkillItem{u"s"_s, u"T"_s, u"X"_s, u"f.md"_s, 0, utc(9)}));
}

TEST(LibraryStoreRecords, skillsAcceptTheOlderFieldNames)
{
    const SkillItem skill = LibraryDocuments::makeSkill(
        document(u"s"_s, {{u"name"_s, string(u"Old"_s)}, {u"content"_s, string(u"Body"_s)}}));
    EXPECT_EQ(skill, makeSkill(u"s"_s, u"Old"_s, u"Body"_s));
}
