// SPDX-License-Identifier: GPL-3.0-or-later
#include "LocalCloud/FirestoreWritingFixture.h"

#include <QRegularExpression>

#include <ctime>

using namespace Cloud;

namespace {

class FirestoreWriting : public FirestoreWritingFixture
{
};

const QByteArray titleA = R"({"fields":{"title":{"stringValue":"A"}}})";

QByteArray code(const Response &response)
{
    return errorOf(response).value(u"status").toString().toLatin1();
}

} // namespace

TEST_F(FirestoreWriting, createdDocumentIsNamedByTheServerAndAnsweredWhole)
{
    const Response response = send("POST", own + "prompts", titleA);
    ASSERT_EQ(response.status, 200) << response.body.constData();
    const QString name = jsonOf(response).value(u"name").toString();
    const QString id = name.section(u'/', -1);
    EXPECT_TRUE(QRegularExpression(QStringLiteral("^[A-Za-z0-9]{20}$")).match(id).hasMatch());
    EXPECT_TRUE(jsonOf(response).contains(u"createTime"));
    EXPECT_EQ(jsonOf(response).value(u"updateTime"), jsonOf(response).value(u"createTime"));
    EXPECT_EQ(answer(get(libraryPath("prompts/" + id.toLatin1()))), jsonOf(response));
}

TEST_F(FirestoreWriting, documentIsCreatedOnceUnderTheNameThatIsAskedFor)
{
    EXPECT_EQ(send("POST", own + "notes", titleA, "documentId=n1").status, 200);
    EXPECT_EQ(code(send("POST", own + "notes", titleA, "documentId=n1")), "ALREADY_EXISTS");
    for (const QByteArray id : {"a%2Fb", "..", "."})
        EXPECT_EQ(send("POST", own + "notes", titleA, "documentId=" + id).status, 400) << id.constData();
}

TEST_F(FirestoreWriting, namesSurviveTheirEncoding)
{
    for (const QByteArray id : {"a%20b", "50%25", "%F0%9F%98%80", "a+b", "(x)", "a:b", "%3F%23%26", "é"}) {
        ASSERT_EQ(send("PATCH", own + "notes/" + id, titleA).status, 200) << id.constData();
        const QString name = answer(get(libraryPath("notes/" + id))).value(u"name").toString();
        EXPECT_EQ(name.section(u'/', -1).toUtf8(), QByteArray::fromPercentEncoding(id));
    }
    EXPECT_EQ(send("PATCH", own + "notes/a%2Fb", titleA).status, 400) << "no name holds a slash";
}

TEST_F(FirestoreWriting, patchWithoutAMaskReplacesTheWholeDocumentAndKeepsItsBeginning)
{
    const Timestamp before = now;
    send("PATCH", own + "notes/n", R"({"fields":{"a":{"stringValue":"1"},"b":{"stringValue":"2"}}})");
    now += std::chrono::seconds(5);
    const QJsonObject document =
        jsonOf(send("PATCH", own + "notes/n", R"({"fields":{"a":{"stringValue":"3"}}})"));
    EXPECT_EQ(document.value(u"fields").toObject(), json(R"({"a":{"stringValue":"3"}})"));
    EXPECT_EQ(document.value(u"createTime").toString().toLatin1(), formatTimestamp(before));
    EXPECT_EQ(document.value(u"updateTime").toString().toLatin1(), formatTimestamp(now));
}

TEST_F(FirestoreWriting, maskChangesItsFieldsOnly)
{
    send(
        "PATCH", own + "notes/n",
        R"({"fields":{"a":{"stringValue":"1"},"b":{"stringValue":"2"},"m":{"mapValue":{"fields":{"x":{"integerValue":"1"},"y":{"integerValue":"2"}}}}}})");
    const Response response = send(
        "PATCH", own + "notes/n",
        R"({"fields":{"a":{"stringValue":"9"},"z":{"stringValue":"ignored"},"m":{"mapValue":{"fields":{"x":{"integerValue":"7"}}}}}})",
        "updateMask.fieldPaths=a&updateMask.fieldPaths=b&updateMask.fieldPaths=m.x&updateMask.fieldPaths=%"
        "60q%20r%60.s");
    ASSERT_EQ(response.status, 200) << response.body.constData();
    EXPECT_EQ(
        fieldsOf("notes/n"),
        json(
            R"({"a":{"stringValue":"9"},"m":{"mapValue":{"fields":{"x":{"integerValue":"7"},"y":{"integerValue":"2"}}}}})"));
    for (const QByteArray path : {"", "a..b", "1a", "%60a", "a%20b", "a.", ".a"})
        EXPECT_EQ(send("PATCH", own + "notes/n", titleA, "updateMask.fieldPaths=" + path).status, 400)
            << path.constData();
}

TEST_F(FirestoreWriting, preconditionsAreKept)
{
    const QByteArray exists = "currentDocument.exists=";
    EXPECT_EQ(code(send("PATCH", own + "notes/n", titleA, exists + "true")), "NOT_FOUND");
    EXPECT_EQ(code(send("DELETE", own + "notes/n", {}, exists + "true")), "NOT_FOUND");
    const QJsonObject made = jsonOf(send("PATCH", own + "notes/n", titleA, exists + "false"));
    EXPECT_EQ(code(send("PATCH", own + "notes/n", titleA, exists + "false")), "ALREADY_EXISTS");
    const QByteArray time = "currentDocument.updateTime=";
    EXPECT_EQ(code(send("PATCH", own + "notes/n", titleA, time + "2020-01-01T00:00:00Z")),
              "FAILED_PRECONDITION");
    EXPECT_EQ(code(send("DELETE", own + "notes/n", {}, time + "2020-01-01T00:00:00Z")),
              "FAILED_PRECONDITION");
    EXPECT_EQ(
        send("DELETE", own + "notes/n", {}, time + made.value(u"updateTime").toString().toLatin1()).status,
        200);
    for (const QByteArray query :
         {"currentDocument.exists=yes", "currentDocument.updateTime=x",
          "currentDocument.exists=true&currentDocument.updateTime=2020-01-01T00:00:00Z"})
        EXPECT_EQ(send("PATCH", own + "notes/n", titleA, query).status, 400) << query.constData();
}

TEST_F(FirestoreWriting, deletedDocumentIsGoneAndDeletingTwiceIsNoError)
{
    send("PATCH", own + "notes/n", titleA);
    EXPECT_EQ(send("DELETE", own + "notes/n").body, "{}");
    EXPECT_EQ(status(get(libraryPath("notes/n"))), 404);
    EXPECT_EQ(send("DELETE", own + "notes/n").status, 200);
}

TEST_F(FirestoreWriting, everyTypeOfValueComesBackInItsOneForm)
{
    struct Row
    {
        QByteArray sent, kept;
    };
    const QList<Row> rows{
        {R"({"nullValue":"NULL_VALUE"})", R"({"nullValue":null})"},
        {R"({"nullValue":null})", R"({"nullValue":null})"},
        {R"({"booleanValue":true})", R"({"booleanValue":true})"},
        {R"({"integerValue":"-9223372036854775808"})", R"({"integerValue":"-9223372036854775808"})"},
        {R"({"integerValue":42})", R"({"integerValue":"42"})"},
        {R"({"doubleValue":2.5})", R"({"doubleValue":2.5})"},
        {R"({"doubleValue":"NaN"})", R"({"doubleValue":"NaN"})"},
        {R"({"doubleValue":"-Infinity"})", R"({"doubleValue":"-Infinity"})"},
        {R"({"timestampValue":"2024-05-01T11:30:12.123456789+02:00"})",
         R"({"timestampValue":"2024-05-01T09:30:12.123456Z"})"},
        {R"({"timestampValue":"2024-05-01T09:30:12.3Z"})",
         R"({"timestampValue":"2024-05-01T09:30:12.300Z"})"},
        {R"({"stringValue":"ü\u0000\"😀\n"})", R"({"stringValue":"ü\u0000\"😀\n"})"},
        {R"({"bytesValue":"-_8="})", R"({"bytesValue":"+/8="})"},
        {R"({"referenceValue":"projects/p/databases/d/documents/a/b"})",
         R"({"referenceValue":"projects/p/databases/d/documents/a/b"})"},
        {R"({"geoPointValue":{"latitude":1.5}})", R"({"geoPointValue":{"latitude":1.5,"longitude":0}})"},
        {R"({"arrayValue":{}})", R"({"arrayValue":{}})"},
        {R"({"arrayValue":{"values":[{"mapValue":{"fields":{"t":{"stringValue":"x"}}}},{"integerValue":1}]}})",
         R"({"arrayValue":{"values":[{"mapValue":{"fields":{"t":{"stringValue":"x"}}}},{"integerValue":"1"}]}})"},
        {R"({"mapValue":{"fields":{"a b/%":{"mapValue":{}}}}})",
         R"({"mapValue":{"fields":{"a b/%":{"mapValue":{}}}}})"},
    };
    for (const Row &row : rows) {
        const Response response = send("PATCH", own + "notes/n", "{\"fields\":{\"v\":" + row.sent + "}}");
        ASSERT_EQ(response.status, 200) << row.sent.constData() << response.body.constData();
        EXPECT_EQ(fieldsOf("notes/n").value(u"v").toObject(), json(row.kept)) << row.sent.constData();
    }
}

TEST_F(FirestoreWriting, whatIsNoValueIsRefusedAndNothingIsWritten)
{
    QByteArray deep = R"({"integerValue":"1"})";
    for (int i = 0; i < 20; ++i)
        deep = R"({"mapValue":{"fields":{"m":)" + deep + "}}}";
    for (const QByteArray &value :
         {QByteArray(R"({})"), QByteArray(R"("text")"), QByteArray(R"({"stringValue":1})"),
          QByteArray(R"({"stringValue":"a","integerValue":"1"})"), QByteArray(R"({"integerValue":"1.5"})"),
          QByteArray(R"({"integerValue":"9223372036854775808"})"), QByteArray(R"({"integerValue":1.5})"),
          QByteArray(R"({"doubleValue":"x"})"), QByteArray(R"({"timestampValue":"2024-05-01"})"),
          QByteArray(R"({"timestampValue":"2024-13-01T00:00:00Z"})"), QByteArray(R"({"bytesValue":"*"})"),
          QByteArray(R"({"geoPointValue":{"latitude":91}})"), QByteArray(R"({"unknownValue":1})"),
          QByteArray(R"({"nullValue":1})"), QByteArray(R"({"booleanValue":"true"})"),
          QByteArray(R"({"mapValue":{"fields":{"":{"nullValue":null}}}})"),
          QByteArray(R"({"mapValue":{"fields":{"__x__":{"nullValue":null}}}})"),
          QByteArray(R"({"arrayValue":{"values":[{"arrayValue":{}}]}})"), deep})
        EXPECT_EQ(send("PATCH", own + "notes/n", "{\"fields\":{\"v\":" + value + "}}").status, 400)
            << value.left(80).constData();
    for (const QByteArray &body :
         {QByteArray("{"), QByteArray("[]"), QByteArray("\xff\xfe"), QByteArray(R"({"fields":[]})"),
          QByteArray("{\"fields\":{\"v\":{\"stringValue\":\"" + QByteArray(3 << 20, 'x') + "\"}}}")})
        EXPECT_EQ(send("PATCH", own + "notes/n", body).status, 400) << body.left(20).constData();
    EXPECT_EQ(status(get(libraryPath("notes/n"))), 404);
}

TEST_F(FirestoreWriting, otherUsersDocumentsCannotBeTouched)
{
    send("PATCH", own + "notes/n", titleA);
    const QByteArray notes = own + "notes";
    for (const auto &[method, path] : QList<QPair<QByteArray, QByteArray>>{{"POST", notes},
                                                                           {"PATCH", notes + "/n"},
                                                                           {"DELETE", notes + "/n"},
                                                                           {"GET", notes},
                                                                           {"GET", notes + "/n"}})
        EXPECT_EQ(service->handle(asSomebodyElse(request(method, path, titleA))).status, 403)
            << method.constData();
    for (const QByteArray path :
         {"other/place", "artifacts/brevix-app/users", "artifacts/other/users/local-user/notes/n",
          "artifacts/brevix-app/public/other/x/y", "artifacts/brevix-app/users/local-user"})
        EXPECT_EQ(send("PATCH", path, titleA).status == 200, false) << path.constData();
    Request stranger = getWithoutToken(documentsPath(own + "notes/n"));
    for (const QByteArray method : {"GET", "PATCH", "DELETE", "POST"}) {
        stranger.method = method;
        EXPECT_EQ(status(stranger), 401) << method.constData();
    }
}

TEST_F(FirestoreWriting, sharedDocumentIsReadByAnybodyWhoKnowsItsNameAndChangedByItsCreatorOnly)
{
    ASSERT_EQ(send("PATCH", shared + "s1", titleA).status, 200);
    EXPECT_EQ(status(getWithoutToken(documentsPath(shared + "s1"))), 200);
    EXPECT_EQ(status(getWithoutToken(documentsPath(shared + "none"))), 404);
    EXPECT_EQ(status(getWithoutToken(documentsPath(shared.chopped(1)))), 401) << "the list";
    EXPECT_EQ(status(get(documentsPath(shared.chopped(1)))), 403) << "the list, signed in";
    Request badToken = getWithoutToken(documentsPath(shared + "s1"));
    badToken.headers.emplaceBack("authorization", "Bearer nonsense");
    EXPECT_EQ(status(badToken), 401);

    for (const QByteArray method : {"PATCH", "DELETE"})
        EXPECT_EQ(service->handle(asSomebodyElse(request(method, shared + "s1", titleA))).status, 403);
    EXPECT_EQ(service->handle(asSomebodyElse(request("PATCH", shared + "s2", titleA))).status, 200);
    EXPECT_EQ(send("PATCH", shared + "s2", titleA).status, 403);
    EXPECT_EQ(send("PATCH", shared + "s1", titleA).status, 200);
    EXPECT_EQ(send("DELETE", shared + "s1").status, 200);
}

TEST_F(FirestoreWriting, commitCarriesOutAllWrites)
{
    send("PATCH", own + "notes/old", titleA);
    const Response response =
        commit(R"({"update":{"name":")" + name("notes/n") + R"(","fields":{"a":{"integerValue":"1"}}}},)" +
               R"({"delete":")" + name("notes/old") + R"("})");
    ASSERT_EQ(response.status, 200) << response.body.constData();
    EXPECT_EQ(jsonOf(response).value(u"writeResults").toArray().size(), 2);
    EXPECT_EQ(jsonOf(response).value(u"commitTime").toString().toLatin1(), formatTimestamp(now));
    EXPECT_EQ(fieldsOf("notes/n"), json(R"({"a":{"integerValue":"1"}})"));
    EXPECT_EQ(status(get(libraryPath("notes/old"))), 404);
}

TEST_F(FirestoreWriting, commitThatFailsHalfwayWritesNothing)
{
    const QByteArray good = R"({"update":{"name":")" + name("notes/n") + R"(","fields":{}}},)";
    const QByteArray foreign = QByteArray(name("notes/x")).replace("local-user", "somebody-else");
    for (const QByteArray &bad :
         {QByteArray(R"({"update":{"name":")" + name("notes/m") + R"("},"currentDocument":{"exists":true}})"),
          QByteArray(R"({"verify":")" + name("notes/m") + R"(","currentDocument":{"exists":true}})"),
          QByteArray(R"({"delete":")" + foreign + R"("})"), QByteArray(R"({"verify":")" + foreign + R"("})"),
          QByteArray(R"({"delete":"projects/other/databases/(default)/documents/a/b"})"),
          QByteArray(R"({"delete":"a/b"})"), QByteArray(R"({})"),
          QByteArray(R"({"update":{"name":")" + name("notes") + R"("}})"),
          QByteArray(R"({"update":{"name":")" + name("notes/m") + R"("},"currentDocument":{"x":1}})")})
        EXPECT_NE(commit(good + bad).status, 200) << bad.constData();
    EXPECT_EQ(status(get(libraryPath("notes/n"))), 404);
    QByteArray many = good.repeated(501);
    EXPECT_EQ(commit(many.chopped(1)).status, 400);
}

TEST_F(FirestoreWriting, transformsAreCarriedOutOnTheServer)
{
    send(
        "PATCH", own + "notes/n",
        R"({"fields":{"i":{"integerValue":"9223372036854775800"},"d":{"integerValue":"1"},"t":{"stringValue":"text"},
            "a":{"arrayValue":{"values":[{"integerValue":"1"},{"stringValue":"x"}]}},"hi":{"integerValue":"5"},"lo":{"integerValue":"5"}}})");
    const Response response = commit(R"({"update":{"name":")" + name("notes/n") +
                                     R"("},"updateMask":{"fieldPaths":[]},"updateTransforms":[
            {"fieldPath":"at","setToServerValue":"REQUEST_TIME"},{"fieldPath":"i","increment":{"integerValue":"100"}},
            {"fieldPath":"d","increment":{"doubleValue":0.5}},{"fieldPath":"t","increment":{"integerValue":"3"}},
            {"fieldPath":"a","appendMissingElements":{"values":[{"doubleValue":1},{"stringValue":"y"}]}},
            {"fieldPath":"new.b","appendMissingElements":{"values":[{"stringValue":"z"}]}},
            {"fieldPath":"hi","maximum":{"integerValue":"9"}},{"fieldPath":"lo","minimum":{"doubleValue":7.5}}]})");
    ASSERT_EQ(response.status, 200) << response.body.constData();
    const QJsonObject fields = fieldsOf("notes/n");
    EXPECT_EQ(fields.value(u"at").toObject().value(u"timestampValue").toString().toLatin1(),
              formatTimestamp(now));
    EXPECT_EQ(fields.value(u"i").toObject(), json(R"({"integerValue":"9223372036854775807"})"));
    EXPECT_EQ(fields.value(u"d").toObject(), json(R"({"doubleValue":1.5})"));
    EXPECT_EQ(fields.value(u"t").toObject(), json(R"({"integerValue":"3"})"));
    EXPECT_EQ(
        fields.value(u"a").toObject(),
        json(R"({"arrayValue":{"values":[{"integerValue":"1"},{"stringValue":"x"},{"stringValue":"y"}]}})"));
    EXPECT_EQ(fields.value(u"hi").toObject(), json(R"({"integerValue":"9"})"));
    EXPECT_EQ(fields.value(u"lo").toObject(), json(R"({"integerValue":"5"})"));
    const QJsonArray results =
        jsonOf(response).value(u"writeResults")[0].toObject().value(u"transformResults").toArray();
    ASSERT_EQ(results.size(), 8);
    EXPECT_EQ(results[4].toObject(), json(R"({"nullValue":null})"));

    EXPECT_EQ(
        commit(
            R"({"transform":{"document":")" + name("notes/n") +
            R"(","fieldTransforms":[{"fieldPath":"a","removeAllFromArray":{"values":[{"stringValue":"x"}]}}]}})")
            .status,
        200);
    EXPECT_EQ(fieldsOf("notes/n").value(u"a").toObject(),
              json(R"({"arrayValue":{"values":[{"integerValue":"1"},{"stringValue":"y"}]}})"));
    for (const QByteArray transform : {R"({"fieldPath":"a","increment":{"stringValue":"x"}})",
                                       R"({"fieldPath":"a","multiply":{"integerValue":"2"}})",
                                       R"({"fieldPath":"a","setToServerValue":"x"})", R"({"fieldPath":"a"})",
                                       R"({"increment":{"integerValue":"1"}})"})
        EXPECT_EQ(commit(R"({"transform":{"document":")" + name("notes/n") + R"(","fieldTransforms":[)" +
                         transform + "]}}")
                      .status,
                  400)
            << transform.constData();
}

TEST_F(FirestoreWriting, whatIsNotDoneSaysSo)
{
    for (const QByteArray operation : {":batchWrite", ":beginTransaction", ":rollback", ":listen", ":write",
                                       ":runAggregationQuery", ":nonsense"}) {
        Request request = get("/v1/projects/demo/databases/(default)/documents" + operation);
        request.method = "POST";
        EXPECT_EQ(code(service->handle(request)), "UNIMPLEMENTED") << operation.constData();
    }
    EXPECT_EQ(send("PATCH", own + "notes/n", titleA, "mask.fieldPaths=a").status, 501);
    EXPECT_EQ(send("PATCH", own + "notes/n", titleA, "nonsense=a").status, 400);
    for (const auto &[method, path] : QList<QPair<QByteArray, QByteArray>>{{"POST", own + "notes/n"},
                                                                           {"PATCH", own + "notes"},
                                                                           {"DELETE", own + "notes"},
                                                                           {"PUT", own + "notes/n"}})
        EXPECT_EQ(send(method, path, titleA).status, 404) << method.constData();
}

TEST_F(FirestoreWriting, fieldPathsHaveTheirLimits)
{
    const QByteArray deep = QByteArray("a.").repeated(19) + 'a';
    const struct
    {
        QByteArray path;
        int status;
    } cases[] = {{deep, 200},
                 {"a." + deep, 400},
                 {QByteArray("a.").repeated(1'000'000) + 'a', 400},
                 {QByteArray(1500, 'x'), 200},
                 {QByteArray(1501, 'x'), 400},
                 {QByteArray(750, 'x') + '.' + QByteArray(749, 'y'), 200},
                 {QByteArray(750, 'x') + '.' + QByteArray(750, 'y'), 400},
                 {'`' + QByteArray(1500, '.') + '`', 200},
                 {'`' + QByteArray(2'000'000, '.') + '`', 400}};
    for (const auto &[path, expected] : cases) {
        const QByteArray transform = R"({"transform":{"document":")" + name("n/x") +
                                     R"(","fieldTransforms":[{"fieldPath":")" + path +
                                     R"(","setToServerValue":"REQUEST_TIME"}]}})";
        EXPECT_EQ(commit(transform).status, expected) << path.left(60).constData() << ' ' << path.size();
    }
}

TEST_F(FirestoreWriting, listsOfFieldsAndTransformsHaveTheirLimits)
{
    const auto list = [](const QByteArray &element, int count) {
        return QByteArray(element + ',').repeated(count).chopped(1);
    };
    const QByteArray transform = R"({"fieldPath":"n","increment":{"integerValue":"1"}})";
    const QByteArray document = R"({"update":{"name":")" + name("n/x") + R"("})";
    const struct
    {
        QByteArray rest;
        int status;
    } cases[] = {{R"(,"updateMask":{"fieldPaths":[)" + list(R"("a")", 1000) + "]}", 200},
                 {R"(,"updateMask":{"fieldPaths":[)" + list(R"("a")", 1001) + "]}", 400},
                 {R"(,"updateTransforms":[)" + list(transform, 500) + "]", 200},
                 {R"(,"updateTransforms":[)" + list(transform, 501) + "]", 400}};
    for (const auto &[rest, expected] : cases)
        EXPECT_EQ(commit(document + rest + '}').status, expected) << rest.left(60).constData();
    EXPECT_EQ(fieldsOf("n/x"), json(R"({"n":{"integerValue":"500"}})"));
}

TEST_F(FirestoreWriting, largeListsAreUnitedAndReducedWithoutComparingAllWithAll)
{
    QByteArray numbers, doubles;
    for (int i = 0; i < 16'000; ++i) {
        numbers += R"(,{"integerValue":")" + QByteArray::number(i) + "\"}";
        doubles += R"(,{"doubleValue":)" + QByteArray::number(i + 8'000) + '}';
    }
    const auto transform = [this](const QByteArray &kind, const QByteArray &values) {
        return commit(R"({"transform":{"document":")" + name("n/x") +
                      R"(","fieldTransforms":[{"fieldPath":"l",")" + kind + R"(":{"values":[)" +
                      values.sliced(1) + "]}}]}}");
    };
    const auto length = [this] {
        return fieldsOf("n/x").value(u"l")[u"arrayValue"][u"values"].toArray().size();
    };
    const std::clock_t before = std::clock(); // processor time, so that a busy machine makes no difference
    EXPECT_EQ(transform("appendMissingElements", numbers).status, 200);
    EXPECT_EQ(transform("appendMissingElements", doubles).status, 200);
    EXPECT_EQ(length(), 24'000) << "1 and 1.0 are equal";
    EXPECT_EQ(transform("removeAllFromArray", doubles).status, 200);
    EXPECT_EQ(length(), 8'000);
    EXPECT_LT((std::clock() - before) / CLOCKS_PER_SEC, 20) << "all with all takes minutes";
    const QByteArray huge = R"(,{"stringValue":")" + QByteArray(2 * 1024 * 1024, 'x') + "\"}";
    EXPECT_EQ(transform("appendMissingElements", huge).status, 400);
    EXPECT_EQ(transform("removeAllFromArray", huge).status, 400);
}

TEST_F(FirestoreWriting, integersKeepEveryDigitOrAreRefused)
{
    const struct
    {
        QByteArray sent;
        QByteArray stored; // empty: refused
    } cases[] = {{"9007199254740993", "9007199254740993"},
                 {"9223372036854775807", "9223372036854775807"},
                 {"-9223372036854775808", "-9223372036854775808"},
                 {R"("9223372036854775807")", "9223372036854775807"},
                 {"9223372036854775808", ""},
                 {R"("9223372036854775808")", ""},
                 {"9.25e18", ""},
                 {"-9.25e18", ""},
                 {"1e300", ""},
                 {"1.5", ""},
                 {"4e18", "4000000000000000000"}};
    for (const auto &[sent, stored] : cases) {
        const int status =
            send("PATCH", own + "n/i", R"({"fields":{"i":{"integerValue":)" + sent + "}}}").status;
        EXPECT_EQ(status, stored.isEmpty() ? 400 : 200) << sent.constData();
        if (!stored.isEmpty()) {
            EXPECT_EQ(fieldsOf("n/i").value(u"i")[u"integerValue"].toString().toLatin1(), stored)
                << sent.constData();
        }
    }
}
