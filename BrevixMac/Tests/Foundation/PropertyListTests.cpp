// SPDX-License-Identifier: GPL-3.0-or-later
#include "Foundation/PropertyList.h"

#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <limits>

namespace {

QByteArray xml(const QByteArray &content)
{
    return "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<!DOCTYPE plist PUBLIC \"-//Apple//DTD PLIST "
           "1.0//EN\" "
           "\"http://www.apple.com/DTDs/PropertyList-1.0.dtd\">\n<plist version=\"1.0\">\n" +
           content + "\n</plist>\n";
}

QVariantMap withValue(const QVariant &value)
{
    return {{QStringLiteral("key"), value}};
}

QDateTime utc(int year, int month, int day, int hour, int minute, int second)
{
    return QDateTime(QDate(year, month, day), QTime(hour, minute, second), Qt::UTC);
}

} // namespace

TEST(PropertyList, keepsEveryKindApart)
{
    const QByteArray document =
        xml("<dict><key>text</key><string>a &amp; b</string><key>data</key><data>AAH/</data>"
            "<key>yes</key><true/><key>no</key><false/><key>integer</key><integer>42</integer>"
            "<key>real</key><real>1.5</real><key>date</key><date>2024-05-01T09:30:12Z</date>"
            "<key>list</key><array><string>x</string><true/></array>"
            "<key>dictionary</key><dict><key>inner</key><string>y</string></dict></dict>");
    const QVariantMap expected{
        {QStringLiteral("text"), QStringLiteral("a & b")},
        {QStringLiteral("data"), QByteArray("\x00\x01\xFF", 3)},
        {QStringLiteral("yes"), true},
        {QStringLiteral("no"), false},
        {QStringLiteral("integer"), 42LL},
        {QStringLiteral("real"), 1.5},
        {QStringLiteral("date"), utc(2024, 5, 1, 9, 30, 12)},
        {QStringLiteral("list"), QVariantList{QStringLiteral("x"), true}},
        {QStringLiteral("dictionary"), QVariantMap{{QStringLiteral("inner"), QStringLiteral("y")}}},
    };
    const auto parsed = PropertyList::parseDictionary(document);
    ASSERT_TRUE(parsed);
    ASSERT_EQ(parsed->keys(), expected.keys());
    for (auto entry = expected.begin(); entry != expected.end(); ++entry) {
        EXPECT_EQ(parsed->value(entry.key()).typeId(), entry.value().typeId()) << qPrintable(entry.key());
        EXPECT_EQ(parsed->value(entry.key()), entry.value()) << qPrintable(entry.key());
    }
    EXPECT_EQ(PropertyList::parseDictionary(PropertyList::serialize(expected)), expected);
}

TEST(PropertyList, readsTheBinaryForm)
{
    // {"a": true, "b": "x"} as other systems write it
    const QByteArray binary = QByteArray::fromHex("62706c6973743030d2010203045161516209517808"
                                                  "0d0f111200000000000001010000000000000005"
                                                  "00000000000000000000000000000014");
    const auto parsed = PropertyList::parseDictionary(binary);
    ASSERT_TRUE(parsed);
    EXPECT_EQ(*parsed,
              QVariantMap({{QStringLiteral("a"), true}, {QStringLiteral("b"), QStringLiteral("x")}}));
}

TEST(PropertyList, readsBackWhatItWrites)
{
    QByteArray bytes;
    for (int byte = 0; byte < 256; ++byte)
        bytes.append(static_cast<char>(byte));
    const QVariantList values{QString(),
                              QStringLiteral("<>&\"' ]]>"),
                              QStringLiteral("é e\u0301 ß 漢字 👩‍👩‍👧"),
                              QStringLiteral(" both ends "),
                              QStringLiteral("\n\r\n\t"),
                              QStringLiteral("&amp; &#65;"),
                              QByteArray(""),
                              bytes,
                              QByteArray(100000, 'x'),
                              true,
                              false,
                              0LL,
                              -1LL,
                              std::numeric_limits<qlonglong>::max(),
                              std::numeric_limits<qlonglong>::min(),
                              0.5,
                              -1e-7,
                              1e300,
                              utc(1970, 1, 1, 0, 0, 0),
                              utc(2001, 1, 1, 0, 0, 0),
                              utc(2038, 12, 31, 23, 59, 59),
                              QVariantList(),
                              QVariantMap(),
                              QVariantList{QVariantList{QVariantMap{{QStringLiteral("deep"), 1LL}}}}};
    for (const QVariant &value : values) {
        const auto parsed = PropertyList::parseDictionary(PropertyList::serialize(withValue(value)));
        ASSERT_TRUE(parsed) << qPrintable(value.toString());
        const QVariant read = parsed->value(QStringLiteral("key"));
        EXPECT_EQ(read.typeId(), value.typeId()) << qPrintable(value.toString());
        EXPECT_EQ(read, value) << qPrintable(value.toString()) << " became " << qPrintable(read.toString());
    }
}

TEST(PropertyList, keepsEveryControlCharacterButNull)
{
    for (char16_t unit = 1; unit < 0xA0; ++unit) {
        const QString text = QStringLiteral("a%1b").arg(QChar(unit));
        const QVariantMap dictionary{{text, text}};
        EXPECT_EQ(PropertyList::parseDictionary(PropertyList::serialize(dictionary)), dictionary)
            << int(unit);
    }
}

TEST(PropertyList, aNullCharacterIsReplacedInsteadOfCuttingTheText)
{
    const QString text = QStringLiteral("a%1b").arg(QChar(QChar::Null));
    EXPECT_EQ(PropertyList::parseDictionary(PropertyList::serialize(withValue(text))),
              withValue(QStringLiteral("a\uFFFDb")));
}

TEST(PropertyList, leavesOutWhatPropertyListsDoNotHave)
{
    const QVariantMap dictionary{
        {QStringLiteral("a"), QVariant()},  {QStringLiteral("b"), QVariant::fromValue(QChar(u'x'))},
        {QStringLiteral("c"), QDateTime()}, {QStringLiteral("d"), QVariantList{QVariant(), 1LL}},
        {QStringLiteral("e"), true},
    };
    const QVariantMap expected{{QStringLiteral("d"), QVariantList{1LL}}, {QStringLiteral("e"), true}};
    EXPECT_EQ(PropertyList::parseDictionary(PropertyList::serialize(dictionary)), expected);
}

TEST(PropertyList, writesXml)
{
    const QByteArray document = PropertyList::serialize(withValue(true));
    EXPECT_TRUE(document.startsWith("<?xml version=\"1.0\" encoding=\"UTF-8\"?>")) << document.constData();
    EXPECT_TRUE(document.contains("<key>key</key>"));
    EXPECT_TRUE(document.trimmed().endsWith("</plist>"));
}

TEST(PropertyList, anEmptyDictionaryIsADictionary)
{
    EXPECT_EQ(PropertyList::parseDictionary(PropertyList::serialize({})), QVariantMap());
    EXPECT_EQ(PropertyList::parseDictionary(xml("<dict/>")), QVariantMap());
}

TEST(PropertyList, takesNothingThatIsNoDictionary)
{
    const QByteArray whole = PropertyList::serialize(withValue(QStringLiteral("value")));
    for (const QByteArray &bytes :
         {QByteArray(), QByteArray("garbage"), QByteArray("{\"json\": true}"), QByteArray("bplist00"),
          QByteArray("bplist00\xd1\x01\x02", 11), xml("<array/>"), xml("<string>x</string>"), xml("<true/>"),
          xml(""), xml("<dict><string>a</string></dict>"), xml("<dict><key>a</key><true/>"),
          QByteArray(64, '\0'), QByteArray("\xFF\xFE<\0p\0", 6), whole.first(whole.size() / 2)})
        EXPECT_FALSE(PropertyList::parseDictionary(bytes)) << bytes.constData();
}

TEST(PropertyList, noBeginningOfADocumentIsTakenForTheWholeWithFewerValues)
{
    const QVariantMap dictionary{{QStringLiteral("a"), QStringLiteral("first")}, {QStringLiteral("b"), true}};
    const QByteArray whole = PropertyList::serialize(dictionary);
    for (qsizetype size = 0; size < whole.size(); ++size) {
        const auto parsed = PropertyList::parseDictionary(whole.first(size));
        EXPECT_TRUE(!parsed || *parsed == dictionary) << whole.first(size).constData();
    }
}

TEST(PropertyList, listsThatAreTooDeepAreRefused)
{
    for (const int depth : {200, 100000}) {
        const QByteArray document = xml("<dict><key>a</key>" + QByteArray("<array>").repeated(depth) +
                                        QByteArray("</array>").repeated(depth) + "</dict>");
        EXPECT_FALSE(PropertyList::parseDictionary(document)) << depth;
    }
}

TEST(PropertyList, readsFiles)
{
    const QTemporaryDir folder;
    const QString path = folder.filePath(QStringLiteral("a.plist"));
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write(PropertyList::serialize(withValue(true)));
    file.close();
    EXPECT_EQ(PropertyList::readDictionary(path), withValue(true));
}

TEST(PropertyList, filesThatAreMissingOddOrTooLargeReadAsNothing)
{
    const QTemporaryDir folder;
    const QString path = folder.filePath(QStringLiteral("a.plist"));
    EXPECT_FALSE(PropertyList::readDictionary(path));
    EXPECT_FALSE(PropertyList::readDictionary(QString()));
    EXPECT_FALSE(PropertyList::readDictionary(folder.path()));
    EXPECT_FALSE(PropertyList::readDictionary(QStringLiteral("/dev/zero")));
    const QByteArray document = PropertyList::serialize(withValue(true));
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write(document + QByteArray(PropertyList::maximumSize - document.size(), '\n'));
    file.flush();
    EXPECT_EQ(PropertyList::readDictionary(path), withValue(true)) << "the largest";
    file.write("\n");
    file.flush();
    EXPECT_FALSE(PropertyList::readDictionary(path)) << "one byte more";
}
