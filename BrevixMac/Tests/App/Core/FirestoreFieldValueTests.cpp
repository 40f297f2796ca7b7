// SPDX-License-Identifier: GPL-3.0-or-later
#include "FirestoreFieldValue.h"

#include "Samples.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QUuid>

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;
using Value = FirestoreFieldValue;

namespace {

QJsonObject json(const char *text)
{
    const QJsonDocument document = QJsonDocument::fromJson(text);
    EXPECT_TRUE(document.isObject()) << text;
    return document.object();
}

} // namespace

TEST(FirestoreFieldValue, everyCaseNamesItsType)
{
    EXPECT_EQ(Value::string(u"x"_s).restValue(), json(R"({"stringValue":"x"})"));
    EXPECT_EQ(Value::null().restValue(), json(R"({"nullValue":"NULL_VALUE"})"));
    EXPECT_EQ(Value::timestamp(QDateTime(QDate(2024, 5, 1), QTime(11, 30, 12, 345), Qt::OffsetFromUTC, 7200))
                  .restValue(),
              json(R"({"timestampValue":"2024-05-01T09:30:12.345Z"})"));
    EXPECT_EQ(Value::map({{u"a"_s, Value::string(u"x"_s)}}).restValue(),
              json(R"({"mapValue":{"fields":{"a":{"stringValue":"x"}}}})"));
    EXPECT_EQ(Value::array({}).restValue(), json(R"({"arrayValue":{"values":[]}})"));
    EXPECT_EQ(
        Value::array({Value::map({{u"a"_s, Value::null()}}), Value::string(u"x"_s)}).restValue(),
        json(
            R"({"arrayValue":{"values":[{"mapValue":{"fields":{"a":{"nullValue":"NULL_VALUE"}}}},{"stringValue":"x"}]}})"));
}

TEST(FirestoreRESTError, everyKindHasItsText)
{
    using Kind = FirestoreRESTError::Kind;
    const std::pair<Kind, QString> rows[] = {
        {Kind::invalidURL, u"Brevix couldn't build the Firestore request URL."_s},
        {Kind::invalidResponse, u"Brevix received an invalid Firestore response."_s},
        {Kind::invalidPayload, u"Brevix couldn't decode the Firestore response."_s},
        {Kind::notSignedIn, u"Sign in before creating or sharing prompts, skills, or categories."_s},
    };
    for (const auto &[kind, text] : rows)
        EXPECT_EQ(FirestoreRESTError(kind).description(), text);
    EXPECT_EQ(FirestoreRESTError(Kind::apiError, u"m"_s).description(), u"m"_s);
}

TEST(FirestoreCodec, readsTextsTolerantly)
{
    const std::pair<const char *, std::optional<QString>> rows[] = {
        {R"({"stringValue":"x"})", u"x"_s},
        {R"({"stringValue":""})", u""_s},
        {R"({"integerValue":"42"})", u"42"_s},
        {R"({"integerValue":"12abc"})", u"12abc"_s},
        {R"({"integerValue":42})", std::nullopt},
        {R"({"booleanValue":false})", u"false"_s},
        {R"({"booleanValue":true})", u"true"_s},
        {R"({"booleanValue":"true"})", std::nullopt},
        {R"({"doubleValue":1.5})", std::nullopt},
        {R"({"stringValue":1,"integerValue":"2"})", u"2"_s},
        {R"({"stringValue":"a","integerValue":"2"})", u"a"_s},
        {R"({"nullValue":"NULL_VALUE"})", std::nullopt},
        {"{}", std::nullopt},
    };
    for (const auto &[text, expected] : rows)
        EXPECT_EQ(FirestoreCodec::readString(json(text)), expected) << text;
    for (const QJsonValue &value :
         {QJsonValue(u"x"_s), QJsonValue(1), QJsonValue(QJsonValue::Undefined), QJsonValue()})
        EXPECT_EQ(FirestoreCodec::readString(value), std::nullopt);
}

TEST(FirestoreCodec, readsIntegersTolerantly)
{
    const std::pair<const char *, qint64> rows[] = {
        {R"({"integerValue":"42"})", 42},
        {R"({"integerValue":"+42"})", 42},
        {R"({"integerValue":"-42"})", -42},
        {R"({"integerValue":"9223372036854775807"})", std::numeric_limits<qint64>::max()},
        {R"({"integerValue":"-9223372036854775808"})", std::numeric_limits<qint64>::min()},
        {R"({"integerValue":"9223372036854775808"})", 0},
        {R"({"integerValue":"12abc"})", 0},
        {R"({"integerValue":" 12"})", 0},
        {R"({"integerValue":"+-1"})", 0},
        {R"({"integerValue":""})", 0},
        {R"({"integerValue":"12abc","doubleValue":7.9})", 7},
        {R"({"integerValue":12})", 0},
        {R"({"doubleValue":2.9})", 2},
        {R"({"doubleValue":-2.9})", -2},
        {R"({"doubleValue":5})", 5},
        {R"({"doubleValue":"NaN"})", 0},
        {R"({"stringValue":"5"})", 0},
        {"{}", 0},
    };
    for (const auto &[text, expected] : rows)
        EXPECT_EQ(FirestoreCodec::readInt(json(text)), expected) << text;
    EXPECT_EQ(FirestoreCodec::readInt(QJsonValue(5)), 0);
}

TEST(FirestoreCodecDeathTest, aDoubleThatNoIntegerHoldsStopsTheProgram)
{
    EXPECT_DEATH(FirestoreCodec::readInt(json(R"({"doubleValue":1e300})")), "no 64-bit integer");
    EXPECT_DEATH(FirestoreCodec::readInt(json(R"({"doubleValue":9223372036854775808.0})")),
                 "no 64-bit integer");
}

TEST(FirestoreCodec, readsDatesWithAndWithoutFraction)
{
    const auto read = [](const QString &text) {
        return FirestoreCodec::readDate(QJsonObject{{u"timestampValue"_s, text}});
    };
    EXPECT_EQ(read(u"2024-05-01T09:30:12.345Z"_s), utc(9, 30, 12).addMSecs(345));
    EXPECT_EQ(read(u"2024-05-01T09:30:12Z"_s), utc(9, 30, 12));
    EXPECT_EQ(read(u"2024-05-01T11:30:12+02:00"_s), utc(9, 30, 12));
    EXPECT_EQ(read(u"2024-05-01"_s), std::nullopt);
    EXPECT_EQ(read(u""_s), std::nullopt);
    EXPECT_EQ(FirestoreCodec::readDate(QJsonObject{{u"timestampValue"_s, 5}}), std::nullopt);
    EXPECT_EQ(FirestoreCodec::readDate(QJsonObject{{u"stringValue"_s, u"2024-05-01T09:30:12Z"_s}}),
              std::nullopt);
}

TEST(FirestoreCodec, identifiersAreTheLastPieceOfTheName)
{
    const auto id = [](const QJsonValue &name) { return FirestoreCodec::documentID({{u"name"_s, name}}); };
    EXPECT_EQ(id(u"projects/x/prompts/p1"_s), u"p1"_s);
    EXPECT_EQ(id(u"projects/x/prompts/p1//"_s), u"p1"_s);
    EXPECT_EQ(id(u"p1"_s), u"p1"_s);
    for (const QJsonValue &name :
         {QJsonValue(u""_s), QJsonValue(u"//"_s), QJsonValue(5), QJsonValue(QJsonValue::Undefined)}) {
        const QString first = id(name);
        EXPECT_NE(first, id(name));
        EXPECT_EQ(first, QUuid::fromString(first).toString(QUuid::WithoutBraces).toUpper());
        EXPECT_EQ(first.size(), 36);
    }
}

TEST(FirestoreCodec, pathComponentsAreEncodedForAPath)
{
    EXPECT_EQ(FirestoreCodec::encodedPath(
                  {u"artifacts"_s, u"a b"_s, u"ü"_s, u"x/y"_s, u"a?b#c%"_s, u"~-._!$&'()*+,;=:@"_s}),
              u"artifacts/a%20b/%C3%BC/x/y/a%3Fb%23c%25/~-._!$&'()*+,;=:@"_s);
    EXPECT_EQ(FirestoreCodec::encodedPath({}), u""_s);
    const QString broken = u"a"_s + QChar(0xd800);
    EXPECT_EQ(FirestoreCodec::encodedPath({broken}), broken);
}

TEST(FirestoreCodec, failedAnswersSayWhatTheyCan)
{
    const std::tuple<QByteArray, int, QString> rows[] = {
        {R"({"error":{"message":"PERMISSION_DENIED"}})", 403, u"PERMISSION_DENIED"_s},
        {R"({"error":{"message":5}})", 403, u"{\"error\":{\"message\":5}}"_s},
        {R"([{"error":{"message":"x"}}])", 403, u"[{\"error\":{\"message\":\"x\"}}]"_s},
        {" busy\n", 503, u" busy\n"_s},
        {"", 503, u"Firestore returned HTTP 503."_s},
        {"\xc3\x28", 500, u"Firestore returned HTTP 500."_s},
    };
    for (const auto &[body, status, text] : rows) {
        const FirestoreRESTError error = FirestoreCodec::decodeFirestoreError(body, status);
        EXPECT_EQ(error.kind(), FirestoreRESTError::Kind::apiError);
        EXPECT_EQ(error.description(), text);
    }
}
