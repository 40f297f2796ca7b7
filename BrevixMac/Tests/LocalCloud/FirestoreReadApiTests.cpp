// SPDX-License-Identifier: GPL-3.0-or-later
#include "LocalCloud/ServiceFixture.h"

#include "LocalCloud/FirestoreReadApi.h"
#include "Support/TestMain.h"

#include <QSet>

using namespace Cloud;

namespace {

QJsonObject title(const QString &text)
{
    return {{QStringLiteral("title"), QJsonObject{{QStringLiteral("stringValue"), text}}}};
}

QStringList idsOf(const QJsonObject &page)
{
    QStringList ids;
    const QJsonArray documents = page.value(u"documents").toArray();
    for (const QJsonValue &document : documents)
        ids.append(document.toObject().value(u"name").toString().section(u'/', -1));
    return ids;
}

class FirestoreReading : public ServiceFixture
{
protected:
    void storeMany(int count)
    {
        Database database(databasePath());
        ASSERT_TRUE(database.open());
        Documents documents(database);
        Transaction transaction(database);
        for (int i = 0; i < count; ++i)
            documents.put(QStringLiteral("artifacts/brevix-app/users/local-user/many"),
                          QStringLiteral("d%1").arg(i, 4, 10, QLatin1Char('0')), title(QString::number(i)),
                          now);
        transaction.commit();
    }
};

} // namespace

TEST_F(FirestoreReading, emptyCollectionAnswersAnEmptyObject)
{
    EXPECT_EQ(service->handle(get(libraryPath("nothing"))).body, "{}");
}

TEST_F(FirestoreReading, documentCarriesNameFieldsAndTimes)
{
    now += std::chrono::microseconds(345'000);
    store(QStringLiteral("notes"), QStringLiteral("a \"b\""), title(QStringLiteral("Grüße")));
    const QJsonObject document = answer(get(libraryPath("notes/a%20%22b%22")));
    EXPECT_EQ(document.value(u"name").toString(),
              QStringLiteral("projects/demo/databases/(default)/documents/artifacts/brevix-app/users/"
                             "local-user/notes/a \"b\""));
    EXPECT_EQ(document.value(u"fields").toObject(), title(QStringLiteral("Grüße")));
    EXPECT_EQ(document.value(u"createTime").toString(), QStringLiteral("2027-01-15T08:00:00.345Z"));
    EXPECT_EQ(document.value(u"updateTime").toString(), QStringLiteral("2027-01-15T08:00:00.345Z"));
}

TEST_F(FirestoreReading, documentWithoutFieldsHasNoFieldsKey)
{
    store(QStringLiteral("notes"), QStringLiteral("bare"), {});
    EXPECT_FALSE(answer(get(libraryPath("notes/bare"))).contains(u"fields"));
    EXPECT_FALSE(answer(get(libraryPath("notes"))).value(u"documents")[0].toObject().contains(u"fields"));
}

TEST_F(FirestoreReading, missingDocumentIsNotFoundByName)
{
    const Response response = service->handle(get(libraryPath("prompts/none")));
    EXPECT_EQ(response.status, 404);
    EXPECT_EQ(errorOf(response).value(u"code").toInt(), 404);
    EXPECT_EQ(errorOf(response).value(u"status").toString(), QStringLiteral("NOT_FOUND"));
    EXPECT_TRUE(
        errorOf(response).value(u"message").toString().contains(QStringLiteral("prompts/none\" not found")));
}

TEST_F(FirestoreReading, pageSizesAreHonouredUpToFiveHundred)
{
    storeMany(520);
    const struct
    {
        QByteArray query;
        int count;
    } cases[] = {{"", 20},
                 {"pageSize=0", 20},
                 {"pageSize=7", 7},
                 {"pageSize=500", 500},
                 {"pageSize=501", 500},
                 {"pageSize=100000", 500}};
    for (const auto &[query, count] : cases) {
        const QJsonObject page = answer(get(libraryPath("many"), query));
        EXPECT_EQ(page.value(u"documents").toArray().size(), count) << query.constData();
        EXPECT_FALSE(page.value(u"nextPageToken").toString().isEmpty()) << query.constData();
    }
}

TEST_F(FirestoreReading, pagesFollowEachOtherWithoutGapsOrRepeats)
{
    storeMany(45);
    QStringList ids;
    QByteArray query = "pageSize=20";
    int pages = 0;
    for (; pages < 10; ++pages) {
        const QJsonObject page = answer(get(libraryPath("many"), query));
        ids += idsOf(page);
        const QString token = page.value(u"nextPageToken").toString();
        if (token.isEmpty())
            break;
        query = "pageSize=20&pageToken=" + token.toLatin1();
    }
    EXPECT_EQ(pages, 2);
    EXPECT_EQ(ids.size(), 45);
    EXPECT_EQ(QSet<QString>(ids.begin(), ids.end()).size(), 45);
    EXPECT_TRUE(std::is_sorted(ids.begin(), ids.end()));
}

TEST_F(FirestoreReading, pageThatHoldsEverythingHasNoToken)
{
    storeMany(20);
    EXPECT_FALSE(answer(get(libraryPath("many"))).contains(u"nextPageToken"));
}

TEST_F(FirestoreReading, pageOfManyLargeDocumentsIsNotCutShort)
{
    const QJsonObject large = title(QString(1024 * 1024, QLatin1Char('x')));
    for (int i = 0; i < 40; ++i)
        store(QStringLiteral("many"), QString::number(i), large);
    const QJsonObject page = answer(get(libraryPath("many"), "pageSize=500"));
    EXPECT_EQ(page.value(u"documents").toArray().size(), 40);
    EXPECT_FALSE(page.contains(u"nextPageToken"));
}

TEST_F(FirestoreReading, pageThatGrowsTooLargeEndsAndTheNextOneGoesOn)
{
    storeMany(10);
    Database database(databasePath());
    ASSERT_TRUE(database.open());
    const Documents documents(database);
    const FirestoreReadApi api(documents, 500);
    const auto path =
        ResourcePath::fromPieces(QStringLiteral("projects/demo/databases/(default)/documents/artifacts/"
                                                "brevix-app/users/local-user/many")
                                     .split(QLatin1Char('/')));
    ASSERT_TRUE(path);
    QStringList ids;
    QByteArray query = "pageSize=500";
    for (int pages = 1; pages <= 10; ++pages) {
        const QJsonObject page = jsonOf(api.get(*path, get({}, query)));
        EXPECT_FALSE(idsOf(page).isEmpty());
        ids += idsOf(page);
        query = "pageToken=" + page.value(u"nextPageToken").toString().toLatin1();
        if (!page.contains(u"nextPageToken"))
            break;
        EXPECT_LT(idsOf(page).size(), 5);
    }
    EXPECT_EQ(ids.size(), 10);
    EXPECT_EQ(QSet<QString>(ids.begin(), ids.end()).size(), 10);
}

TEST_F(FirestoreReading, deletedDocumentBetweenPagesShiftsNothing)
{
    storeMany(10);
    const QJsonObject first = answer(get(libraryPath("many"), "pageSize=5"));
    Database database(databasePath());
    ASSERT_TRUE(database.open());
    Documents(database).remove(QStringLiteral("artifacts/brevix-app/users/local-user/many"),
                               QStringLiteral("d0004"));
    const QByteArray token = first.value(u"nextPageToken").toString().toLatin1();
    EXPECT_EQ(idsOf(answer(get(libraryPath("many"), "pageSize=5&pageToken=" + token))).constFirst(),
              QStringLiteral("d0005"));
}

TEST_F(FirestoreReading, badParametersAreRefused)
{
    const struct
    {
        QByteArray query;
        int status;
    } cases[] = {{"pageSize=-1", 400},        {"pageSize=many", 400},    {"pageSize=99999999999", 400},
                 {"pageToken=nonsense", 400}, {"pageToken=!!!", 400},    {"colour=red", 400},
                 {"orderBy=title", 501},      {"showMissing=true", 501}, {"mask.fieldPaths=title", 501},
                 {"alt=json", 200},           {"prettyPrint=false", 200}};
    for (const auto &[query, expected] : cases)
        EXPECT_EQ(status(get(libraryPath("prompts"), query)), expected) << query.constData();
}

TEST_F(FirestoreReading, pathsAreDecoded)
{
    store(QStringLiteral("notes"), QStringLiteral("50%"), title(QStringLiteral("percent")));
    EXPECT_EQ(status(get("/v1/projects/demo/databases/%28default%29/documents/artifacts/brevix-app/users/"
                         "local-user/prompts")),
              200);
    EXPECT_EQ(status(get(libraryPath("notes/50%25"))), 200);
    EXPECT_EQ(status(get("/firestore.googleapis.com" + libraryPath("prompts"))), 200);
}

TEST_F(FirestoreReading, namesThatDocumentsCannotHaveAreRefused)
{
    const struct
    {
        QByteArray path;
        int status;
    } cases[] = {{"prompts/a%2Fb", 400}, {"prompts/%00", 400}, {"prompts/%FF", 400},
                 {"prompts/..", 404},    {"prompts//x", 404},  {"prompts/" + QByteArray(1501, 'x'), 404}};
    for (const auto &[path, expected] : cases)
        EXPECT_EQ(status(get(libraryPath(path))), expected) << path.left(40).constData();
}

TEST_F(FirestoreReading, everyDataRouteNeedsABearerToken)
{
    Request request = getWithoutToken(libraryPath("prompts"));
    EXPECT_EQ(status(request), 401);
    EXPECT_EQ(errorOf(service->handle(request)).value(u"status").toString(),
              QStringLiteral("UNAUTHENTICATED"));
    for (const QByteArray &authorization :
         {QByteArray("Bearer"), QByteArray("Bearer "), QByteArray("Bearer owner"), QByteArray("Basic abc"),
          QByteArray("Bearer " + session.idToken + "x"), session.idToken,
          QByteArray("Bearer " + session.refreshToken)}) {
        request = getWithoutToken(libraryPath("prompts"));
        request.headers.emplaceBack("authorization", authorization);
        EXPECT_EQ(status(request), 401) << authorization.left(12).constData();
    }
    for (const QByteArray method : {"POST", "PATCH", "DELETE"}) {
        request = getWithoutToken(libraryPath("prompts"));
        request.method = method;
        EXPECT_EQ(status(request), 401) << method.constData();
    }
}

TEST_F(FirestoreReading, twoAuthorizationsAreNone)
{
    Request request = get(libraryPath("prompts"));
    request.headers.emplaceBack("authorization", "Bearer " + session.idToken);
    EXPECT_EQ(status(request), 401);
}

TEST_F(FirestoreReading, schemeOfTheTokenIsReadInAnyCase)
{
    Request request = getWithoutToken(libraryPath("prompts"));
    request.headers.emplaceBack("authorization", "bearer " + session.idToken);
    EXPECT_EQ(status(request), 200);
}

TEST_F(FirestoreReading, expiredTokenIsRefused)
{
    now += std::chrono::minutes(59);
    EXPECT_EQ(status(get(libraryPath("prompts"))), 200);
    now += std::chrono::minutes(1);
    EXPECT_EQ(status(get(libraryPath("prompts"))), 401);
}

TEST_F(FirestoreReading, usersSeeOnlyTheirOwnDocuments)
{
    Request request = getWithoutToken(libraryPath("prompts"));
    request.headers.emplaceBack("authorization", "Bearer " + tokenOf(QStringLiteral("mallory")));
    const Response response = service->handle(request);
    EXPECT_EQ(response.status, 403);
    EXPECT_EQ(errorOf(response).value(u"status").toString(), QStringLiteral("PERMISSION_DENIED"));

    request.path = documentsPath("artifacts/brevix-app/users/mallory/prompts");
    EXPECT_EQ(service->handle(request).body, "{}");
}

TEST_F(FirestoreReading, onlyTheLibraryAndWhatIsSharedCanBeRead)
{
    const struct
    {
        QByteArray path;
        int status;
    } cases[] = {{"artifacts/brevix-app/public/data/sharedPrompts", 403},
                 {"artifacts/brevix-app/public/data/sharedPrompts/none", 404},
                 {"artifacts/other-app/users/local-user/prompts", 403},
                 {"artifacts/brevix-app/public/secrets/x", 403},
                 {"artifacts/brevix-app/users", 403},
                 {"artifacts/brevix-app/users/local-user", 403},
                 {"artifacts", 403},
                 {"", 404}};
    for (const auto &[path, expected] : cases)
        EXPECT_EQ(status(get(documentsPath(path))), expected) << path.constData();
}

TEST_F(FirestoreReading, otherProjectsAndDatabasesAreNotServed)
{
    const QByteArray rest = "/documents/artifacts/brevix-app/users/local-user/prompts";
    EXPECT_EQ(status(get("/v1/projects/other/databases/(default)" + rest)), 403);
    EXPECT_EQ(status(get("/v1/projects/demo/databases/second" + rest)), 404);
}

TEST_F(FirestoreReading, whatIsNotDoneYetSaysSo)
{
    Request signUp = getWithoutToken("/identitytoolkit.googleapis.com/v1/accounts:signUp", "key=the-key");
    signUp.method = "POST";
    EXPECT_EQ(status(signUp), 501);
}

TEST_F(FirestoreReading, unknownAddressesAndMethodsAreNotFound)
{
    const struct
    {
        QByteArray method;
        QByteArray path;
    } cases[] = {{"GET", "/"},
                 {"GET", ""},
                 {"GET", "/v1"},
                 {"GET", "/v2/projects"},
                 {"GET", "/v1/token"},
                 {"PUT", "/v1/token"},
                 {"GET", "/v1/projects/demo/databases/(default)"},
                 {"PUT", libraryPath("prompts")},
                 {"", libraryPath("prompts")},
                 {"GET", "/favicon.ico"}};
    for (const auto &[method, path] : cases) {
        Request request = get(path);
        request.method = method;
        const Response response = service->handle(request);
        EXPECT_EQ(response.status, 404) << method.constData() << ' ' << path.constData();
        EXPECT_EQ(errorOf(response).value(u"status").toString(), QStringLiteral("NOT_FOUND"));
    }
}

TEST_F(FirestoreReading, failureOfTheServerItselfIsAnAnswerToo)
{
    bool isBroken = false;
    service = std::make_unique<Service>(demoSite(), databasePath(), signingKey, [&] {
        if (isBroken)
            throw std::runtime_error("the clock stands still");
        return now;
    });
    isBroken = true;
    expectWarning(QStringLiteral("the clock stands still"));
    const Response response = service->handle(get(libraryPath("prompts")));
    EXPECT_EQ(response.status, 500);
    EXPECT_EQ(errorOf(response).value(u"status").toString(), QStringLiteral("INTERNAL"));
    EXPECT_FALSE(response.body.contains("clock")) << "what has failed inside is nobody's business";
    isBroken = false;
    EXPECT_EQ(status(get(libraryPath("prompts"))), 200);
}
