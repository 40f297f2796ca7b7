// SPDX-License-Identifier: GPL-3.0-or-later
#include "LocalCloud/FirestoreQueryApi.h"
#include "LocalCloud/FirestoreWritingFixture.h"
#include "LocalCloud/RequestRefused.h"

using namespace Cloud;

namespace {

class FirestoreQuerying : public FirestoreWritingFixture
{
protected:
    FirestoreQuerying()
    {
        // id, then fields
        const QList<QPair<QByteArray, QByteArray>> documents{
            {"a",
             R"({"n":{"integerValue":"3"},"s":{"stringValue":"x"},"l":{"arrayValue":{"values":[{"integerValue":"1"}]}}})"},
            {"b", R"({"n":{"doubleValue":1.5},"s":{"stringValue":"y"},"z":{"nullValue":null}})"},
            {"c",
             R"({"n":{"integerValue":"3"},"s":{"stringValue":"y"},"m":{"mapValue":{"fields":{"k":{"booleanValue":true}}}}})"},
            {"d",
             R"({"n":{"stringValue":"3"},"l":{"arrayValue":{"values":[{"integerValue":"2"},{"stringValue":"q"}]}}})"},
            {"e", R"({"n":{"doubleValue":"NaN"}})"},
        };
        for (const auto &[id, fields] : documents)
            EXPECT_EQ(send("PATCH", own + "items/" + id, "{\"fields\":" + fields + "}").status, 200);
    }

    Response query(const QByteArray &parts, const QByteArray &parent = own.chopped(1))
    {
        return send("POST", parent + ":runQuery",
                    R"({"structuredQuery":{"from":[{"collectionId":"items"}])" + parts + "}}");
    }

    /// The ids of the result, without separators.
    QByteArray ids(const QByteArray &parts)
    {
        const Response response = query(parts);
        EXPECT_EQ(response.status, 200) << parts.constData() << response.body.constData();
        QByteArray result;
        const QJsonArray entries = QJsonDocument::fromJson(response.body).array();
        for (const QJsonValue &entry : entries) {
            EXPECT_TRUE(entry.toObject().contains(u"readTime"));
            result += entry[u"document"][u"name"].toString().section(u'/', -1).toLatin1();
        }
        return result;
    }

    static QByteArray where(const QByteArray &field, const QByteArray &op, const QByteArray &value)
    {
        return R"({"fieldFilter":{"field":{"fieldPath":")" + field + R"("},"op":")" + op + R"(","value":)" +
               value + "}}";
    }

    static QByteArray unary(const QByteArray &field, const QByteArray &op)
    {
        return R"({"unaryFilter":{"field":{"fieldPath":")" + field + R"("},"op":")" + op + "\"}}";
    }

    static QByteArray orderBy(const QByteArray &field, const QByteArray &direction = "ASCENDING")
    {
        return R"(,"orderBy":[{"field":{"fieldPath":")" + field + R"("},"direction":")" + direction + "\"}]";
    }
};

const QByteArray three = R"({"integerValue":"3"})";

} // namespace

TEST_F(FirestoreQuerying, filtersSelectByTypeAndValue)
{
    struct Row
    {
        QByteArray filter, ids;
    };
    const QByteArray list = R"({"arrayValue":{"values":[{"doubleValue":3},{"stringValue":"x"}]}})";
    const QList<Row> rows{
        {where("n", "EQUAL", three), "ac"},
        {where("n", "EQUAL", R"({"doubleValue":3})"), "ac"},
        {where("n", "EQUAL", R"({"stringValue":"3"})"), "d"},
        {where("n", "EQUAL", R"({"doubleValue":"NaN"})"), ""},
        {where("n", "LESS_THAN", three), "b"},
        {where("n", "LESS_THAN_OR_EQUAL", three), "bac"},
        {where("n", "GREATER_THAN", R"({"doubleValue":1.5})"), "ac"},
        {where("n", "GREATER_THAN_OR_EQUAL", R"({"doubleValue":1.5})"), "bac"},
        {where("n", "NOT_EQUAL", three), "ebd"},
        {where("z", "NOT_EQUAL", three), ""},
        {where("n", "IN", list), "ac"},
        {where("n", "NOT_IN", list), "ebd"},
        {where("l", "ARRAY_CONTAINS", R"({"integerValue":"2"})"), "d"},
        {where("l", "ARRAY_CONTAINS_ANY",
               R"({"arrayValue":{"values":[{"integerValue":"1"},{"stringValue":"q"}]}})"),
         "ad"},
        {where("m.k", "EQUAL", R"({"booleanValue":true})"), "c"},
        {where("missing", "EQUAL", three), ""},
        {where("__name__", "EQUAL", R"({"referenceValue":")" + name("items/b") + "\"}"), "b"},
        {unary("z", "IS_NULL"), "b"},
        {unary("z", "IS_NOT_NULL"), ""},
        {unary("n", "IS_NAN"), "e"},
        {unary("n", "IS_NOT_NAN"), "abcd"},
        {R"({"compositeFilter":{"op":"AND","filters":[)" + where("n", "EQUAL", three) + ',' +
             where("s", "EQUAL", R"({"stringValue":"y"})") + "]}}",
         "c"},
        {R"({"compositeFilter":{"op":"OR","filters":[)" + where("s", "EQUAL", R"({"stringValue":"x"})") +
             ',' + unary("n", "IS_NAN") + "]}}",
         "ae"},
    };
    for (const Row &row : rows)
        EXPECT_EQ(ids(",\"where\":" + row.filter), row.ids) << row.filter.constData();
}

TEST_F(FirestoreQuerying, resultsAreOrderedAndCut)
{
    EXPECT_EQ(ids({}), "abcde");
    EXPECT_EQ(ids(orderBy("n")), "ebacd") << "NaN, then numbers, then texts";
    EXPECT_EQ(ids(orderBy("n", "DESCENDING")), "dcabe") << "equal ones by name in the same direction";
    EXPECT_EQ(ids(orderBy("s")), "abc") << "documents without the field are left out";
    EXPECT_EQ(ids(orderBy("__name__", "DESCENDING")), "edcba");
    EXPECT_EQ(ids(R"(,"limit":2)"), "ab");
    EXPECT_EQ(ids(R"(,"limit":{"value":2},"offset":1)"), "bc");
    EXPECT_EQ(ids(R"(,"offset":9)"), "");
    const QByteArray byNumber = orderBy("n");
    const QByteArray atThree = R"({"values":[{"integerValue":"3"}],"before":)";
    EXPECT_EQ(ids(byNumber + ",\"startAt\":" + atThree + "true}"), "acd");
    EXPECT_EQ(ids(byNumber + ",\"startAt\":" + atThree + "false}"), "d");
    EXPECT_EQ(ids(byNumber + ",\"endAt\":" + atThree + "true}"), "eb");
    EXPECT_EQ(ids(byNumber + ",\"endAt\":" + atThree + "false}"), "ebac");
    EXPECT_EQ(ids(byNumber + R"(,"startAt":{"values":[{"integerValue":"3"},{"referenceValue":")" +
                  name("items/a") + R"("}],"before":false})"),
              "cd");
}

TEST_F(FirestoreQuerying, selectionKeepsItsFieldsOnly)
{
    const QByteArray body = query(R"(,"limit":1,"select":{"fields":[{"fieldPath":"s"}]})").body;
    EXPECT_EQ(QJsonDocument::fromJson(body)[0][u"document"][u"fields"].toObject(),
              json(R"({"s":{"stringValue":"x"}})"));
    const QByteArray names = query(R"(,"limit":1,"select":{"fields":[{"fieldPath":"__name__"}]})").body;
    EXPECT_FALSE(QJsonDocument::fromJson(names)[0][u"document"].toObject().contains(u"fields"));
}

TEST_F(FirestoreQuerying, queryWithoutAResultAnswersItsTime)
{
    const QJsonArray entries = QJsonDocument::fromJson(query(",\"limit\":0").body).array();
    ASSERT_EQ(entries.size(), 1);
    EXPECT_EQ(entries[0].toObject().keys(), QStringList{QStringLiteral("readTime")});
}

TEST_F(FirestoreQuerying, badAndForeignQueriesAreRefused)
{
    struct Row
    {
        QByteArray parts;
        int status;
    };
    const QList<Row> rows{
        {R"(,"where":{})", 400},
        {",\"where\":" + where("n", "LIKE", three), 400},
        {",\"where\":" + where("n..m", "EQUAL", three), 400},
        {",\"where\":" + where("n", "EQUAL", "{}"), 400},
        {",\"where\":" + unary("n", "IS_ODD"), 400},
        {R"(,"where":{"compositeFilter":{"op":"XOR","filters":[]}})", 400},
        {R"(,"limit":-1)", 400},
        {R"(,"limit":"x")", 400},
        {R"(,"startAt":{"values":[{"integerValue":"1"},{"integerValue":"2"}]})", 400},
        {R"(,"findNearest":{})", 501},
    };
    for (const Row &row : rows)
        EXPECT_EQ(query(row.parts).status, row.status) << row.parts.constData();
    EXPECT_EQ(query({}, "artifacts/brevix-app/users/somebody-else").status, 403);
    EXPECT_EQ(query({}, "artifacts/brevix-app/public/data").status, 403);
    EXPECT_EQ(query({}, "artifacts/brevix-app").status, 403);
    const QByteArray everywhere =
        R"({"structuredQuery":{"from":[{"collectionId":"items","allDescendants":true}]}})";
    EXPECT_EQ(send("POST", own.chopped(1) + ":runQuery", everywhere).status, 501);
    EXPECT_EQ(send("POST", own.chopped(1) + ":runQuery", "{}").status, 501);
    Request anonymous = getWithoutToken(documentsPath(own.chopped(1) + ":runQuery"));
    anonymous.method = "POST";
    EXPECT_EQ(status(anonymous), 401);
}

TEST_F(FirestoreQuerying, batchGetTellsFoundFromMissing)
{
    Request request = get("/v1/projects/demo/databases/(default)/documents:batchGet");
    request.method = "POST";
    request.body = R"({"documents":[")" + name("items/b") + R"(",")" + name("items/none") +
                   R"("],"mask":{"fieldPaths":["s"]}})";
    const Response response = service->handle(request);
    ASSERT_EQ(response.status, 200) << response.body.constData();
    const QJsonArray entries = QJsonDocument::fromJson(response.body).array();
    ASSERT_EQ(entries.size(), 2);
    EXPECT_EQ(entries[0][u"found"][u"fields"].toObject(), json(R"({"s":{"stringValue":"y"}})"));
    EXPECT_EQ(entries[1][u"missing"].toString().toLatin1(), name("items/none"));

    request.body =
        R"({"documents":[")" + QByteArray(name("items/b")).replace("local-user", "somebody-else") + R"("]})";
    EXPECT_EQ(status(request), 403);
    request.body = R"({"documents":["nonsense"]})";
    EXPECT_EQ(status(request), 400);
    request.body = R"({"newTransaction":{}})";
    EXPECT_EQ(status(request), 501);
}

TEST_F(FirestoreQuerying, readingByNameHasItsLimit)
{
    const auto batchGet = [this](int count) {
        Request request = get("/v1/projects/demo/databases/(default)/documents:batchGet");
        request.method = "POST";
        const QByteArray element = '"' + name("items/a") + "\",";
        request.body = R"({"documents":[)" + element.repeated(count).chopped(1) + "]}";
        return service->handle(request);
    };
    const Response most = batchGet(FirestoreQueryApi::maximumNames);
    EXPECT_EQ(most.status, 200);
    EXPECT_EQ(QJsonDocument::fromJson(most.body).array().size(), FirestoreQueryApi::maximumNames);
    EXPECT_EQ(batchGet(FirestoreQueryApi::maximumNames + 1).status, 400);
}

TEST_F(FirestoreQuerying, answersThatGrowTooLargeAreRefused)
{
    Database database(databasePath());
    ASSERT_TRUE(database.open());
    const Documents documents(database);
    const DocumentAccess access(QStringLiteral("demo"), QStringLiteral("brevix-app"));
    const auto batchGet = [&](qsizetype maximumSize) {
        const FirestoreQueryApi api(
            documents, access, [this] { return now; }, maximumSize);
        Request request = get({});
        request.body = R"({"documents":[")" + name("items/a") + R"(",")" + name("items/b") + R"("]})";
        return api.batchGet(request, QStringLiteral("local-user")).body.size();
    };
    const qsizetype size = batchGet(10'000);
    EXPECT_EQ(batchGet(size), size);
    EXPECT_THROW(batchGet(size / 2), RequestRefused);
    const auto runQuery = [&](qsizetype maximumSize) {
        const FirestoreQueryApi api(
            documents, access, [this] { return now; }, maximumSize);
        Request request = get({});
        request.body = R"({"structuredQuery":{"from":[{"collectionId":"items"}],"limit":1}})";
        const auto parent = access.resolve(QString::fromLatin1(name({}).chopped(1)));
        return api.runQuery(parent, request, QStringLiteral("local-user")).body.size();
    };
    EXPECT_GT(runQuery(10'000), 0);
    EXPECT_THROW(runQuery(300), RequestRefused) << "the collection is larger, though the answer is not";
}
