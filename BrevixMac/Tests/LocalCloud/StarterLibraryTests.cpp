// SPDX-License-Identifier: GPL-3.0-or-later
#include "LocalCloud/ServiceFixture.h"

#include <QRegularExpression>
#include <QSet>
#include <QSqlQuery>

using namespace Cloud;

namespace {

QString text(const QJsonValue &document, const QString &field)
{
    return document[u"fields"][field][u"stringValue"].toString();
}

QString idOf(const QJsonValue &document)
{
    return document[u"name"].toString().section(u'/', -1);
}

class StarterLibrary : public ServiceFixture
{
protected:
    QJsonArray documents(const QByteArray &collection)
    {
        return answer(get(libraryPath(collection), "pageSize=500")).value(u"documents").toArray();
    }

    static QStringList variablesOf(const QString &prompt)
    {
        static const QRegularExpression pattern(QStringLiteral("\\{\\{([^{}]+)\\}\\}"));
        QStringList names;
        for (auto match = pattern.globalMatch(prompt); match.hasNext();)
            names.append(match.next().captured(1));
        return names;
    }
};

} // namespace

TEST_F(StarterLibrary, freshDatabaseHoldsALibraryToStartWith)
{
    EXPECT_EQ(documents("categories").size(), 5);
    EXPECT_GE(documents("prompts").size(), 20);
    EXPECT_EQ(documents("skills").size(), 6);
}

TEST_F(StarterLibrary, categoriesHaveTheProductsColours)
{
    QSet<QString> colours;
    const QJsonArray categories = documents("categories");
    for (const QJsonValue &category : categories) {
        colours.insert(text(category, QStringLiteral("color")));
        EXPECT_FALSE(text(category, QStringLiteral("name")).isEmpty());
    }
    EXPECT_EQ(colours,
              (QSet<QString>{QStringLiteral("#8b5cf6"), QStringLiteral("#3b82f6"), QStringLiteral("#10b981"),
                             QStringLiteral("#ec4899"), QStringLiteral("#f97316")}));
}

TEST_F(StarterLibrary, everyPromptHasItsTextsAndAnExistingCategory)
{
    QSet<QString> categories;
    QSet<QString> used;
    for (const QJsonValue &category : documents("categories"))
        categories.insert(idOf(category));
    for (const QJsonValue &prompt : documents("prompts")) {
        EXPECT_FALSE(text(prompt, QStringLiteral("title")).isEmpty());
        EXPECT_GE(text(prompt, QStringLiteral("text")).size(), 80) << qPrintable(idOf(prompt));
        used.insert(text(prompt, QStringLiteral("categoryId")));
    }
    EXPECT_EQ(used, categories);
}

TEST_F(StarterLibrary, halfOfThePromptsHaveVariablesInTheFormThatIsReplaced)
{
    static const QRegularExpression snakeCase(QStringLiteral("^[a-z]+(_[a-z]+)*$"));
    const QJsonArray prompts = documents("prompts");
    int withVariables = 0;
    for (const QJsonValue &prompt : prompts) {
        const QStringList names = variablesOf(text(prompt, QStringLiteral("text")));
        withVariables += names.isEmpty() ? 0 : 1;
        for (const QString &name : names)
            EXPECT_TRUE(snakeCase.match(name).hasMatch()) << qPrintable(name);
    }
    EXPECT_GE(withVariables * 2, prompts.size());
    EXPECT_LT(withVariables, prompts.size());
}

TEST_F(StarterLibrary, noTwoRecordsShareATitleOrAnId)
{
    QSet<QString> ids;
    QSet<QString> titles;
    int count = 0;
    for (const QByteArray collection : {"categories", "prompts", "skills"}) {
        for (const QJsonValue &document : documents(collection)) {
            ids.insert(idOf(document));
            titles.insert(
                (text(document, QStringLiteral("title")) + text(document, QStringLiteral("name"))).toLower());
            ++count;
        }
    }
    EXPECT_EQ(ids.size(), count);
    EXPECT_EQ(titles.size(), count);
}

TEST_F(StarterLibrary, recordsCarryTheirOrderAndTheirBeginning)
{
    for (const QByteArray collection : {"categories", "prompts", "skills"}) {
        const QJsonArray records = documents(collection);
        QSet<QString> orders;
        for (const QJsonValue &record : records) {
            const QJsonValue order = record[u"fields"][u"order"][u"integerValue"];
            EXPECT_TRUE(order.isString());
            orders.insert(order.toString());
            EXPECT_EQ(record[u"fields"][u"createdAt"][u"timestampValue"].toString(),
                      QStringLiteral("2027-01-15T08:00:00Z"));
            EXPECT_EQ(text(record, QStringLiteral("createdBy")), QStringLiteral("local-user"));
        }
        EXPECT_EQ(orders.size(), records.size());
        EXPECT_TRUE(orders.contains(QStringLiteral("1")));
    }
}

TEST_F(StarterLibrary, whatIsDeletedStaysDeletedAfterARestart)
{
    const QString id = idOf(documents("prompts").first());
    const qsizetype before = documents("prompts").size();
    {
        Database database(databasePath());
        ASSERT_TRUE(database.open());
        Documents(database).remove(QStringLiteral("artifacts/brevix-app/users/local-user/prompts"), id);
    }
    restart();
    EXPECT_EQ(documents("prompts").size(), before - 1);
    EXPECT_EQ(status(get(libraryPath("prompts/" + id.toUtf8()))), 404);
}

TEST_F(StarterLibrary, emptiedLibraryStaysEmpty)
{
    {
        Database database(databasePath());
        ASSERT_TRUE(database.open());
        database.run(QStringLiteral("DELETE FROM documents"));
    }
    restart();
    EXPECT_TRUE(documents("prompts").isEmpty());
    EXPECT_TRUE(documents("categories").isEmpty());
}
