// SPDX-License-Identifier: GPL-3.0-or-later
#include "LibraryFixture.h"
#include "ShareLinks.h"

#include <QJsonDocument>
#include <QJsonObject>
#include <QUrlQuery>

#include <functional>

namespace {

constexpr auto time2024 = "1714554000000"; // 2024-05-01 09:00 UTC in milliseconds since 1970

class LibrarySharingTest : public LibraryFixture
{
protected:
    struct Share
    {
        QByteArray document; ///< the last piece of its path
        std::function<QCoro::Task<QUrl>()> start;
    };

    QList<Share> shares() const
    {
        const QByteArray time = time2024;
        return {{"u1_p_" + time, [this] { return store->sharePrompt(makePrompt(u"p"_s, u"P"_s)); }},
                {"u1_s_" + time, [this] { return store->shareSkill(makeSkill(u"s"_s, u"S"_s)); }},
                {"u1_c_" + time, [this] { return store->shareCategory(makeCategory(u"c"_s, u"C"_s)); }}};
    }

    /// The fields of the one public document at @p path below "public/data/".
    QJsonObject published(const QByteArray &path) const
    {
        EXPECT_EQ(server.documents.keys(), QList<QByteArray>{documentsRoot() + "/public/data/" + path});
        const QJsonObject document = server.documents.first();
        EXPECT_EQ(document.keys(), QStringList{u"fields"_s});
        return document.value(u"fields").toObject();
    }

    static QJsonObject json(const char *text) { return QJsonDocument::fromJson(text).object(); }
};

} // namespace

TEST_F(LibrarySharingTest, whileNobodyIsSignedInNothingIsSent)
{
    for (const Share &share : shares()) {
        EXPECT_EQ(problemOf(share.start()),
                  u"Sign in before creating or sharing prompts, skills, or categories."_s);
    }
    EXPECT_TRUE(server.requests().isEmpty());
}

TEST_F(LibrarySharingTest, aPromptBecomesAPublicDocument)
{
    bind();
    const QUrl link = await(store->sharePrompt(makePrompt(u"p9"_s, u"Mail"_s, u"Hi {{name}}"_s, u"c"_s, 4)));
    EXPECT_EQ(link.toString(), u"https://share.example/public?promptId=u1_p9_1714554000000"_s);
    EXPECT_EQ(published("sharedPrompts/u1_p9_1714554000000"),
              json(R"({"title": {"stringValue": "Mail"}, "text": {"stringValue": "Hi {{name}}"},
                       "sharedBy": {"stringValue": "u1"}, "orgId": {"stringValue": "personal"},
                       "sharedAt": {"timestampValue": "2024-05-01T09:00:00.000Z"},
                       "promptId": {"stringValue": "p9"}})"));
    const FaultyServer::Request request = server.requests().last();
    EXPECT_EQ(request.method, "PATCH");
    EXPECT_FALSE(request.target.contains('?')) << "the document is replaced as a whole";
    EXPECT_TRUE(request.head.contains("\r\nAuthorization: Bearer token\r\n"));
    EXPECT_TRUE(request.head.contains("\r\nContent-Type: application/json\r\n"));
}

TEST_F(LibrarySharingTest, aSkillLivesAmongTheSharedPrompts)
{
    bind();
    const QUrl link = await(store->shareSkill(makeSkill(u"s1"_s, u"Review"_s, u"Look."_s, u"review.md"_s)));
    EXPECT_EQ(link.toString(), u"https://share.example/public?promptId=u1_s1_1714554000000"_s);
    EXPECT_EQ(published("sharedPrompts/u1_s1_1714554000000"),
              json(R"({"title": {"stringValue": "Review"}, "text": {"stringValue": "Look."},
                       "sharedBy": {"stringValue": "u1"}, "orgId": {"stringValue": "personal"},
                       "sourceType": {"stringValue": "skill"},
                       "sourceFilename": {"stringValue": "review.md"},
                       "sharedAt": {"timestampValue": "2024-05-01T09:00:00.000Z"}})"));
}

TEST_F(LibrarySharingTest, aSkillWithoutAFileIsSharedWithoutOne)
{
    bind();
    await(store->shareSkill(makeSkill(u"s1"_s, u"Review"_s)));
    EXPECT_FALSE(published("sharedPrompts/u1_s1_1714554000000").contains(u"sourceFilename"));
}

TEST_F(LibrarySharingTest, aCategoryTakesItsShownPromptsAlongInTheirOrder)
{
    server.prompts = {makePrompt(u"2"_s, u"b"_s, u"second"_s, u"c"_s),
                      makePrompt(u"1"_s, u"A"_s, u"first"_s, u"c"_s),
                      makePrompt(u"3"_s, u"c"_s, u"other"_s, u"d"_s)};
    bind();
    const QUrl link = await(store->shareCategory(makeCategory(u"c"_s, u"Work"_s)));
    EXPECT_EQ(link.toString(), u"https://share.example/public?categoryId=u1_c_1714554000000"_s);
    EXPECT_EQ(published("sharedCategories/u1_c_1714554000000"),
              json(R"({"name": {"stringValue": "Work"}, "sharedBy": {"stringValue": "u1"},
                       "orgId": {"stringValue": "personal"},
                       "prompts": {"arrayValue": {"values": [
                           {"mapValue": {"fields": {"title": {"stringValue": "A"},
                                                    "text": {"stringValue": "first"}}}},
                           {"mapValue": {"fields": {"title": {"stringValue": "b"},
                                                    "text": {"stringValue": "second"}}}}]}}})"));
}

TEST_F(LibrarySharingTest, anEmptyCategoryIsSharedWithAnEmptyList)
{
    bind();
    await(store->shareCategory(makeCategory(u"c"_s, u"Work"_s)));
    EXPECT_EQ(published("sharedCategories/u1_c_1714554000000").value(u"prompts"),
              json(R"({"arrayValue": {"values": []}})"));
}

TEST_F(LibrarySharingTest, everyShareIsANewDocumentExceptWithinOneMillisecond)
{
    bind();
    const PromptItem prompt = makePrompt(u"p"_s, u"P"_s, u"first"_s);
    const QUrl first = await(store->sharePrompt(prompt));
    const QUrl same = await(store->sharePrompt(makePrompt(u"p"_s, u"P"_s, u"second"_s)));
    EXPECT_EQ(first, same);
    EXPECT_EQ(published("sharedPrompts/u1_p_1714554000000").value(u"text"),
              json(R"({"stringValue": "second"})"));
    now = now.addMSecs(1);
    EXPECT_NE(await(store->sharePrompt(prompt)), first);
    EXPECT_EQ(server.documents.size(), 2);
}

TEST_F(LibrarySharingTest, oddIdentifiersArriveInThePathAndInTheLink)
{
    for (const QString &id : {u"50% off"_s, u"a/b"_s, u"ü&c=d#e?f+g"_s, u"🎉"_s}) {
        server.documents.clear();
        bind(u"user %1"_s);
        const QUrl link = await(store->sharePrompt(makePrompt(id, u"T"_s)));
        const QString shareID = u"user %1_"_s + id + u"_1714554000000"_s;
        EXPECT_EQ(QUrlQuery(link).queryItemValue(u"promptId"_s, QUrl::FullyDecoded), shareID);
        ASSERT_EQ(server.documents.size(), 1);
        const QByteArray path = server.documents.firstKey();
        EXPECT_EQ(QUrl::fromPercentEncoding(path),
                  QString::fromUtf8(documentsRoot()) + u"/public/data/sharedPrompts/"_s + shareID);
    }
}

TEST_F(LibrarySharingTest, everyFailureIsNamedAndLeavesNothing)
{
    bind();
    const SyncState before = store->syncState();
    const QString host = server.origin().host();
    const std::pair<FaultyServer::Reply, QString> rows[] = {
        {{.status = 403, .body = R"({"error": {"message": "PERMISSION_DENIED"}})"}, u"PERMISSION_DENIED"_s},
        {{.status = 401, .body = R"({"error": {"message": "Unauthorized."}})"}, u"Unauthorized."_s},
        {{.status = 429, .body = "slow down"}, u"slow down"_s},
        {{.status = 500, .body = ""}, u"Firestore returned HTTP 500."_s},
        {{.status = 502, .body = ""}, u"Firestore returned HTTP 502."_s},
        {{.fault = Fault::close}, u"The server %1 closed the connection without a valid answer."_s.arg(host)},
        {{.fault = Fault::truncate},
         u"The connection to %1 was lost before the answer was complete."_s.arg(host)},
        {{.fault = Fault::huge}, u"The answer of %1 is too large."_s.arg(host)},
    };
    for (const Share &share : shares()) {
        for (const auto &[reply, text] : rows) {
            server.replyOnce(share.document, reply);
            EXPECT_EQ(problemOf(share.start()), text) << share.document.data();
        }
    }
    EXPECT_EQ(store->syncState(), before);
    EXPECT_EQ(requests("PATCH").size(), 3 * int(std::size(rows))) << "nothing is sent twice";
    EXPECT_EQ(requests("GET").size(), 3) << "sharing refreshes nothing";
}

TEST_F(LibrarySharingTest, onlyTheStatusOfTheAnswerCounts)
{
    bind();
    for (const char *body : {"", "[]", "<html>", "\xff"}) {
        for (const Share &share : shares()) {
            server.replyOnce(share.document, {.body = body});
            EXPECT_EQ(problemOf(share.start()), u"(no problem)"_s);
        }
    }
}

TEST_F(LibrarySharingTest, withoutAUsableBaseNothingIsPublished)
{
    for (const char *base : {"", "no base", "/only/path", "https://"}) {
        configuration.publicShareBaseURL = QUrl(QString::fromLatin1(base));
        makeStore();
        bind();
        for (const Share &share : shares())
            EXPECT_EQ(problemOf(share.start()), u"Brevix couldn't build the Firestore request URL."_s)
                << base;
    }
    EXPECT_TRUE(requests("PATCH").isEmpty());
}

TEST_F(LibrarySharingTest, anUnusableAddressIsNamed)
{
    configuration.firebase.projectID = u"no project"_s;
    makeStore();
    store->bind(u"u1"_s);
    for (const Share &share : shares())
        EXPECT_EQ(problemOf(share.start()), u"Brevix couldn't build the Firestore request URL."_s);
}

TEST_F(LibrarySharingTest, signingOutMeanwhileCancelsIt)
{
    for (const Share &share : shares()) {
        bind();
        server.replyOnce(share.document, {.fault = Fault::stall});
        const qsizetype before = requests("PATCH").size();
        QCoro::Task<QUrl> link = share.start();
        ASSERT_TRUE(waitUntil([&] { return requests("PATCH").size() > before; }));
        store->unbind();
        EXPECT_EQ(problemOf(std::move(link)), u"The request was cancelled."_s);
    }
}

TEST_F(LibrarySharingTest, aStoreThatDiesMeanwhileEndsIt)
{
    bind();
    const Share share = shares().first();
    server.replyOnce(share.document, {.fault = Fault::stall});
    QCoro::Task<QUrl> link = share.start();
    ASSERT_TRUE(waitUntil([this] { return requests("PATCH").size() == 1; }));
    store.reset();
    EXPECT_EQ(problemOf(std::move(link)), u"The request was cancelled."_s);
}

TEST(ShareLinks, theBasesPathStaysInFrontOfTheLinks)
{
    const std::pair<const char *, const char *> rows[] = {
        {"https://share.example", "https://share.example/public?promptId=id"},
        {"https://share.example/", "https://share.example/public?promptId=id"},
        {"https://share.example/app/", "https://share.example/app/public?promptId=id"},
        {"https://share.example//a/b//", "https://share.example/a/b/public?promptId=id"},
        {"https://share.example/a%2Fb%20c", "https://share.example/a%2Fb%20c/public?promptId=id"},
        {"https://share.example/?utm=1&promptId=x", "https://share.example/public?promptId=id"},
        {"http://127.0.0.1:8080/x", "http://127.0.0.1:8080/x/public?promptId=id"},
    };
    for (const auto &[base, link] : rows) {
        const QUrl url = ShareLinks::publicShareURL(QUrl(QString::fromLatin1(base)), u"promptId"_s, u"id"_s);
        EXPECT_EQ(url.toString(QUrl::FullyEncoded), QString::fromLatin1(link)) << base;
    }
}
